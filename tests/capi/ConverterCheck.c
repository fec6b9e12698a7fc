/* Conversions: the file that the command makes, whole or not at all. Started with the path of vlwav and a folder to work in. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <math.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>

#include "capi/vlwav.h"
#include "tests/capi/Check.h"
#include "tests/capi/SystemCalls.h"
#include "tests/capi/WaveFiles.h"

static const char *s_vlwav;
static int s_longer;
static const char *const kEntries = "INAM=Title|IART=Gr\xFC\xDF" "e|ICRD=2004-05-06";
static const vlw_conversion kPlain = {.size = sizeof(vlw_conversion)};

static vlw_converter *new_converter(void) {
    vlw_converter *converter = NULL;
    CHECK(vlw_converter_new(NULL, &converter) == VLW_OK);
    return converter;
}

static int failed(const vlw_converter *converter, vlw_code code, vlw_code expected, const char *path) {
    const vlw_error *const error = vlw_converter_error(converter);
    vlw_format format = {.size = sizeof format};
    int good = code == expected && error->code == expected && error->text[0] && same(error->path, path);
    good = good && vlw_converter_format(converter, &format) == VLW_BAD_STATE && same(vlw_converter_notes(converter), "");
    if (!good) fprintf(stderr, "  %d, not %d; %d \"%s\" \"%s\"\n", code, expected, error->code, error->text, error->path);
    return good;
}

/* A failure that leaves nothing in the folder. */
static int makes_nothing(vlw_converter *converter, const char *source, const char *target, const vlw_conversion *wish, vlw_code code, const char *path) {
    const size_t names = names_in(".");
    const int good = failed(converter, vlw_converter_run(converter, source, target, wish), code, path);
    return good && names_in(".") == names;
}

static int made(vlw_converter *converter, const char *source, const char *target, vlw_conversion wish) {
    wish.flags |= VLW_OVERWRITE;
    const vlw_code code = vlw_converter_run(converter, source, target, &wish);
    if (code != VLW_OK) fprintf(stderr, "  %d: %s\n", code, vlw_converter_error(converter)->text);
    return code == VLW_OK && vlw_converter_error(converter)->code == VLW_OK;
}

static bytes put_wave(const char *path, size_t kind, const char *layout, size_t units) {
    const bytes file = make_wave(&kWaveKinds[kind], layout, kEntries, units);
    put_file(path, file);
    return file;
}

/* ---- the command's file ---- */

static const vlw_conversion kTargets[] = {{.size = sizeof kPlain},
                                          {.size = sizeof kPlain, .rate = 8000, .channels = 1, .bits = 8, .threads = 3},
                                          {.size = sizeof kPlain, .rate = 48000, .channels = 2, .threads = 1}};

/* `more`: what the command refuses the library may do. */
static void as_the_command(vlw_converter *converter, const char *source, const char *name, int more, uint32_t flags) {
    static size_t s_turn; /* each source to one of the targets, or to all */
    const size_t count = sizeof kTargets / sizeof *kTargets, first = s_longer ? 0 : s_turn++ % count;
    for (size_t i = first; i < (s_longer ? count : first + 1); ++i) {
        char command[1000], options[3][30] = {"", "", ""};
        const uint32_t numbers[3] = {kTargets[i].rate, kTargets[i].channels, kTargets[i].bits};
        const char *const words[3] = {"rate", "channels", "bits"};
        for (int n = 0; n < 3; ++n)
            if (numbers[n]) snprintf(options[n], sizeof options[n], "--%s %u", words[n], numbers[n]);
        snprintf(command, sizeof command, "'%s' convert --overwrite %s %s %s -o command.wav %s >/dev/null 2>&1", s_vlwav, options[0], options[1], options[2], source);
        unlink("command.wav");
        const int done = system(command) == 0;
        const int failures = s_failures;
        if (!done) {
            const vlw_code code = vlw_converter_run(converter, source, "library.wav", &kTargets[i]);
            CHECK(code < 0 ? access("library.wav", F_OK) != 0 : more && code == VLW_OK && unlink("library.wav") == 0);
        } else {
            bytes expected = contents("command.wav");
            vlw_format format = {.size = sizeof format};
            vlw_conversion wish = kTargets[i];
            wish.flags = flags;
            CHECK(made(converter, source, "library.wav", wish) && file_is("library.wav", expected));
            CHECK(vlw_converter_format(converter, &format) == VLW_OK && same(format.container, "WAV") && same(format.codec, "PCM"));
            CHECK(format.rate == number_at(expected, 24) && format.channels == expected.at[22] && format.bits == expected.at[34]);
            CHECK(format.codec_tag == 1 && format.block_bytes == expected.at[32] && format.frames == format.frames_promised);
            CHECK(format.frames == number_at(expected, 40) / format.block_bytes);
            free(expected.at);
            unlink("library.wav");
        }
        if (s_failures != failures) fprintf(stderr, "  %s to %u %u %u\n", name, numbers[0], numbers[1], numbers[2]);
    }
}

