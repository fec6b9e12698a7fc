// Names of files: what stands under them, and how they change. Operations return an errno, 0 for success.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace FileNames {

struct Facts {
    bool regular = false;
    bool folder = false;
    uint32_t mode = 0;  // its permission bits
    uint32_t owner = 0;
    uint32_t group = 0;
};

// What stands at the end of a path. ENOENT for nothing.
int Look(const std::string& path, Facts& facts);
// Whether the file itself may be written; a rename over it would not ask.
int MayWrite(const std::string& path);
// The name that symbolic links lead to, also one that isn't taken yet. ELOOP for links in a circle.
int Resolve(std::string& path);
std::string FolderOf(const std::string& path);
// A name in a folder that nobody is likely to have taken.
std::string Temporary(const std::string& folder);
// Whether a file's name, without a folder, is one of those.
bool IsTemporary(std::string_view name);
// Replaces what has the new name.
int Rename(const std::string& from, const std::string& to);
// The same, but EEXIST where the new name is taken.
int RenameToNew(const std::string& from, const std::string& to);
void Remove(const std::string& path) noexcept;
// Brings a folder's names to the disk, where its file system can.
int FlushFolder(const std::string& folder);

}  // namespace FileNames
