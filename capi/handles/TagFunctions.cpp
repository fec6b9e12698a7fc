// The functions of vlwav.h on tags and pictures.
#include <iterator>

#include "capi/Guarded.h"
#include "capi/Keywords.h"
#include "capi/Tags.h"

namespace {

// Lends one picture. VLW_END without one.
vlw_code Lend(const Tags& tags, Tags::Pictures::const_iterator picture, int32_t* number, const void** bytes,
              size_t* size) {
    if (picture == tags.AllPictures().end()) return VLW_END;
    if (number) *number = picture->first;
    if (bytes) *bytes = picture->second.data();
    if (size) *size = picture->second.size();
    return VLW_OK;
}

}  // namespace

vlw_code vlw_tags_new(vlw_tags** tags) { return NewHandle(tags); }

void vlw_tags_free(vlw_tags* tags) { delete tags; }

const vlw_error* vlw_tags_error(const vlw_tags* tags) { return tags ? tags->error.Get() : nullptr; }

vlw_code vlw_tags_copy(vlw_tags* to, const vlw_tags* from) {
    return Guarded(to, [&] {
        if (!from) return VLW_BAD_ARGUMENT;
        Tags copy = from->content;  // first what may fail
        to->content = std::move(copy);
        return VLW_OK;
    });
}

size_t vlw_tags_count(const vlw_tags* tags) { return tags ? tags->content.AllTexts().size() : 0; }

vlw_code vlw_tags_at(const vlw_tags* tags, size_t index, const char** keyword, const char** value) {
    if (!tags) return VLW_BAD_ARGUMENT;
    const Tags::Texts& texts = tags->content.AllTexts();
    if (index >= texts.size()) return VLW_END;
    const auto& [place, text] = *std::next(texts.begin(), static_cast<std::ptrdiff_t>(index));
    if (keyword) *keyword = FindTagShownAt(place)->keyword.data();
    if (value) *value = text.c_str();
    return VLW_OK;
}

const char* vlw_tags_get(const vlw_tags* tags, const char* keyword) {
    const std::string* const text = tags && keyword ? tags->content.Find(keyword) : nullptr;
    return text ? text->c_str() : nullptr;
}

vlw_code vlw_tags_set(vlw_tags* tags, const char* keyword, const char* value) {
    return Guarded(tags, [&] {
        if (!keyword) return VLW_BAD_ARGUMENT;
        tags->content.Set(keyword, value);
        return VLW_OK;
    });
}

void vlw_tags_clear(vlw_tags* tags) {
    Guarded(tags, [&] {
        tags->content.Clear();
        return VLW_OK;
    });
}

size_t vlw_tags_picture_count(const vlw_tags* tags) { return tags ? tags->content.AllPictures().size() : 0; }

vlw_code vlw_tags_picture_at(const vlw_tags* tags, size_t index, int32_t* number, const void** bytes,
                             size_t* size) {
    return tags ? Lend(tags->content, tags->content.PictureAt(index), number, bytes, size) : VLW_BAD_ARGUMENT;
}

vlw_code vlw_tags_best_picture(const vlw_tags* tags, int32_t* number, const void** bytes, size_t* size) {
    return tags ? Lend(tags->content, tags->content.BestPicture(), number, bytes, size) : VLW_BAD_ARGUMENT;
}

vlw_code vlw_tags_set_picture(vlw_tags* tags, int32_t number, const void* bytes, size_t size) {
    return Guarded(tags, [&] {
        tags->content.SetPicture(number, bytes, size);
        return VLW_OK;
    });
}
