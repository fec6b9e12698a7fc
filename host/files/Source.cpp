#include "host/files/Source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"

namespace Source {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

bool ComesInOrder(const std::string& name) {
    struct stat file {};
    const int looked = name == "-" ? fstat(STDIN_FILENO, &file) : stat(name.c_str(), &file);
    return looked == 0 && !S_ISREG(file.st_mode) && !S_ISDIR(file.st_mode);
}

[[noreturn]] void Fail(int error) {
    throw Failure(fmt::format("Keeping it in a temporary file failed: {}.", std::strerror(error)), "system");
}

File MakeNameless() {
    std::error_code error;
    std::string path = (std::filesystem::temp_directory_path(error) / "vlwav-XXXXXX").string();
    if (error) Fail(error.value());
    const int made = mkostemp(path.data(), O_CLOEXEC);
    if (made < 0) Fail(errno);
    unlink(path.c_str());
    File file(fdopen(made, "r+"), std::fclose);
    if (!file) throw std::bad_alloc();
    return file;
}

// Passes bytes on as they come, and keeps them.
int64_t ReadAndKeep(int from, int to, void* buffer, size_t size) {
    ssize_t got = 0;
    do got = read(from, buffer, size);
    while (got < 0 && errno == EINTR);
    for (ssize_t done = 0; done < got;) {
        const ssize_t some =
            write(to, static_cast<const char*>(buffer) + done, static_cast<size_t>(got - done));
        if (some < 0 && errno != EINTR) return -errno;
        done += some < 0 ? 0 : some;
    }
    return got < 0 ? -errno : got;
}

}  // namespace

void Open(vlw::Reader& reader, const std::string& name) {
    if (name == "-")
        reader.open_fd(STDIN_FILENO);
    else
        reader.open(name);
}

void OpenWhole(vlw::Reader& reader, const std::string& name) {
    if (!ComesInOrder(name)) return Open(reader, name);
    const int descriptor = name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    const File source(descriptor < 0 ? nullptr : fdopen(descriptor, "r"), std::fclose);
    if (!source) return Open(reader, name);  // which fails for the same reason, and says so
    const File kept = MakeNameless();
    const int from = fileno(source.get()), to = fileno(kept.get());
    // Nothing is decoded yet: a decoder would read on beside this.
    static_cast<void>(vlw_reader_decode_late(reader.get(), 1));
    reader.open(vlw::Stream{
        [from, to](void* buffer, size_t size) { return ReadAndKeep(from, to, buffer, size); }, {}, {}});
    reader.close();
    char block[65536];
    int64_t got = 0;
    do got = ReadAndKeep(from, to, block, sizeof block);
    while (got > 0);
    if (got < 0) Fail(static_cast<int>(-got));
    if (lseek(to, 0, SEEK_SET) < 0) Fail(errno);
    reader.open_fd(to);
}

}  // namespace Source
