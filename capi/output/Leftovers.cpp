#include "capi/output/Leftovers.h"

#include <filesystem>
#include <mutex>
#include <set>

#include "capi/posix/Descriptor.h"
#include "capi/posix/FileNames.h"

namespace Leftovers {
namespace {

struct Folders {
    std::mutex lock;
    std::set<std::string> seen;
};

// Never destroyed: a thread may need it while the process ends.
bool IsFirstLook(const std::string& folder) {
    static auto& folders = *new Folders;
    const std::lock_guard held(folders.lock);
    return folders.seen.insert(folder).second;
}

// The lock is held until the name is gone, so nobody takes it over in between.
void RemoveIfNobodys(const std::string& path) {
    Descriptor file;
    if (file.OpenLeftover(path) == 0 && file.Hold() == 0) FileNames::Remove(path);
}

}  // namespace

void RemoveFrom(const std::string& folder) noexcept {
    try {
        if (!IsFirstLook(folder)) return;
        std::error_code error;
        for (auto entry = std::filesystem::directory_iterator(folder, error);
             !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
            if (FileNames::IsTemporary(entry->path().filename().string()))
                RemoveIfNobodys(entry->path().string());
    } catch (...) {
        // Without memory they wait for another process.
    }
}

}  // namespace Leftovers