static void all_kinds(void) {
    vlw_converter *const converter = new_converter();
    for (size_t kind = 0; kind < WAVE_KINDS; ++kind) {
        free(put_wave("source.wav", kind, kind % 2 ? "fjld" : "fdl", kWaveKinds[kind].block_frames ? 150 : 9001).at);
        as_the_command(converter, "source.wav", kWaveKinds[kind].name, kWaveKinds[kind].channels > 2, 0);
    }
    bytes aiff = make_aiff(2, 9001), mp3 = make_mp3(20, 20 * 1152);
    put_file("a.aiff", aiff);
    as_the_command(converter, "a.aiff", "AIFF", 0, 0);
    put_file("mp3.wav", mp3);
    as_the_command(converter, "mp3.wav", "MP3", 0, 0);
    /* Heads of pipes and crashed recorders. */
    free(put_wave("piped.wav", 1, "fp", 9001).at);
    as_the_command(converter, "piped.wav", "piped", 1, 0);
    free(put_wave("crashed.wav", 2, "fz", 9001).at);
    as_the_command(converter, "crashed.wav", "crashed", 1, 0);
    vlw_converter_free(converter);
    free(aiff.at), free(mp3.at);
}

/* Sources of a few frames, and of none: as long as the rates tell, to a frame of each side. */
static void few_frames(void) {
    const size_t few[] = {0, 1, 2, 17, 32, 33, 47, 48, 49};
    const uint32_t rates[] = {8000, 44100, 48000};
    vlw_converter *const converter = new_converter();
    for (size_t i = 0; i < sizeof few / sizeof *few; ++i)
        for (size_t kind = 0; kind < WAVE_KINDS; ++kind) {
            const wave_kind *const from = &kWaveKinds[kind];
            free(put_wave("source.wav", kind, "fd", few[i]).at);
            for (size_t to = 0; to < 3 && !from->block_frames; ++to) {
                vlw_conversion wish = kPlain;
                vlw_format format = {.size = sizeof format};
                wish.rate = rates[to];
                const double expected = (double)few[i] * wish.rate / from->rate;
                CHECK(made(converter, "source.wav", "few.wav", wish) && vlw_converter_format(converter, &format) == VLW_OK);
                const int good = fabs((double)format.frames - expected) <= 1 + (double)wish.rate / from->rate;
                if (!good) fprintf(stderr, "  %s: %zu frames to %u Hz are %d, not %g\n", from->name, few[i], wish.rate, (int)format.frames, expected);
                CHECK(good);
            }
        }
    vlw_converter_free(converter);
}

/* ---- the record ---- */

static void records(void) {
    vlw_converter *const converter = new_converter();
    vlw_format format = {.size = sizeof format};
    free(put_wave("a.wav", 1, "fdl", 500).at);
    CHECK(vlw_converter_new(NULL, NULL) == VLW_BAD_ARGUMENT && vlw_converter_error(NULL) == NULL);
    CHECK(vlw_converter_run(NULL, "a.wav", "b.wav", NULL) == VLW_BAD_ARGUMENT && vlw_converter_notes(NULL) == NULL);
    CHECK(vlw_converter_format(NULL, &format) == VLW_BAD_ARGUMENT);
    vlw_converter_free(NULL);
    CHECK(vlw_converter_format(converter, &format) == VLW_BAD_STATE && same(vlw_converter_notes(converter), ""));
    /* None is as one of zeros; a later one is larger. */
    CHECK(vlw_converter_run(converter, "a.wav", "none.wav", NULL) == VLW_OK && vlw_converter_run(converter, "a.wav", "zeros.wav", &kPlain) == VLW_OK);
    bytes none = contents("none.wav");
    CHECK(none.size > 2000 && file_is("zeros.wav", none));
    struct {
        vlw_conversion now;
        uint64_t later[4];
    } larger = {.now = {.size = sizeof larger, .flags = VLW_OVERWRITE}, .later = {1, 2, 3, 4}};
    CHECK(vlw_converter_run(converter, "a.wav", "zeros.wav", &larger.now) == VLW_OK && file_is("zeros.wav", none));
    format.size = 7;
    CHECK(vlw_converter_format(converter, &format) == VLW_BAD_ARGUMENT && vlw_converter_format(converter, NULL) == VLW_BAD_ARGUMENT);
    /* Refused as a whole; then nothing is told of the run before either. */
    const vlw_conversion wrong[] = {{0}, {.size = sizeof kPlain - 1}, {.size = sizeof kPlain, .flags = 32}, {.size = sizeof kPlain, .text = (vlw_text)3},
                                    {.size = sizeof kPlain, .text = (vlw_text)-1}};
    for (size_t i = 0; i < sizeof wrong / sizeof *wrong; ++i) {
        CHECK(made(converter, "a.wav", "zeros.wav", kPlain));
        CHECK(makes_nothing(converter, "a.wav", "b.wav", &wrong[i], VLW_BAD_ARGUMENT, ""));
    }
    CHECK(makes_nothing(converter, NULL, "b.wav", NULL, VLW_BAD_ARGUMENT, "") && makes_nothing(converter, "a.wav", NULL, NULL, VLW_BAD_ARGUMENT, ""));
    const vlw_conversion impossible[] = {{.size = sizeof kPlain, .rate = 96000}, {.size = sizeof kPlain, .channels = 6}, {.size = sizeof kPlain, .bits = 24}};
    for (size_t i = 0; i < 3; ++i) CHECK(failed(converter, vlw_converter_run(converter, "a.wav", "b.wav", &impossible[i]), VLW_UNSUPPORTED, "") && access("b.wav", F_OK) != 0);
    vlw_converter_free(converter);
    free(none.at);
}

