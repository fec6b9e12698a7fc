#include "host/convert/InputList.h"

#include <algorithm>
#include <cerrno>

#include "host/base/Endings.h"
#include "host/files/FileText.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kEndings[] = {".wav", ".wave", ".bwf", ".aif", ".aiff", ".aifc"};

std::string TextOf(const std::error_code& error) { return error.message() + '.'; }

}  // namespace

void InputList::AddNamed(const std::vector<std::string>& names, bool recursive, const std::string& output) {
    for (const std::string& name : names) Add(name, recursive, output);
}

void InputList::AddListed(const std::string& list, bool recursive, const std::string& output) {
    const std::string text = FileText::ReadList(list);
    const char separator = text.find('\0') == text.npos ? '\n' : '\0';
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(separator, at), text.size());
        if (end > at) Add(text.substr(at, end - at), recursive, output);
        at = end + 1;
    }
}

void InputList::Add(const std::string& name, bool recursive, const fs::path& output) {
    std::error_code ignored;
    if (!fs::is_directory(name, ignored))
        m_files.push_back({name, {}, {}});
    else if (recursive)
        AddFolder(name, output);
    else
        m_files.push_back(
            {name, {}, "It is a folder; with --recursive the files in it are taken.", "folder"});
}

void InputList::AddFolder(const std::string& folder, const fs::path& output) {
    std::vector<InputFile> found;
    std::vector<fs::path> waiting = {folder};
    while (!waiting.empty()) {
        const fs::path at = waiting.back();
        waiting.pop_back();
        std::error_code error;
        fs::directory_iterator entries(at, error);
        for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
            std::error_code ignored;
            const fs::directory_entry& entry = *entries;
            if (entry.is_directory(ignored)) {
                if (!entry.is_symlink(ignored) && !fs::equivalent(entry.path(), output, ignored))
                    waiting.push_back(entry.path());
            } else if (HasEnding(entry.path(), kEndings) && !entry.is_other(ignored)) {
                const fs::path below = at.lexically_relative(folder);
                found.push_back({entry.path().string(), below == "." ? fs::path() : below, {}});
            }
        }
        if (error)
            found.push_back(
                {at.string(), {}, TextOf(error), error.value() == EACCES ? "no-permission" : "system"});
    }
    std::sort(found.begin(), found.end(),
              [](const InputFile& a, const InputFile& b) { return a.name < b.name; });
    m_files.insert(m_files.end(), found.begin(), found.end());
}
