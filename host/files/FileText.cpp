#include "host/files/FileText.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/base/Failure.h"

namespace FileText {
namespace {

[[noreturn]] void Fail(int error) {
    throw Failure(std::string(std::strerror(error)) + '.', error == ENOENT ? "not-found" : "system");
}

}  // namespace

std::string Read(const std::string& path) {
    struct Closer {
        int descriptor;
        ~Closer() {
            if (descriptor > STDERR_FILENO) close(descriptor);
        }
    };
    const Closer file{path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (file.descriptor < 0) Fail(errno);
    std::string text;
    char block[65536];
    for (;;) {
        const ssize_t got = read(file.descriptor, block, sizeof block);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) Fail(errno);
        if (got == 0) return text;
        text.append(block, static_cast<size_t>(got));
    }
}

std::string ReadList(const std::string& path) {
    try {
        return Read(path);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: {}", path == "-" ? "Standard input" : path, failure.what()),
                      failure.Word());
    }
}

}  // namespace FileText
