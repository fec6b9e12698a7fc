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
    Host(ScriptBytes steps, std::vector<uint8_t> bytes)
        : script(steps), image(std::move(bytes)), stream(image), file(image) {
        codec->CreateStreamReader(reader.Put());
        codec->CreateWriter(writer.Put());
        codec->CreateMetadataEditor(path.c_str(), editor.Put());
        CreateMetadataObject(metadata.Put());
    }
    // A call into the module, with memory or, if it is this step's turn, with an allocation that fails.
    template <class Work>
    auto Call(Work work) {
        std::optional<FailingAllocator> heap;
        if (failing >= 0) heap.emplace(failing, true);
        return work();
    }
    // A buffer for so many frames; fewer where they would be large.
    static std::vector<int16_t> Room(uint32_t& frames, uint32_t channels) {
        constexpr uint32_t kMost = 1 << 16;
        frames = std::min(frames, kMost / std::max(channels, 1U));
        return std::vector<int16_t>(size_t{frames} * channels);
    }

    ScriptBytes script;
    int failing = -1;
    const std::vector<uint8_t> image;
    ByteStream stream;
    const ScopedFile file;
    const ScopedFile made;
    const std::u16string path = file.Wide();
    const std::u16string madePath = made.Wide();
    const RefPtr<CPrivateCodecMain> codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    RefPtr<IAC3StreamReader> reader;
    RefPtr<IAC3Writer> writer;
    RefPtr<IAC3MetadataEditor> editor;
    RefPtr<IAC3Metadata> metadata;
    bool isMaking = false;
    uint32_t writtenChannels = 0;
};

// What comes from elsewhere goes on top of the host's own tags and pictures.
template <class Source>
void TakeMetadata(Host& host, Source& source) {
    RefPtr<IAC3Metadata> found;
    if (host.Call([&] { return source.GetMetadata(found.Put()); }) == RESULT_OK)
        host.metadata->CopyFrom(found.Get());
}

