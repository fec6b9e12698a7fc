// A file by its path as a source of blocks, for what the host finds in it by itself.
#pragma once

#include <fstream>
#include <string>

#include "riff/BlockSource.h"

class FileBytes final : public BlockSource {
public:
    // What is no regular file counts as empty: reading a pipe would take its bytes away.
    explicit FileBytes(const std::string& path);

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override;

    std::ifstream m_file;
};
