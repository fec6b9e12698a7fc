/* A source whose n-th call fails: a failure that is told, never an end, with good frames before it; and reading on gives the
 * audio that would have come. Also of files, whose reads this program makes fail. */
#define _GNU_SOURCE
#include <errno.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/capi/AudioFiles.h"
#include "tests/capi/Check.h"

/* The library's reads of files come here. */
enum { kFileFailures = 5 };
static atomic_int s_file_reads, s_fail_file_read; /* so many of them, from this one on; 0: none */
ssize_t pread(int number, void *buffer, size_t count, off_t place);
ssize_t pread(int number, void *buffer, size_t count, off_t place) {
    const int call = atomic_fetch_add(&s_file_reads, 1) + 1, first = atomic_load(&s_fail_file_read);
    if (first != 0 && call >= first && call < first + kFileFailures) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, number, buffer, count < 3000 ? count : 3000, place);
}
ssize_t pread64(int number, void *buffer, size_t count, off64_t place);
ssize_t pread64(int number, void *buffer, size_t count, off64_t place) { return pread(number, buffer, count, place); }

/* Reads to the end over so many calls that fail, of which at least one must be told. */
static void reads_over(vlw_reader *reader, const int16_t *expected, size_t frames, int failures) {
    const uint32_t channels = vlw_reader_channels(reader);
    int16_t *const read = malloc((frames + 600) * channels * sizeof *read);
    size_t got = 0;
    vlw_code code = VLW_OK;
    int failed = 0;
    while (code != VLW_END && code != VLW_CUT && failed < 20 && got <= frames) {
        size_t done = 99;
        code = vlw_reader_read_int16(reader, read + got * channels, 500, &done);
        got += done;
        CHECK(vlw_reader_tell(reader) == (int64_t)got);
        if (code < VLW_OK) {
            ++failed;
            CHECK(told(vlw_reader_error(reader), code, VLW_SYSTEM, EIO, NULL) && done < 500);
        }
    }
    if (code != VLW_END || got != frames || failed > failures) fprintf(stderr, "  %d after %zu of %zu frames and %d failures\n", code, got, frames, failed);
    CHECK(code == VLW_END && got == frames && failed <= failures && (failed > 0 || failures == 0));
    CHECK(got != frames || memcmp(read, expected, got * channels * sizeof *read) == 0);
    free(read);
}

static const struct {
    sound_kind kind;
    size_t units;
    uint32_t rate, channels;
} s_cases[] = {{PCM_16, 9000, 0, 0}, {PCM_8, 9000, 0, 0},      {PCM_24, 9000, 0, 0},    {FLOAT_32, 5000, 0, 0},
               {A_LAW, 9000, 0, 0},  {IMA_ADPCM, 300, 0, 0},   {MS_ADPCM, 300, 0, 0},   {AIFF_16, 9000, 0, 0},
               {PCM_16, 9000, 48000, 1}, {PCM_24, 9000, 22050, 0}, {IMA_ADPCM, 300, 48000, 0}};

static void streams(vlw_reader *reader, size_t which, int in_order, size_t most, int fail_for) {
    sound made = make_sound(s_cases[which].kind, 44100, 2, s_cases[which].units);
    s_where = made.name;
    s_case = 0;
    CHECK(set_output(reader, s_cases[which].rate, s_cases[which].channels) == VLW_OK);
    byte_stream good = {.bytes = made.file, .size = made.audio + made.audio_bytes, .in_order = in_order, .most = most};
    vlw_stream stream = as_stream(&good);
    CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK);
    const size_t room = 2 * made.frames;
    int16_t *const expected = malloc(room * 2 * sizeof *expected);
    size_t frames = 0;
    CHECK(read_rest(reader, expected, room, 500, &frames) == VLW_END);
    if (s_cases[which].rate == 0) CHECK(frames == made.frames && memcmp(expected, made.samples, frames * 4) == 0);
    for (s_case = 1; s_case <= good.reads && s_failures < 20; s_case += s_case < 12 ? 1 : 5) {
        byte_stream from = {.bytes = made.file, .size = good.size, .in_order = in_order, .most = most, .fail_read = s_case, .fail_for = fail_for};
        stream = as_stream(&from);
        const vlw_code code = vlw_reader_open_stream(reader, &stream);
        if (code == VLW_OK)
            reads_over(reader, expected, frames, fail_for);
        else
            CHECK(told(vlw_reader_error(reader), code, VLW_SYSTEM, EIO, NULL) && from.closes == 1 && from.reads == s_case && vlw_reader_channels(reader) == 0);
        vlw_reader_close(reader);
        CHECK(from.closes == 1 && from.overlaps == 0);
    }
    for (s_case = 1; s_case <= good.seeks && s_failures < 20; s_case += s_case < 8 ? 1 : 5) {
        byte_stream from = {.bytes = made.file, .size = good.size, .most = most, .fail_seek = s_case};
        stream = as_stream(&from);
        const vlw_code code = vlw_reader_open_stream(reader, &stream);
        if (code == VLW_OK)
            reads_over(reader, expected, frames, s_case < 3 ? 0 : 1); /* the first two ask whether it can be moved in */
        else
            CHECK(told(vlw_reader_error(reader), code, VLW_SYSTEM, EIO, NULL) && from.closes == 1);
        vlw_reader_close(reader);
    }
    free(expected);
    free_sound(&made);
}

