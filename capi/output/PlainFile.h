// A file of any bytes that a program writes in order. A regular one comes into being whole; what stands there
// as a device or a pipe gets each byte at once. One thread at a time.
#pragma once

#include <memory>
#include <string>

#include "capi/output/NamedTarget.h"

class PlainFile {
public:
    // These throw Failure. `flags`: VLW_OVERWRITE.
    void Create(const std::string& path, uint32_t flags);
    void Write(const void* bytes, size_t size);
    void Finish();
    void Drop() noexcept;

    bool IsOpen() const { return m_target || m_direct; }

private:
    std::string m_path;
    std::unique_ptr<NamedTarget> m_target;
    Descriptor m_direct;
};
