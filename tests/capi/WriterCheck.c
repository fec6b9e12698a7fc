/* Writing: the same file everywhere, whole or not at all. Started with the path of vlwav and a folder to work in. */
#define _GNU_SOURCE
#include <errno.h>
#include <math.h>
#include <pthread.h>

#include "capi/vlwav.h"
#include "tests/capi/Files.h"

enum { FRAMES = 20011, RATE = 44100 };

static const char *s_vlwav;
static int16_t s_samples[FRAMES * 6];

/* ---- helpers ---- */

static const bytes kOld = {(unsigned char *)"old", 3};

static void put_wave(const char *path, uint32_t rate, uint32_t channels) {
    const uint32_t data = FRAMES * channels * 2;
    const uint32_t head[11] = {0x46464952, 36 + data, 0x45564157, 0x20746D66, 16, channels << 16 | 1,
                               rate, rate * channels * 2, 16 << 16 | channels * 2, 0x61746164, data};
    FILE *file = fopen(path, "wb");
    CHECK(file && fwrite(head, sizeof head, 1, file) == 1 && fwrite(s_samples, data, 1, file) == 1);
    fclose(file);
}

/* What the command makes of frames of that shape. */
static bytes converted(uint32_t rate, uint32_t channels, const char *options) {
    char command[512];
    put_wave("source.wav", rate, channels);
    snprintf(command, sizeof command, "'%s' convert --overwrite %s -o command.wav source.wav >/dev/null", s_vlwav, options);
    CHECK(system(command) == 0);
    return contents("command.wav");
}

/* All frames in blocks of changing sizes, then the end. */
static vlw_code write_all(vlw_writer *writer, uint32_t channels) {
    size_t at = 0, block = 1;
    while (at < FRAMES) {
        if (block > FRAMES - at) block = FRAMES - at;
        const vlw_code code = vlw_writer_write_int16(writer, s_samples + at * channels, block);
        if (code != VLW_OK) return code;
        at += block;
        CHECK(vlw_writer_tell(writer) == (int64_t)at);
        block = block * 3 + 1;
    }
    return vlw_writer_finish(writer);
}

static vlw_writer *new_writer(void) {
    vlw_writer *writer = NULL;
    CHECK(vlw_writer_new(NULL, &writer) == VLW_OK && vlw_writer_input(writer, RATE, 2) == VLW_OK);
    return writer;
}

/* ---- targets ---- */

typedef struct sink {
    bytes got;
    int closed, calls;
    int fails;      /* from the third call on, with this answer: */
    int64_t answer;
} sink;

static int64_t sink_write(void *user, const void *from, size_t count) {
    sink *to = user;
    ++to->calls;
    if (to->fails && to->calls > 2) return to->answer;
    if (to->calls % 5 == 4) return -EINTR;
    const size_t taken = 1 + count * (size_t)(to->calls % 3) / 3;
    const size_t most = taken > count ? count : taken;
    add(&to->got, from, most);
    return (int64_t)most;
}

static void sink_close(void *user) { ++((sink *)user)->closed; }

static vlw_stream stream_of(sink *to) {
    vlw_stream stream = {.size = sizeof stream, .user = to, .write = sink_write, .close = sink_close};
    return stream;
}

static void *drain(void *pipe_end) {
    bytes *got = calloc(1, sizeof *got);
    char block[1000];
    ssize_t size;
    while ((size = read(*(int *)pipe_end, block, sizeof block)) > 0) add(got, block, (size_t)size);
    return got;
}

static void through_pipe(vlw_writer *writer, uint32_t channels, bytes expected) {
    int ends[2];
    pthread_t thread = 0;
    void *got;
    CHECK(pipe(ends) == 0 && pthread_create(&thread, NULL, drain, &ends[0]) == 0);
    CHECK(vlw_writer_create_fd(writer, ends[1], 0) == VLW_OK);
    close(ends[1]);
    CHECK(write_all(writer, channels) == VLW_OK);
    pthread_join(thread, &got);
    CHECK(equal(*(bytes *)got, expected));
    free(((bytes *)got)->at);
    free(got);
    close(ends[0]);
}

