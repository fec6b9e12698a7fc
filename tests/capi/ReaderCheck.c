/* Reading: the rules of handles, records of failures, and what files of every kind are and give, whole, cut and from pipes. */
#include <errno.h>
#include <stdlib.h>

#include "capi/vlwav_more.h"
#include "tests/capi/AudioFiles.h"
#include "tests/capi/Check.h"

static void nothing(void) {
    int16_t block[8];
    float floats[8];
    size_t done = 7;
    vlw_format format = {.size = sizeof format, .rate = 7};
    byte_stream from = {.size = 0};
    const vlw_stream stream = as_stream(&from);
    CHECK(vlw_reader_new(NULL, NULL) == VLW_BAD_ARGUMENT && vlw_reader_error(NULL) == NULL);
    CHECK(vlw_reader_output(NULL, 0, 0) == VLW_BAD_ARGUMENT && vlw_reader_text(NULL, VLW_TEXT_AUTO) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_open(NULL, "x") == VLW_BAD_ARGUMENT && vlw_reader_open_fd(NULL, 0) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_open_memory(NULL, block, 1) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_open_stream(NULL, &stream) == VLW_BAD_ARGUMENT && from.closes == 1 && from.reads == 0);
    CHECK(vlw_reader_open_stream(NULL, NULL) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_format(NULL, &format) == VLW_BAD_ARGUMENT && vlw_reader_tags(NULL, NULL) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_rate(NULL) == 0 && vlw_reader_channels(NULL) == 0 && vlw_reader_frames(NULL) == 0);
    CHECK(vlw_reader_tell(NULL) == 0 && vlw_reader_seekable(NULL) == 0 && vlw_reader_seek(NULL, 0) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_read_int16(NULL, block, 1, &done) == VLW_BAD_ARGUMENT && done == 0);
    done = 7;
    CHECK(vlw_reader_read_float(NULL, floats, 1, &done) == VLW_BAD_ARGUMENT && done == 0);
    vlw_reader_close(NULL);
    vlw_reader_free(NULL);
}

/* A failure that the record tells, and that asking doesn't touch. */
static int fails_with(vlw_reader *reader, vlw_code code, vlw_code expected, int system, const char *path, const char *word) {
    vlw_format format = {.size = sizeof format};
    vlw_reader_rate(reader), vlw_reader_channels(reader), vlw_reader_frames(reader), vlw_reader_tell(reader);
    vlw_reader_seekable(reader);
    (void)vlw_reader_format(reader, &format);
    return told(vlw_reader_error(reader), code, expected, system, path) && strstr(vlw_reader_error(reader)->text, word);
}

static int no_failure(const vlw_reader *reader) {
    const vlw_error *const error = vlw_reader_error(reader);
    return error->code == VLW_OK && error->system == 0 && same(error->text, "") && same(error->path, "");
}

static void closed(vlw_reader *reader) {
    int16_t block[8] = {5};
    float floats[8];
    size_t done = 7;
    vlw_format format = {.size = sizeof format, .rate = 7};
    vlw_tags *tags = NULL;
    CHECK(vlw_tags_new(&tags) == VLW_OK && vlw_tags_set(tags, "title", "stays") == VLW_OK);
    CHECK(vlw_reader_format(reader, &format) == VLW_BAD_STATE && format.rate == 7);
    CHECK(vlw_reader_rate(reader) == 0 && vlw_reader_channels(reader) == 0 && vlw_reader_seekable(reader) == 0);
    CHECK(vlw_reader_tell(reader) == 0);
    CHECK(fails_with(reader, vlw_reader_seek(reader, 0), VLW_BAD_STATE, 0, "", ""));
    CHECK(fails_with(reader, vlw_reader_tags(reader, tags), VLW_BAD_STATE, 0, "", "") && same(vlw_tags_get(tags, "title"), "stays"));
    CHECK(fails_with(reader, vlw_reader_read_int16(reader, block, 1, &done), VLW_BAD_STATE, 0, "", "") && done == 0 && block[0] == 5);
    done = 7;
    CHECK(vlw_reader_read_float(reader, floats, 1, &done) == VLW_BAD_STATE && done == 0);
    vlw_tags_free(tags);
}

