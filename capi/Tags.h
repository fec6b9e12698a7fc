// Tags and pictures of any origin, as a program holds them: texts in UTF-8 under keywords, bytes of image
// files under numbers. Knows no file and no module. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "capi/ErrorRecord.h"
#include "platform/base/IndexedPlace.h"
#include "riff/TagTable.h"

// Whether a text is UTF-8 throughout.
bool IsUtf8(std::string_view text);

class Tags {
public:
    using Texts = std::map<uint32_t, std::string>;  // by the keyword's place among those shown
    using Pictures = std::map<int32_t, std::vector<uint8_t>>;

    // Null or empty takes the tag away, as 0 does for a number. Throws Failure with VLW_UNKNOWN_KEYWORD or
    // VLW_BAD_VALUE, and std::bad_alloc; nothing is changed then.
    void Set(const char* keyword, const char* value);
    // Null bytes take the picture away. Throws Failure with VLW_BAD_VALUE for bytes that don't begin as JPEG,
    // PNG, GIF or BMP, and std::bad_alloc; nothing is changed then.
    void SetPicture(int32_t number, const void* bytes, size_t size);
    void Clear() noexcept;
    // A text as a file has it, in place of what is there; an empty one takes the tag away.
    void Put(const TagRow& row, std::string text);

    // Takes the tags away that WAV files don't keep.
    void DropUnkept();
    // All texts and pictures of another, each in place of what is there.
    void Add(const Tags& other);

    const std::string& TextOf(const TagRow& row) const;  // empty where there is none
    const std::string* Find(const char* keyword) const;  // null where there is none
    Pictures::const_iterator BestPicture() const;        // the one to show where one is shown, else the end
    Pictures::const_iterator PictureAt(size_t index) const;  // by ascending number; the end past the last

    bool operator==(const Tags& other) const {
        return m_texts == other.m_texts && m_pictures == other.m_pictures;
    }

    const Texts& AllTexts() const { return m_texts; }
    const Pictures& AllPictures() const { return m_pictures; }

private:
    Texts m_texts;
    Pictures m_pictures;
    mutable IndexedPlace<Pictures> m_asked;
};

struct vlw_tags {
    Tags content;
    ErrorRecord error;
};
