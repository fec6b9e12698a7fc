#include "host/files/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/base/Failure.h"
#include "host/terminal/Report.h"

namespace {

bool Look(const std::string& name, int standard, struct stat& file) {
    return (name == "-" ? fstat(standard, &file) : stat(name.c_str(), &file)) == 0;
}

}  // namespace

Output Output::Standard() { return Output("standard output"); }

Output Output::File(const std::string& path, bool overwrite) {
    Output output(path);
    vlw_file* file = nullptr;
    if (vlw_file_new(&file) != VLW_OK) throw std::bad_alloc();
    output.m_file.reset(file);
    const vlw_code code = vlw_file_create(file, path.c_str(), overwrite ? VLW_OVERWRITE : 0);
    if (code == VLW_EXISTS) throw OutputFailure(Report::Exists(path));
    output.Require(code);
    return output;
}

Output Output::Named(const std::string& name, const std::string& input, bool overwrite) {
    if (IsSameFile(name, input))
        throw OutputFailure("The output is the input itself; choose another name for -o.");
    return name == "-" ? Standard() : File(name, overwrite);
}

void Output::Write(const void* data, size_t size) {
    if (m_file) return Require(vlw_file_write(m_file.get(), data, size));
    const char* at = static_cast<const char*>(data);
    while (size > 0) {
        // A pipe takes what fits; the rest is written in the next turn.
        const ssize_t done = write(STDOUT_FILENO, at, size);
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) Fail(errno);
        at += done;
        size -= static_cast<size_t>(done);
    }
}

void Output::Commit() {
    if (m_file) return Require(vlw_file_finish(m_file.get()));
    // A second descriptor is closed for the sake of what only a close reports (network file systems).
    const int copy = dup(STDOUT_FILENO);
    if (copy < 0 || close(copy) != 0) Fail(errno);
}

bool Output::IsTerminal() const { return !m_file && isatty(STDOUT_FILENO) != 0; }

void Output::Require(vlw_code code) const {
    if (code == VLW_OK) return;
    const vlw_error* const error = vlw_file_error(m_file.get());
    if (error->system != 0) Fail(error->system);
    throw OutputFailure(error->text);
}

void Output::Fail(int error) const {
    throw OutputFailure(fmt::format("Writing to {} failed: {}.", m_name, std::strerror(error)));
}

// A terminal or a socket is both without harm.
bool IsSameFile(const std::string& output, const std::string& input) {
    struct stat to {};
    struct stat from {};
    return Look(output, STDOUT_FILENO, to) && Look(input, STDIN_FILENO, from) && to.st_dev == from.st_dev &&
           to.st_ino == from.st_ino && (S_ISREG(to.st_mode) || (output != "-" && input != "-"));
}

bool IsStandardOutput(const std::string& output) {
    struct stat to {};
    struct stat standard {};
    return Look(output, STDOUT_FILENO, to) && fstat(STDOUT_FILENO, &standard) == 0 &&
           to.st_dev == standard.st_dev && to.st_ino == standard.st_ino;
}

void HoldStandardDescriptors() {
    constexpr int kDirections[] = {O_RDONLY, O_RDONLY, O_WRONLY};  // output for reading: each write fails
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
        if (fcntl(descriptor, F_GETFD) == -1 && open("/dev/null", kDirections[descriptor]) < 0) return;
}