/* One file through every way out. */
static void everywhere(vlw_writer *writer, uint32_t channels, bytes expected) {
    bytes taken = {NULL, 0};
    CHECK(vlw_writer_create(writer, "path.wav", VLW_OVERWRITE) == VLW_OK && write_all(writer, channels) == VLW_OK);
    CHECK(file_is("path.wav", expected));

    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK && write_all(writer, channels) == VLW_OK);
    CHECK(vlw_writer_take(writer, (void **)&taken.at, &taken.size) == VLW_OK && equal(taken, expected));
    void *again = NULL;
    CHECK(vlw_writer_take(writer, &again, &taken.size) == VLW_BAD_STATE && again == NULL);
    vlw_free(taken.at);

    sink to = {.closed = 0};
    const vlw_stream stream = stream_of(&to);
    CHECK(vlw_writer_create_stream(writer, &stream, 0) == VLW_OK);
    CHECK(to.calls == 0 && write_all(writer, channels) == VLW_OK);
    CHECK(equal(to.got, expected) && to.closed == 1);
    free(to.got.at);

    /* From where the descriptor stands. */
    const int fd = open("fd.wav", O_RDWR | O_CREAT | O_TRUNC, 0600);
    CHECK(write(fd, "front", 5) == 5 && vlw_writer_create_fd(writer, fd, 0) == VLW_OK);
    CHECK(write_all(writer, channels) == VLW_OK);
    close(fd);
    bytes file = contents("fd.wav");
    CHECK(file.size == expected.size + 5 && memcmp(file.at + 5, expected.at, expected.size) == 0);
    free(file.at);

    through_pipe(writer, channels, expected);
}

static void same_as_the_command(vlw_writer *writer, uint32_t rate, uint32_t channels, const vlw_format *format) {
    char options[100];
    snprintf(options, sizeof options, "--rate %u --channels %u --bits %u", format->rate, format->channels, format->bits);
    bytes expected = converted(rate, channels, options);
    CHECK(vlw_writer_input(writer, rate, channels) == VLW_OK);
    CHECK(vlw_writer_output(writer, format->rate, format->channels, format->bits) == VLW_OK);
    everywhere(writer, channels, expected);
    free(expected.at);
}

static void all_formats(void) {
    vlw_module *module = NULL;
    vlw_writer *writer = NULL;
    CHECK(vlw_module_new(&module) == VLW_OK && vlw_module_load(module, NULL) == VLW_OK);
    CHECK(vlw_writer_new(module, &writer) == VLW_OK);
    for (size_t i = 0; i < vlw_module_format_count(module); ++i) {
        vlw_format format = {.size = sizeof format};
        CHECK(vlw_module_format(module, i, &format) == VLW_OK);
        same_as_the_command(writer, RATE, 2, &format);
    }
    /* Rates that the module's writer can't be told, whole and odd ratios; more channels; one channel for two. */
    const vlw_format cases[] = {{.rate = 44100, .channels = 2, .bits = 16}, {.rate = 8000, .channels = 1, .bits = 8},
                                {.rate = 48000, .channels = 2, .bits = 8}};
    for (size_t i = 0; i < 3; ++i) {
        same_as_the_command(writer, 96000, 2, &cases[i]);
        same_as_the_command(writer, 65536, 1, &cases[i]);
        same_as_the_command(writer, 64000, 1, &cases[i]);
        same_as_the_command(writer, 12000, 1, &cases[i]);
    }
    same_as_the_command(writer, 768000, 2, &cases[1]);
    same_as_the_command(writer, 192000, 6, &cases[1]);
    same_as_the_command(writer, 44100, 6, &cases[1]);
    vlw_module_free(module);
    vlw_writer_free(writer);
}

static bytes in_memory(vlw_writer *writer);

/* Rates without a small ratio, which the filter only comes near: over a long time the difference is many frames. */
static void odd_rates(void) {
    const uint32_t rates[] = {44101, 65535, 65537, 767999, 11023};
    vlw_writer *writer = new_writer();
    for (size_t i = 0; i < sizeof rates / sizeof *rates; ++i) {
        CHECK(vlw_writer_input(writer, rates[i], 2) == VLW_OK && vlw_writer_output(writer, 44100, 1, 8) == VLW_OK);
        CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK);
        for (int times = 0; times < 50; ++times) CHECK(vlw_writer_write_int16(writer, s_samples, FRAMES) == VLW_OK);
        const bytes made = in_memory(writer);
        const double expected = 50.0 * FRAMES * 44100 / rates[i];
        CHECK(fabs((double)(made.size - 44) - expected) < 2 + expected / 2000);
        vlw_free(made.at);
    }
    vlw_writer_free(writer);
}

