/* Where a reader's bytes come from: paths, descriptors, pipes, memory and the program's own streams. Started with the path of
 * the program that holds a file open for writing as programs of this system do. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/socket.h>

#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"

static const char *s_holder;

static void put_sound(const char *path, const sound *made) { put_file(path, (bytes){made->file, made->size}); }

/* A child that writes the bytes in pieces, pausing after each, and ends. */
static pid_t feed(int into, int other, const sound *made, size_t piece, useconds_t pause) {
    const pid_t child = fork();
    if (child != 0) return child;
    if (other >= 0) close(other);
    for (size_t at = 0; at < made->size;) {
        const size_t wanted = piece < made->size - at ? piece : made->size - at;
        const ssize_t done = write(into, made->file + at, wanted);
        if (done < 0) _exit(1);
        at += (size_t)done;
        usleep(pause);
    }
    _exit(0);
}

static int failed(const vlw_reader *reader, vlw_code code, vlw_code expected, int system, const char *path) {
    return told(vlw_reader_error(reader), code, expected, system, path) && strstr(vlw_reader_error(reader)->text, path);
}

static void names(vlw_reader *reader, const sound *made) {
    static const char *const kNames[] = {"a.wav", "%s%n \xC3\xA4\xE2\x82\xAC.wav", "\xFF\xFE\x80.wav", "\n\t\x01", "\xED\xA0\x80", "no ending", "*?<>|:\"\\"};
    for (size_t i = 0; i < sizeof kNames / sizeof *kNames; ++i) {
        const char *const path = kNames[i];
        CHECK(failed(reader, vlw_reader_open(reader, path), VLW_NOT_FOUND, ENOENT, path));
        put_sound(path, made);
        CHECK(vlw_reader_open(reader, path) == VLW_OK && reads_as(reader, made->samples, 0, made->frames, 333, VLW_END));
        vlw_reader *other = NULL;
        CHECK(vlw_reader_new(NULL, &other) == VLW_OK && vlw_reader_open(other, path) == VLW_OK);
        CHECK(reads_as(other, made->samples, 0, made->frames, 333, VLW_END));
        vlw_reader_free(other);
        /* The file that was opened stays the one that is read. */
        CHECK(unlink(path) == 0 && vlw_reader_seek(reader, 9) == VLW_OK && reads_as(reader, made->samples, 9, made->frames, 333, VLW_END));
    }
}

static void refused(vlw_reader *reader, const sound *made) {
    CHECK(failed(reader, vlw_reader_open(reader, "."), VLW_SYSTEM, EISDIR, ".") && failed(reader, vlw_reader_open(reader, ""), VLW_NOT_FOUND, ENOENT, ""));
    put_sound("a.wav", made);
    put_file("empty", (bytes){0});
    CHECK(failed(reader, vlw_reader_open(reader, "a.wav/b.wav"), VLW_NOT_FOUND, ENOTDIR, "a.wav/b.wav"));
    CHECK(failed(reader, vlw_reader_open(reader, "/dev/null"), VLW_NOT_AUDIO, 0, "/dev/null"));
    CHECK(failed(reader, vlw_reader_open(reader, "empty"), VLW_NOT_AUDIO, 0, "empty"));
    CHECK(symlink("loop", "loop") == 0 && failed(reader, vlw_reader_open(reader, "loop"), VLW_SYSTEM, ELOOP, "loop"));
    CHECK(chmod("a.wav", 0) == 0 && chmod(".", 0755) == 0);
    const pid_t child = fork_to_check();
    if (child == 0) {
        vlw_reader *own = NULL;
        become_nobody();
        CHECK(vlw_reader_new(NULL, &own) == VLW_OK && failed(own, vlw_reader_open(own, "a.wav"), VLW_NO_PERMISSION, EACCES, "a.wav"));
        end_check();
    }
    join_check(child);
}

/* The other program answers with a line when it has the file, or hasn't got it. */
static void in_use(vlw_reader *reader, const sound *made) {
    const char *const path = "held.wav";
    char command[9000], line[16] = "";
    put_sound(path, made);
    snprintf(command, sizeof command, "exec '%s' '%s'", s_holder, path);
    FILE *told = popen(command, "r");
    CHECK(told && fgets(line, sizeof line, told) && same(line, "held\n"));
    CHECK(failed(reader, vlw_reader_open(reader, path), VLW_IN_USE, 0, path));
    const int process = fgets(line, sizeof line, told) ? atoi(line) : 0;
    CHECK(process > 1 && kill(process, SIGTERM) == 0);
    pclose(told);
    CHECK(vlw_reader_open(reader, path) == VLW_OK && reads_as(reader, made->samples, 0, made->frames, 100, VLW_END));
    told = popen(command, "r");
    CHECK(told && fgets(line, sizeof line, told) && same(line, "refused\n"));
    pclose(told);
    vlw_reader_close(reader);
}

