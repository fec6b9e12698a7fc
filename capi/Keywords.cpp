#include "capi/Keywords.h"

#include "capi/vlwav.h"

const TagRow* Keywords::At(size_t index) {
    for (uint32_t place = 1; const TagRow* const row = FindTagShownAt(place); ++place)
        if (FindTagById(row->id) == row && index-- == 0) return row;
    return nullptr;
}

const TagRow* Keywords::Find(std::string_view word) {
    const TagRow* const row = FindTagByKeyword(word);
    return row ? FindTagById(row->id) : nullptr;
}

const char* vlw_keyword(size_t index) {
    const TagRow* const row = Keywords::At(index);
    return row ? row->keyword.data() : nullptr;  // a literal, so it is terminated
}

uint32_t vlw_keyword_flags(size_t index) {
    const TagRow* const row = Keywords::At(index);
    if (!row) return 0;
    uint32_t flags = 0;
    if (row->kind == TagKind::Number) flags |= VLW_KEYWORD_NUMBER;
    if (row->uses & TAG_WRITTEN) flags |= VLW_KEYWORD_KEPT;
    return flags;
}
