/* Other rates and channels: exact lengths, the same frames from every place and in every division, and the mixes. */
#define _GNU_SOURCE
#include <math.h>

#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"

static char s_text[160];
static int16_t *whole(vlw_reader *reader, size_t *frames, size_t block) {
    const int64_t told = vlw_reader_frames(reader);
    int16_t *const read = malloc(((size_t)told + 100) * vlw_reader_channels(reader) * sizeof *read);
    const vlw_code code = read_rest(reader, read, (size_t)told + 100, block, frames);
    CHECK(code == VLW_END && told == (int64_t)*frames);
    if (told != (int64_t)*frames) fprintf(stderr, "  told %lld, got %zu in blocks of %zu, then %d: %s\n", (long long)told, *frames, block, code, vlw_reader_error(reader)->text);
    return read;
}

static void converted(vlw_reader *reader, const sound *made, uint32_t rate, uint32_t channels) {
    snprintf(s_text, sizeof s_text, "%s, %zu frames, %u to %u, %u to %u channels", made->name, made->frames, made->rate, rate, made->channels, channels);
    CHECK(set_output(reader, rate, channels) == VLW_OK && vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK);
    size_t frames = 0, again = 0;
    int16_t *const straight = whole(reader, &frames, SIZE_MAX);
    /* An output frame for each of its times that lies before the source's end. */
    const double expected = (double)made->frames * rate / made->rate;
    CHECK(fabs((double)frames - ceil(expected)) <= 1 + expected / 1e4);
    const size_t blocks[] = {1, 160, 4097};
    for (size_t i = frames > 10000 ? 2 : 0; i < 3; ++i) {
        CHECK(vlw_reader_seek(reader, 0) == VLW_OK);
        int16_t *const other = whole(reader, &again, blocks[i]);
        CHECK(again == frames && memcmp(straight, other, frames * channels * sizeof *other) == 0);
        free(other);
    }
    for (size_t i = 0; i < 14 && frames > 0; ++i) {
        const size_t place = i < 3 ? i * 17 % frames : i > 10 ? frames - frames / 50 * (13 - i) : i * 7919 * 31 % frames;
        const size_t wanted = frames - place < 300 ? frames - place : 300;
        int16_t *const part = malloc((wanted + 1) * channels * sizeof *part);
        CHECK(vlw_reader_seek(reader, (int64_t)place) == VLW_OK && vlw_reader_tell(reader) == (int64_t)place);
        CHECK(read_rest(reader, part, wanted, 1 + i * 11, &again) == VLW_OK && again == wanted);
        CHECK(memcmp(straight + place * channels, part, wanted * channels * sizeof *part) == 0);
        if (frames - place == wanted) CHECK(vlw_reader_read_int16(reader, part, 1, &again) == VLW_END && again == 0);
        free(part);
    }
    CHECK(vlw_reader_seek(reader, (int64_t)frames + 5) == VLW_END && vlw_reader_tell(reader) == (int64_t)frames);
    byte_stream from = {.bytes = made->file, .size = made->size, .in_order = 1, .most = 1000};
    const vlw_stream stream = as_stream(&from);
    CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK && vlw_reader_frames(reader) == VLW_UNKNOWN);
    CHECK(reads_as(reader, straight, 0, frames, 1000, VLW_END));
    vlw_reader_close(reader);
    free(straight);
}

static void rates(vlw_reader *reader) {
    static const uint32_t kPairs[][2] = {{44100, 48000}, {48000, 44100}, {44100, 22050}, {8000, 48000}, {11025, 44100}, {96000, 44100},
                                         {44100, 47999}, {192000, 8000}, {1000, 768000}, {768000, 1000}, {44100, 44101}, {32000, 44100}, {12345, 54321}};
    static const uint32_t kChannels[][2] = {{1, 1}, {2, 2}, {6, 2}, {6, 6}, {2, 1}, {1, 2}, {6, 1}, {1, 6}};
    static const sound_kind kKinds[] = {PCM_16, PCM_24, IMA_ADPCM, PCM_8};
    for (size_t i = 0; i < sizeof kPairs / sizeof *kPairs; ++i) {
        for (size_t k = i % 2; k < sizeof kChannels / sizeof *kChannels; k += 2) {
            sound_kind kind = kKinds[(i + k / 2) % 4];
            if (kind == IMA_ADPCM && kChannels[k][0] > 2) kind = PCM_24;
            const size_t units = (kPairs[i][1] > 100000 ? 60 : 2500) / (kind == IMA_ADPCM ? 65 : 1);
            sound made = make_sound(kind, kPairs[i][0], kChannels[k][0], units);
            converted(reader, &made, kPairs[i][1], kChannels[k][1]);
            free_sound(&made);
        }
    }
    /* So short that the filter isn't filled, and around the sizes where it is. */
    const size_t lengths[] = {0, 1, 2, 15, 16, 17, 31, 32, 33, 47, 48, 49, 63, 64, 65, 130};
    for (size_t i = 0; i < sizeof lengths / sizeof *lengths; ++i) {
        sound made = make_sound(i % 2 ? PCM_24 : PCM_16, 44100, 2, lengths[i]);
        converted(reader, &made, 48000, 2);
        converted(reader, &made, 8000, 1);
        free_sound(&made);
    }
}