static bytes in_memory(vlw_writer *writer) {
    bytes taken = {NULL, 0};
    CHECK(vlw_writer_finish(writer) == VLW_OK);
    CHECK(vlw_writer_take(writer, (void **)&taken.at, &taken.size) == VLW_OK);
    return taken;
}

/* Reckoned here anew: left and right, centre and surround at half power, no low frequencies. */
static void six_channels(void) {
    static int16_t mixed[FRAMES * 2];
    for (size_t i = 0; i < FRAMES; ++i)
        for (size_t side = 0; side < 2; ++side) {
            const int16_t *in = s_samples + i * 6;
            mixed[i * 2 + side] = (int16_t)lrint((in[side] + sqrt(0.5) * in[2] + sqrt(0.5) * in[4 + side]) / (1 + sqrt(2.0)));
        }
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_input(writer, 96000, 6) == VLW_OK && vlw_writer_output(writer, 48000, 2, 0) == VLW_OK);
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK);
    CHECK(vlw_writer_write_int16(writer, s_samples, FRAMES) == VLW_OK);
    const bytes six = in_memory(writer);
    CHECK(vlw_writer_input(writer, 96000, 2) == VLW_OK && vlw_writer_create_memory(writer, 0) == VLW_OK);
    CHECK(vlw_writer_write_int16(writer, mixed, FRAMES) == VLW_OK);
    const bytes two = in_memory(writer);
    CHECK(six.size > 44 + FRAMES && equal(six, two));
    vlw_free(six.at);
    vlw_free(two.at);
    vlw_writer_free(writer);
}

static void floats(void) {
    static float values[FRAMES * 2];
    for (size_t i = 0; i < FRAMES * 2; ++i) values[i] = s_samples[i] / 32768.0F;
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK);
    CHECK(vlw_writer_write_float(writer, values, FRAMES) == VLW_OK && vlw_writer_tell(writer) == FRAMES);
    const bytes got = in_memory(writer);
    CHECK(got.size == 44 + sizeof(int16_t) * 2 * FRAMES && memcmp(got.at + 44, s_samples, got.size - 44) == 0);
    vlw_free(got.at);
    const float edges[] = {1.5F, -7, NAN, 0.5F / 32768, 1.5F / 32768, -0.5F / 32768};
    const int16_t expected[] = {32767, -32768, 0, 0, 2, 0};
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK && vlw_writer_write_float(writer, edges, 3) == VLW_OK);
    const bytes limited = in_memory(writer);
    CHECK(limited.size == 44 + sizeof expected && memcmp(limited.at + 44, expected, sizeof expected) == 0);
    vlw_free(limited.at);
    vlw_writer_free(writer);
}

/* ---- settings and states ---- */

