// A loaded module's file, as the system's loader knows it.
#pragma once

#include <memory>
#include <string>

class ModuleFile {
public:
    // Loads the file at a path with a folder in it. On failure there is none, and `reason` is the loader's.
    ModuleFile(const std::string& path, std::string& reason);

    explicit operator bool() const { return m_library != nullptr; }
    void* Find(const char* name) const;  // null for a name that it doesn't export
    std::string Version() const;         // from the note in the file; empty without one

    // The path of one of the libraries that come with this code: in the private folder beside its own file,
    // where they are installed, else beside the file itself, where they are built.
    static std::string OfOurs(const char* name);

private:
    struct Closer {
        void operator()(void* library) const noexcept;
    };
    std::unique_ptr<void, Closer> m_library;
};
