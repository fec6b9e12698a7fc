// A file that comes into being where nobody sees it: without a name where the system can, so that nothing is
// left however the process ends, else under a temporary name, which goes with this object, or with the next
// process that needs such a name in the folder (Leftovers.h). Operations return an errno, 0 for success.
#pragma once

#include <cstdint>
#include <string>

#include "capi/posix/Descriptor.h"

class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() { RemoveName(); }

    int MakeIn(const std::string& folder, uint32_t mode);
    int MakeInMemory(const std::string& folderElse);

    const Descriptor& Bytes() const { return m_bytes; }
    // The path for those who open the file themselves.
    std::string Path() const { return m_name.empty() ? m_bytes.ReopeningPath() : m_name; }

    // These give it its name. EEXIST where a name that is to be new is taken.
    int NameNew(const std::string& path);
    int NameInPlace(const std::string& path);  // of what has it, in one step

private:
    int GetTemporaryName(const std::string& folder);
    int Renamed(int error);
    void RemoveName() noexcept;

    Descriptor m_bytes;
    std::string m_name;  // a temporary one; empty for none
};
