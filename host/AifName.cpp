#include "host/AifName.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "host/Failure.h"
#include "host/TemporaryCleanup.h"

namespace {

constexpr const char* kOtherExtensions[] = {".aiff", ".aifc"};

}  // namespace

AifName::AifName(const std::string& path) : m_path(path) {
    const std::string extension = std::filesystem::path(path).extension();
    if (std::none_of(std::begin(kOtherExtensions), std::end(kOtherExtensions),
                     [&](const char* other) { return strcasecmp(other, extension.c_str()) == 0; }))
        return;
    std::string folder = TemporaryCleanup::NewPath();
    if (!mkdtemp(folder.data())) TemporaryCleanup::FailWriting();
    m_folder = folder;
    m_path = folder + "/audio.aif";
    std::error_code error;
    std::filesystem::create_symlink(std::filesystem::absolute(path, error), m_path, error);
    if (error) {
        std::filesystem::remove(m_folder, error);
        throw Failure("The folder for temporary files takes no links; set TMPDIR to another one.");
    }
}

AifName::~AifName() {
    std::error_code ignored;
    if (!m_folder.empty()) std::filesystem::remove_all(m_folder, ignored);
}
