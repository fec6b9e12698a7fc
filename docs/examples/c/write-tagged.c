/* Writes a second of a 441 Hz tone with a title, an artist and a year: write-tagged OUT.wav TITLE ARTIST YEAR
 */
#include <inttypes.h>
#include <stdio.h>
#include <vlwav.h>

enum { kRate = 44100, kPeriod = 100, kLoud = 8000 };

/* A triangle wave, from the frame's number. */
static int16_t sample(int frame) {
    const int place = frame % kPeriod;
    return (int16_t)(place < kPeriod / 2 ? kLoud * place / (kPeriod / 2)
                                         : kLoud * (kPeriod - place) / (kPeriod / 2));
}

/* Says what failed; `error` is the record of the handle, or NULL where there is none. */
static int fail(vlw_code code, const vlw_error* error) {
    fprintf(stderr, "%s\n", error && error->code == code ? error->text : vlw_error_text(code));
    return 1;
}

static vlw_code set_tags(vlw_tags* tags, char** values) {
    vlw_code code = vlw_tags_set(tags, "title", values[0]);
    if (code == VLW_OK) code = vlw_tags_set(tags, "artist", values[1]);
    if (code == VLW_OK) code = vlw_tags_set(tags, "year", values[2]);
    return code;
}

static vlw_code write_tone(vlw_writer* writer, const vlw_tags* tags, const char* path) {
    static int16_t tone[kRate];
    for (int i = 0; i < kRate; ++i) tone[i] = sample(i);

    vlw_code code = vlw_writer_input(writer, kRate, 1);
    if (code == VLW_OK) code = vlw_writer_output(writer, 0, 0, 16); /* 8 or 16 bits; 0: as the input */
    if (code == VLW_OK) code = vlw_writer_tags(writer, tags);
    if (code == VLW_OK) code = vlw_writer_create(writer, path, 0); /* VLW_OVERWRITE would replace a file */
    if (code == VLW_OK) code = vlw_writer_write_int16(writer, tone, kRate);
    if (code == VLW_OK) code = vlw_writer_finish(writer); /* only now there is a file of that name */
    return code;
}

int main(int argc, char** argv) {
    vlw_tags* tags = NULL;
    vlw_writer* writer = NULL;
    int failed = 0;

    if (argc != 5) return fputs("usage: write-tagged OUT.wav TITLE ARTIST YEAR\n", stderr), 2;
    vlw_code code = vlw_tags_new(&tags);
    if (code == VLW_OK) code = set_tags(tags, argv + 2);
    if (code != VLW_OK) {
        failed = fail(code, vlw_tags_error(tags));
    } else {
        code = vlw_writer_new(NULL, &writer);
        if (code == VLW_OK) code = write_tone(writer, tags, argv[1]);
        if (code != VLW_OK) failed = fail(code, vlw_writer_error(writer));
    }
    if (!failed) printf("%s: %" PRId64 " frames\n", argv[1], vlw_writer_tell(writer));
    vlw_writer_free(writer);
    vlw_tags_free(tags);
    return failed;
}
