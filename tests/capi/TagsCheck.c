/* Codes, versions, keywords, tags and pictures, which need no module. */
#include <stdint.h>

#include "capi/vlwav.h"
#include "tests/capi/Check.h"

static void codes(void) {
    for (int code = VLW_NO_MODULE; code <= VLW_CUT; ++code) {
        CHECK(strlen(vlw_error_text((vlw_code)code)) > 4);
        for (int other = VLW_NO_MODULE; other < code; ++other)
            CHECK(!same(vlw_error_text((vlw_code)code), vlw_error_text((vlw_code)other)));
    }
    CHECK(same(vlw_error_text((vlw_code)-4000), vlw_error_text(VLW_FAILED)));
    CHECK(same(vlw_error_text((vlw_code)77), vlw_error_text(VLW_END)));
    CHECK(vlw_version() == VLW_VERSION && same(vlw_version_text(), "1.0.0"));
    vlw_free(NULL);
}

static void keywords(void) {
    size_t count = 0, numbers = 0, kept = 0, artists = 0;
    CHECK(same(vlw_keyword(0), "title"));
    for (; vlw_keyword(count); ++count) {
        numbers += vlw_keyword_flags(count) & VLW_KEYWORD_NUMBER;
        kept += (vlw_keyword_flags(count) & VLW_KEYWORD_KEPT) != 0;
        artists += same(vlw_keyword(count), "artist");
        CHECK(!same(vlw_keyword(count), "performer") && vlw_keyword(count)[0]);
    }
    CHECK(numbers >= 4 && kept >= 14 && kept < count && artists == 1);
    CHECK(vlw_keyword(SIZE_MAX) == NULL && vlw_keyword_flags(count) == 0);
}

