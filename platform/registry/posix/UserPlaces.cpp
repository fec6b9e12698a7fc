#include "platform/registry/posix/UserPlaces.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

const char* EnvironmentOf(const char* name) { return secure_getenv(name); }

std::string HomeOfUser() {
    std::array<char, 16384> texts{};  // a longer entry counts as none
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found);
    return found && found->pw_dir ? found->pw_dir : "";
}

int MakeFolder(const std::string& path, uint32_t mode) {
    if (mkdir(path.c_str(), mode) != 0) return errno;
    chmod(path.c_str(), mode);  // refused by file systems that know no permissions
    return 0;
}
