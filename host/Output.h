// Where the program's bytes go: standard output, or a file that appears under its name only when it is whole.
// Every failed write, flush or close is an OutputFailure; nothing is lost silently.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

class Output {
public:
    // What becomes of a file that has the name already.
    enum class Existing { Replaced, Kept };

    // Standard output. The descriptor stays open.
    static Output Standard();
    // The file at `path`. A regular file is written under a temporary name beside it, which is gone again
    // when Commit is never reached, also by SIGINT, SIGTERM and SIGHUP. With Kept it is a failure if there is
    // such a file, now or when Commit comes.
    static Output File(const std::string& path, Existing existing = Existing::Replaced);
    // A new file that only its user can read, in the folder for temporaries; gone with this object, so there
    // is nothing to commit.
    static Output Scratch();

    Output(Output&& other) noexcept;
    Output& operator=(Output&&) = delete;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    // Writes all of it or throws.
    void Write(const void* data, size_t size /*bytes*/);
    void Write(std::string_view text) { Write(text.data(), text.size()); }
    // Flushes and closes the output and gives the file its name; throws where the system only now
    // reports a failure.
    void Commit();
    // As it was given, for messages.
    const std::string& Name() const { return m_name; }
    // The name under which a regular file is being written, for those who write by other means; empty for
    // any other output.
    const std::string& Temporary() const { return m_temporary; }
    // Whether it would write into the very file at `path`, under whatever name.
    bool IsSameFile(const std::string& path) const;
    // Whether someone would see the bytes on a screen.
    bool IsTerminal() const;

private:
    Output(int descriptor, std::string name) : m_descriptor(descriptor), m_name(std::move(name)) {}

    [[noreturn]] void Fail(int error) const;
    void DropTemporary() noexcept;

    int m_descriptor;
    std::string m_name;       // for messages
    std::string m_target;     // the name that Commit gives; empty where there is no temporary
    std::string m_temporary;  // what is being written
    mode_t m_mode = 0;        // of the finished file
    Existing m_existing = Existing::Replaced;
};

// Keeps files that are opened later off the descriptors 0 to 2 when the caller closed those, so that a
// message never lands in a file; a closed standard output goes on failing at each write.
void HoldStandardDescriptors();
