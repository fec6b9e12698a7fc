// The pictures of a metadata object: encoded image bytes, each under a number. Not for two threads at once.
//
// Decisions: a record of which any part finds no memory isn't stored, and StorePicture then returns
// RESULT_NO_MEMORY with the set as it was; a merge of a set into itself changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "AudioCodec/shell/object/ResultCodes.h"

namespace vlacwav3 {
class CImage;
}

struct PictureRecord {
    std::u16string caption;    // free text
    std::u16string extension;  // without a dot
    std::u16string fileName;   // id and extension
    int32_t id = 3;
    size_t size = 0;                  // bytes of data
    std::unique_ptr<uint8_t[]> data;  // what an image file of that type holds
};

// Fills all of a record but its data. The extension follows from the media type: "bmp" for bitmaps, "jpg" for
// all else. Throws std::bad_alloc.
void NamePicture(PictureRecord& record, const char16_t* caption, const char16_t* mediaType, int32_t id);

// Ends a record with everything in it.
void ReleasePicture(PictureRecord* record) noexcept;

struct PictureReleaser {
    void operator()(PictureRecord* record) const noexcept { ReleasePicture(record); }
};
using PicturePtr = std::unique_ptr<PictureRecord, PictureReleaser>;

namespace vlacwav3 {

// Public by its name alone: a host hands it on as a pointer.
struct PictureSet {
    using Records = std::map<int32_t, PicturePtr>;

    PictureSet() = default;
    PictureSet(const PictureSet&) = delete;
    PictureSet& operator=(const PictureSet&) = delete;

    // Stores a copy of the bytes under the number, in place of a picture that is there.
    // RESULT_OK, or RESULT_NO_MEMORY.
    Result StorePicture(const uint8_t* data, size_t size /*bytes*/, const char16_t* mediaType,
                        const char16_t* caption, int32_t id);
    // The same with the bytes themselves.
    Result TakePicture(std::unique_ptr<uint8_t[]> data, size_t size /*bytes*/, const char16_t* mediaType,
                       const char16_t* caption, int32_t id);
    // Finds a picture; with -1 the best one: that under 3, 0, 4 or 8, else under the lowest number. The
    // record stays the set's. RESULT_OK; otherwise the record is null: RESULT_FAILED for a number that isn't
    // there, RESULT_BAD_ARGUMENT for -1 on an empty set.
    Result FindPicture(int32_t id, PictureRecord** record);
    // Makes an image, which the caller deletes, out of a record without copying its bytes. True if they can't
    // be decoded: the image is empty then. Throws std::bad_alloc, the receiver null.
    static bool DecodePicture(const PictureRecord& record, CImage** image);

    // Takes a copy of each picture of the source, in place of one under the same number, and its two flags.
    // Throws std::bad_alloc; the pictures up to there have arrived then.
    void MergePictures(const PictureSet& source);

    Records m_records;
    Records::iterator m_cursor = m_records.end();  // scratch: where the last lookup ended
    bool m_changed = false;                        // a picture was stored, or see the next
    bool m_cleared = false;                        // an image was set that was none
};

}  // namespace vlacwav3