/* ---- tags and notes ---- */

static int tag_is(const char *path, const char *keyword, const char *value) {
    vlw_reader *reader = NULL;
    vlw_tags *tags = NULL;
    int good = vlw_reader_new(NULL, &reader) == VLW_OK && vlw_tags_new(&tags) == VLW_OK;
    good = good && vlw_reader_open(reader, path) == VLW_OK && vlw_reader_tags(reader, tags) == VLW_OK && same(vlw_tags_get(tags, keyword), value);
    if (!good) fprintf(stderr, "  %s: %s\n", path, vlw_tags_get(tags, keyword) ? vlw_tags_get(tags, keyword) : "none");
    vlw_reader_free(reader);
    vlw_tags_free(tags);
    return good;
}

static void tags(void) {
    vlw_converter *const converter = new_converter();
    vlw_tags *set = NULL;
    vlw_conversion wish = kPlain;
    bytes aiff = make_aiff(1, 200);
    free(put_wave("a.wav", 4, "fdl", 500).at);
    put_file("a.aiff", aiff);
    CHECK(made(converter, "a.wav", "t.wav", wish) && tag_is("t.wav", "title", "Title") && tag_is("t.wav", "artist", "Gr\xC3\xBC\xC3\x9F" "e") && tag_is("t.wav", "year", "2004"));
    CHECK(made(converter, "a.aiff", "t.wav", wish) && tag_is("t.wav", "title", "A name") && tag_is("t.wav", "artist", "An author") && tag_is("t.wav", "comment", "A note"));
    /* On top of the source's; alone with VLW_NO_TAGS. */
    CHECK(vlw_tags_new(&set) == VLW_OK && vlw_tags_set(set, "title", "\xE6\x97\xA5") == VLW_OK && vlw_tags_set(set, "album", "Album") == VLW_OK);
    wish.tags = set;
    CHECK(made(converter, "a.wav", "t.wav", wish) && tag_is("t.wav", "title", "\xE6\x97\xA5") && tag_is("t.wav", "album", "Album") && tag_is("t.wav", "artist", "Gr\xC3\xBC\xC3\x9F" "e"));
    wish.flags = VLW_NO_TAGS | VLW_NO_CHUNKS;
    CHECK(made(converter, "a.wav", "t.wav", wish) && tag_is("t.wav", "title", "\xE6\x97\xA5") && tag_is("t.wav", "artist", NULL) && tag_is("t.wav", "year", NULL));
    /* Of the encoding that is wished for; what it lacks is a loss. */
    wish.flags = 0, wish.text = VLW_TEXT_1252;
    CHECK(makes_nothing(converter, "a.wav", "b.wav", &wish, VLW_WOULD_LOSE, "b.wav"));
    const char *const text = vlw_converter_error(converter)->text;
    CHECK(strstr(text, "title") && strstr(text, "\"\xE6\x97\xA5\"") && strstr(text, "\"?\"") && !strstr(text, "artist"));
    wish.flags = VLW_LOSSY;
    CHECK(made(converter, "a.wav", "t.wav", wish) && tag_is("t.wav", "title", "?") && strstr(vlw_converter_notes(converter), "title"));
    wish.text = VLW_TEXT_AUTO, wish.flags = 0;
    CHECK(vlw_tags_set(set, "conductor", "Gone") == VLW_OK && vlw_tags_set_picture(set, 3, "BM", 2) == VLW_OK);
    CHECK(makes_nothing(converter, "a.wav", "b.wav", &wish, VLW_WOULD_LOSE, "b.wav"));
    CHECK(strstr(vlw_converter_error(converter)->text, "\"Gone\"") && strstr(vlw_converter_error(converter)->text, "picture 3"));
    wish.flags = VLW_LOSSY;
    CHECK(made(converter, "a.wav", "t.wav", wish) && tag_is("t.wav", "conductor", NULL) && tag_is("t.wav", "album", "Album"));
    vlw_tags_free(set);
    vlw_converter_free(converter);
    free(aiff.at);
}