static void refusals(void) {
    vlw_writer *writer = NULL;
    void *block = NULL;
    size_t size = 0;
    CHECK(vlw_writer_new(NULL, NULL) == VLW_BAD_ARGUMENT && vlw_writer_new(NULL, &writer) == VLW_OK);
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_BAD_STATE);
    CHECK(vlw_writer_input(writer, 999, 2) == VLW_BAD_ARGUMENT && vlw_writer_input(writer, 768001, 2) == VLW_BAD_ARGUMENT);
    CHECK(vlw_writer_input(writer, 1000, 0) == VLW_BAD_ARGUMENT && vlw_writer_input(writer, 1000, 256) == VLW_BAD_ARGUMENT);
    CHECK(vlw_writer_text(writer, (vlw_text)3) == VLW_BAD_ARGUMENT);
    /* The input's own format can't be written, and the sentence names what can. */
    CHECK(vlw_writer_input(writer, 96000, 2) == VLW_OK && vlw_writer_create(writer, "no.wav", 0) == VLW_UNSUPPORTED);
    CHECK(strstr(vlw_writer_error(writer)->text, "48000 Hz, 2 channels, 16 bits") != NULL);
    CHECK(vlw_writer_output(writer, 48000, 0, 24) == VLW_OK && vlw_writer_create(writer, "no.wav", 0) == VLW_UNSUPPORTED);
    CHECK(vlw_writer_input(writer, 48000, 3) == VLW_OK && vlw_writer_output(writer, 0, 2, 0) == VLW_OK);
    CHECK(vlw_writer_create(writer, "no.wav", 0) == VLW_UNSUPPORTED && access("no.wav", F_OK) != 0);
    CHECK(vlw_writer_input(writer, 48000, 2) == VLW_OK);
    CHECK(vlw_writer_create(writer, NULL, 0) == VLW_BAD_ARGUMENT && vlw_writer_create(writer, "no.wav", 32) == VLW_BAD_ARGUMENT);
    CHECK(vlw_writer_create(writer, "nowhere/no.wav", 0) == VLW_NOT_FOUND && vlw_writer_error(writer)->system == ENOENT);
    CHECK(same(vlw_writer_error(writer)->path, "nowhere/no.wav"));
    CHECK(vlw_writer_create(writer, "", 0) == VLW_NOT_FOUND && vlw_writer_create(writer, "no.wav/", 0) == VLW_SYSTEM);
    CHECK(vlw_writer_create(writer, ".", VLW_OVERWRITE) == VLW_SYSTEM && vlw_writer_error(writer)->system == EISDIR);
    CHECK(vlw_writer_create_fd(writer, -1, 0) == VLW_SYSTEM);
    const int reading = open(".", O_RDONLY);
    CHECK(vlw_writer_create_fd(writer, reading, 0) == VLW_SYSTEM && vlw_writer_error(writer)->system == EBADF);
    close(reading);
    CHECK(vlw_writer_write_int16(writer, s_samples, 1) == VLW_BAD_STATE && vlw_writer_finish(writer) == VLW_BAD_STATE);
    CHECK(vlw_writer_take(writer, &block, &size) == VLW_BAD_STATE);
    /* A stream is closed once, whatever became of it. */
    sink to = {.closed = 0};
    vlw_stream stream = stream_of(&to);
    CHECK(vlw_writer_create_stream(NULL, &stream, 0) == VLW_BAD_ARGUMENT && to.closed == 1);
    CHECK(vlw_writer_create_stream(writer, &stream, 64) == VLW_BAD_ARGUMENT && to.closed == 2);
    CHECK(vlw_writer_create_stream(writer, &stream, 0) == VLW_OK && to.closed == 2);
    vlw_writer_drop(writer);
    CHECK(to.closed == 3 && to.calls == 0);
    stream.write = NULL;
    CHECK(vlw_writer_create_stream(writer, &stream, 0) == VLW_BAD_ARGUMENT && to.closed == 4);
    CHECK(vlw_writer_create_stream(writer, NULL, 0) == VLW_BAD_ARGUMENT);
    /* More than 4 GiB is refused before a sample of it is looked at, and nothing more can be written then. */
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK && vlw_writer_write_int16(writer, NULL, 1) == VLW_BAD_ARGUMENT);
    CHECK(vlw_writer_write_int16(writer, s_samples, (UINT32_MAX - 44) / 4 + 1) == VLW_TOO_LARGE);
    CHECK(vlw_writer_write_int16(writer, s_samples, 1) == VLW_BAD_STATE && vlw_writer_finish(writer) == VLW_BAD_STATE);
    vlw_writer_free(writer);

    CHECK(vlw_writer_error(NULL) == NULL && vlw_writer_tell(NULL) == 0 && vlw_writer_finish(NULL) == VLW_BAD_ARGUMENT);
    vlw_writer_drop(NULL);
    vlw_writer_free(NULL);
}

static vlw_code write_short(vlw_writer *writer) {
    const vlw_code code = vlw_writer_write_int16(writer, s_samples, 100);
    return code == VLW_OK ? vlw_writer_finish(writer) : code;
}

static unsigned mode_of(const char *path) {
    struct stat status;
    return lstat(path, &status) == 0 ? (unsigned)status.st_mode & 07777 : 0;
}

