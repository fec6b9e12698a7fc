// Where the program's bytes go: standard output, or a file that appears under its name only when it is whole.
// Every failed write, flush or close is an OutputFailure; nothing is lost silently.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "capi/vlwav_more.h"

class Output {
public:
    // Standard output. The descriptor stays open.
    static Output Standard();
    // Where the user wants it: "-" is standard output, all else a file, which refuses to replace another
    // unless `overwrite` is set. The input itself is refused under whatever name.
    static Output Named(const std::string& name, const std::string& input, bool overwrite);

    // Writes all of it or throws.
    void Write(const void* data, size_t size /*bytes*/);
    void Write(std::string_view text) { Write(text.data(), text.size()); }

    // Flushes the output and gives a file its name; throws where the system only now reports a failure.
    void Commit();

    // Whether someone would see the bytes on a screen.
    bool IsTerminal() const;
    bool IsFile() const { return m_file != nullptr; }

private:
    struct Closer {
        void operator()(vlw_file* file) const noexcept { vlw_file_free(file); }
    };

    static Output File(const std::string& path, bool overwrite);
    explicit Output(std::string name) : m_name(std::move(name)) {}
    void Require(vlw_code code) const;
    [[noreturn]] void Fail(int error) const;

    std::string m_name;                        // for messages
    std::unique_ptr<vlw_file, Closer> m_file;  // null: standard output
};

// Whether an output is the input itself; "-" is standard output and standard input.
bool IsSameFile(const std::string& output, const std::string& input);

// Whether an output is standard output, by "-" or by a path that leads there.
bool IsStandardOutput(const std::string& output);

// Keeps files that are opened later off the descriptors 0 to 2 when the caller closed those, so that a
// message never lands in a file; a closed standard output goes on failing at each write.
void HoldStandardDescriptors();
