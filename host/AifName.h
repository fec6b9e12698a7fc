// The module knows AIFF by the extension ".aif" alone. Files named ".aiff" or ".aifc" come to it under a link
// of that extension, in a folder of its own that goes with this object.
#pragma once

#include <string>

class AifName {
public:
    // Throws Failure where no link can be made.
    explicit AifName(const std::string& path);
    AifName(const AifName&) = delete;
    AifName& operator=(const AifName&) = delete;
    ~AifName();

    // What to open instead of the path; the path itself for all other files.
    const std::string& Path() const { return m_path; }

private:
    std::string m_folder;  // empty: no link is needed
    std::string m_path;
};
