// How a file is told of: to people, and in the record of a failure.
#pragma once

#include <string>

struct FileLabel {
    std::string name;  // its path, "standard input", "the source"
    std::string path;  // empty where it has none

    static FileLabel OfSource() { return {"the source", {}}; }
    static FileLabel OfPath(const std::string& path) { return {path.empty() ? "\"\"" : path, path}; }
    // The program's own descriptors have names that everyone knows; `other` is what the rest are called.
    static FileLabel OfDescriptor(int number, const char* other) {
        constexpr const char* kStandard[] = {"standard input", "standard output", "standard error"};
        return {number >= 0 && number < 3 ? kStandard[number] : other, {}};
    }

    // The name at the start of a sentence.
    std::string First() const {
        std::string first = name;
        if (path.empty() && !first.empty() && first.front() >= 'a' && first.front() <= 'z')
            first.front() = static_cast<char>(first.front() - 'a' + 'A');
        return first;
    }
};
