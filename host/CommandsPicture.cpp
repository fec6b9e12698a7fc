#include <memory>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/ResultSentence.h"
#include "platform/base/Types.h"
#include "platform/base/Utf.h"
#include "platform/file/TempFile.h"
#include "platform/image/Image.h"

namespace {

constexpr int32_t kNewId = 3;  // before the file's own, which is stored under 0: the best picture of all

void Require(Result result, const std::string& sentence) {
    if (result != RESULT_OK) throw Failure(sentence, result);
}

// A writer that never opens a file gives an object as good as any.
RefPtr<IAC3Metadata> NewMetadata(const Module& module) {
    RefPtr<IAC3Writer> writer;
    RefPtr<IAC3Metadata> metadata;
    Result result = module.CreateCodec()->CreateWriter(writer.Put());
    if (result == RESULT_OK) result = writer->GetMetadata(metadata.Put());
    Require(result, SentenceOf(result));
    return metadata;
}

void StoreFile(IAC3Metadata& metadata, const char16_t* path, int32_t id) {
    Require(metadata.SetPictureFromFile(path, id),
            "The picture could not be read; check that it exists and that you may read it.");
}

std::unique_ptr<CImage> Decode(IAC3Metadata& metadata) {
    CImage* image = nullptr;
    int32_t id = PICTURE_ID_NONE;
    const Result result = metadata.GetPictureImage(&image, id, nullptr);
    std::unique_ptr<CImage> owned(image);
    Require(result, SentenceOf(result));
    if (owned->IsNull())
        throw Failure(
            "This is no whole JPEG, PNG, GIF or BMP picture, or libvlimage.so is missing beside the module; "
            "check both.");
    return owned;
}

void StoreAsJpeg(IAC3Metadata& metadata, CImage& image) {
    Require(metadata.SetPictureFromImage(&image, kNewId, nullptr),
            "The picture could not be encoded; check the room in the temporary folder.");
}

// The metadata object encodes nothing but JPEG: the pixels go out by way of a file.
void StoreAsBitmap(IAC3Metadata& metadata, CImage& image) {
    char16_t path[1024];
    const bool made = VlCreateTempFile(u"vlwav", u".bmp", path, 1024) != FALSE;
    const bool saved = made && SUCCEEDED(image.Save(path, nullptr));
    const Result stored = saved ? metadata.SetPictureFromFile(path, kNewId) : RESULT_WRITE_FAILED;
    if (made) DeleteFileW(path);
    Require(stored, "The picture could not be written; check the room in the temporary folder.");
}

struct FormatRow {
    const char* name;
    void (*store)(IAC3Metadata& metadata, CImage& image);
};
constexpr FormatRow kFormats[] = {{"jpg", StoreAsJpeg}, {"bmp", StoreAsBitmap}};

void WriteBest(IAC3Metadata& metadata, const PictureOptions& options) {
    const uint8_t* data = nullptr;
    uint32_t size = 0;
    int32_t id = PICTURE_ID_NONE;
    const Result result = metadata.GetPictureData(&data, &size, nullptr, id);
    Require(result, SentenceOf(result));
    Output output = options.output == "-" ? Output::Standard() : Output::File(options.output);
    if (output.IsSameFile(options.file))
        throw OutputFailure("The output is the input itself; choose another name for -o.");
    output.Write(data, size);
    output.Commit();
}

}  // namespace

ExitCode RunPicture(const Module& module, const PictureOptions& options) {
    if (options.output == "-" && Output::Standard().IsTerminal()) {
        Report::Complain("", "A picture is no text for a terminal; name a file with -o or use a pipe.");
        return EXIT_USAGE;
    }
    try {
        const RefPtr<IAC3Metadata> metadata = NewMetadata(module);
        StoreFile(*metadata, Utf::FromUtf8(options.file).c_str(), PICTURE_ID_NONE);
        for (const FormatRow& row : kFormats)
            if (options.format == row.name) row.store(*metadata, *Decode(*metadata));
        WriteBest(*metadata, options);
        return EXIT_DONE;
    } catch (const OutputFailure&) {
        throw;
    } catch (const Failure& failure) {
        Report::Complain(options.file, failure.what());
        return EXIT_FAILED;
    }
}
