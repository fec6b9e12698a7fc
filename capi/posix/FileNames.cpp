#include "capi/posix/FileNames.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "capi/posix/Descriptor.h"

namespace FileNames {
namespace {

constexpr mode_t kPermissionBits = 07777;
constexpr int kMostLinks = 40;  // as many as the system follows
constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
constexpr std::string_view kTemporaryPrefix = ".vlwav-";
constexpr size_t kRandomLetters = 6;

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

}  // namespace

int Look(const std::string& path, Facts& facts) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return errno;
    facts = {S_ISREG(status.st_mode), S_ISDIR(status.st_mode), status.st_mode & kPermissionBits,
             status.st_uid, status.st_gid};
    return 0;
}

int MayWrite(const std::string& path) { return ErrorOf(faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS)); }

int Resolve(std::string& path) {
    for (int links = 0; links < kMostLinks; ++links) {
        char target[PATH_MAX];
        const ssize_t size = readlink(path.c_str(), target, sizeof target);
        if (size < 0) return 0;  // no link: what else is wrong shows when the file is made
        if (static_cast<size_t>(size) == sizeof target) return ENAMETOOLONG;
        const std::string next(target, static_cast<size_t>(size));
        path = next.starts_with('/') ? std::string() : FolderOf(path) + '/';
        path += next;
    }
    return ELOOP;
}

std::string FolderOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string Temporary(const std::string& folder) {
    unsigned char chance[kRandomLetters] = {};
    // What is missing of it stays 0: who makes the file tries other names for one that is taken.
    [[maybe_unused]] const ssize_t filled = getrandom(chance, sizeof chance, 0);
    std::string path = (folder + '/').append(kTemporaryPrefix);
    for (const unsigned char number : chance) path += kLetters[number % (sizeof kLetters - 1)];
    return path;
}

bool IsTemporary(std::string_view name) {
    return name.size() == kTemporaryPrefix.size() + kRandomLetters && name.starts_with(kTemporaryPrefix) &&
           name.find_first_not_of(kLetters, kTemporaryPrefix.size()) == std::string_view::npos;
}

int Rename(const std::string& from, const std::string& to) {
    return ErrorOf(rename(from.c_str(), to.c_str()));
}

int RenameToNew(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // Some file systems can't rename without replacing; there the name is made as a second link.
    if (link(from.c_str(), to.c_str()) != 0) return errno;
    return ErrorOf(unlink(from.c_str()));
}

void Remove(const std::string& path) noexcept { unlink(path.c_str()); }

int FlushFolder(const std::string& folder) {
    const int number = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (number < 0) return errno == EACCES ? 0 : errno;  // a folder that can be written and not read
    Descriptor opened;
    const int error = opened.Duplicate(number);
    close(number);
    return error != 0 ? error : opened.Flush();
}

}  // namespace FileNames