static void notes(void) {
    static const struct {
        size_t kind;
        vlw_conversion wish;
        const char *notes;
    } kCases[] = {
        {1, {.size = sizeof kPlain}, ""},
        {0, {.size = sizeof kPlain}, ""},
        {2, {.size = sizeof kPlain}, "24 \xE2\x86\x92 16 bits"},
        {4, {.size = sizeof kPlain}, "32 \xE2\x86\x92 16 bits\nthe output has no use for \"fact\""},
        {6, {.size = sizeof kPlain}, "the output has no use for \"fact\""},
        {8, {.size = sizeof kPlain}, "the output has no use for \"fact\""},
        {9, {.size = sizeof kPlain}, "192000 \xE2\x86\x92 48000 Hz\n24 \xE2\x86\x92 16 bits"},
        {5, {.size = sizeof kPlain, .channels = 2}, "6 channels \xE2\x86\x92 stereo"},
        {1, {.size = sizeof kPlain, .channels = 1, .bits = 8, .rate = 8000}, "stereo \xE2\x86\x92 mono\n44100 \xE2\x86\x92 8000 Hz\n16 \xE2\x86\x92 8 bits"},
        {0, {.size = sizeof kPlain, .channels = 2, .bits = 16, .rate = 48000}, ""},
    };
    vlw_converter *const converter = new_converter();
    for (size_t i = 0; i < sizeof kCases / sizeof *kCases; ++i) {
        free(put_wave("a.wav", kCases[i].kind, "fd", 200).at);
        const int failures = s_failures;
        CHECK(made(converter, "a.wav", "t.wav", kCases[i].wish) && same(vlw_converter_notes(converter), kCases[i].notes));
        if (s_failures != failures) fprintf(stderr, "  %s: \"%s\"\n", kWaveKinds[kCases[i].kind].name, vlw_converter_notes(converter));
    }
    /* Chunks that the target doesn't have, unless that was wished for. */
    vlw_conversion wish = kPlain;
    free(put_wave("a.wav", 1, "fbjdal", 200).at);
    CHECK(made(converter, "a.wav", "t.wav", wish) && strstr(vlw_converter_notes(converter), "\"JUNK\"") && !strstr(vlw_converter_notes(converter), "bext") && !strstr(vlw_converter_notes(converter), "adtl"));
    wish.flags = VLW_NO_CHUNKS;
    CHECK(made(converter, "a.wav", "t.wav", wish) && same(vlw_converter_notes(converter), ""));
    vlw_converter_free(converter);
}

/* ---- sources that end early ---- */

static pid_t feed(const char *fifo, bytes content) {
    const pid_t child = fork();
    if (child == 0) {
        signal(SIGPIPE, SIG_IGN);
        const int end = open(fifo, O_WRONLY);
        for (size_t at = 0; at < content.size;) {
            const ssize_t done = write(end, content.at + at, content.size - at);
            if (done <= 0) break;
            at += (size_t)done;
        }
        _exit(0);
    }
    return child;
}

static void cut_sources(void) {
    vlw_converter *const converter = new_converter();
    vlw_conversion partial = kPlain;
    vlw_format format = {.size = sizeof format};
    partial.flags = VLW_PARTIAL;
    CHECK(mkfifo("fifo", 0600) == 0);
    for (size_t kind = 0; kind < WAVE_KINDS; ++kind)
        for (int in_order = 0; in_order < 2; ++in_order) {
            const size_t units = kWaveKinds[kind].block_frames ? 30 : 2000;
            bytes cut = put_wave("cut.wav", kind, "fc", units);
            const char *const source = in_order ? "fifo" : "cut.wav";
            const int failures = s_failures;
            pid_t feeder = in_order ? feed("fifo", cut) : 0;
            CHECK(makes_nothing(converter, source, "b.wav", NULL, VLW_DAMAGED, source));
            if (in_order) waitpid(feeder, NULL, 0);
            feeder = in_order ? feed("fifo", cut) : 0;
            CHECK(vlw_converter_run(converter, source, "b.wav", &partial) == VLW_CUT && vlw_converter_error(converter)->code == VLW_CUT);
            if (in_order) waitpid(feeder, NULL, 0);
            CHECK(vlw_converter_format(converter, &format) == VLW_OK && format.frames > 0);
            /* As much as a file has that promises no more. */
            free(put_wave("whole.wav", kind, "fd", units).at);
            CHECK(made(converter, "whole.wav", "whole.made.wav", kPlain));
            bytes whole = contents("whole.made.wav");
            CHECK(file_is("b.wav", whole) || kWaveKinds[kind].block_frames);
            if (s_failures != failures) fprintf(stderr, "  %s%s: %s\n", kWaveKinds[kind].name, in_order ? ", in order" : "", vlw_converter_error(converter)->text);
            unlink("b.wav"), free(cut.at), free(whole.at);
        }
    /* Found at the end alone. */
    bytes mp3 = make_mp3(20, 40 * 1152);
    put_file("mp3.wav", mp3);
    CHECK(makes_nothing(converter, "mp3.wav", "b.wav", NULL, VLW_DAMAGED, "mp3.wav"));
    CHECK(vlw_converter_run(converter, "mp3.wav", "b.wav", &partial) == VLW_CUT && access("b.wav", F_OK) == 0);
    vlw_converter_free(converter);
    free(mp3.at);
}

/* ---- targets ---- */

