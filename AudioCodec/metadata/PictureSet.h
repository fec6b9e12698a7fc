// The pictures of a metadata object: encoded image bytes, each under a number. Not for two threads at once.
//
// Chosen where it was open: a record of which any part finds no memory isn't stored; a merge of a set into
// itself changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

struct PictureRecord {
    std::u16string caption;    // free text
    std::u16string extension;  // without a dot
    std::u16string fileName;   // id and extension
    int32_t id = 3;
    size_t size = 0;                  // bytes of data
    std::unique_ptr<uint8_t[]> data;  // what an image file of that type holds
};

// Ends a record with everything in it.
void ReleasePicture(PictureRecord* record) noexcept;

struct PictureReleaser {
    void operator()(PictureRecord* record) const noexcept { ReleasePicture(record); }
};
using PicturePtr = std::unique_ptr<PictureRecord, PictureReleaser>;

struct PictureSet {
    using Records = std::map<int32_t, PicturePtr>;

    PictureSet() = default;
    PictureSet(const PictureSet&) = delete;
    PictureSet& operator=(const PictureSet&) = delete;

    // Takes a copy of each picture of the source, in place of one under the same number, and its two flags.
    // Throws std::bad_alloc; the pictures up to there have arrived then.
    void MergePictures(const PictureSet& source);

    Records m_records;
    Records::iterator m_cursor = m_records.end();  // scratch: where the last lookup ended
    bool m_changed = false;                        // a picture was stored, or see the next
    bool m_cleared = false;                        // an image was set that was none
};
