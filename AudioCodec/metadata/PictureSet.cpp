#include "AudioCodec/metadata/PictureSet.h"

#include <algorithm>
#include <string_view>

#include "AudioCodec/metadata/CMemoryStream.h"
#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/shell/object/Border.h"
#include "platform/base/Types.h"
#include "platform/com/RefPtr.h"
#include "platform/image/Image.h"

namespace {

// The first part that a media type holds tells the extension.
struct MediaTypePart {
    std::u16string_view part;
    const char16_t* extension;
};
constexpr MediaTypePart kMediaTypeParts[] = {{u"jpeg", u"jpg"}, {u"jpg", u"jpg"}, {u"png", u"jpg"},
                                             {u"bmp", u"bmp"},  {u"jpm", u"jpg"}, {u"jpx", u"jpg"}};
constexpr const char16_t* kOtherExtension = u"jpg";

// What is looked for, in this order, where no number is named.
constexpr int32_t kPreferredIds[] = {3, 0, 4, 8};

const char16_t* ExtensionFor(std::u16string mediaType) {
    // ASCII alone, whatever the locale: media types have no other letters.
    for (char16_t& unit : mediaType)
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit - u'A' + u'a');
    for (const MediaTypePart& row : kMediaTypeParts)
        if (mediaType.find(row.part) != mediaType.npos) return row.extension;
    return kOtherExtension;
}

PicturePtr CopyPicture(const PictureRecord& source) {
    PicturePtr copy(new PictureRecord);
    copy->caption = source.caption;
    copy->extension = source.extension;
    copy->fileName = source.fileName;
    copy->id = source.id;
    copy->data = std::make_unique<uint8_t[]>(source.size);
    std::copy_n(source.data.get(), source.size, copy->data.get());
    copy->size = source.size;
    return copy;
}

}  // namespace

void NamePicture(PictureRecord& record, const char16_t* caption, const char16_t* mediaType, int32_t id) {
    const std::string number = std::to_string(id);
    record.caption = caption;
    record.extension = ExtensionFor(mediaType);
    record.fileName = std::u16string(number.begin(), number.end()) + u"." + record.extension;
    record.id = id;
}

void ReleasePicture(PictureRecord* record) noexcept { delete record; }

Result PictureSet::StorePicture(const uint8_t* data, size_t size, const char16_t* mediaType,
                                const char16_t* caption, int32_t id) {
    return AtBorder(RESULT_NO_MEMORY, [&] {
        auto copy = std::make_unique_for_overwrite<uint8_t[]>(size);
        std::copy_n(data, size, copy.get());
        return TakePicture(std::move(copy), size, mediaType, caption, id);
    });
}

Result PictureSet::TakePicture(std::unique_ptr<uint8_t[]> data, size_t size, const char16_t* mediaType,
                               const char16_t* caption, int32_t id) {
    return AtBorder(RESULT_NO_MEMORY, [&] {
        PicturePtr picture(new PictureRecord);
        // The record is complete before the set is touched: without memory the picture that was there stays.
        picture->data = std::move(data);
        picture->size = size;
        NamePicture(*picture, caption, mediaType, id);
        m_cursor = m_records.try_emplace(id).first;  // the last thing that can fail
        m_cursor->second = std::move(picture);
        return RESULT_OK;
    });
}

Result PictureSet::FindPicture(int32_t id, PictureRecord** record) {
    *record = nullptr;
    if (id != PICTURE_ID_NONE) {
        m_cursor = m_records.find(id);
    } else {
        // Told apart from a number that isn't there: the caller asked for any picture, and there is none.
        if (m_records.empty()) return RESULT_BAD_ARGUMENT;
        for (const int32_t preferred : kPreferredIds)
            if ((m_cursor = m_records.find(preferred)) != m_records.end()) break;
        // The map is ordered by number, so this is the lowest.
        if (m_cursor == m_records.end()) m_cursor = m_records.begin();
    }
    if (m_cursor == m_records.end()) return RESULT_FAILED;
    *record = m_cursor->second.get();
    return RESULT_OK;
}

bool PictureSet::DecodePicture(const PictureRecord& record, CImage** image) {
    *image = nullptr;
    HRESULT result = S_OK;
    // The stream borrows the record's bytes for the time of the Load.
    const auto stream = RefPtr<CMemoryStream>::Adopt(new CMemoryStream(
        record.fileName.c_str(), record.data.get(), static_cast<uint32_t>(record.size), 0, &result));
    *image = VlCreateImage();
    if (!*image) throw std::bad_alloc();
    return FAILED((*image)->Load(stream.Get()));
}

void PictureSet::MergePictures(const PictureSet& source) {
    // Records that callers still hold would be replaced under them, by copies of themselves.
    if (&source == this) return;
    for (const auto& [id, picture] : source.m_records) m_records[id] = CopyPicture(*picture);
    m_cursor = m_records.end();
    m_changed = source.m_changed;
    m_cleared = source.m_cleared;
}
