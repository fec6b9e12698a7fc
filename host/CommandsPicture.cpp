#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"

namespace {

struct Freed {
    void operator()(void* block) const noexcept { vlw_free(block); }
};

std::vector<char> ReadFile(const std::string& path) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"),
                                                                  &std::fclose);
    int error = file ? 0 : errno;
    std::vector<char> bytes;
    char block[65536];
    for (size_t got = 1; error == 0 && got != 0; bytes.insert(bytes.end(), block, block + got)) {
        got = std::fread(block, 1, sizeof block, file.get());
        if (std::ferror(file.get())) error = errno;
    }
    if (error != 0) throw Failure(std::string(strerrordesc_np(error)) + '.');
    if (bytes.empty()) throw Failure("It is empty.");
    return bytes;
}

void Write(const PictureOptions& options, const void* bytes, size_t size) {
    Output output = Output::Named(options.output, options.file, options.overwrite);
    output.Write(bytes, size);
    output.Commit();
}

void Convert(const vlw::Module& module, const PictureOptions& options, const std::vector<char>& bytes) {
    void* made = nullptr;
    size_t size = 0;
    const vlw_code code =
        vlw_picture_convert(module.get(), bytes.data(), bytes.size(), options.format.c_str(), &made, &size);
    const std::unique_ptr<void, Freed> owned(made);
    if (code != VLW_OK) throw Failure(vlw_module_error(module.get())->text);
    Write(options, made, size);
}

// As a host gets it from the tags of a file.
void Pass(const PictureOptions& options, const std::vector<char>& bytes) {
    vlw::Tags tags;
    tags.set_picture(0, bytes.data(), bytes.size());
    const vlw::Picture picture = *tags.best_picture();
    Write(options, picture.data, picture.size);
}

}  // namespace

ExitCode RunPicture(const vlw::Module& module, const PictureOptions& options) {
    if (options.output == "-" && Output::Standard().IsTerminal()) {
        Report::Complain("", "A picture is no text for a terminal; name a file with -o or use a pipe.");
        return EXIT_USAGE;
    }
    try {
        const std::vector<char> bytes = ReadFile(options.file);
        if (options.format.empty())
            Pass(options, bytes);
        else
            Convert(module, options, bytes);
        return EXIT_DONE;
    } catch (const OutputFailure&) {
        throw;
    } catch (const std::exception& failure) {
        Report::Complain(options.file, failure);
        return EXIT_FAILED;
    }
}
