#define _GNU_SOURCE
#include "tests/capi/AudioFiles.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- bytes ---- */

static void put(sound *made, const void *bytes, size_t count) {
    const size_t step = 1 << 20; /* room grows by it */
    if (made->size % step == 0 || (made->size + count) / step != made->size / step)
        made->file = realloc(made->file, (made->size + count) / step * step + step + 1);
    memcpy(made->file + made->size, bytes, count);
    made->size += count;
}

static void put_number(sound *made, uint64_t value, int bytes, int big) {
    uint8_t out[8];
    for (int i = 0; i < bytes; ++i) out[big ? bytes - 1 - i : i] = (uint8_t)(value >> (8 * i));
    put(made, out, (size_t)bytes);
}

static uint32_t noise(uint32_t *state) {
    *state = *state * 1664525u + 1013904223u;
    return *state >> 8;
}

static int limit(int value) { return value > 32767 ? 32767 : value < -32768 ? -32768 : value; }

/* ---- codecs: bytes to samples ---- */

/* ITU-T G.711 */
static int16_t from_a_law(uint8_t code) {
    const int bits = code ^ 0x55, segment = (bits >> 4) & 7;
    int value = ((bits & 15) << 4) + 8;
    if (segment > 0) value = (value + 0x100) << (segment - 1);
    return (int16_t)(bits & 0x80 ? value : -value);
}

static int16_t from_mu_law(uint8_t code) {
    const int bits = ~code & 0xFF, value = ((((bits & 15) << 3) + 0x84) << ((bits >> 4) & 7)) - 0x84;
    return (int16_t)(bits & 0x80 ? -value : value);
}

