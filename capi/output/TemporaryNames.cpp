#include "capi/output/TemporaryNames.h"

#include <mutex>
#include <set>

#include "capi/posix/FileNames.h"

namespace TemporaryNames {
namespace {

struct Names {
    std::mutex lock;
    std::set<std::string> paths;
};

// Never destroyed: a thread may need it while the process ends.
Names& All() {
    static auto& names = *new Names;
    return names;
}

}  // namespace

void Add(const std::string& path) {
    const std::lock_guard held(All().lock);
    All().paths.insert(path);
}

void Forget(const std::string& path) noexcept {
    const std::lock_guard held(All().lock);
    All().paths.erase(path);
}

void RemoveAll() noexcept {
    const std::lock_guard held(All().lock);
    for (const std::string& path : All().paths) FileNames::Remove(path);
    All().paths.clear();
}

}  // namespace TemporaryNames
