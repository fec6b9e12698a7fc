#include "tests/hostile/Operations.h"

#include <dlfcn.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "AudioCodec/wave/riff/Origin.h"
#include "platform/base/Utf.h"
#include "platform/image/Image.h"

using namespace vlacwav3;

namespace {

constexpr uint32_t kMostFrames = 65536;
constexpr uint32_t kBlockFrames = 1024;
constexpr uint32_t kRate = 48000;

std::string Told(Result result) { return std::to_string(result); }

// Through the module.

std::string Read(const Codec& codec, const std::string& path) {
    RefPtr<IAC3StreamReader> reader;
    codec.Main().CreateStreamReader(reader.Put());
    const Result opened = reader->Open(Utf::FromUtf8(path).c_str(), OPEN_READ_ONLY);
    if (opened != RESULT_OK) return Told(opened);
    const Result set = reader->SetOutputFormat(1, kRate, 2);
    int64_t length = 0;
    reader->GetLength(&length);
    std::vector<int16_t> block(kBlockFrames);
    uint32_t frames = 0;
    uint32_t done = 0;
    Result read = RESULT_OK;
    do {
        read = reader->Read(block.data(), kBlockFrames, &done, nullptr);
        frames += done;
    } while (read == RESULT_OK && done != 0 && frames < kMostFrames);
    reader->Seek(ORIGIN_END, -1, nullptr);
    reader->Close();
    return Told(set) + ", " + std::to_string(frames) + " of " + std::to_string(length) + ", " + Told(read);
}

std::string Look(const Codec& codec, const std::string& path) {
    RefPtr<IAC3StreamReader> reader;
    codec.Main().CreateStreamReader(reader.Put());
    const Result opened = reader->Open(Utf::FromUtf8(path).c_str(), OPEN_READ_ONLY);
    RefPtr<IAC3Metadata> metadata;
    const Result got = opened == RESULT_OK ? reader->GetMetadata(metadata.Put()) : opened;
    if (got != RESULT_OK) return Told(got);
    uint32_t id = 0;
    uint32_t type = 0;
    const uint32_t count = metadata->GetAttributeCount();
    for (uint32_t i = 0; i < count; ++i) metadata->GetAttributeByIndex(i, &id, &type);
    return std::to_string(count) + " attributes";
}

std::string Edit(const Codec& codec, const std::string& path, bool changedOnly) {
    RefPtr<IAC3MetadataEditor> editor;
    codec.Main().CreateMetadataEditor(Utf::FromUtf8(path).c_str(), editor.Put());
    editor->SetBool(ATTR_EDIT_ANY_FORMAT, 1);
    editor->SetBool(ATTR_EDIT_CHANGED_ONLY, changedOnly);
    const Result opened = editor->Open();
    if (opened != RESULT_OK) return Told(opened);
    RefPtr<IAC3Metadata> metadata;
    editor->GetMetadata(metadata.Put());
    if (metadata) {
        metadata->SetString(ATTR_TITLE, u"another title");
        editor->SetMetadata(metadata.Get());
    }
    return "saved " + Told(editor->Save());
}
std::string EditChanged(const Codec& codec, const std::string& path) { return Edit(codec, path, true); }
std::string EditAll(const Codec& codec, const std::string& path) { return Edit(codec, path, false); }

// Through the library.

struct FreeReader {
    void operator()(vlw_reader* reader) const { vlw_reader_free(reader); }
};
using UniqueReader = std::unique_ptr<vlw_reader, FreeReader>;

UniqueReader NewReader(const Codec& codec) {
    vlw_reader* reader = nullptr;
    if (vlw_reader_new(codec.Library(), &reader) != VLW_OK) throw std::bad_alloc();
    return UniqueReader(reader);
}

// As `vlwav info`.
std::string Info(const Codec& codec, const std::string& path) {
    const UniqueReader reader = NewReader(codec);
    static_cast<void>(vlw_reader_decode_late(reader.get(), 1));
    const vlw_code opened = vlw_reader_open(reader.get(), path.c_str());
    if (opened != VLW_OK) return std::to_string(opened);
    vlw_format format = {};
    format.size = sizeof format;
    vlw_reader_format(reader.get(), &format);
    vlw_tags* tags = nullptr;
    if (vlw_tags_new(&tags) != VLW_OK) throw std::bad_alloc();
    const vlw_code read = vlw_reader_tags(reader.get(), tags);
    const size_t count = vlw_tags_count(tags);
    vlw_tags_free(tags);
    vlw_chunk chunk = {};
    chunk.size = sizeof chunk;
    size_t chunks = 0;
    while (vlw_reader_chunk(reader.get(), chunks, &chunk) == VLW_OK) ++chunks;
    return std::string(format.codec) + ", " + std::to_string(format.frames) + " frames, tags " +
           std::to_string(read) + ", " + std::to_string(count) + ", chunks " + std::to_string(chunks);
}

std::string LibraryRead(const Codec& codec, const std::string& path) {
    const UniqueReader reader = NewReader(codec);
    vlw_code code = vlw_reader_output(reader.get(), kRate, 1);
    if (code == VLW_OK) code = vlw_reader_open(reader.get(), path.c_str());
    if (code != VLW_OK) return std::to_string(code);
    std::vector<int16_t> block(kBlockFrames);
    size_t frames = 0;
    while (code == VLW_OK && frames < kMostFrames) {
        size_t done = 0;
        code = vlw_reader_read_int16(reader.get(), block.data(), block.size(), &done);
        frames += done;
    }
    return std::to_string(frames) + ", " + std::to_string(code);
}

std::string LibraryEdit(const Codec& codec, const std::string& path) {
    vlw_editor* editor = nullptr;
    if (vlw_editor_new(codec.Library(), &editor) != VLW_OK) throw std::bad_alloc();
    const vlw_code opened = vlw_editor_open(editor, path.c_str());
    const vlw_code set =
        opened == VLW_OK ? vlw_tags_set(vlw_editor_tags(editor), "title", "another title") : VLW_OK;
    const vlw_code saved = opened == VLW_OK ? vlw_editor_save(editor, VLW_LOSSY) : VLW_OK;
    vlw_editor_free(editor);
    return std::to_string(opened) + ", " + std::to_string(set) + ", saved " + std::to_string(saved);
}

// With its tags and chunks; of a file that promises much no audio is wanted here.
std::string LibraryConvert(const Codec& codec, const std::string& path) {
    const UniqueReader reader = NewReader(codec);
    vlw_code code = vlw_reader_open(reader.get(), path.c_str());
    if (code != VLW_OK) return std::to_string(code);
    const int64_t frames = vlw_reader_frames(reader.get());
    const uint32_t rate = vlw_reader_rate(reader.get());
    if (frames == VLW_UNKNOWN || frames > kMostFrames || rate < 1000 || frames * kRate / rate > kMostFrames)
        return "much audio";
    vlw_reader_close(reader.get());
    vlw_converter* converter = nullptr;
    if (vlw_converter_new(codec.Library(), &converter) != VLW_OK) throw std::bad_alloc();
    vlw_conversion wish = {};
    wish.size = sizeof wish;
    wish.rate = kRate;
    wish.flags = VLW_OVERWRITE | VLW_LOSSY | VLW_PARTIAL;
    const std::string target = path + ".made";
    code = vlw_converter_run(converter, path.c_str(), target.c_str(), &wish);
    std::error_code ignored;
    const uintmax_t size = std::filesystem::file_size(target, ignored);
    std::filesystem::remove(target, ignored);
    vlw_converter_free(converter);
    return std::to_string(code) + ", " + std::to_string(code < VLW_OK ? 0 : size) + " bytes";
}

// A picture of a metadata object.

RefPtr<IAC3Metadata> NewMetadata(const Codec& codec) {
    RefPtr<IAC3Writer> writer;
    RefPtr<IAC3Metadata> metadata;
    codec.Main().CreateWriter(writer.Put());
    writer->GetMetadata(metadata.Put());
    return metadata;
}

std::string Show(const Codec& codec, const std::string& path) {
    const RefPtr<IAC3Metadata> metadata = NewMetadata(codec);
    const Result set = metadata->SetPictureFromFile(Utf::FromUtf8(path).c_str(), -1);
    CImage* image = nullptr;
    int32_t id = -1;
    const Result got = metadata->GetPictureImage(&image, id, nullptr);
    const std::unique_ptr<CImage> owned(image);
    std::string text = Told(set) + ", " + Told(got);
    if (image && !image->IsNull())
        text += ", " + std::to_string(image->GetWidth()) + " by " + std::to_string(image->GetHeight());
    return text;
}

constexpr Operation kAudio[] = {
    {"read", false, 1, 1, Read},
    {"look", false, 1, 1, Look},
    {"edit", true, 3, 3, EditChanged},
    {"rewrite", true, 3, 3, EditAll},
    {"info", false, 1, 1, Info},
    {"library read", false, 1, 1, LibraryRead},
    {"library edit", true, 4, 6, LibraryEdit},
    // Each look at the chunks is a walk: for format, tags, size, what is lost, the copy and its proof.
    {"convert", false, 4, 6, LibraryConvert},
};
constexpr Operation kPicture[] = {{"show", false, 1, 1, Show}};

}  // namespace

Codec::Codec(const char* modulePath) : m_module(dlopen(modulePath, RTLD_NOW | RTLD_LOCAL)) {
    using GetClassObject = Result(const GUID*, const GUID*, void**);
    auto* const get =
        m_module ? reinterpret_cast<GetClassObject*>(dlsym(m_module, "DllVlGetClassObject")) : nullptr;
    if (!get ||
        get(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, reinterpret_cast<void**>(m_main.Put())) != RESULT_OK)
        throw std::runtime_error("no module");
    if (vlw_module_new(&m_library) != VLW_OK || vlw_module_load(m_library, modulePath) != VLW_OK)
        throw std::runtime_error("no library");
}

Codec::~Codec() {
    vlw_module_free(m_library);
    m_main.Reset();
    if (m_module) dlclose(m_module);
}

std::span<const Operation> AudioOperations() { return kAudio; }
std::span<const Operation> PictureOperations() { return kPicture; }