static void targets(void) {
    vlw_converter *const converter = new_converter();
    vlw_conversion over = kPlain;
    over.flags = VLW_OVERWRITE;
    bytes source = put_wave("a.wav", 1, "fdl", 500), old = make_entries("OLD =old");
    CHECK(makes_nothing(converter, "nowhere.wav", "b.wav", NULL, VLW_NOT_FOUND, "nowhere.wav"));
    CHECK(makes_nothing(converter, "a.wav", "nowhere/b.wav", NULL, VLW_NOT_FOUND, "nowhere/b.wav"));
    CHECK(makes_nothing(converter, ".", "b.wav", NULL, VLW_SYSTEM, ".") && makes_nothing(converter, "a.wav", ".", &over, VLW_SYSTEM, "."));
    put_file("old.wav", old);
    CHECK(makes_nothing(converter, "old.wav", "b.wav", NULL, VLW_NOT_AUDIO, "old.wav"));
    CHECK(makes_nothing(converter, "a.wav", "old.wav", NULL, VLW_EXISTS, "old.wav") && file_is("old.wav", old));
    CHECK(vlw_converter_run(converter, "a.wav", "old.wav", &over) == VLW_OK && !file_is("old.wav", old));
    bytes made_file = contents("old.wav");
    /* The source itself, under any name. */
    CHECK(link("a.wav", "hard.wav") == 0 && symlink("a.wav", "soft.wav") == 0);
    const char *const selves[] = {"a.wav", "./a.wav", "hard.wav", "soft.wav"};
    for (size_t i = 0; i < 4; ++i) {
        CHECK(makes_nothing(converter, "a.wav", selves[i], &over, VLW_BAD_ARGUMENT, selves[i]) && file_is("a.wav", source));
        CHECK(failed(converter, vlw_converter_run(converter, selves[i], "a.wav", NULL), i == 9 ? VLW_EXISTS : VLW_BAD_ARGUMENT, "a.wav"));
    }
    /* What isn't replaced gets the bytes. */
    CHECK(mkfifo("out", 0600) == 0);
    const int held = open("out", O_RDWR);
    vlw_format format = {.size = sizeof format};
    alarm(20);
    CHECK(vlw_converter_run(converter, "a.wav", "out", &over) == VLW_OK && vlw_converter_format(converter, &format) == VLW_OK && format.frames == 500);
    bytes piped = {malloc(100000), 0};
    piped.size = (size_t)read(held, piped.at, 100000);
    CHECK(equal(piped, made_file));
    CHECK(vlw_converter_run(converter, "a.wav", "/dev/null", &over) == VLW_OK);
    CHECK(failed(converter, vlw_converter_run(converter, "a.wav", "/dev/full", &over), VLW_NO_SPACE, "/dev/full"));
    alarm(0);
    close(held);
    /* Odd names, and one handle all the time. */
    const char *const odd[] = {"\xFF\xFE .wav", "a\nb.wav", "%s.wav", "\xED\xA0\x80.wav"};
    for (size_t i = 0; i < 4; ++i) {
        CHECK(vlw_converter_run(converter, "a.wav", odd[i], NULL) == VLW_OK && file_is(odd[i], made_file));
        CHECK(vlw_converter_run(converter, odd[i], "odd.wav", &over) == VLW_OK && file_is("odd.wav", made_file));
    }
    vlw_converter_free(converter);
    free(source.at), free(old.at), free(made_file.at), free(piped.at);
}

/* ---- progress ---- */

typedef struct watch {
    pthread_t thread;
    int calls, wrong, stop_at;
    int64_t done, total;
    double last, shortest;
} watch;

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static int progress(void *user, int64_t done, int64_t total) {
    watch *const w = user;
    const double time = now();
    if (!pthread_equal(w->thread, pthread_self()) || done < w->done || (total != VLW_UNKNOWN && done > total)) ++w->wrong;
    if (w->calls > 0 && done != total && time - w->last < w->shortest) w->shortest = time - w->last;
    w->last = time, w->done = done, w->total = total;
    return ++w->calls == w->stop_at;
}

static void watched(void) {
    vlw_converter *const converter = new_converter();
    vlw_conversion wish = kPlain;
    watch w = {.thread = pthread_self(), .shortest = 100};
    wish.progress = progress, wish.user = &w, wish.flags = VLW_OVERWRITE, wish.rate = 48000, wish.threads = 3;
    free(put_wave("a.wav", 1, "fd", 3000000).at);
    CHECK(vlw_converter_run(converter, "a.wav", "b.wav", &wish) == VLW_OK && w.calls >= 2 && w.wrong == 0);
    CHECK(w.done == 3000000 && w.total == 3000000 && w.shortest > 0.09);
    unlink("b.wav");
    for (int stop_at = 1; stop_at <= 2; ++stop_at) {
        w = (watch){.thread = pthread_self(), .stop_at = stop_at};
        CHECK(makes_nothing(converter, "a.wav", "b.wav", &wish, VLW_CANCELLED, "") && w.calls == stop_at);
    }
    /* At the very end it can be stopped too; a length that isn't known; a rate that only a reader takes. */
    bytes small = put_wave("a.wav", 1, "fd", 100);
    w = (watch){.thread = pthread_self(), .stop_at = 1};
    CHECK(makes_nothing(converter, "a.wav", "b.wav", &wish, VLW_CANCELLED, "") && w.done == 100 && w.total == 100);
    unlink("fifo");
    bytes piped = make_wave(&kWaveKinds[1], "fp", NULL, 40000);
    CHECK(mkfifo("fifo", 0600) == 0);
    const pid_t feeder = feed("fifo", piped);
    w = (watch){.thread = pthread_self()};
    CHECK(vlw_converter_run(converter, "fifo", "b.wav", &wish) == VLW_OK && w.done == 40000 && w.total == 40000 && w.calls >= 2 && !w.wrong);
    waitpid(feeder, NULL, 0);
    const wave_kind slow = {"slow", 1, 1, 500, 16, 2, 0, 0};
    bytes low = make_wave(&slow, "fd", NULL, 1000);
    put_file("low.wav", low);
    w = (watch){.thread = pthread_self()};
    CHECK(vlw_converter_run(converter, "low.wav", "b.wav", &wish) == VLW_OK && w.done == 1000 && w.total == 1000 && !w.wrong);
    vlw_converter_free(converter);
    free(small.at), free(piped.at), free(low.at);
}

