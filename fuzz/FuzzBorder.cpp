// A host that calls the module's objects in any order: reader, writer, editor, metadata and pictures, on one
// file of any bytes and one that it writes. Now and then an allocation fails within a call. Afterwards
// whatever was used opens the file as a new object does.
#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "fuzz/PlainWave.h"
#include "fuzz/ScriptBytes.h"
#include "fuzz/TagAttributes.h"
#include "platform/com/RefPtr.h"
#include "platform/image/Image.h"
#include "tests/support/ByteStream.h"
#include "tests/support/ScopedFile.h"

namespace {

struct Host {
    explicit Host(ScriptBytes& from) : script(from), image(from.Rest()), stream(image) {
        codec->CreateStreamReader(reader.Put());
        codec->CreateWriter(writer.Put());
        codec->CreateMetadataEditor(file.Wide().c_str(), editor.Put());
        CreateMetadataObject(metadata.Put());
    }
    // A buffer for so many frames; fewer where they would be large.
    std::vector<int16_t> Room(uint32_t& frames, uint32_t channels) {
        constexpr uint32_t kMost = 1 << 16;
        frames = std::min(frames, kMost / std::max(channels, 1U));
        return std::vector<int16_t>(size_t{frames} * channels);
    }

    ScriptBytes& script;
    const std::vector<uint8_t> image;
    ByteStream stream;
    const ScopedFile file{image};
    const ScopedFile made;
    const RefPtr<CPrivateCodecMain> codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    RefPtr<IAC3StreamReader> reader;
    RefPtr<IAC3Writer> writer;
    RefPtr<IAC3MetadataEditor> editor;
    RefPtr<IAC3Metadata> metadata;
    bool isMaking = false;
};

using Step = void (*)(Host&);
constexpr Step kSteps[] = {
    [](Host& host) { host.reader->Open(host.file.Wide().c_str(), host.script.Next16()); },
    [](Host& host) {
        host.stream.position = host.script.Next() % 3;
        host.reader->OpenStream(&host.stream, 0);
    },
    [](Host& host) {
        uint32_t frames = host.script.NextNumber();
        uint32_t channels = 0, rate = 0, bytes = 0, done = 0;
        host.reader->GetOutputFormat(&channels, &rate, &bytes);
        std::vector<int16_t> buffer = host.Room(frames, channels);
        host.reader->Read(buffer.data(), frames, &done, nullptr);
        Check(done <= frames, "no more is read than was asked for");
    },
    [](Host& host) {
        int64_t position = 0;
        const uint32_t origin = host.script.Next() % 4;
        host.reader->Seek(origin, static_cast<int32_t>(host.script.NextNumber()), &position);
        Check(position >= 0, "no position is negative");
    },
    [](Host& host) { host.reader->SetOutputFormat(host.script.NextNumber(), host.script.NextNumber(), 2); },
    [](Host& host) { host.reader->SetOutputFormat(host.script.Next() % 3, 100 * host.script.Next16(), 2); },
    [](Host& host) {
        RefPtr<IAC3Metadata> found;
        int64_t frames = 0;
        AudioFormatInfo format{};
        host.reader->GetLength(&frames);
        host.reader->GetSourceFormat(&format);
        if (host.reader->GetMetadata(found.Put()) == RESULT_OK) host.metadata->CopyFrom(found.Get());
    },
    [](Host& host) {
        char16_t* text = nullptr;
        host.reader->GetExtension(host.script.Next(), &text);
        host.reader->Free(text);
    },
    [](Host& host) { host.reader->Close(); },
    [](Host& host) { host.writer->SelectFormat(host.script.Next() % 32); },
    [](Host& host) { host.writer->SetFormat(host.script.NextNumber(), host.script.NextNumber(), 2); },
    [](Host& host) { host.writer->SetFormat(1 + host.script.Next() % 2, 100 * host.script.Next16(), 2); },
    [](Host& host) {
        host.isMaking = host.writer->Open(host.made.Wide().c_str(), host.script.Next() % 2) == RESULT_OK;
    },
    [](Host& host) {
        uint32_t frames = host.script.NextNumber();
        uint32_t channels = 0, rate = 0, bytes = 0, done = 0;
        host.writer->GetFormat(&channels, &rate, &bytes);
        const std::vector<int16_t> buffer = host.Room(frames, channels);
        host.writer->Write(buffer.data(), frames, &done);
        Check(done <= frames, "no more is taken than was offered");
    },
    [](Host& host) {
        int64_t position = 0;
        const uint32_t origin = host.script.Next() % 4;
        host.writer->Seek(origin, static_cast<int32_t>(host.script.NextNumber()), &position);
    },
    [](Host& host) { host.writer->SetMetadata(host.metadata.Get()); },
    [](Host& host) {
        const bool wasMaking = std::exchange(host.isMaking, false);
        if (host.writer->Close() != RESULT_OK || !wasMaking) return;
        const std::vector<uint8_t> bytes = host.made.Bytes();
        Check(PlainWave(bytes).isSound, "what was written is a WAV file");
    },
    [](Host& host) { host.editor->Open(); },
    [](Host& host) {
        RefPtr<IAC3Metadata> found;
        if (host.editor->GetMetadata(found.Put()) == RESULT_OK) host.metadata->CopyFrom(found.Get());
    },
    [](Host& host) { host.editor->SetMetadata(host.metadata.Get()); },
    [](Host& host) { host.editor->Save(); },
    [](Host& host) { host.editor->Close(); },
    [](Host& host) { SetTagAttributes(host.script, *host.metadata); },
    [](Host& host) {
        PictureSet* set = nullptr;
        host.metadata->GetPictureSet(&set);
        const std::string bytes = host.script.Text(host.script.Next());
        set->StorePicture(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), u"image/png", u"",
                          static_cast<int32_t>(host.script.Next() % 5));
    },
    [](Host& host) {
        const uint8_t* bytes = nullptr;
        uint32_t size = 0;
        char16_t* text = nullptr;
        int32_t id = static_cast<int32_t>(host.script.Next() % 6) - 1;
        host.metadata->GetPictureData(&bytes, &size, &text, id);
        host.metadata->Free(text);
        Check(bytes || size == 0, "a picture has its bytes");
    },
    [](Host& host) {
        CImage* image = nullptr;
        int32_t id = static_cast<int32_t>(host.script.Next() % 6) - 1;
        host.metadata->GetPictureImage(&image, id, nullptr);
        delete image;
    },
    [](Host& host) {
        host.metadata->SetPictureFromFile(host.file.Wide().c_str(),
                                          static_cast<int32_t>(host.script.Next() % 5));
    },
    [](Host& host) { host.metadata->Clear(); },
};