static void descriptors(vlw_reader *reader, const sound *made) {
    const char *const path = "from-eleven";
    FILE *const file = fopen(path, "wb");
    CHECK(file && fwrite("JUNKRIFF....", 1, 11, file) == 11 && fwrite(made->file, 1, made->size, file) == made->size && fclose(file) == 0);
    const int number = open(path, O_RDONLY), twin = dup(number);
    CHECK(lseek(number, 11, SEEK_SET) == 11 && vlw_reader_open_fd(reader, number) == VLW_OK && close(number) == 0);
    CHECK(lseek(twin, 0, SEEK_CUR) == 11 && vlw_reader_seekable(reader) == 1 && vlw_reader_frames(reader) == (int64_t)made->frames);
    CHECK(reads_as(reader, made->samples, 0, made->frames, 64, VLW_END) && lseek(twin, 0, SEEK_CUR) == 11);
    /* Nor does a place that the program chooses matter. */
    CHECK(lseek(twin, 5, SEEK_SET) == 5 && vlw_reader_seek(reader, 100) == VLW_OK && reads_as(reader, made->samples, 100, made->frames, 64, VLW_END));
    CHECK(lseek(twin, 0, SEEK_CUR) == 5 && vlw_reader_open_fd(reader, twin) == VLW_NOT_AUDIO && lseek(twin, 0, SEEK_CUR) == 5);
    CHECK(lseek(twin, 0, SEEK_END) > 0 && vlw_reader_open_fd(reader, twin) == VLW_NOT_AUDIO);
    close(twin);
    const int writing = open(path, O_WRONLY);
    CHECK(failed(reader, vlw_reader_open_fd(reader, writing), VLW_SYSTEM, EBADF, "") && close(writing) == 0);
    const int folder = open(".", O_RDONLY);
    CHECK(failed(reader, vlw_reader_open_fd(reader, folder), VLW_SYSTEM, EISDIR, "") && close(folder) == 0);
}

static void in_order(vlw_reader *reader, const sound *made, const sound *longer) {
    const struct { int socket, flags; size_t piece; useconds_t pause; } cases[] = {
        {0, 0, 65536, 0}, {1, 0, 1000, 10}, {0, O_NONBLOCK, 777, 300}, {1, O_NONBLOCK, 5000, 300}};
    for (size_t i = 0; i < sizeof cases / sizeof *cases; ++i) {
        const sound *const which = i % 2 ? longer : made;
        int ends[2];
        CHECK((cases[i].socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : pipe(ends)) == 0);
        CHECK(fcntl(ends[0], F_SETFL, cases[i].flags) == 0);
        const pid_t child = feed(ends[1], ends[0], which, cases[i].piece, cases[i].pause);
        close(ends[1]);
        CHECK(vlw_reader_open_fd(reader, ends[0]) == VLW_OK && (fcntl(ends[0], F_GETFL) & O_NONBLOCK) == cases[i].flags && close(ends[0]) == 0);
        CHECK(!vlw_reader_seekable(reader) && vlw_reader_frames(reader) == VLW_UNKNOWN && vlw_reader_seek(reader, 0) == VLW_NOT_SEEKABLE);
        CHECK(reads_as(reader, which->samples, 0, which->frames, 500, VLW_END));
        join_check(child);
    }
    const char *const path = "fifo";
    CHECK(mkfifo(path, 0600) == 0);
    const pid_t child = fork();
    if (child == 0) {
        const int into = open(path, O_WRONLY);
        _exit(write(into, made->file, made->size) == (ssize_t)made->size ? 0 : 1);
    }
    CHECK(vlw_reader_open(reader, path) == VLW_OK && !vlw_reader_seekable(reader));
    CHECK(reads_as(reader, made->samples, 0, made->frames, 500, VLW_END));
    join_check(child);
    CHECK(unlink(path) == 0);
}

static void streams(vlw_reader *reader, const sound *made) {
    uint8_t *const shifted = malloc(made->size + 11);
    memset(shifted, 'R', 11);
    memcpy(shifted + 11, made->file, made->size);
    for (int i = 0; i < 8; ++i) {
        byte_stream from = {.bytes = shifted, .size = made->size + 11, .place = 11, .in_order = i & 1, .most = i & 2 ? 1 : 0};
        struct {
            vlw_stream stream;
            uint64_t later;
        } grown = {as_stream(&from), 7};
        grown.stream.size = sizeof grown;
        CHECK(vlw_reader_open_stream(reader, &grown.stream) == VLW_OK);
        memset(&grown, 0x55, sizeof grown); /* it was copied */
        CHECK(vlw_reader_seekable(reader) == !(i & 1));
        if (i & 4) CHECK(vlw_reader_output(reader, 48000, 1) == VLW_OK);
        int16_t *const frames = malloc((made->frames * 2 + 9) * made->channels * 2);
        size_t got = 0;
        CHECK(read_rest(reader, frames, made->frames * 2 + 9, 700, &got) == VLW_END && (i & 4 || got == made->frames));
        CHECK(i & 4 || memcmp(frames, made->samples, got * made->channels * 2) == 0);
        free(frames);
        CHECK(from.closes == 0 && from.overlaps == 0);
        CHECK(vlw_reader_output(reader, 0, 0) == VLW_BAD_STATE);
        if (i % 3 == 0) vlw_reader_close(reader);
        if (i % 3 == 1) CHECK(vlw_reader_open(reader, "/nowhere") == VLW_NOT_FOUND);
        if (i % 3 == 2) CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK);
        CHECK(from.closes == 1 && from.overlaps == 0);
        vlw_reader_close(reader);
        CHECK(set_output(reader, 0, 0) == VLW_OK);
    }
    free(shifted);
    /* Let go of while a decoder may still be reading ahead. */
    for (size_t i = 0; i < 20; ++i) {
        byte_stream from = {.bytes = made->file, .size = made->size, .in_order = (int)i & 1, .most = 100};
        const vlw_stream stream = as_stream(&from);
        int16_t block[1200];
        CHECK(vlw_reader_open_stream(reader, &stream) == VLW_OK);
        CHECK(vlw_reader_read_int16(reader, block, 200, NULL) == VLW_OK);
        if (i & 2) CHECK(vlw_reader_tags(reader, NULL) == VLW_BAD_ARGUMENT);
        vlw_reader_close(reader);
        CHECK(from.closes == 1 && from.overlaps == 0);
    }
}