static void overwriting(void) {
    vlw_writer *writer = new_writer();
    umask(027);
    CHECK(vlw_writer_create(writer, "new.wav", 0) == VLW_OK && access("new.wav", F_OK) != 0);
    CHECK(write_short(writer) == VLW_OK && mode_of("new.wav") == 0640);
    umask(022);
    bytes whole = contents("new.wav");
    CHECK(whole.size == 444);
    CHECK(vlw_writer_create(writer, "new.wav", 0) == VLW_EXISTS && vlw_writer_error(writer)->system == EEXIST);

    /* One that comes meanwhile stays, unless it may be replaced; the old one stands until the end. */
    for (uint32_t flags = 0; flags <= VLW_OVERWRITE; flags += VLW_OVERWRITE) {
        unlink("late.wav");
        CHECK(vlw_writer_create(writer, "late.wav", flags) == VLW_OK);
        put_file("late.wav", kOld);
        CHECK(write_short(writer) == (flags ? VLW_OK : VLW_EXISTS) && file_is("late.wav", flags ? whole : kOld));
    }
    put_file("old.wav", kOld);
    chmod("old.wav", 0604);
    const size_t names = names_in(".");
    CHECK(vlw_writer_create(writer, "old.wav", VLW_OVERWRITE) == VLW_OK && file_is("old.wav", kOld));
    CHECK(vlw_writer_write_int16(writer, s_samples, 100) == VLW_OK);
    vlw_writer_drop(writer);
    CHECK(file_is("old.wav", kOld) && names_in(".") == names);
    CHECK(vlw_writer_create(writer, "old.wav", VLW_OVERWRITE) == VLW_OK && write_short(writer) == VLW_OK);
    CHECK(file_is("old.wav", whole) && mode_of("old.wav") == 0604 && names_in(".") == names);

    /* A link stays one, also to a name that isn't taken yet. */
    CHECK(mkdir("deep", 0755) == 0 && symlink("old.wav", "link.wav") == 0 && symlink("../later.wav", "deep/dangling") == 0);
    put_file("old.wav", kOld);
    CHECK(vlw_writer_create(writer, "link.wav", VLW_OVERWRITE) == VLW_OK && write_short(writer) == VLW_OK);
    CHECK(file_is("old.wav", whole) && readlink("link.wav", (char[8]){0}, 8) == 7);
    CHECK(vlw_writer_create(writer, "deep/dangling", 0) == VLW_OK && write_short(writer) == VLW_OK);
    CHECK(file_is("later.wav", whole) && mode_of("deep/dangling") == 0777);
    CHECK(symlink("circle", "circle") == 0 && vlw_writer_create(writer, "circle", 0) == VLW_SYSTEM);

    /* A pipe by its name gets the bytes and stays. */
    CHECK(mkfifo("fifo", 0600) == 0);
    const int held = open("fifo", O_RDWR);
    CHECK(vlw_writer_create(writer, "fifo", VLW_OVERWRITE) == VLW_OK && write_short(writer) == VLW_OK);
    bytes piped = {malloc(1000), 0};
    piped.size = (size_t)read(held, piped.at, 1000);
    CHECK(equal(piped, whole));
    close(held);
    free(piped.at);
    free(whole.at);
    vlw_writer_free(writer);
}

static void write_protected(void) {
    put_file("protected.wav", kOld);
    CHECK(chmod("protected.wav", 0444) == 0 && chmod(".", 0777) == 0);
    become_nobody();
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_create(writer, "protected.wav", VLW_OVERWRITE) == VLW_NO_PERMISSION && file_is("protected.wav", kOld));
    vlw_writer_free(writer);
}

/* ---- tags ---- */

static void tags(void) {
    vlw_writer *writer = new_writer();
    vlw_tags *set = NULL;
    CHECK(vlw_tags_new(&set) == VLW_OK && vlw_tags_set(set, "title", "Grüße") == VLW_OK);
    CHECK(vlw_tags_set(set, "artist", "Someone") == VLW_OK && vlw_tags_set(set, "track", "7") == VLW_OK);
    bytes expected = converted(RATE, 2, "--set title=Grüße --set artist=Someone --set track=7");
    CHECK(vlw_writer_tags(writer, set) == VLW_OK);
    vlw_tags_free(set); /* copied */
    everywhere(writer, 2, expected);
    free(expected.at);

    /* A keyword that isn't kept, and a picture: refused by name, then other tags, then done. */
    const char *lost = NULL;
    for (size_t i = 0; vlw_keyword(i) && !lost; ++i)
        if (!(vlw_keyword_flags(i) & (VLW_KEYWORD_KEPT | VLW_KEYWORD_NUMBER))) lost = vlw_keyword(i);
    CHECK(lost && vlw_tags_new(&set) == VLW_OK && vlw_tags_set(set, lost, "gone") == VLW_OK);
    CHECK(vlw_tags_set(set, "title", "kept") == VLW_OK && vlw_tags_set_picture(set, 3, "BM", 2) == VLW_OK);
    CHECK(vlw_writer_tags(writer, set) == VLW_OK && vlw_writer_create(writer, "lose.wav", 0) == VLW_OK);
    CHECK(vlw_writer_write_int16(writer, s_samples, 100) == VLW_OK && vlw_writer_finish(writer) == VLW_WOULD_LOSE);
    const char *text = vlw_writer_error(writer)->text;
    CHECK(strstr(text, lost) && strstr(text, "\"gone\"") && strstr(text, "picture 3") && !strstr(text, "title"));
    CHECK(access("lose.wav", F_OK) != 0 && vlw_writer_write_int16(writer, s_samples, 100) == VLW_OK);
    CHECK(vlw_writer_tags(writer, NULL) == VLW_OK && vlw_writer_finish(writer) == VLW_OK);
    bytes file = contents("lose.wav");
    CHECK(file.size == 44 + 800);
    free(file.at);
    /* With leave the rest is written: exactly what the title alone makes. */
    CHECK(vlw_writer_tags(writer, set) == VLW_OK && vlw_writer_create_memory(writer, VLW_LOSSY) == VLW_OK);
    const bytes lossy = in_memory(writer);
    vlw_tags_clear(set);
    CHECK(vlw_tags_set(set, "title", "kept") == VLW_OK && vlw_writer_tags(writer, set) == VLW_OK);
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK);
    const bytes kept = in_memory(writer);
    CHECK(kept.size > 44 && equal(lossy, kept));
    vlw_free(lossy.at);
    vlw_free(kept.at);
    vlw_tags_free(set);
    vlw_writer_free(writer);
}