/* ---- several threads ---- */

static const wave_kind kTallStereo = {"96000 Hz", 1, 2, 96000, 16, 4, 0, 0};
enum { RUNS = 2 };
static const uint32_t kThreads[RUNS] = {1, 4};

#if OWN_ALLOCATION
static atomic_int s_threads_left = -1; /* those that can still be had; -1: all */

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*work)(void *), void *argument) {
    int (*create)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
    *(void **)&create = dlsym(RTLD_NEXT, "pthread_create");
    if (s_threads_left >= 0 && atomic_fetch_sub(&s_threads_left, 1) <= 0) {
        s_threads_left = 0;
        return EAGAIN;
    }
    return create(thread, attributes, work, argument);
}
#endif

/* One after the other for each number of threads: code, text and file are those of one thread. Its code. */
static vlw_code same_for_all(vlw_converter *converter, const char *name, vlw_conversion wish, int reads) {
    bytes first = {0};
    char text[1000] = "";
    vlw_code codes[RUNS] = {0};
    wish.flags |= VLW_OVERWRITE;
    for (size_t i = 0; i < RUNS; ++i) {
        wish.threads = kThreads[i];
        unlink("pieces.wav");
        s_reads_left = reads;
        codes[i] = vlw_converter_run(converter, "long.wav", "pieces.wav", &wish);
        s_reads_left = -1;
        if (i == 0) {
            first = contents("pieces.wav");
            snprintf(text, sizeof text, "%s", vlw_converter_error(converter)->text);
        }
        const int good = codes[i] == codes[0] && same(text, vlw_converter_error(converter)->text) && file_is("pieces.wav", first) && (first.size > 0) == (codes[i] >= 0);
        if (!good) fprintf(stderr, "  %s to %u %u %u with %u threads, %d reads: %d %s\n", name, wish.rate, wish.channels, wish.bits, kThreads[i], reads, codes[i], vlw_converter_error(converter)->text);
        CHECK(good);
    }
    free(first.at);
    unlink("pieces.wav");
    return codes[0];
}

static void by_threads(void) {
    static const vlw_conversion kWishes[] = {{.rate = 48000}, {.rate = 44100, .bits = 16}, {.rate = 8000, .channels = 1, .bits = 8}, {.rate = 11025, .channels = 2, .bits = 8}, {.channels = 1}};
    const wave_kind *const kinds[] = {&kWaveKinds[0], &kWaveKinds[1], &kWaveKinds[5], &kTallStereo};
    vlw_converter *const converter = new_converter();
    for (size_t k = 0; k < 4; ++k)
        for (size_t i = 0; i < sizeof kWishes / sizeof *kWishes; ++i) {
            if (!s_longer && (i + k) % 2) continue;
            vlw_conversion wish = kWishes[i];
            wish.size = sizeof wish;
            /* Pieces for two threads. */
            const uint64_t rate = wish.rate ? wish.rate : kinds[k]->rate < 48000 ? kinds[k]->rate : 48000;
            bytes made_file = make_wave(kinds[k], "fd", NULL, (size_t)(140000 * kinds[k]->rate / rate));
            put_file("long.wav", made_file);
            CHECK(same_for_all(converter, kinds[k]->name, wish, -1) == VLW_OK);
            free(made_file.at);
        }
    /* What ends early, and what fails: at the start, in the middle, in the last piece. */
    vlw_conversion wish = kPlain, partial = kPlain;
    wish.rate = partial.rate = 48000, partial.flags = VLW_PARTIAL;
    free(put_wave("long.wav", 1, "fc", 200000).at);
    CHECK(same_for_all(converter, "cut", wish, -1) == VLW_DAMAGED && same_for_all(converter, "cut", partial, -1) == VLW_CUT);
    free(put_wave("long.wav", 1, "fd", 200000).at);
    for (int reads = 0; reads < 12; reads += 3) CHECK(same_for_all(converter, "failing", partial, reads) == VLW_SYSTEM);
#if OWN_ALLOCATION
    for (int left = 0; left < 3; ++left) {
        s_threads_left = left;
        CHECK(same_for_all(converter, "without threads", wish, -1) == VLW_OK);
        s_threads_left = -1;
    }
#endif
    vlw_converter_free(converter);
}

/* ---- whole or not at all ---- */