static void handles(void) {
    sound made = make_sound(PCM_16, 44100, 2, 1000), mono = make_sound(PCM_8, 8000, 1, 100), six = make_sound(PCM_16, 48000, 6, 10);
    vlw_reader *reader = NULL;
    int16_t block[64];
    size_t done = 0;
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK && reader && no_failure(reader));
    closed(reader);
    vlw_reader_close(reader);
    CHECK(no_failure(reader));
    CHECK(fails_with(reader, vlw_reader_open_memory(reader, "RIFX\0\0\0\0WAVE", 12), VLW_NOT_AUDIO, 0, "", "RIFX"));
    CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK && no_failure(reader));
    /* One file after another, without closing; a failed opening leaves none open. */
    CHECK(vlw_reader_open_memory(reader, mono.file, mono.size) == VLW_OK && vlw_reader_rate(reader) == 8000);
    CHECK(fails_with(reader, vlw_reader_open(reader, "/nowhere/a.wav"), VLW_NOT_FOUND, ENOENT, "/nowhere/a.wav", "/nowhere/a.wav"));
    closed(reader);
    CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK);
    CHECK(fails_with(reader, vlw_reader_open(reader, NULL), VLW_BAD_ARGUMENT, 0, "", ""));
    closed(reader);
    CHECK(fails_with(reader, vlw_reader_open_memory(reader, NULL, 0), VLW_BAD_ARGUMENT, 0, "", ""));
    CHECK(fails_with(reader, vlw_reader_open_stream(reader, NULL), VLW_BAD_ARGUMENT, 0, "", ""));
    CHECK(fails_with(reader, vlw_reader_open_fd(reader, -1), VLW_SYSTEM, EBADF, "", ""));
    CHECK(vlw_reader_text(reader, VLW_TEXT_UTF8) == VLW_OK && vlw_reader_text(reader, VLW_TEXT_AUTO) == VLW_OK);
    CHECK(fails_with(reader, vlw_reader_text(reader, (vlw_text)3), VLW_BAD_ARGUMENT, 0, "", ""));

    /* Settings: for all files to come, and for the open one until its first frame. */
    const struct { uint32_t rate, channels; } refused[] = {{999, 0}, {768001, 0}, {0, 256}, {UINT32_MAX, UINT32_MAX}};
    for (size_t i = 0; i < sizeof refused / sizeof *refused; ++i)
        CHECK(fails_with(reader, vlw_reader_output(reader, refused[i].rate, refused[i].channels), VLW_UNSUPPORTED, 0, "", ""));
    CHECK(vlw_reader_output(reader, 22050, 1) == VLW_OK && no_failure(reader));
    CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK);
    CHECK(vlw_reader_rate(reader) == 22050 && vlw_reader_channels(reader) == 1 && vlw_reader_frames(reader) == 500);
    CHECK(vlw_reader_output(reader, 768000, 2) == VLW_OK && vlw_reader_rate(reader) == 768000 && vlw_reader_channels(reader) == 2);
    CHECK(fails_with(reader, vlw_reader_output(reader, 1000, 3), VLW_UNSUPPORTED, 0, "", "") && vlw_reader_rate(reader) == 768000 && vlw_reader_channels(reader) == 2);
    CHECK(vlw_reader_read_int16(reader, block, 0, &done) == VLW_OK && done == 0 && vlw_reader_output(reader, 0, 0) == VLW_OK);
    CHECK(vlw_reader_rate(reader) == 44100 && vlw_reader_read_int16(reader, block, 10, &done) == VLW_OK && done == 10);
    CHECK(memcmp(block, made.samples, 40) == 0);
    CHECK(fails_with(reader, vlw_reader_output(reader, 8000, 1), VLW_BAD_STATE, 0, "", "") && vlw_reader_rate(reader) == 44100);
    CHECK(vlw_reader_seek(reader, 0) == VLW_OK && vlw_reader_output(reader, 8000, 1) == VLW_BAD_STATE);
    vlw_reader_close(reader);
    CHECK(vlw_reader_output(reader, 0, 255) == VLW_OK && vlw_reader_open_memory(reader, mono.file, mono.size) == VLW_OK);
    CHECK(vlw_reader_channels(reader) == 255 && vlw_reader_output(reader, 0, 2) == VLW_OK);
    CHECK(vlw_reader_open_memory(reader, six.file, six.size) == VLW_OK && vlw_reader_channels(reader) == 2);
    CHECK(vlw_reader_output(reader, 0, 3) == VLW_UNSUPPORTED && vlw_reader_channels(reader) == 2);
    vlw_reader_close(reader);
    CHECK(vlw_reader_output(reader, 0, 3) == VLW_OK);
    CHECK(fails_with(reader, vlw_reader_open_memory(reader, six.file, six.size), VLW_UNSUPPORTED, 0, "", "3"));
    closed(reader);
    vlw_reader_free(reader);
    free_sound(&made), free_sound(&mono), free_sound(&six);
}

