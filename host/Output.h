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
    // The file at `path`, in place of what is there.
    static Output File(const std::string& path);
    // Either, as the user names it: "-" is standard output. Refuses the input itself, under whatever name.
    static Output Named(const std::string& name, const std::string& input);

    // Writes all of it or throws.
    void Write(const void* data, size_t size /*bytes*/);
    void Write(std::string_view text) { Write(text.data(), text.size()); }

    // Flushes the output and gives a file its name; throws where the system only now reports a failure.
    void Commit();

    // Whether someone would see the bytes on a screen.
    bool IsTerminal() const;

private:
    struct Closer {
        void operator()(vlw_file* file) const noexcept { vlw_file_free(file); }
    };

    explicit Output(std::string name) : m_name(std::move(name)) {}
    void Require(vlw_code code) const;
    [[noreturn]] void Fail(int error) const;

    std::string m_name;                        // for messages
    std::unique_ptr<vlw_file, Closer> m_file;  // null: standard output
};

// Whether both names lead to one file.
bool IsSameFile(const std::string& a, const std::string& b);

// Keeps files that are opened later off the descriptors 0 to 2 when the caller closed those, so that a
// message never lands in a file; a closed standard output goes on failing at each write.
void HoldStandardDescriptors();
