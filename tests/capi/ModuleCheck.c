/* The module: found, loaded once, and what it can write. Started with the path of the module and of a library that is none. */
#include <stdint.h>
#include <stdlib.h>

#include "capi/vlwav.h"
#include "tests/capi/Check.h"

static void unloaded(vlw_module *module) {
    vlw_format format = {.size = sizeof format, .rate = 7};
    char *text = NULL;
    CHECK(same(vlw_module_path(module), "") && same(vlw_module_version(module), ""));
    CHECK(vlw_module_format_count(module) == 0 && vlw_module_format(module, 0, &format) == VLW_BAD_STATE);
    CHECK(vlw_module_format_text(module, 0, "en", &text) == VLW_BAD_STATE && text == NULL && format.rate == 7);
}

static void refused(vlw_module *module, const char *path) {
    CHECK(vlw_module_load(module, path) == VLW_NO_MODULE && vlw_module_error(module)->code == VLW_NO_MODULE);
    CHECK(strstr(vlw_module_error(module)->text, path) && same(vlw_module_error(module)->path, path));
    unloaded(module);
}

static void formats(const vlw_module *module) {
    const size_t count = vlw_module_format_count(module);
    CHECK(count >= 28);
    for (size_t i = 0; i < count; ++i) {
        vlw_format format = {.size = sizeof format};
        CHECK(vlw_module_format(module, i, &format) == VLW_OK && format.size == sizeof format);
        CHECK(format.rate >= 8000 && (format.channels == 1 || format.channels == 2));
        CHECK((format.bits == 8 || format.bits == 16) && format.block_bytes == format.channels * format.bits / 8);
        CHECK(format.codec_tag == 1 && same(format.container, "WAV") && same(format.codec, "PCM"));
        CHECK(format.frames == VLW_UNKNOWN && format.frames_promised == VLW_UNKNOWN);
    }
    /* A program of a later time has a larger record, of which the end stays as it is; one without a size is refused. */
    struct {
        vlw_format format;
        uint64_t later;
    } grown = {.format = {.size = sizeof grown}, .later = 42};
    CHECK(vlw_module_format(module, 0, &grown.format) == VLW_OK && grown.format.rate == 8000);
    CHECK(grown.format.size == sizeof grown && grown.later == 42);
    vlw_format none = {.rate = 7};
    CHECK(vlw_module_format(module, 0, &none) == VLW_BAD_ARGUMENT && none.rate == 7);
    none.size = sizeof none - 1;
    CHECK(vlw_module_format(module, 0, &none) == VLW_BAD_ARGUMENT && none.rate == 7);
    none.size = sizeof none;
    CHECK(vlw_module_format(module, count, &none) == VLW_END && none.rate == 7);
    CHECK(vlw_module_format(module, 0, NULL) == VLW_BAD_ARGUMENT);
}

static void text_is(const vlw_module *module, const char *language, const char *expected) {
    char *text = NULL;
    CHECK(vlw_module_format_text(module, 23, language, &text) == VLW_OK && same(text, expected));
    vlw_free(text);
}

static void texts(const vlw_module *module) {
    char *text = NULL;
    text_is(module, "en", "44.100 kHz, 16 Bits, Stereo");
    text_is(module, NULL, "44.100 kHz, 16 Bits, Stereo");
    text_is(module, "xx", "44.100 kHz, 16 Bits, Stereo");
    text_is(module, "JA", "44.100 kHz\xE3\x80\x81" "16 \xE3\x83\x93\xE3\x83\x83\xE3\x83\x88\xE3\x80\x81\xE3\x82\xB9\xE3\x83\x86\xE3\x83\xAC\xE3\x82\xAA");
    char *french = NULL;
    CHECK(vlw_module_format_text(module, 23, "fr", &french) == VLW_OK && !same(french, "44.100 kHz, 16 Bits, Stereo"));
    text_is(module, "fr-CA", french);
    text_is(module, "FR_ch", french);
    vlw_free(french);
    CHECK(vlw_module_format_text(module, vlw_module_format_count(module), "en", &text) == VLW_END);
    CHECK(vlw_module_format_text(module, 0, "en", NULL) == VLW_BAD_ARGUMENT);
}

static void nothing(void) {
    CHECK(vlw_module_new(NULL) == VLW_BAD_ARGUMENT && vlw_module_load(NULL, NULL) == VLW_BAD_ARGUMENT);
    CHECK(!vlw_module_error(NULL) && !vlw_module_path(NULL) && !vlw_module_version(NULL));
    CHECK(vlw_module_format_count(NULL) == 0 && vlw_module_format(NULL, 0, NULL) == VLW_BAD_ARGUMENT);
    vlw_module_free(NULL);
}

int main(int argc, char **argv) {
    vlw_module *module = NULL, *other = NULL;
    if (argc != 3) return 2;
    nothing();
    CHECK(vlw_module_new(&module) == VLW_OK);
    unloaded(module);
    refused(module, "/nowhere/VlACWav3.so");
    refused(module, argv[2]);
    /* None is registered, so this is the one beside the library. */
    CHECK(vlw_module_load(module, NULL) == VLW_OK && same(vlw_module_path(module), argv[1]));
    CHECK(vlw_module_load(module, NULL) == VLW_BAD_STATE && same(vlw_module_path(module), argv[1]));
    CHECK(same(vlw_module_version(module), "3.0.0"));
    CHECK(vlw_module_new(&other) == VLW_OK && vlw_module_load(other, argv[1]) == VLW_OK);
    vlw_module_free(module);
    formats(other);
    texts(other);
    vlw_module_free(other);
    return s_failures ? 1 : 0;
}