/* A module handle is kept, loaded or not. */
static void modules(const sound *made) {
    vlw_module *module = NULL;
    vlw_reader *reader = NULL;
    CHECK(vlw_module_new(&module) == VLW_OK && vlw_reader_new(module, &reader) == VLW_OK);
    CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_BAD_STATE);
    CHECK(vlw_module_load(module, NULL) == VLW_OK);
    vlw_module_free(module);
    CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK);
    CHECK(reads_as(reader, made->samples, 0, made->frames, 100, VLW_END));
    vlw_reader_free(reader);
}

static void told_of(vlw_reader *reader, const sound *made, int64_t frames, int64_t promised) {
    struct {
        vlw_format format;
        uint64_t later[2];
    } grown = {.format = {.size = sizeof grown}, .later = {42, 43}};
    const vlw_format *const format = &grown.format;
    CHECK(vlw_reader_format(reader, &grown.format) == VLW_OK && format->size == sizeof grown && grown.later[0] == 42 && grown.later[1] == 43);
    CHECK(format->rate == made->rate && format->channels == made->channels && format->bits == made->bits);
    CHECK(format->block_bytes == made->unit_bytes && format->channel_mask == made->mask && format->codec_tag == made->tag);
    CHECK(same(format->container, made->container) && same(format->codec, made->codec));
    CHECK(format->frames == frames && format->frames_promised == promised && vlw_reader_frames(reader) == frames);
    if (format->frames != frames || format->frames_promised != promised)
        fprintf(stderr, "  %lld of %lld, not %lld of %lld\n", (long long)format->frames, (long long)format->frames_promised, (long long)frames, (long long)promised);
    vlw_format small = {.size = sizeof small - 1, .rate = 7};
    CHECK(vlw_reader_format(reader, &small) == VLW_BAD_ARGUMENT && small.rate == 7 && vlw_reader_format(reader, NULL) == VLW_BAD_ARGUMENT);
}

/* Floats are the samples / 32768, and what lies behind the frames that came stays as it was. */
static void floats(vlw_reader *reader, const sound *made) {
    const size_t count = made->frames * made->channels;
    float *const block = malloc((count + 4) * sizeof *block);
    int16_t *const ints = malloc((count + 4) * sizeof *ints);
    size_t done = 0;
    for (size_t i = 0; i < count + 4; ++i) block[i] = 9.5F, ints[i] = 77;
    CHECK(vlw_reader_seek(reader, 0) == VLW_OK && vlw_reader_read_float(reader, block, made->frames + 1, &done) == VLW_END);
    CHECK(done == made->frames);
    int good = 1;
    for (size_t i = 0; i < count; ++i) good &= block[i] * 32768.0F == made->samples[i];
    CHECK(good && block[count] == 9.5F && block[count + 1] == 9.5F);
    CHECK(vlw_reader_seek(reader, 3) == VLW_OK && vlw_reader_read_int16(reader, ints, made->frames, NULL) == VLW_END);
    CHECK(ints[count - 3 * made->channels] == 77 && vlw_reader_read_int16(reader, ints, 1, &done) == VLW_END && done == 0 && ints[0] != 77);
    CHECK(vlw_reader_read_int16(reader, NULL, 1, &done) == VLW_BAD_ARGUMENT && vlw_reader_read_float(reader, NULL, 1, &done) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_read_int16(reader, NULL, 0, &done) == VLW_OK);
    free(block), free(ints);
}

static int is_mapped(const char *library) {
    char line[4096];
    int found = 0;
    FILE *const maps = fopen("/proc/self/maps", "r");
    while (!found && fgets(line, sizeof line, maps)) found = strstr(line, library) != NULL;
    fclose(maps);
    return found;
}