// Each takes its numbers from the script first.
using Step = void (*)(Host& host, uint32_t number, uint32_t other);
constexpr Step kSteps[] = {
    [](Host& host, uint32_t flags, uint32_t) {
        host.Call([&] { return host.reader->Open(host.path.c_str(), flags); });
    },
    [](Host& host, uint32_t place, uint32_t) {
        host.stream.position = place % 3;
        host.Call([&] { return host.reader->OpenStream(&host.stream, 0); });
    },
    [](Host& host, uint32_t frames, uint32_t) {
        uint32_t channels = 0, rate = 0, bytes = 0, done = 0;
        host.reader->GetOutputFormat(&channels, &rate, &bytes);
        std::vector<int16_t> buffer = Host::Room(frames, channels);
        host.Call([&] { return host.reader->Read(buffer.data(), frames, &done, nullptr); });
        Check(done <= frames, "no more is read than was asked for");
    },
    [](Host& host, uint32_t offset, uint32_t origin) {
        int64_t position = 0;
        host.Call([&] { return host.reader->Seek(origin % 4, static_cast<int32_t>(offset), &position); });
        Check(position >= 0, "no position is negative");
    },
    [](Host& host, uint32_t channels, uint32_t rate) {
        host.Call([&] { return host.reader->SetOutputFormat(channels, rate, 2); });
    },
    [](Host& host, uint32_t channels, uint32_t rate) {
        host.Call([&] { return host.reader->SetOutputFormat(1 + channels % 2, 100 * (rate % 2000), 2); });
    },
    [](Host& host, uint32_t index, uint32_t) {
        int64_t frames = 0;
        AudioFormatInfo format{};
        char16_t* text = nullptr;
        host.reader->GetLength(&frames);
        host.reader->GetSourceFormat(&format);
        host.Call([&] { return host.reader->GetExtension(index, &text); });
        host.reader->Free(text);
    },
    [](Host& host, uint32_t, uint32_t) { TakeMetadata(host, *host.reader); },
    [](Host& host, uint32_t, uint32_t) { host.Call([&] { return host.reader->Close(); }); },
    [](Host& host, uint32_t index, uint32_t) {
        host.Call([&] { return host.writer->SelectFormat(index % 32); });
    },
    [](Host& host, uint32_t channels, uint32_t rate) {
        host.Call([&] { return host.writer->SetFormat(channels, rate, 2); });
    },
    [](Host& host, uint32_t channels, uint32_t rate) {
        host.Call([&] { return host.writer->SetFormat(1 + channels % 2, 100 * (rate % 655), 2); });
    },
    [](Host& host, uint32_t flags, uint32_t) {
        uint32_t rate = 0, bytes = 0;
        host.writer->GetFormat(&host.writtenChannels, &rate, &bytes);
        host.isMaking =
            host.Call([&] { return host.writer->Open(host.madePath.c_str(), flags % 2); }) == RESULT_OK;
    },
    [](Host& host, uint32_t frames, uint32_t) {
        uint32_t done = 0;
        const std::vector<int16_t> buffer = Host::Room(frames, host.writtenChannels);
        host.Call([&] { return host.writer->Write(buffer.data(), frames, &done); });
        Check(done <= frames, "no more is taken than was offered");
    },
    [](Host& host, uint32_t offset, uint32_t origin) {
        int64_t position = 0;
        host.Call([&] { return host.writer->Seek(origin % 4, static_cast<int32_t>(offset), &position); });
    },
    [](Host& host, uint32_t, uint32_t) {
        host.Call([&] { return host.writer->SetMetadata(host.metadata.Get()); });
    },
    [](Host& host, uint32_t, uint32_t) {
        const bool wasMaking = std::exchange(host.isMaking, false);
        if (host.Call([&] { return host.writer->Close(); }) != RESULT_OK || !wasMaking) return;
        const std::vector<uint8_t> bytes = host.made.Bytes();
        Check(PlainWave(bytes).isSound, "what was written is a WAV file");
    },
    [](Host& host, uint32_t, uint32_t) { host.Call([&] { return host.editor->Open(); }); },
    [](Host& host, uint32_t, uint32_t) { TakeMetadata(host, *host.editor); },
    [](Host& host, uint32_t, uint32_t) {
        host.Call([&] { return host.editor->SetMetadata(host.metadata.Get()); });
    },
    [](Host& host, uint32_t, uint32_t) { host.Call([&] { return host.editor->Save(); }); },
    [](Host& host, uint32_t, uint32_t) { host.editor->Close(); },
    [](Host& host, uint32_t, uint32_t) { SetTagAttributes(host.script, *host.metadata); },
    [](Host& host, uint32_t size, uint32_t id) {
        PictureSet* set = nullptr;
        host.metadata->GetPictureSet(&set);
        const size_t count = std::min<size_t>(size, host.image.size());
        host.Call([&] {
            return set->StorePicture(host.image.data(), count, u"image/png", u"",
                                     static_cast<int32_t>(id % 5));
        });
    },
    [](Host& host, uint32_t number, uint32_t) {
        const uint8_t* bytes = nullptr;
        uint32_t size = 0;
        char16_t* text = nullptr;
        auto id = static_cast<int32_t>(number % 6) - 1;
        host.Call([&] { return host.metadata->GetPictureData(&bytes, &size, &text, id); });
        host.metadata->Free(text);
        Check(bytes || size == 0, "a picture has its bytes");
    },
    [](Host& host, uint32_t number, uint32_t) {
        CImage* image = nullptr;
        auto id = static_cast<int32_t>(number % 6) - 1;
        host.Call([&] { return host.metadata->GetPictureImage(&image, id, nullptr); });
        delete image;
    },
    [](Host& host, uint32_t id, uint32_t) {
        host.Call([&] {
            return host.metadata->SetPictureFromFile(host.path.c_str(), static_cast<int32_t>(id % 5));
        });
    },
    [](Host& host, uint32_t, uint32_t) { host.metadata->Clear(); },
};

std::vector<int16_t> AllOf(IAC3StreamReader& reader, const std::u16string& path, Result& opened) {
    opened = reader.Open(path.c_str(), OPEN_READ_ONLY);
    AudioFormatInfo format{};
    reader.GetSourceFormat(&format);
    if (format.channels > 64) return {};  // to mix them is all that there is time for
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
    const ScriptBytes steps = all.Part(kHead);
    Host host(steps, all.Rest());
    while (!host.script.IsOver()) {
        const uint32_t step = host.script.Next();
        const bool fails = step / std::size(kSteps) == 1;
        host.failing = fails ? static_cast<int>(host.script.Next() % 64) : -1;
        const uint32_t number = host.script.NextNumber();
        kSteps[step % std::size(kSteps)](host, number, host.script.NextNumber());
    }
    host.editor->Close();
    host.writer->Close();
    RefPtr<IAC3StreamReader> fresh;
    host.codec->CreateStreamReader(fresh.Put());
    Result opened = RESULT_OK;
    Result openedAgain = RESULT_OK;
    const std::vector<int16_t> due = AllOf(*fresh, host.path, opened);
    const std::vector<int16_t> found = AllOf(*host.reader, host.path, openedAgain);
    Check(opened != RESULT_OK || (openedAgain == RESULT_OK && found == due),
          "a used reader opens as a new one does");
    return 0;
}
