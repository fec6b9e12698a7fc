#include "AudioCodec/metadata/CMetadata.h"

#include <memory>
#include <utility>

#include "AudioCodec/metadata/TemporaryFile.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/HandedOut.h"
#include "platform/base/Types.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/image/Image.h"
#include "riff/TagTable.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IAC3Metadata, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IBase, 0}, {nullptr, 0}};

constexpr int32_t kIdForNone = 0;  // what a picture without a number is stored under
constexpr const char16_t* kStoredMediaType = u"image/jpeg";  // whatever the bytes are
constexpr const char16_t* kTemporaryPrefix = u"VLMeta";
constexpr const char16_t* kTemporaryExtension = u".jpg";  // chooses the encoder

}  // namespace

Result CreateMetadataObject(IAC3Metadata** metadata) { return CreateObject<CMetadata>(metadata); }

Result CMetadata::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CMetadata::GetClassName() { return u"CMetadata"; }

// A host hears of no failure here; the module's own objects call Merge.
Result CMetadata::CopyFrom(IAC3Metadata* source) {
    const auto alone = Alone();
    if (source) Merge(*source);
    return RESULT_OK;
}

// Nothing is emptied first: what the source doesn't have stays as it is here. One failure doesn't keep the
// rest from being copied.
Result CMetadata::Merge(IAC3Metadata& source) {
    const auto alone = Alone();
    bool isWhole = true;
    for (const TagRow& row : TagTable()) {
        if (!(row.uses & TAG_COPIED)) continue;
        const Result copied =
            row.kind == TagKind::Text ? CopyText(row.id, source) : SetLong(row.id, source.GetLong(row.id));
        isWhole = isWhole && copied != RESULT_NO_MEMORY;
    }
    PictureSet* pictures = nullptr;
    source.GetPictureSet(&pictures);
    isWhole = MergePictures(pictures) != RESULT_NO_MEMORY && isWhole;
    return isWhole ? RESULT_OK : RESULT_NO_MEMORY;
}

Result CMetadata::CopyText(uint32_t id, IAC3Metadata& source) {
    HandedOutText text(source);
    const Result given = source.GetString(id, text.Put());
    return given == RESULT_OK && text.Get() ? SetString(id, text.Get()) : given;
}

// What the file holds is read once, and goes into the set as it is.
Result CMetadata::StoreFile(const char16_t* path, int32_t id) {
    const UniqueHandle file = TakeFile(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return RESULT_BAD_ARGUMENT;
    SetLastError(ERROR_SUCCESS);
    const DWORD size = GetFileSize(file.get(), nullptr);
    if (size == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) return RESULT_NO_MEMORY;
    auto bytes = std::make_unique_for_overwrite<uint8_t[]>(size);
    DWORD done = 0;
    if (!ReadFile(file.get(), bytes.get(), size, &done, nullptr) || done != size) return RESULT_NO_MEMORY;

    const Result stored = m_pictures.TakePicture(std::move(bytes), size, kStoredMediaType, u"",
                                                 id == PICTURE_ID_NONE ? kIdForNone : id);
    if (stored == RESULT_OK) m_pictures.m_changed = true;
    return stored;
}

Result CMetadata::StoreImage(CImage& image, int32_t id) {
    const TemporaryFile file(kTemporaryPrefix, kTemporaryExtension);
    if (!file.Path()) return RESULT_NO_MEMORY;
    if (FAILED(image.Save(file.Path(), nullptr))) return RESULT_BAD_ARGUMENT;
    return StoreFile(file.Path(), id);
}

Result CMetadata::SetPictureFromFile(const char16_t* path, int32_t id) {
    const auto alone = Alone();
    return AtBorder(RESULT_NO_MEMORY, [&] { return StoreFile(path, id); });
}

Result CMetadata::SetPictureFromImage(CImage* image, int32_t id, void* further) {
    const auto alone = Alone();
    if (image) return AtBorder(RESULT_NO_MEMORY, [&] { return StoreImage(*image, id); });
    if (!further) m_pictures.m_changed = m_pictures.m_cleared = true;
    return RESULT_BAD_ARGUMENT;
}

// A text of the caller's own in a block of `room` characters and a terminator; null without memory.
char16_t* CMetadata::AllocText(size_t room, const std::u16string& text) {
    auto* block = static_cast<char16_t*>(Alloc(static_cast<uint32_t>((room + 1) * sizeof(char16_t))));
    if (block) block[text.copy(block, room)] = 0;
    return block;
}

Result CMetadata::GetPictureImage(CImage** image, int32_t& id, char16_t** text) {
    const auto alone = Alone();
    if (m_pictures.m_records.empty()) return RESULT_FAILED;
    if (!image) return RESULT_BAD_ARGUMENT;
    *image = nullptr;
    PictureRecord* record = nullptr;
    const Result found = m_pictures.FindPicture(id, &record);
    if (found != RESULT_OK) return found;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        HandedOutText empty(*this);
        if (text && !(*empty.Put() = AllocText(record->caption.size(), {}))) return RESULT_NO_MEMORY;
        PictureSet::DecodePicture(*record, image);  // one that can't be decoded arrives empty
        if (text) *text = empty.Detach();
        return RESULT_OK;
    });
}

Result CMetadata::GetPictureData(const uint8_t** data, uint32_t* size, char16_t** text, int32_t& id) {
    const auto alone = Alone();
    if (m_pictures.m_records.empty()) return RESULT_FAILED;
    if (!data || !size) return RESULT_BAD_ARGUMENT;
    *data = nullptr;
    *size = 0;
    PictureRecord* record = nullptr;
    if (m_pictures.FindPicture(id, &record) != RESULT_OK) return RESULT_OK;
    if (text) {
        char16_t* const extension = AllocText(record->extension.size(), record->extension);
        if (!extension) return RESULT_NO_MEMORY;
        *text = extension;
    }
    *data = record->data.get();
    *size = static_cast<uint32_t>(record->size);
    return RESULT_OK;
}

Result CMetadata::PictureOperationUnsupported() { return RESULT_NOT_SUPPORTED; }

Result CMetadata::MergePictures(PictureSet* source) {
    const auto alone = Alone();
    if (!source) return RESULT_BAD_ARGUMENT;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        m_pictures.MergePictures(*source);
        return RESULT_OK;
    });
}

Result CMetadata::GetPictureSet(PictureSet** set) {
    const auto alone = Alone();
    if (set) *set = &m_pictures;
    return RESULT_OK;
}