/* A look at a file takes its head alone; what is read afterwards is the same. Before anything is decoded. */
static void looks(void) {
    const sound_kind kTold[] = {PCM_16, PCM_24, FLOAT_32, A_LAW, IMA_ADPCM, MS_ADPCM, AIFF_24};
    vlw_reader *reader = NULL;
    CHECK(vlw_reader_decode_late(NULL, 1) == VLW_BAD_ARGUMENT);
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK && vlw_reader_decode_late(reader, 1) == VLW_OK);
    for (int decoded = 0; decoded < 2; ++decoded) {
        for (size_t i = 0; i < sizeof kTold / sizeof *kTold; ++i) {
            sound made = make_sound(kTold[i], 8000, 2, 40);
            s_where = made.name;
            const size_t cut = made.audio_bytes - 1;
            CHECK(vlw_reader_open_memory(reader, made.file, made.audio + cut) == VLW_OK);
            CHECK(vlw_reader_frames(reader) == (int64_t)frames_in(&made, cut));
            CHECK(decoded || !is_mapped("libavcodec"));
            CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK && vlw_reader_frames(reader) == (int64_t)made.frames);
            if (decoded) {
                CHECK(vlw_reader_seek(reader, 7) == VLW_OK && reads_as(reader, made.samples, 7, made.frames, 5, VLW_END));
                CHECK(kTold[i] == PCM_16 || is_mapped("libavcodec"));
            }
            free_sound(&made);
        }
    }
    vlw_reader_free(reader);
}

static void seeks(vlw_reader *reader, const sound *made) {
    const int64_t end = (int64_t)made->frames;
    const int64_t places[] = {0, 1, end / 2, 64, 65, 66, end - 1, 129, 130, 131, 132, end, 2, 67};
    CHECK(vlw_reader_seekable(reader) == 1);
    for (size_t i = 0; i < sizeof places / sizeof *places; ++i) {
        CHECK(vlw_reader_seek(reader, places[i]) == VLW_OK && vlw_reader_tell(reader) == places[i]);
        CHECK(reads_as(reader, made->samples, (size_t)places[i], made->frames, 1 + i * 37, VLW_END));
        CHECK(vlw_reader_tell(reader) == end);
    }
    CHECK(vlw_reader_seek(reader, 5) == VLW_OK && vlw_reader_seek(reader, -1) == VLW_BAD_ARGUMENT && vlw_reader_tell(reader) == 5);
    CHECK(vlw_reader_seek(reader, end + 1) == VLW_END && vlw_reader_tell(reader) == end && no_failure(reader));
    CHECK(vlw_reader_seek(reader, INT64_MAX) == VLW_END && vlw_reader_tell(reader) == end);
}

static void cuts(vlw_reader *reader, const sound *made) {
    const size_t unit = made->unit_bytes;
    const size_t kept[] = {0, 1, unit - 1, unit, unit + 1, 2 * unit + unit / 2, 2 * unit + 8 * made->channels, made->audio_bytes - 1};
    for (size_t i = 0; i < made->audio; ++i) {
        uint8_t *const head = malloc(i + 1); /* of its own: nothing after it can be read */
        memcpy(head + 1, made->file, i);
        const vlw_code code = vlw_reader_open_memory(reader, head + 1, i);
        CHECK(i < 4 ? code == VLW_NOT_AUDIO : code == VLW_DAMAGED || (i < 12 && code == VLW_NOT_AUDIO));
        CHECK(vlw_reader_error(reader)->text[0] && vlw_reader_channels(reader) == 0);
        free(head);
    }
    for (size_t i = 0; i < sizeof kept / sizeof *kept; ++i) {
        const size_t there = frames_in(made, kept[i]), size = made->audio + kept[i];
        const int lost = there < made->frames;
        for (int in_order = 0; in_order < 2; ++in_order) {
            const int before = s_failures;
            byte_stream from = {.bytes = made->file, .size = size, .in_order = in_order, .most = 7};
            const vlw_stream stream = as_stream(&from);
            CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK);
            told_of(reader, made, in_order ? VLW_UNKNOWN : (int64_t)there, (int64_t)made->frames);
            CHECK(reads_as(reader, made->samples, 0, there, 50, lost ? VLW_CUT : VLW_END));
            CHECK(!lost || (vlw_reader_error(reader)->code == VLW_CUT && vlw_reader_error(reader)->text[0]));
            CHECK(vlw_reader_seekable(reader) == !in_order);
            if (s_failures != before) fprintf(stderr, "  kept %zu, %d\n", kept[i], in_order);
            vlw_reader_close(reader);
        }
        CHECK(vlw_reader_open_memory(reader, made->file, size) == VLW_OK);
        CHECK(vlw_reader_seek(reader, (int64_t)there + 1) == VLW_END && vlw_reader_tell(reader) == (int64_t)there);
    }
}

