// The files that a conversion is to take: those that are named, those of a list, and those in folders.
//
// Decisions: a folder's files come in the order of the bytes of their paths. Links to folders aren't
// followed, what lies below the output folder isn't taken, and a FIFO or a device is taken by its name alone:
// nobody may ever write to it. A folder that can't be read is told of like a
// file that failed.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

struct InputFile {
    std::string name;  // as it was given, or found
    std::filesystem::path
        below;            // the folder in which it was found, from the one that was given; empty for others
    std::string refusal;  // why it can't be taken; empty where it can
    const char* reason = "";  // the same for scripts
};

class InputList {
public:
    void AddNamed(const std::vector<std::string>& names, bool recursive, const std::string& output);
    // A line for each name, or, where there is a zero byte in it, names that end with one. "-" is standard
    // input. Throws Failure where it can't be read.
    void AddListed(const std::string& list, bool recursive, const std::string& output);

    const std::vector<InputFile>& Files() const { return m_files; }

private:
    void Add(const std::string& name, bool recursive, const std::filesystem::path& output);
    void AddFolder(const std::string& folder, const std::filesystem::path& output);

    std::vector<InputFile> m_files;
};
