// A regular file from a place on. The descriptor's own place isn't moved.
#pragma once

#include "capi/input/Input.h"
#include "capi/posix/Descriptor.h"
#include "platform/base/UniqueHandle.h"

class FileInput final : public Input {
public:
    // `kept` keeps others from writing as long as the file is read; null for none.
    FileInput(Descriptor file, uint64_t start, uint64_t size, FileLabel label, UniqueHandle kept);

private:
    size_t Get(uint64_t place, void* buffer, size_t count) override;

    const Descriptor m_file;
    const uint64_t m_start;
    const UniqueHandle m_kept;
};