static void mixes(vlw_reader *reader) {
    const sound_kind kinds[] = {PCM_16, EXTENSIBLE_24};
    const double side = sqrt(0.5), scale = 1 / (1 + 2 * side);
    for (size_t k = 0; k < 2; ++k) {
        sound made = make_sound(kinds[k], 48000, 6, 5000), stereo = make_sound(PCM_16, 48000, 2, 5000);
        size_t frames = 0;
        int wrong = 0;
        snprintf(s_text, sizeof s_text, "mixes of %s", made.name);
        CHECK(set_output(reader, 0, 2) == VLW_OK && vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK);
        int16_t *const two = whole(reader, &frames, 700);
        for (size_t i = 0; i < frames; ++i) {
            const int16_t *const in = made.samples + 6 * i;
            for (int c = 0; c < 2; ++c) wrong += fabs((in[c] + side * in[2] + side * in[4 + c]) * scale - two[2 * i + (size_t)c]) > 0.5 + 1e-9;
        }
        CHECK(frames == 5000 && wrong == 0);
        /* At another rate it is the mix that is converted. */
        for (size_t i = 0; i < 2 * frames; ++i) stereo.file[stereo.audio + 2 * i] = (uint8_t)two[i], stereo.file[stereo.audio + 2 * i + 1] = (uint8_t)(two[i] >> 8);
        CHECK(set_output(reader, 44100, 2) == VLW_OK && vlw_reader_open_memory(reader, stereo.file, stereo.size) == VLW_OK);
        int16_t *const slower = whole(reader, &frames, 700);
        CHECK(vlw_reader_open_memory(reader, made.file, made.size) == VLW_OK && reads_as(reader, slower, 0, frames, 200, VLW_END));
        free(two), free(slower), free_sound(&made), free_sound(&stereo);
    }
    const uint32_t counts[] = {2, 3, 6, 255};
    for (size_t k = 0; k < 4; ++k) {
        sound many = make_sound(k % 2 ? PCM_16 : PCM_24, 48000, counts[k], 500), one = make_sound(PCM_24, 48000, 1, 500);
        size_t frames = 0;
        int wrong = 0;
        snprintf(s_text, sizeof s_text, "%u channels", counts[k]);
        CHECK(set_output(reader, 0, 1) == VLW_OK && vlw_reader_open_memory(reader, many.file, many.size) == VLW_OK);
        int16_t *const mean = whole(reader, &frames, 77);
        for (size_t i = 0; i < frames; ++i) {
            double sum = 0;
            for (size_t c = 0; c < counts[k]; ++c) sum += many.samples[i * counts[k] + c];
            /* The converter rounds each channel's part by itself. */
            wrong += fabs(sum / counts[k] - mean[i]) > counts[k] + 1;
        }
        CHECK(frames == 500 && wrong == 0);
        free(mean);
        CHECK(set_output(reader, 0, counts[k]) == VLW_OK && vlw_reader_open_memory(reader, one.file, one.size) == VLW_OK);
        int16_t *const each = whole(reader, &frames, 77);
        for (size_t i = 0; i < frames * counts[k]; ++i)
            wrong += abs(each[i] - one.samples[i / counts[k]]) > 1 || each[i] != each[i - i % counts[k]];
        CHECK(frames == 500 && wrong == 0);
        free(each), free_sound(&many), free_sound(&one);
    }
    /* What isn't 5.1 isn't mixed to two. */
    sound made = make_sound(EXTENSIBLE_16, 48000, 6, 10);
    snprintf(s_text, sizeof s_text, "speakers");
    const struct { uint32_t mask; vlw_code expected; } masks[] = {{0x3F, VLW_OK}, {0x60F, VLW_OK}, {0, VLW_OK}, {0x137, VLW_UNSUPPORTED}, {0xFF, VLW_UNSUPPORTED}};
    vlw_conversion stereo = {.size = sizeof stereo, .channels = 2};
    vlw_converter *converter = NULL;
    CHECK(vlw_converter_new(NULL, &converter) == VLW_OK && set_output(reader, 0, 2) == VLW_OK);
    for (size_t i = 0; i < sizeof masks / sizeof *masks; ++i) {
        set_le32(made.file + 40, masks[i].mask);
        CHECK(vlw_reader_open_memory(reader, made.file, made.size) == masks[i].expected);
        put_file("speakers.wav", (bytes){made.file, made.size});
        CHECK(vlw_converter_run(converter, "speakers.wav", "stereo.wav", &stereo) == masks[i].expected);
        CHECK((remove("stereo.wav") == 0) == (masks[i].expected == VLW_OK) && remove("speakers.wav") == 0);
    }
    vlw_converter_free(converter);
    free_sound(&made);
    CHECK(set_output(reader, 0, 0) == VLW_OK);
}

int main(void) {
    vlw_reader *reader = NULL;
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK);
    s_where = s_text;
    mixes(reader);
    rates(reader);
    vlw_reader_free(reader);
    return s_failures ? 1 : 0;
}
