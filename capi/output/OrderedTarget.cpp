#include <vector>

#include "capi/output/OutputTarget.h"

namespace {

constexpr uint32_t kSpoolMode = 0600;
constexpr size_t kSpooledBytes = 65536;  // bytes

}  // namespace

int OrderedTarget::Open(const std::string& folder) { return m_file.MakeIn(folder, kSpoolMode); }

int OrderedTarget::Commit() {
    std::vector<char> block(kSpooledBytes);
    for (uint64_t place = 0;;) {
        size_t done = 0;
        int error = m_file.Bytes().ReadAt(block.data(), block.size(), place, done);
        if (error == 0 && done != 0) error = m_taker(block.data(), done);
        if (error != 0) return error;
        if (done == 0) return m_flusher ? m_flusher() : 0;
        place += done;
    }
}