static void texts(vlw_tags *tags) {
    const char *keyword = NULL, *value = NULL;
    CHECK(vlw_tags_count(tags) == 0 && vlw_tags_at(tags, 0, &keyword, &value) == VLW_END && keyword == NULL);
    CHECK(vlw_tags_set(tags, "TITLE", "Nordwind \xC3\xBC") == VLW_OK && vlw_tags_set(tags, "track", "07") == VLW_OK);
    CHECK(vlw_tags_set(tags, "Performer", "\xF0\x9F\x8E\xB5") == VLW_OK && vlw_tags_count(tags) == 3);
    CHECK(same(vlw_tags_get(tags, "Artist"), "\xF0\x9F\x8E\xB5") && same(vlw_tags_get(tags, "track"), "7"));
    CHECK(vlw_tags_at(tags, 0, &keyword, &value) == VLW_OK && same(keyword, "title"));
    CHECK(vlw_tags_at(tags, 1, &keyword, NULL) == VLW_OK && same(keyword, "artist"));
    CHECK(vlw_tags_at(tags, 2, NULL, &value) == VLW_OK && same(value, "7"));

    /* What fails changes nothing and leaves its reason, until the next call that isn't a query. */
    CHECK(vlw_tags_error(tags)->code == VLW_OK && same(vlw_tags_error(tags)->text, "") && same(vlw_tags_error(tags)->path, "") && vlw_tags_error(tags)->size == sizeof(vlw_error));
    CHECK(vlw_tags_set(tags, "nonesuch", "x") == VLW_UNKNOWN_KEYWORD && strstr(vlw_tags_error(tags)->text, "nonesuch"));
    CHECK(vlw_tags_get(tags, "nonesuch") == NULL && vlw_tags_count(tags) == 3 && vlw_tags_error(tags)->code == VLW_UNKNOWN_KEYWORD);
    const char *const wrong[] = {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC0\x80"};
    for (size_t i = 0; i < sizeof wrong / sizeof *wrong; ++i)
        CHECK(vlw_tags_set(tags, "title", wrong[i]) == VLW_BAD_VALUE && strstr(vlw_tags_error(tags)->text, "title"));
    const char *const numbers[] = {"x", "-1", "7 ", "2147483648", "1.5"};
    for (size_t i = 0; i < sizeof numbers / sizeof *numbers; ++i)
        CHECK(vlw_tags_set(tags, "track", numbers[i]) == VLW_BAD_VALUE && strstr(vlw_tags_error(tags)->text, numbers[i]));
    CHECK(same(vlw_tags_get(tags, "title"), "Nordwind \xC3\xBC") && same(vlw_tags_get(tags, "track"), "7"));
    CHECK(vlw_tags_set(tags, NULL, "x") == VLW_BAD_ARGUMENT && vlw_tags_error(tags)->code == VLW_BAD_ARGUMENT);
    CHECK(vlw_tags_set(tags, "track", "0") == VLW_OK && vlw_tags_set(tags, "artist", "") == VLW_OK);
    CHECK(vlw_tags_set(tags, "year", NULL) == VLW_OK && vlw_tags_count(tags) == 1 && same(vlw_tags_error(tags)->text, ""));
}

static void pictures(vlw_tags *tags) {
    const int32_t order[] = {9, 7, 4, 0, 3};
    int32_t number = -5;
    const void *bytes = NULL;
    size_t size = 0;
    CHECK(vlw_tags_best_picture(tags, &number, &bytes, &size) == VLW_END && number == -5);
    for (size_t i = 0; i < sizeof order / sizeof *order; ++i) {
        const char picture[] = {'B', 'M', (char)i};
        CHECK(vlw_tags_set_picture(tags, order[i], picture, sizeof picture) == VLW_OK);
        CHECK(vlw_tags_best_picture(tags, &number, &bytes, &size) == VLW_OK && number == order[i]);
        CHECK(size == 3 && ((const char *)bytes)[2] == (char)i);
    }
    CHECK(vlw_tags_picture_count(tags) == 5 && vlw_tags_picture_at(tags, 0, &number, NULL, NULL) == VLW_OK);
    CHECK(number == 0 && vlw_tags_picture_at(tags, 5, &number, NULL, NULL) == VLW_END);
    CHECK(vlw_tags_set_picture(tags, 3, "RIFF", 4) == VLW_BAD_VALUE && vlw_tags_picture_count(tags) == 5);
    CHECK(vlw_tags_set_picture(tags, 3, "", 0) == VLW_BAD_VALUE);
    CHECK(vlw_tags_set_picture(tags, 3, NULL, 0) == VLW_OK && vlw_tags_picture_count(tags) == 4);
}

static void copies(vlw_tags *tags) {
    vlw_tags *copy = NULL;
    CHECK(vlw_tags_new(&copy) == VLW_OK && vlw_tags_set(copy, "album", "gone") == VLW_OK);
    CHECK(vlw_tags_copy(copy, tags) == VLW_OK && vlw_tags_get(copy, "album") == NULL);
    CHECK(vlw_tags_count(copy) == 1 && vlw_tags_picture_count(copy) == 4);
    vlw_tags_clear(tags);
    CHECK(vlw_tags_count(tags) + vlw_tags_picture_count(tags) == 0 && vlw_tags_picture_count(copy) == 4);
    CHECK(vlw_tags_copy(copy, copy) == VLW_OK && vlw_tags_count(copy) == 1);
    CHECK(vlw_tags_copy(copy, NULL) == VLW_BAD_ARGUMENT && vlw_tags_count(copy) == 1);
    vlw_tags_free(copy);
}

static void nothing(void) {
    CHECK(vlw_tags_new(NULL) == VLW_BAD_ARGUMENT && vlw_tags_error(NULL) == NULL && vlw_tags_count(NULL) == 0);
    CHECK(vlw_tags_at(NULL, 0, NULL, NULL) == VLW_BAD_ARGUMENT && vlw_tags_get(NULL, "title") == NULL);
    CHECK(vlw_tags_set(NULL, "title", "x") == VLW_BAD_ARGUMENT && vlw_tags_picture_count(NULL) == 0);
    CHECK(vlw_tags_picture_at(NULL, 0, NULL, NULL, NULL) == VLW_BAD_ARGUMENT);
    CHECK(vlw_tags_best_picture(NULL, NULL, NULL, NULL) == VLW_BAD_ARGUMENT);
    CHECK(vlw_tags_set_picture(NULL, 0, NULL, 0) == VLW_BAD_ARGUMENT && vlw_tags_copy(NULL, NULL) == VLW_BAD_ARGUMENT);
    vlw_tags_clear(NULL);
    vlw_tags_free(NULL);
}

int main(void) {
    vlw_tags *tags = NULL;
    codes();
    keywords();
    nothing();
    CHECK(vlw_tags_new(&tags) == VLW_OK && tags);
    texts(tags);
    pictures(tags);
    copies(tags);
    vlw_tags_free(tags);
    return s_failures ? 1 : 0;
}