/* ---- failures ---- */

static void failing_targets(void) {
    vlw_writer *writer = new_writer();
    const int full = open("/dev/full", O_WRONLY);
    CHECK(vlw_writer_create_fd(writer, full, 0) == VLW_OK && write_short(writer) == VLW_NO_SPACE);
    CHECK(vlw_writer_error(writer)->system == ENOSPC && vlw_writer_finish(writer) == VLW_BAD_STATE);
    close(full);
    int ends[2];
    signal(SIGPIPE, SIG_IGN);
    CHECK(pipe(ends) == 0 && vlw_writer_create_fd(writer, ends[1], 0) == VLW_OK);
    close(ends[0]);
    close(ends[1]);
    CHECK(write_short(writer) == VLW_SYSTEM && vlw_writer_error(writer)->system == EPIPE);
    const int64_t answers[] = {-ENETDOWN, 0, INT64_MAX, INT64_MIN};
    const int errors[] = {ENETDOWN, EIO, EIO, EIO};
    for (int i = 0; i < 4; ++i) {
        sink to = {.fails = 1, .answer = answers[i]};
        const vlw_stream stream = stream_of(&to);
        CHECK(vlw_writer_create_stream(writer, &stream, 0) == VLW_OK);
        CHECK(write_all(writer, 2) == VLW_SYSTEM && vlw_writer_error(writer)->system == errors[i]);
        vlw_writer_drop(writer);
        CHECK(to.closed == 1 && to.calls == 3);
        free(to.got.at);
    }
    vlw_writer_free(writer);
}

/* Every size at which a file can stop growing: in the audio, in its last bytes, in the tags, in the header. */
static void limited_sizes(void) {
    vlw_tags *set = NULL;
    vlw_writer *writer = new_writer();
    CHECK(vlw_tags_new(&set) == VLW_OK && vlw_tags_set(set, "title", "A title") == VLW_OK);
    CHECK(vlw_writer_tags(writer, set) == VLW_OK && vlw_writer_output(writer, 22050, 1, 8) == VLW_OK);
    CHECK(vlw_writer_create(writer, "size.wav", 0) == VLW_OK && write_all(writer, 2) == VLW_OK);
    struct stat status;
    CHECK(stat("size.wav", &status) == 0);
    const size_t names = names_in(".");
    for (rlim_t size = 0; size < (rlim_t)status.st_size; size += size < 100 || size + 100 > (rlim_t)status.st_size ? 1 : 101) {
        limit_files(size);
        vlw_code code = vlw_writer_create(writer, "limited.wav", 0);
        if (code == VLW_OK) code = write_all(writer, 2);
        CHECK(code != VLW_OK && vlw_writer_error(writer)->text[0] && access("limited.wav", F_OK) != 0);
    }
    limit_files(RLIM_INFINITY);
    vlw_writer_free(writer);
    vlw_tags_free(set);
    CHECK(names_in(".") == names);
}