/* A size of 0 or 0xFFFFFFFF with audio after it isn't told; "fact" may be 0 then. */
static void piped(vlw_reader *reader, const sound *made) {
    const uint32_t sizes[] = {0, UINT32_MAX};
    uint8_t *const file = malloc(made->size);
    for (size_t i = 0; i < 2; ++i) {
        memcpy(file, made->file, made->size);
        set_le32(file + 4, sizes[i]);
        set_le32(file + made->size_place, sizes[i]);
        for (size_t at = 12; made->tag == 0 && at < made->audio; ++at) /* of AIFF the count of frames, too */
            if (memcmp(file + at, "COMM", 4) == 0) set_le32(file + at + 10, sizes[i]);
        if (memcmp(file + made->audio - 20, "fact", 4) == 0) set_le32(file + made->audio - 12, sizes[i]);
        for (int in_order = 0; in_order < 2; ++in_order) {
            const int before = s_failures;
            byte_stream from = {.bytes = file, .size = made->audio + made->audio_bytes, .in_order = in_order};
            const vlw_stream stream = as_stream(&from);
            CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK);
            told_of(reader, made, in_order ? VLW_UNKNOWN : (int64_t)made->frames, VLW_UNKNOWN);
            CHECK(reads_as(reader, made->samples, 0, made->frames, 1000, VLW_END));
            CHECK(in_order || vlw_reader_seek(reader, 3) == VLW_OK);
            CHECK(in_order || reads_as(reader, made->samples, 3, made->frames, 1000, VLW_END));
            CHECK(!in_order || vlw_reader_seek(reader, 0) == VLW_NOT_SEEKABLE);
            if (s_failures != before) fprintf(stderr, "  size %u, %d\n", sizes[i], in_order);
            vlw_reader_close(reader);
        }
    }
    free(file);
}

/* A source that becomes shorter while it is read ends early, also where its head promises nothing. */
static void shrinks(vlw_reader *reader) {
    for (int told = 0; told < 2; ++told) {
        sound made = make_sound(told ? PCM_24 : PCM_16, 44100, 2, 60000);
        if (!told) set_le32(made.file + made.size_place, UINT32_MAX);
        byte_stream from = {.bytes = made.file, .size = made.size};
        const vlw_stream stream = as_stream(&from);
        CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK && vlw_reader_frames(reader) == 60000);
        from.size = made.audio + 40000 * made.unit_bytes;
        CHECK(reads_as(reader, made.samples, 0, 40000, 5000, VLW_CUT) && vlw_reader_error(reader)->code == VLW_CUT);
        vlw_reader_close(reader);
        free_sound(&made);
    }
}

static void kinds(vlw_reader *reader) {
    char where[64];
    for (int kind = 0; kind < SOUND_KINDS; ++kind) {
        for (uint32_t channels = 1; channels <= 6; channels += channels == 1 ? 1 : 4) {
            if (channels > 2 && (kind == IMA_ADPCM || kind == MS_ADPCM)) continue;
            sound made = make_sound((sound_kind)kind, 44100, channels, kind == IMA_ADPCM || kind == MS_ADPCM ? 40 : 1500);
            snprintf(where, sizeof where, "%s, %u channels", made.name, channels);
            s_where = where;
            CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK);
            told_of(reader, &made, (int64_t)made.frames, (int64_t)made.frames);
            CHECK(vlw_reader_tell(reader) == 0 && reads_as(reader, made.samples, 0, made.frames, 999, VLW_END) && no_failure(reader));
            if (channels != 1) seeks(reader, &made);
            floats(reader, &made);
            if (channels == 2) cuts(reader, &made);
            if (channels == 2) piped(reader, &made);
            free_sound(&made);
            if (s_failures > 20) return;
        }
    }
}

int main(void) {
    vlw_reader *reader = NULL;
    sound made = make_sound(PCM_16, 8000, 1, 300);
    nothing();
    looks();
    handles();
    modules(&made);
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK);
    shrinks(reader);
    kinds(reader);
    vlw_reader_free(reader);
    free_sound(&made);
    return s_failures ? 1 : 0;
}