static void limited_sizes(void) {
    const pid_t child = fork_to_check();
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        vlw_converter *const converter = new_converter();
        vlw_conversion wish = kPlain;
        wish.rate = 22050, wish.channels = 1, wish.bits = 8;
        free(put_wave("a.wav", 1, "fdl", 5000).at);
        CHECK(vlw_converter_run(converter, "a.wav", "size.wav", &wish) == VLW_OK);
        bytes whole = contents("size.wav");
        for (rlim_t size = 0; size < whole.size; size += size < 60 || size + 130 > whole.size ? 3 : 101) {
            const struct rlimit none = {RLIM_INFINITY, RLIM_INFINITY}, limit = {size, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limit);
            const size_t names = names_in(".");
            const vlw_code code = vlw_converter_run(converter, "a.wav", "limited.wav", &wish);
            setrlimit(RLIMIT_FSIZE, &none);
            CHECK(code < 0 && vlw_converter_error(converter)->text[0] && names_in(".") == names);
        }
        vlw_converter_free(converter);
        end_check();
    }
    join_check(child);
}

static void full_disk(void) {
    const pid_t child = fork_to_check();
    if (child == 0) {
        if (mkdir("disk", 0755) != 0 || unshare(CLONE_NEWNS) != 0 || mount("", "/", "", MS_REC | MS_PRIVATE, NULL) != 0 ||
            mount("tmpfs", "disk", "tmpfs", 0, "size=64k") != 0) {
            fprintf(stderr, "no small disk can be mounted: not checked\n");
            end_check();
        }
        vlw_converter *const converter = new_converter();
        free(put_wave("a.wav", 1, "fdl", 30000).at);
        free(put_wave("small.wav", 1, "fdl", 300).at);
        CHECK(failed(converter, vlw_converter_run(converter, "a.wav", "disk/b.wav", NULL), VLW_NO_SPACE, "disk/b.wav"));
        CHECK(vlw_converter_error(converter)->system == ENOSPC && names_in("disk") == 2);
        CHECK(vlw_converter_run(converter, "small.wav", "disk/b.wav", NULL) == VLW_OK && names_in("disk") == 3);
        vlw_converter_free(converter);
        end_check();
    }
    join_check(child);
}

static void failing_calls(void) {
    vlw_converter *const converter = new_converter();
    const size_t kinds[] = {1, 8};
    unlink("b.wav");
    for (size_t i = 0; i < 2; ++i) {
        free(put_wave("a.wav", kinds[i], "fdl", kWaveKinds[kinds[i]].block_frames ? 300 : 60000).at);
        /* A read that fails at any place is never an end. */
        for (int reads = 0, code = -1; code != VLW_OK && reads < 2000; reads += 1 + reads / 8) {
            const size_t names = names_in(".");
            s_reads_left = reads;
            code = vlw_converter_run(converter, "a.wav", "b.wav", NULL);
            s_reads_left = -1;
            if (code != VLW_OK) CHECK(code < 0 && names_in(".") == names);
            if (code == VLW_OK) CHECK(reads > 2);
        }
        bytes whole = contents("b.wav");
        CHECK(unlink("b.wav") == 0);
        for (int until = 1, code = -1; code != VLW_OK && until < 2000; ++until) {
            const size_t names = names_in(".");
            memset(&s_changes, 0, sizeof s_changes);
            s_changes.until = until, s_changes.error = EIO;
            code = vlw_converter_run(converter, "a.wav", "b.wav", NULL);
            const int seen = s_changes.seen;
            memset(&s_changes, 0, sizeof s_changes);
            if (code != VLW_OK) {
                CHECK(code < 0 && names_in(".") == names);
                continue;
            }
            /* A header that couldn't be written at first is written again at the end. */
            CHECK(file_is("b.wav", whole));
            if (seen >= until && unlink("b.wav") == 0) code = -1;
        }
        free(whole.at);
        CHECK(unlink("b.wav") == 0);
    }
    vlw_converter_free(converter);
}

static void memory_runs_out(void) {
#if OWN_ALLOCATION
    vlw_module *module = NULL;
    vlw_converter *converter = NULL;
    vlw_conversion wish = kPlain;
    wish.rate = 8000, wish.bits = 8;
    CHECK(vlw_module_new(&module) == VLW_OK && vlw_module_load(module, NULL) == VLW_OK);
    for (size_t kind = 1; kind < 9; kind += 7) { /* by itself, and by a decoder */
        int failures = 0;
        vlw_code code = VLW_NO_MEMORY;
        free(put_wave("a.wav", kind, "fdl", kind == 8 ? 20 : 500).at);
        for (long left = 0; code != VLW_OK && left < 20000; left += kind == 8 ? 1 + left / 16 : 1) {
            const size_t names = names_in(".");
            s_allocations_left = left;
            code = vlw_converter_new(module, &converter);
            if (code == VLW_OK) code = vlw_converter_run(converter, "a.wav", "memory.wav", &wish);
            s_allocations_left = -1;
            const int good = code == VLW_OK || (code == VLW_NO_MEMORY && names_in(".") == names);
            if (!good) fprintf(stderr, "  %s, after %ld allocations: %d %s\n", kWaveKinds[kind].name, left, code, converter ? vlw_converter_error(converter)->text : "");
            CHECK(good);
            vlw_converter_free(converter);
            converter = NULL;
            failures += code != VLW_OK;
        }
        CHECK(failures > 30 && code == VLW_OK && unlink("memory.wav") == 0);
    }
    vlw_module_free(module);
#endif
}