static void full_disk(void) {
    CHECK(mkdir("disk", 0755) == 0);
    mount_small("disk", "size=64k");
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_create(writer, "disk/full.wav", 0) == VLW_OK);
    CHECK(write_all(writer, 2) == VLW_NO_SPACE && vlw_writer_error(writer)->system == ENOSPC);
    CHECK(same(vlw_writer_error(writer)->path, "disk/full.wav"));
    CHECK(vlw_writer_write_int16(writer, s_samples, 1) == VLW_BAD_STATE);
    CHECK(vlw_writer_create(writer, "disk/full.wav", 0) == VLW_OK && write_short(writer) == VLW_OK);
    vlw_writer_free(writer);
}

/* Without /proc a nameless file can't be reached: the file comes into being under a temporary name, and that goes. */
static void without_proc(void) {
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_create(writer, "proc.wav", 0) == VLW_OK && write_short(writer) == VLW_OK);
    bytes whole = contents("proc.wav");
    mount_small("/proc", "");
    const size_t names = names_in(".");
    CHECK(vlw_writer_create(writer, "named.wav", 0) == VLW_OK && names_in(".") == names + 1);
    vlw_writer_drop(writer);
    CHECK(names_in(".") == names);
    CHECK(vlw_writer_create(writer, "named.wav", 0) == VLW_OK && write_short(writer) == VLW_OK);
    CHECK(file_is("named.wav", whole) && mode_of("named.wav") == 0644 && names_in(".") == names + 1);
    chmod("named.wav", 0600);
    CHECK(vlw_writer_create(writer, "named.wav", VLW_OVERWRITE) == VLW_OK && write_short(writer) == VLW_OK);
    CHECK(file_is("named.wav", whole) && mode_of("named.wav") == 0600 && names_in(".") == names + 1);
    unlink("named.wav");
    CHECK(vlw_writer_create(writer, "named.wav", 0) == VLW_OK);
    put_file("named.wav", kOld);
    CHECK(write_short(writer) == VLW_EXISTS && file_is("named.wav", kOld));
    CHECK(vlw_writer_create_memory(writer, 0) == VLW_OK && vlw_writer_write_int16(writer, s_samples, 100) == VLW_OK);
    const bytes memory = in_memory(writer);
    CHECK(equal(memory, whole) && names_in(".") == names + 1);
    vlw_free(memory.at);
    free(whole.at);
    vlw_writer_free(writer);
}

/* In a child a writer is freed without a trace, and the parent goes on. */
static void forked(void) {
    vlw_writer *writer = new_writer();
    CHECK(vlw_writer_create(writer, "forked.wav", 0) == VLW_OK && vlw_writer_write_int16(writer, s_samples, 50) == VLW_OK);
    sink to = {.closed = 0};
    const vlw_stream stream = stream_of(&to);
    vlw_writer *second = new_writer();
    CHECK(vlw_writer_create_stream(second, &stream, 0) == VLW_OK);
    const pid_t child = fork_to_check();
    if (child == 0) {
        vlw_writer_free(writer);
        vlw_writer_free(second);
        CHECK(to.closed == 0);
        end_check();
    }
    join_check(child);
    CHECK(vlw_writer_write_int16(writer, s_samples + 100, 50) == VLW_OK && vlw_writer_finish(writer) == VLW_OK);
    bytes file = contents("forked.wav");
    CHECK(file.size == 444 && memcmp(file.at + 44, s_samples, 400) == 0);
    free(file.at);
    vlw_writer_free(writer);
    vlw_writer_free(second);
    CHECK(to.closed == 1);
}

int main(int argc, char **argv) {
    static const check kChecks[] = {{"all_formats", all_formats, 0}, {"odd_rates", odd_rates, 0},         {"six_channels", six_channels, 0},       {"floats", floats, 0},
                                    {"refusals", refusals, 0},       {"overwriting", overwriting, 0},     {"write_protected", write_protected, 1}, {"tags", tags, 0},
                                    {"failing", failing_targets, 0}, {"limited_sizes", limited_sizes, 1}, {"full_disk", full_disk, 1},             {"without_proc", without_proc, 1},
                                    {"forked", forked, 0}};
    if (argc != 3) return 2;
    s_vlwav = argv[1];
    for (size_t i = 0; i < FRAMES * 6; ++i) s_samples[i] = (int16_t)(20000 * sin((double)i * 0.01) + (double)(i * 7919 % 9973));
    return run_checks(argv[2], kChecks, sizeof kChecks / sizeof *kChecks);
}
