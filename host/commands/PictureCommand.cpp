#include <memory>
#include <string>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/commands/SingleFile.h"
#include "host/files/FileText.h"
#include "host/files/Output.h"
#include "host/terminal/Report.h"

namespace {

struct PictureOptions {
    std::string file;
    std::string format;  // "jpg", "bmp"; empty: as it is
    std::string output;  // a path, "-" is standard output
    bool overwrite = false;
};

struct Freed {
    void operator()(void* block) const noexcept { vlw_free(block); }
};

std::string ReadFile(const std::string& path) {
    std::string bytes = FileText::Read(path);
    if (bytes.empty()) throw Failure("It is empty.", "damaged");
    return bytes;
}

void Write(const PictureOptions& options, const void* bytes, size_t size) {
    Output output = Output::Named(options.output, options.file, options.overwrite);
    output.Write(bytes, size);
    output.Commit();
}

void Convert(const vlw::Module& module, const PictureOptions& options, const std::string& bytes) {
    void* made = nullptr;
    size_t size = 0;
    const vlw_code code =
        vlw_picture_convert(module.get(), bytes.data(), bytes.size(), options.format.c_str(), &made, &size);
    const std::unique_ptr<void, Freed> owned(made);
    if (code != VLW_OK) throw Failure(vlw_module_error(module.get())->text);
    Write(options, made, size);
}

// As a host gets it from the tags of a file.
void Pass(const PictureOptions& options, const std::string& bytes) {
    vlw::Tags tags;
    tags.set_picture(0, bytes.data(), bytes.size());
    const vlw::Picture picture = *tags.best_picture();
    Write(options, picture.data, picture.size);
}

class PictureCommand final : public Command {
public:
    PictureCommand()
        : Command(
              {"picture",
               "Write an image file as hosts get it from the metadata",
               {"Takes JPEG, PNG, GIF and BMP. With --to the picture is decoded and written anew; else its "
                "bytes are "
                "passed on as they are, once they are known to be such a picture."},
               {{"A cover as JPEG", "vlwav picture cover.png --to jpg -o cover.jpg"},
                {"Whether a file is a whole picture", "vlwav picture cover.png --to bmp -o /dev/null"},
                {"Into another program", "vlwav picture cover.gif --to bmp -o - | convert - cover.webp"}}}) {
        Take(Option{"FILE", "", "Image file; - is standard input", &m_options.file, Words::Files}.Required());
        Take(Option{"--to", "KIND", "Decode it and write it anew; as it is if not given", &m_options.format}
                 .OneOf({"jpg", "bmp"}));
        Take(Option{"-o,--output", "OUT", "File to write, - is standard output", &m_options.output,
                    Words::Files}
                 .Required());
        Take({"--overwrite", "", "Replace what is there already", &m_options.overwrite});
    }

    ExitCode Run(Context& context) override {
        SingleFile::RequireNoScreen(m_options.output, "A picture");
        const vlw::Module& module = context.Module();
        return SingleFile::Do(m_options.file, [&] {
            const std::string bytes = ReadFile(m_options.file);
            if (m_options.format.empty())
                Pass(m_options, bytes);
            else
                Convert(module, m_options, bytes);
            return EXIT_DONE;
        });
    }

private:
    PictureOptions m_options;
};

}  // namespace

std::unique_ptr<Command> MakePictureCommand() { return std::make_unique<PictureCommand>(); }