/* `close` is called once, whatever ends the opening. */
static void closes(vlw_reader *reader, const sound *made) {
    const struct { size_t size; int no_read, six; vlw_code expected; } cases[] = {
        {0, 0, 0, VLW_NOT_AUDIO}, {8, 0, 0, VLW_DAMAGED}, {30, 0, 0, VLW_DAMAGED}, {made->size, 1, 0, VLW_BAD_ARGUMENT}, {made->size, 0, 1, VLW_UNSUPPORTED}};
    for (size_t i = 0; i < sizeof cases / sizeof *cases; ++i) {
        for (int in_order = 0; in_order < 2; ++in_order) {
            byte_stream from = {.bytes = made->file, .size = cases[i].size, .in_order = in_order};
            vlw_stream stream = as_stream(&from);
            if (cases[i].no_read) stream.read = NULL;
            CHECK(set_output(reader, 0, cases[i].six ? 7 : 0) == VLW_OK);
            const vlw_code code = vlw_reader_open_stream(reader, &stream);
            CHECK(code == cases[i].expected && from.closes == 1);
            if (code != cases[i].expected) fprintf(stderr, "  case %zu, %d: %d\n", i, in_order, code);
            stream.close = NULL;
            from.place = 0;
            CHECK(vlw_reader_open_stream(reader, &stream) == cases[i].expected && from.closes == 1);
        }
    }
    CHECK(set_output(reader, 0, 0) == VLW_OK);
    byte_stream from = {.bytes = made->file, .size = made->size};
    vlw_stream stream = as_stream(&from);
    stream.size = 0;
    CHECK(vlw_reader_open_stream(reader, &stream) == VLW_BAD_ARGUMENT && from.reads + from.seeks == 0);
    vlw_reader *other = NULL;
    stream = as_stream(&from);
    CHECK(vlw_reader_new(NULL, &other) == VLW_OK && vlw_reader_open_stream(other, &stream) == VLW_OK);
    vlw_reader_free(other);
    CHECK(from.closes == 1);
    /* Answers that can't be are failures. */
    const int64_t answers[] = {INT64_MAX, INT64_MIN, -4096, 1 << 20};
    for (size_t i = 0; i < sizeof answers / sizeof *answers; ++i) {
        for (int n = 1; n < 12; ++n) {
            byte_stream odd = {.bytes = made->file, .size = made->size, .fail_read = n, .fail_for = 1 << 20, .odd_answer = answers[i], .most = 1000, .in_order = n & 1};
            stream = as_stream(&odd);
            int16_t block[4000];
            vlw_code code = vlw_reader_open_stream(reader, &stream);
            while (code == VLW_OK) code = vlw_reader_read_int16(reader, block, 200, NULL);
            const int good = odd.reads < n ? code == VLW_END : code < VLW_OK && vlw_reader_error(reader)->text[0];
            CHECK(good);
            if (!good) fprintf(stderr, "  call %d of %d answers %lld: %d\n", n, odd.reads, (long long)answers[i], code);
            vlw_reader_close(reader);
            CHECK(odd.closes == 1);
        }
    }
}

static void all(void) {
    static const sound_kind kKinds[] = {PCM_16, PCM_24, IMA_ADPCM};
    sound longer = make_sound(PCM_24, 44100, 2, 50000);
    vlw_reader *reader = NULL;
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK);
    for (size_t i = 0; i < 3; ++i) {
        sound made = make_sound(kKinds[i], 44100, 2, i == 2 ? 100 : 5000);
        streams(reader, &made);
        closes(reader, &made);
        if (i < 2) descriptors(reader, &made);
        in_order(reader, &made, &longer);
        if (i == 0) names(reader, &made), refused(reader, &made), in_use(reader, &made);
        free_sound(&made);
    }
    free_sound(&longer);
    vlw_reader_free(reader);
}

int main(int argc, char **argv) {
    const check all_of_them = {"all", all, 0};
    if (argc != 3) return 2;
    s_holder = argv[1];
    return run_checks(argv[2], &all_of_them, 1);
}