/* ---- many at once, and much ---- */

static void *convert_often(void *folder) {
    char target[100], wrong[100];
    bytes first = {0};
    snprintf(target, sizeof target, "%s/b.wav", (char *)folder);
    snprintf(wrong, sizeof wrong, "%s/no/b.wav", (char *)folder);
    vlw_converter *const converter = new_converter();
    for (int i = 0; i < 12; ++i) {
        vlw_conversion wish = kPlain;
        wish.rate = i % 2 ? 8000 : 48000;
        const char *const source = i % 3 == 2 ? "ima.wav" : "a.wav";
        CHECK(made(converter, source, target, wish) && access(target, F_OK) == 0);
        if (i == 0) first = contents(target);
        if (i == 6) CHECK(file_is(target, first));
        CHECK(vlw_converter_run(converter, source, wrong, &wish) == VLW_NOT_FOUND);
        CHECK(vlw_converter_run(converter, "cut.wav", target, NULL) == VLW_DAMAGED);
    }
    vlw_converter_free(converter);
    free(first.at);
    return NULL;
}

static void threads(void) {
    static char folders[4][3] = {"t1", "t2", "t3", "t4"};
    pthread_t all[4];
    free(put_wave("a.wav", 1, "fdl", 20000).at);
    free(put_wave("ima.wav", 8, "fdl", 200).at);
    free(put_wave("cut.wav", 1, "fc", 200).at);
    for (int i = 0; i < 4; ++i) CHECK(mkdir(folders[i], 0755) == 0 && pthread_create(&all[i], NULL, convert_often, folders[i]) == 0);
    for (int i = 0; i < 4; ++i) pthread_join(all[i], NULL);
}

/* In a child a converter may be freed, and a new one works. */
static void forked(void) {
    vlw_converter *const converter = new_converter();
    free(put_wave("a.wav", 8, "fdl", 100).at);
    CHECK(made(converter, "a.wav", "b.wav", kPlain));
    const pid_t child = fork_to_check();
    if (child == 0) {
        vlw_converter_free(converter);
        vlw_converter *const own = new_converter();
        CHECK(made(own, "a.wav", "child.wav", kPlain));
        vlw_converter_free(own);
        end_check();
    }
    join_check(child);
    bytes file = contents("b.wav");
    CHECK(file_is("child.wav", file) && made(converter, "a.wav", "b.wav", kPlain) && file_is("b.wav", file));
    vlw_converter_free(converter);
    free(file.at);
}

/* The memory that a run of so much silence takes, in KiB. */
static long memory_for(uint32_t seconds) {
    const wave_kind kind = {"mono", 1, 1, 8000, 16, 2, 0, 0};
    bytes head = make_wave(&kind, "fd", NULL, 0);
    const uint32_t size = seconds * 16000;
    memcpy(head.at + 40, &size, 4);
    put_file("silence.wav", head);
    CHECK(truncate("silence.wav", 44 + (off_t)size) == 0);
    const pid_t child = fork_to_check();
    if (child == 0) {
        vlw_converter *const converter = new_converter();
        vlw_conversion wish = kPlain;
        wish.bits = 8;
        CHECK(made(converter, "silence.wav", "silent.wav", wish));
        end_check();
    }
    int status = 0;
    struct rusage used = {0};
    CHECK(wait4(child, &status, 0, &used) == child && status == 0);
    free(head.at);
    return used.ru_maxrss;
}

static void two_hours(void) {
    const long minute = memory_for(60), hours = memory_for(7200);
    CHECK(hours < minute + 4096);
    if (hours >= minute + 4096) fprintf(stderr, "  %ld KiB, %ld for a minute\n", hours, minute);
}

int main(int argc, char **argv) {
    s_longer = argc == 4 && same(argv[3], "long");
    if (argc < 3 || !enter_folder(argv[2])) return 2;
    s_vlwav = argv[1];
    const struct {
        const char *name;
        void (*run)(void);
    } checks[] = {{"all_kinds", all_kinds}, {"few_frames", few_frames}, {"records", records}, {"tags", tags}, {"notes", notes}, {"cut_sources", cut_sources}, {"targets", targets},
                  {"watched", watched}, {"by_threads", by_threads}, {"limited_sizes", limited_sizes}, {"full_disk", full_disk}, {"failing_calls", failing_calls},
                  {"memory", memory_runs_out}, {"threads", threads}, {"forked", forked}, {"two_hours", two_hours}};
    for (size_t i = 0; i < sizeof checks / sizeof *checks; ++i) {
        const int failures = s_failures;
        const double start = now();
        checks[i].run();
        if (s_longer || s_failures != failures) fprintf(stderr, "%s: %d, %.1f s\n", checks[i].name, s_failures - failures, now() - start);
    }
    CHECK(leave_folder());
    return s_failures ? 1 : 0;
}
