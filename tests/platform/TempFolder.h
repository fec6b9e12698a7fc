// A folder of one test's own, removed with all that is in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/base/Utf.h"

class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vlplatform-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string Native(const std::string& name) const { return m_path + "/" + name; }
    std::u16string Wide(const std::string& name) const { return Utf::FromUtf8(Native(name)); }

private:
    std::string m_path;
};