std::vector<int16_t> AllOf(IAC3StreamReader& reader, const std::u16string& path, Result& opened) {
    opened = reader.Open(path.c_str(), OPEN_READ_ONLY);
    reader.SetOutputFormat(1, 32000, 2);
    std::vector<int16_t> buffer(3000);
    uint32_t done = 0;
    uint32_t count = 0;
    while (opened == RESULT_OK && count < buffer.size() &&
           reader.Read(&buffer[count], std::min<uint32_t>(700, static_cast<uint32_t>(buffer.size()) - count),
                       &done, nullptr) == RESULT_OK &&
           done != 0)
        count += done;
    buffer.resize(count);
    return buffer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes all(data, size);
    ScriptBytes script = all.Part(kHead);
    Host host(all);
    host.script = script;
    while (!host.script.IsOver()) {
        const uint32_t step = host.script.Next();
        const bool fails = step / std::size(kSteps) == 1;
        std::optional<FailingAllocator> heap;
        if (fails) heap.emplace(static_cast<int>(host.script.Next() % 64), true);
        kSteps[step % std::size(kSteps)](host);
    }
    host.editor->Close();
    host.writer->Close();
    RefPtr<IAC3StreamReader> fresh;
    host.codec->CreateStreamReader(fresh.Put());
    Result opened = RESULT_OK;
    Result openedAgain = RESULT_OK;
    const std::vector<int16_t> due = AllOf(*fresh, host.file.Wide(), opened);
    const std::vector<int16_t> found = AllOf(*host.reader, host.file.Wide(), openedAgain);
    Check(opened != RESULT_OK || (openedAgain == RESULT_OK && found == due),
          "a used reader opens as a new one does");
    return 0;
}