/* A seek over a source that fails: the next read tells, and the one after it is right. */
static void after_seeks(vlw_reader *reader, size_t which) {
    sound made = make_sound(s_cases[which].kind, 44100, 2, 80000 / (s_cases[which].units / 300));
    s_where = made.name;
    CHECK(set_output(reader, 0, 0) == VLW_OK);
    byte_stream from = {.bytes = made.file, .size = made.size, .most = 4096};
    const vlw_stream stream = as_stream(&from);
    int16_t block[200];
    CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK);
    for (s_case = 1; s_case < 30; ++s_case) {
        const size_t place = (size_t)s_case * 7919 % (made.frames - 100);
        size_t done = 9;
        from.fail_read = s_case % 2 ? from.reads + 1 : 0;
        from.fail_seek = s_case % 2 ? 0 : from.seeks + 1;
        from.fail_for = 1 << 20;
        vlw_code code = vlw_reader_seek(reader, (int64_t)place);
        if (code == VLW_OK) code = vlw_reader_read_int16(reader, block, 100, &done);
        CHECK(code == VLW_OK || told(vlw_reader_error(reader), code, VLW_SYSTEM, EIO, NULL));
        CHECK(memcmp(block, made.samples + place * 2, done * 4) == 0 && vlw_reader_tell(reader) == (int64_t)(place + done));
        from.fail_read = from.fail_seek = 0;
        CHECK(vlw_reader_read_int16(reader, block + 2 * done, 100 - done, NULL) == VLW_OK);
        CHECK(memcmp(block, made.samples + place * 2, sizeof block) == 0);
    }
    vlw_reader_close(reader);
    free_sound(&made);
}

static void files(vlw_reader *reader, size_t which) {
    char path[] = "/tmp/vlw-faults-XXXXXX";
    sound made = make_sound(s_cases[which].kind, 44100, 2, s_cases[which].units);
    s_where = "a file";
    const int number = mkstemp(path);
    CHECK(write(number, made.file, made.size) == (ssize_t)made.size && set_output(reader, 0, 0) == VLW_OK);
    int opened = 0;
    for (s_case = 1; s_failures < 20; ++s_case) {
        atomic_store(&s_file_reads, 0);
        atomic_store(&s_fail_file_read, s_case);
        const vlw_code code = s_case % 2 ? vlw_reader_open(reader, path) : vlw_reader_open_fd(reader, number);
        if (code == VLW_OK) {
            reads_over(reader, made.samples, made.frames, kFileFailures);
            ++opened;
        } else {
            CHECK(told(vlw_reader_error(reader), code, VLW_SYSTEM, EIO, s_case % 2 ? path : ""));
        }
        if (s_case == 12) break;
        if (lseek(number, 0, SEEK_SET) != 0) break;
    }
    CHECK(opened > 3);
    vlw_reader_close(reader);
    atomic_store(&s_fail_file_read, 0);
    close(number), unlink(path);
    free_sound(&made);
}

int main(void) {
    vlw_reader *reader = NULL;
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK);
    for (size_t which = 0; which < sizeof s_cases / sizeof *s_cases; ++which)
        for (int i = 0; i < 4; ++i) streams(reader, which, i & 1, i & 2 ? 1501 : 0, i % 3 == 1 ? 1 : 5);
    const size_t moved[] = {0, 2, 5, 6};
    for (size_t i = 0; i < sizeof moved / sizeof *moved; ++i) after_seeks(reader, moved[i]);
    files(reader, 0);
    files(reader, 2);
    vlw_reader_free(reader);
    return s_failures ? 1 : 0;
}