static const int s_ima_steps[89] = {
    7, 8, 9, 10, 11, 12, 13, 14, 16, 17, 19, 21, 23, 25, 28, 31, 34, 37, 41, 45, 50, 55, 60, 66, 73, 80, 88, 97, 107, 118, 130,
    143, 157, 173, 190, 209, 230, 253, 279, 307, 337, 371, 408, 449, 494, 544, 598, 658, 724, 796, 876, 963, 1060, 1166, 1282,
    1411, 1552, 1707, 1878, 2066, 2272, 2499, 2749, 3024, 3327, 3660, 4026, 4428, 4871, 5358, 5894, 6484, 7132, 7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
static const int s_ima_moves[8] = {-1, -1, -1, -1, 2, 4, 6, 8};

static void from_ima(const uint8_t *block, size_t bytes, int channels, int16_t *out) {
    for (int c = 0; c < channels; ++c) {
        int value = (int16_t)(block[4 * c] | block[4 * c + 1] << 8), index = block[4 * c + 2];
        size_t at = (size_t)c;
        out[at] = (int16_t)value;
        for (size_t group = (size_t)(4 * channels + 4 * c); group < bytes; group += (size_t)(4 * channels)) {
            for (int n = 0; n < 8; ++n) {
                const int nibble = block[group + (size_t)(n / 2)] >> (n % 2 * 4) & 15;
                const int change = (2 * (nibble & 7) + 1) * s_ima_steps[index] / 8;
                value = limit(value + (nibble & 8 ? -change : change));
                index += s_ima_moves[nibble & 7];
                index = index < 0 ? 0 : index > 88 ? 88 : index;
                out[at += (size_t)channels] = (int16_t)value;
            }
        }
    }
}

static const int s_ms_adapt[16] = {230, 230, 230, 230, 307, 409, 512, 614, 768, 614, 512, 409, 307, 230, 230, 230};
static const int s_ms_first[7] = {256, 512, 0, 192, 240, 460, 392}, s_ms_second[7] = {0, -256, 0, 64, 0, -208, -232};

static int le16(const uint8_t *at) { return (int16_t)(at[0] | at[1] << 8); }

static void from_ms(const uint8_t *block, size_t bytes, int channels, int16_t *out) {
    int row[2], delta[2], last[2], before[2];
    for (int c = 0; c < channels; ++c) {
        row[c] = block[c];
        delta[c] = le16(block + channels + 2 * c);
        last[c] = le16(block + 3 * channels + 2 * c);
        before[c] = le16(block + 5 * channels + 2 * c);
        out[c] = (int16_t)before[c];
        out[channels + c] = (int16_t)last[c];
    }
    out += 2 * channels;
    for (size_t n = 0; n < (bytes - (size_t)(7 * channels)) * 2; ++n) {
        const int c = channels == 2 ? (int)(n & 1) : 0, nibble = block[(size_t)(7 * channels) + n / 2] >> (n % 2 ? 0 : 4) & 15;
        const int guess = (last[c] * s_ms_first[row[c]] + before[c] * s_ms_second[row[c]]) / 256;
        before[c] = last[c];
        last[c] = limit(guess + (nibble & 8 ? nibble - 16 : nibble) * delta[c]);
        delta[c] = s_ms_adapt[nibble] * delta[c] >> 8;
        if (delta[c] < 16) delta[c] = 16;
        *out++ = (int16_t)last[c];
    }
}

/* ---- kinds ---- */

typedef enum { PLAIN, LAW_A, LAW_MU, IMA, MS } coding;
static const struct kind {
    const char *name, *container, *codec;
    uint32_t file_tag, tag, bits;
    coding how;
    const char *aifc; /* codec tag; "" for AIFF; NULL for WAV */
} s_kinds[SOUND_KINDS] = {
    {"8 bits", "WAV", "PCM", 1, 1, 8, PLAIN, NULL},
    {"16 bits", "WAV", "PCM", 1, 1, 16, PLAIN, NULL},
    {"24 bits", "WAV", "PCM", 1, 1, 24, PLAIN, NULL},
    {"32 bits", "WAV", "PCM", 1, 1, 32, PLAIN, NULL},
    {"float", "WAV", "IEEE float", 3, 3, 32, PLAIN, NULL},
    {"extensible 16", "WAV", "PCM", 0xFFFE, 1, 16, PLAIN, NULL},
    {"extensible 24", "WAV", "PCM", 0xFFFE, 1, 24, PLAIN, NULL},
    {"A-law", "WAV", "A-law", 6, 6, 8, LAW_A, NULL},
    {"mu-law", "WAV", "mu-law", 7, 7, 8, LAW_MU, NULL},
    {"IMA", "WAV", "IMA ADPCM", 17, 17, 4, IMA, NULL},
    {"MS", "WAV", "MS ADPCM", 2, 2, 4, MS, NULL},
    {"AIFF 8", "AIFF", "PCM", 0, 0, 8, PLAIN, ""},
    {"AIFF 16", "AIFF", "PCM", 0, 0, 16, PLAIN, ""},
    {"AIFF 24", "AIFF", "PCM", 0, 0, 24, PLAIN, ""},
    {"sowt", "AIFF", "PCM", 0, 0, 16, PLAIN, "sowt"},
    {"ulaw", "AIFF", "mu-law", 0, 0, 8, LAW_MU, "ulaw"},
};

/* A sample whose value 16 bits hold exactly, at any width. */
static void put_plain(sound *made, const struct kind *kind, uint32_t *state, int16_t *out) {
    const int big = kind->aifc && !kind->aifc[0];
    const int16_t value = (int16_t)(kind->bits == 8 ? (noise(state) & 0xFF00) - 0x8000 : noise(state));
    *out = value;
    if (kind->tag == 3) {
        const float scaled = (float)value / 32768.0F;
        uint32_t bits;
        memcpy(&bits, &scaled, sizeof bits);
        put_number(made, bits, 4, 0);
    } else if (kind->bits == 8) {
        put_number(made, (uint64_t)(kind->aifc ? value >> 8 : (value >> 8) + 128), 1, 0);
    } else {
        put_number(made, (uint64_t)(int64_t)value << (kind->bits - 16), (int)kind->bits / 8, big);
    }
}

static void put_unit(sound *made, const struct kind *kind, uint32_t *state, int16_t *out) {
    const size_t start = made->size;
    const uint32_t channels = made->channels;
    if (kind->how == PLAIN) {
        for (uint32_t c = 0; c < channels; ++c) put_plain(made, kind, state, out + c);
        return;
    }
    for (size_t i = 0; i < made->unit_bytes; ++i) {
        const uint32_t byte = noise(state);
        /* Of MS ADPCM only nibbles that let the step shrink: it would grow beyond 32 bits. */
        put_number(made, kind->how == MS ? (byte & 0x33) + (byte & 0x44) * 3 : byte, 1, 0);
    }
    uint8_t *const block = made->file + start;
    for (uint32_t c = 0; c < channels; ++c) {
        if (kind->how == IMA) {
            block[4 * c + 2] %= 89;
            block[4 * c + 3] = 0;
        }
        if (kind->how == MS) {
            block[c] %= 7;
            block[channels + 2 * c + 1] = 1; /* a step of 256 to 511 */
        }
        if (kind->how == LAW_A) out[c] = from_a_law(block[c]);
        if (kind->how == LAW_MU) out[c] = from_mu_law(block[c]);
    }
    if (kind->how == IMA) from_ima(block, made->unit_bytes, (int)channels, out);
    if (kind->how == MS) from_ms(block, made->unit_bytes, (int)channels, out);
}

static void put_wave_head(sound *made, const struct kind *kind, size_t frames) {
    static const uint8_t kRest[14] = {0, 0, 0, 0, 16, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const int extensible = kind->file_tag == 0xFFFE, blocks = kind->how == IMA || kind->how == MS;
    const uint32_t extra = extensible ? 22 : kind->how == IMA ? 2 : kind->how == MS ? 32 : 0;
    const int has_fact = kind->file_tag != 1 && !extensible;
    put(made, "RIFF\0\0\0\0WAVEfmt ", 16);
    put_number(made, 16 + (has_fact || extra ? 2 + extra : 0), 4, 0);
    put_number(made, kind->file_tag, 2, 0);
    put_number(made, made->channels, 2, 0);
    put_number(made, made->rate, 4, 0);
    put_number(made, blocks ? made->rate * made->unit_bytes / made->unit_frames : made->rate * made->unit_bytes, 4, 0);
    put_number(made, made->unit_bytes, 2, 0);
    put_number(made, kind->bits, 2, 0);
    if (has_fact || extra) put_number(made, extra, 2, 0);
    if (extensible) {
        made->mask = made->channels == 1 ? 4 : made->channels == 2 ? 3 : 0x3F;
        put_number(made, kind->bits, 2, 0);
        put_number(made, made->mask, 4, 0);
        put_number(made, kind->tag, 2, 0);
        put(made, kRest, sizeof kRest);
    }
    if (blocks) put_number(made, made->unit_frames, 2, 0);
    if (kind->how == MS) {
        put_number(made, 7, 2, 0);
        for (int i = 0; i < 7; ++i) {
            put_number(made, (uint64_t)(int64_t)s_ms_first[i], 2, 0);
            put_number(made, (uint64_t)(int64_t)s_ms_second[i], 2, 0);
        }
    }
    if (has_fact) {
        put(made, "fact\4\0\0", 8);
        put_number(made, frames, 4, 0);
    }
    put(made, "data\0\0\0", 8);
}

static void put_aiff_head(sound *made, const struct kind *kind, size_t frames) {
    const int tagged = kind->aifc[0] != 0;
    put(made, tagged ? "FORM\0\0\0\0AIFC" : "FORM\0\0\0\0AIFF", 12);
    if (tagged) put(made, "FVER\0\0\0\4\xA2\x80\x51\x40", 12);
    put(made, "COMM", 4);
    put_number(made, tagged ? 24 : 18, 4, 1);
    put_number(made, made->channels, 2, 1);
    put_number(made, frames, 4, 1);
    put_number(made, kind->how == LAW_MU ? 16 : kind->bits, 2, 1);
    int top = 31; /* the rate's highest bit, as 80-bit numbers have it */
    while (!(made->rate >> top & 1)) --top;
    put_number(made, 16383 + (uint64_t)top, 2, 1);
    put_number(made, (uint64_t)made->rate << (63 - top), 8, 1);
    if (tagged) put(made, kind->aifc, 4), put(made, "\0", 2);
    put(made, "SSND\0\0\0\0\0\0\0\0\0\0\0", 16);
}

sound make_sound(sound_kind of, uint32_t rate, uint32_t channels, size_t units) {
    const struct kind *const kind = &s_kinds[of];
    sound made = {.name = kind->name, .container = kind->container, .codec = kind->codec, .tag = kind->tag, .bits = kind->bits,
                  .rate = rate, .channels = channels, .unit_frames = 1};
    made.unit_bytes = channels * kind->bits / 8;
    if (kind->how == IMA) made.unit_bytes = 36 * channels, made.unit_frames = 65;
    if (kind->how == MS) made.unit_bytes = 39 * channels, made.unit_frames = 66;
    made.frames = units * made.unit_frames;
    made.samples = calloc(made.frames * channels + 1, sizeof *made.samples);
    (kind->aifc ? put_aiff_head : put_wave_head)(&made, kind, made.frames);
    made.audio = made.size;
    made.size_place = made.size - (kind->aifc ? 12 : 4);
    uint32_t state = 17 + of;
    for (size_t i = 0; i < units; ++i) put_unit(&made, kind, &state, made.samples + i * made.unit_frames * channels);
    made.audio_bytes = made.size - made.audio;
    if (made.size & 1) made.file[made.size++] = 0;
    if (kind->aifc) {
        set_be32(made.file + 4, (uint32_t)made.size - 8);
        set_be32(made.file + made.size_place, (uint32_t)made.audio_bytes + 8);
    } else {
        set_le32(made.file + 4, (uint32_t)made.size - 8);
        set_le32(made.file + made.size_place, (uint32_t)made.audio_bytes);
    }
    return made;
}

void free_sound(sound *made) {
    free(made->file);
    free(made->samples);
}

size_t frames_in(const sound *made, size_t bytes) {
    const size_t rest = bytes % made->unit_bytes, channels = made->channels;
    size_t frames = bytes / made->unit_bytes * made->unit_frames;
    if (made->tag == 17 && rest >= 4 * channels) frames += 1 + (rest - 4 * channels) / (4 * channels) * 8;
    if (made->tag == 2 && rest >= 7 * channels) frames += 2 + (rest - 7 * channels) * 2 / channels;
    return frames;
}

/* ---- layouts ---- */

const wave kWaves[WAVES] = {{PCM_8, 22050, 1},    {PCM_16, 44100, 2},        {PCM_24, 48000, 2}, {PCM_32, 96000, 1},
                            {FLOAT_32, 44100, 2}, {EXTENSIBLE_16, 48000, 6}, {A_LAW, 8000, 1},   {MU_LAW, 11025, 2},
                            {IMA_ADPCM, 22050, 2}, {EXTENSIBLE_24, 192000, 2}};

const char *name_of(const wave *of) { return s_kinds[of->kind].name; }
int is_coded(const wave *of) { return of->kind == IMA_ADPCM || of->kind == MS_ADPCM; }

bytes make_entries(const char *entries) {
    bytes made = {0};
    while (entries && *entries) {
        const char *const end = strchrnul(entries, '|');
        bytes content = {0};
        add(&content, entries + 5, (size_t)(end - entries) - 5);
        if (entries[4] == '=') add(&content, "", 1);
        add_chunk(&made, entries, content.at, content.size, 0);
        free(content.at);
        entries = *end ? end + 1 : end;
    }
    return made;
}

static void add_list(bytes *file, const char *type, const char *entries) {
    bytes list = {0}, content = make_entries(entries);
    add(&list, type, 4);
    add(&list, content.at, content.size);
    add_chunk(file, "LIST", list.at, list.size, 0);
    free(list.at), free(content.at);
}

static void add_audio(bytes *file, const sound *made, char how) {
    const uint32_t size = (uint32_t)made->audio_bytes + (how == 'o');
    uint8_t *const audio = calloc(1, size + 1);
    memcpy(audio, made->file + made->audio, made->audio_bytes);
    const size_t place = file->size + 4;
    add_chunk(file, "data", audio, size, how == 'p' ? UINT32_MAX : how == 'c' ? size + 1000 : 0);
    if (how == 'z') set_le32(file->at + place, 0);
    free(audio);
}

bytes make_wave(const wave *of, const char *layout, const char *entries, size_t units) {
    static const char kFiller[602];
    sound made = make_sound(of->kind, of->rate, of->channels, units);
    uint8_t *const fact = made.file + made.audio - 12;
    if (strchr(layout, 'c') && memcmp(fact - 8, "fact", 4) == 0)
        set_le32(fact, (uint32_t)((units + 1000 / made.unit_bytes) * made.unit_frames));
    bytes file = {0};
    add(&file, "RIFF\0\0\0\0WAVE", 12);
    for (; *layout; ++layout) {
        if (*layout == 'f') add(&file, made.file + 12, made.audio - 20);
        if (strchr("dpzco", *layout)) add_audio(&file, &made, *layout);
        if (*layout == 'l') add_list(&file, "INFO", entries);
        if (*layout == 'i') add_list(&file, "INFO", "INAM=Other");
        if (*layout == 'a') add_list(&file, "adtl", "labl~1234mark");
        if (*layout == 'j') add_chunk(&file, "JUNK", kFiller, 3, 0);
        if (*layout == 'b') add_chunk(&file, "bext", kFiller, sizeof kFiller, 0);
        if (*layout == 't') add(&file, "\1\2\3\4\5\6\7", 7);
    }
    set_le32(file.at + 4, (uint32_t)file.size - 8);
    free_sound(&made);
    return file;
}

bytes entries_of(bytes file) {
    bytes found = {0};
    for (size_t at = 12; at + 12 <= file.size;) {
        const size_t size = number_at(file, at + 4);
        if (memcmp(file.at + at, "LIST", 4) == 0 && memcmp(file.at + at + 8, "INFO", 4) == 0 && at + 8 + size <= file.size) {
            found.size = 0;
            add(&found, file.at + at + 12, size - 4);
        }
        at += 8 + size + (size & 1);
    }
    return found;
}

bytes make_aiff(uint32_t channels, uint32_t frames) {
    static const char kFront[] = "NAME\0\0\0\6A nameAUTH\0\0\0\11An author", kBack[] = "ANNO\0\0\0\6A note";
    const size_t common = 12 + 26; /* ends there */
    sound made = make_sound(AIFF_16, 44100, channels, frames);
    bytes file = {0};
    add(&file, made.file, common);
    add(&file, kFront, sizeof kFront); /* with its pad byte */
    add(&file, made.file + common, made.size - common);
    add(&file, kBack, sizeof kBack - 1);
    set_be32(file.at + 4, (uint32_t)file.size - 8);
    free_sound(&made);
    return file;
}

/* ---- reading ---- */

int told(const vlw_error *error, vlw_code code, vlw_code expected, int system, const char *path) {
    const int good = code == expected && error->code == expected && (system < 0 || error->system == system) && error->text[0] && (!path || strcmp(error->path, path) == 0);
    if (!good) fprintf(stderr, "  %d, not %d; %d of %d \"%s\" \"%s\"\n", code, expected, error->code, error->system, error->text, error->path);
    return good;
}

static int is_value(vlw_tags *tags, const char *keyword, const char *value) {
    const char *const found = vlw_tags_get(tags, keyword);
    const int good = found && value ? strcmp(found, value) == 0 : found == value;
    if (!good) fprintf(stderr, "  %s is \"%s\"\n", keyword, found ? found : "none");
    return good;
}

int tag_is(const char *path, const char *keyword, const char *value) {
    vlw_reader *reader = NULL;
    vlw_editor *editor = NULL;
    vlw_tags *tags = NULL;
    int good = vlw_reader_new(NULL, &reader) == VLW_OK && vlw_tags_new(&tags) == VLW_OK && vlw_editor_new(NULL, &editor) == VLW_OK;
    good = good && vlw_reader_open(reader, path) == VLW_OK && vlw_reader_tags(reader, tags) == VLW_OK && is_value(tags, keyword, value);
    vlw_reader_free(reader);
    good = good && vlw_editor_open(editor, path) == VLW_OK && is_value(vlw_editor_tags(editor), keyword, value);
    vlw_editor_free(editor);
    vlw_tags_free(tags);
    return good;
}

vlw_code set_output(vlw_reader *reader, uint32_t rate, uint32_t channels) {
    vlw_reader_close(reader);
    return vlw_reader_output(reader, rate, channels);
}

vlw_code read_rest(vlw_reader *reader, int16_t *frames, size_t most, size_t block, size_t *got) {
    const uint32_t channels = vlw_reader_channels(reader);
    vlw_code code = VLW_OK;
    for (*got = 0; code == VLW_OK && *got < most;) {
        size_t done = 77;
        const size_t wanted = block < most - *got ? block : most - *got;
        code = vlw_reader_read_int16(reader, frames + *got * channels, wanted, &done);
        if (done > wanted || (code == VLW_OK) != (done == wanted)) return VLW_FAILED;
        *got += done;
        if (vlw_reader_tell(reader) < (int64_t)*got) return VLW_FAILED;
    }
    return code;
}

int reads_as(vlw_reader *reader, const int16_t *frames, size_t start, size_t count, size_t block, vlw_code end) {
    const uint32_t channels = vlw_reader_channels(reader);
    const size_t most = count - start + 100000;
    int16_t *const read = malloc(most * channels * sizeof *read);
    size_t got = 0;
    const vlw_code code = read_rest(reader, read, most, block, &got);
    int good = code == end && got == count - start;
    if (!good) fprintf(stderr, "  ended with %d after %zu of %zu frames\n", code, got, count - start);
    for (size_t i = 0; good && i < got * channels; ++i) {
        good = read[i] == frames[start * channels + i];
        if (!good) fprintf(stderr, "  sample %zu is %d, not %d\n", i, read[i], frames[start * channels + i]);
    }
    free(read);
    return good;
}

/* ---- the stream ---- */

static int fails(const byte_stream *from, int count, int first) {
    return first != 0 && count >= first && count < first + (from->fail_for ? from->fail_for : 1);
}

static int64_t failure_of(const byte_stream *from) {
    return from->odd_answer ? from->odd_answer : -(from->failure ? from->failure : EIO);
}

static int64_t read_bytes(void *user, void *buffer, size_t count) {
    byte_stream *const from = user;
    if (atomic_fetch_add(&from->inside, 1) != 0 || from->closes) ++from->overlaps;
    int64_t answer;
    if (fails(from, ++from->reads, from->fail_read)) {
        answer = failure_of(from);
    } else {
        if (from->most && count > from->most) count = from->most;
        if (from->place >= from->size) count = 0;
        if (count > from->size - from->place) count = from->size - from->place;
        memcpy(buffer, from->bytes + from->place, count);
        from->place += count;
        answer = (int64_t)count;
    }
    atomic_fetch_sub(&from->inside, 1);
    return answer;
}

static int64_t seek_bytes(void *user, int64_t offset, int whence) {
    byte_stream *const from = user;
    if (atomic_fetch_add(&from->inside, 1) != 0 || from->closes) ++from->overlaps;
    int64_t answer = offset + (int64_t)(whence == SEEK_CUR ? from->place : whence == SEEK_END ? from->size : 0);
    if (fails(from, ++from->seeks, from->fail_seek))
        answer = failure_of(from);
    else if (answer < 0)
        answer = -EINVAL;
    else
        from->place = (size_t)answer;
    atomic_fetch_sub(&from->inside, 1);
    return answer;
}

static void close_bytes(void *user) {
    byte_stream *const from = user;
    if (atomic_fetch_add(&from->inside, 1) != 0) ++from->overlaps;
    ++from->closes;
    atomic_fetch_sub(&from->inside, 1);
}

vlw_stream as_stream(byte_stream *from) {
    return (vlw_stream){.size = sizeof(vlw_stream), .user = from, .read = read_bytes,
                        .seek = from->in_order ? NULL : seek_bytes, .close = close_bytes};
}
