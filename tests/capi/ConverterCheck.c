/* Conversions: the file that comes of them, whole or not at all. Started with a folder to work in. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <math.h>
#include <pthread.h>
#include <time.h>

#include "capi/vlwav_more.h"
#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"
#include "tests/capi/SystemCalls.h"

static const char *const kEntries = "INAM=Title|IART=Gr\xFC\xDF" "e|ICRD=2004-05-06";
static const vlw_conversion kPlain = {.size = sizeof(vlw_conversion)};

static vlw_converter *new_converter(void) {
    vlw_converter *converter = NULL;
    CHECK(vlw_converter_new(NULL, &converter) == VLW_OK);
    return converter;
}

static int failed(const vlw_converter *converter, vlw_code code, vlw_code expected, const char *path) {
    vlw_format format = {.size = sizeof format};
    return told(vlw_converter_error(converter), code, expected, -1, path) && vlw_converter_format(converter, &format) == VLW_BAD_STATE &&
           same(vlw_converter_notes(converter), "");
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
    const bytes file = make_wave(&kWaves[kind], layout, kEntries, units);
    put_file(path, file);
    return file;
}

/* ---- every kind ---- */

/* The source's own samples, computed from its format, unless its rate is none that can be written. */
static void check_made(vlw_converter *converter, const char *source, const sound *from) {
    const int failures = s_failures;
    vlw_format format = {.size = sizeof format};
    CHECK(made(converter, source, "made.wav", kPlain) && vlw_converter_format(converter, &format) == VLW_OK);
    bytes file = contents("made.wav");
    CHECK(same(format.container, "WAV") && same(format.codec, "PCM") && format.codec_tag == 1);
    CHECK(format.rate == number_at(file, 24) && format.channels == file.at[22] && format.bits == file.at[34]);
    CHECK(format.block_bytes == file.at[32] && format.block_bytes == format.channels * format.bits / 8);
    CHECK(format.frames == number_at(file, 40) / format.block_bytes && format.frames == format.frames_promised);
    CHECK(format.bits == (same(from->name, "8 bits") ? 8 : 16));
    if (from->rate <= 48000 && from->channels <= 2) {
        int wrong = format.rate != from->rate || format.channels != from->channels || format.frames != (int64_t)from->frames;
        for (size_t i = 0; !wrong && i < from->frames * from->channels; ++i)
            wrong = format.bits == 8 ? file.at[44 + i] != (from->samples[i] >> 8) + 128 : memcmp(file.at + 44 + 2 * i, &from->samples[i], 2) != 0;
        CHECK(!wrong);
    }
    if (s_failures != failures) fprintf(stderr, "  %s\n", from->name);
    free(file.at);
}

/* Also with the heads of pipes and crashed recorders. */
static void all_kinds(void) {
    static const char *const kLayouts[] = {"fdl", "fjld", "fp", "fz"};
    vlw_converter *const converter = new_converter();
    for (size_t i = 0; i < 4 * WAVES; ++i) {
        const wave *const of = &kWaves[i / 4];
        sound from = make_sound(of->kind, of->rate, of->channels, is_coded(of) ? 150 : 9002);
        free(put_wave("source.wav", i / 4, kLayouts[i % 4], is_coded(of) ? 150 : 9002).at);
        check_made(converter, "source.wav", &from);
        free_sound(&from);
    }
    for (sound_kind kind = AIFF_8; kind < SOUND_KINDS; ++kind) {
        sound from = make_sound(kind, 44100, 2, 9001);
        put_file("a.aiff", (bytes){from.file, from.size});
        check_made(converter, "a.aiff", &from);
        free_sound(&from);
    }
    vlw_converter_free(converter);
}

/* Sources of a few frames, and of none: as long as the rates tell, to a frame of each side. */
static void few_frames(void) {
    const size_t few[] = {0, 1, 2, 17, 32, 33, 47, 48, 49};
    const uint32_t rates[] = {8000, 44100, 48000};
    vlw_converter *const converter = new_converter();
    for (size_t i = 0; i < sizeof few / sizeof *few; ++i)
        for (size_t kind = 0; kind < WAVES; ++kind) {
            const wave *const from = &kWaves[kind];
            free(put_wave("source.wav", kind, "fd", few[i]).at);
            for (size_t to = 0; to < 3 && !is_coded(from); ++to) {
                vlw_conversion wish = kPlain;
                vlw_format format = {.size = sizeof format};
                wish.rate = rates[to];
                const double expected = (double)few[i] * wish.rate / from->rate;
                CHECK(made(converter, "source.wav", "few.wav", wish) && vlw_converter_format(converter, &format) == VLW_OK);
                const int good = fabs((double)format.frames - expected) <= 1 + (double)wish.rate / from->rate;
                if (!good) fprintf(stderr, "  %s: %zu frames to %u Hz are %d, not %g\n", name_of(from), few[i], wish.rate, (int)format.frames, expected);
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
        if (s_failures != failures) fprintf(stderr, "  %s: \"%s\"\n", name_of(&kWaves[kCases[i].kind]), vlw_converter_notes(converter));
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
    for (size_t kind = 0; kind < WAVES; ++kind)
        for (int in_order = 0; in_order < 2; ++in_order) {
            const size_t units = is_coded(&kWaves[kind]) ? 30 : 2000;
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
            CHECK(file_is("b.wav", whole) || is_coded(&kWaves[kind]));
            if (s_failures != failures) fprintf(stderr, "  %s%s: %s\n", name_of(&kWaves[kind]), in_order ? ", in order" : "", vlw_converter_error(converter)->text);
            unlink("b.wav"), free(cut.at), free(whole.at);
        }
    vlw_converter_free(converter);
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
        CHECK(failed(converter, vlw_converter_run(converter, selves[i], "a.wav", NULL), VLW_BAD_ARGUMENT, "a.wav"));
    }
    CHECK(failed(converter, vlw_converter_run(converter, "a.wav", "/dev/full", &over), VLW_NO_SPACE, "/dev/full"));
    /* Odd names, and one handle all the time. */
    const char *const odd[] = {"\xFF\xFE .wav", "a\nb.wav", "%s.wav", "\xED\xA0\x80.wav"};
    for (size_t i = 0; i < 4; ++i) {
        CHECK(vlw_converter_run(converter, "a.wav", odd[i], NULL) == VLW_OK && file_is(odd[i], made_file));
        CHECK(vlw_converter_run(converter, odd[i], "odd.wav", &over) == VLW_OK && file_is("odd.wav", made_file));
    }
    vlw_converter_free(converter);
    free(source.at), free(old.at), free(made_file.at);
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
    bytes piped = make_wave(&kWaves[1], "fp", NULL, 40000);
    CHECK(mkfifo("fifo", 0600) == 0);
    const pid_t feeder = feed("fifo", piped);
    w = (watch){.thread = pthread_self()};
    CHECK(vlw_converter_run(converter, "fifo", "b.wav", &wish) == VLW_OK && w.done == 40000 && w.total == 40000 && w.calls >= 2 && !w.wrong);
    waitpid(feeder, NULL, 0);
    const wave slow = {PCM_16, 500, 1};
    bytes low = make_wave(&slow, "fd", NULL, 1000);
    put_file("low.wav", low);
    w = (watch){.thread = pthread_self()};
    CHECK(vlw_converter_run(converter, "low.wav", "b.wav", &wish) == VLW_OK && w.done == 1000 && w.total == 1000 && !w.wrong);
    vlw_converter_free(converter);
    free(small.at), free(piped.at), free(low.at);
}

/* ---- descriptors ---- */

static int asks_source(void *user, int64_t done, int64_t total) {
    vlw_format source = {.size = sizeof source};
    (void)done, (void)total;
    return vlw_converter_source(user, &source) != VLW_OK || source.rate != kWaves[1].rate;
}

static void places(void) {
    vlw_converter *const converter = new_converter();
    vlw_conversion wish = kPlain;
    vlw_format source = {.size = sizeof source};
    free(put_wave("a.wav", 1, "fdl", 500).at);
    free(put_wave("b.wav", 1, "fd", 500).at);
    CHECK(vlw_converter_source(converter, &source) == VLW_BAD_STATE && vlw_converter_source(NULL, &source) == VLW_BAD_ARGUMENT);
    const int from = open("a.wav", O_RDONLY), to = open("fd.wav", O_RDWR | O_CREAT, 0600);
    const vlw_place in = {sizeof in, NULL, from}, out = {sizeof out, NULL, to}, none = {sizeof none, NULL, -1}, old = {0, "a.wav", -1};
    const vlw_place self = {sizeof self, "a.wav", -1}, other = {sizeof other, "b.wav", -1}, made_by = {sizeof made_by, "by.wav", -1};
    const struct {
        const vlw_place *source, *target;
        vlw_code code;
    } wrong[] = {{NULL, &out, VLW_BAD_ARGUMENT}, {&in, NULL, VLW_BAD_ARGUMENT}, {&old, &out, VLW_BAD_ARGUMENT}, {&in, &old, VLW_BAD_ARGUMENT},
                 {&in, &self, VLW_BAD_ARGUMENT}, {&none, &out, VLW_SYSTEM},     {&self, &none, VLW_SYSTEM},     {&other, &in, VLW_SYSTEM}};
    for (size_t i = 0; i < sizeof wrong / sizeof *wrong; ++i) {
        CHECK(vlw_converter_run_places(converter, wrong[i].source, wrong[i].target, NULL) == wrong[i].code);
        CHECK(wrong[i].code != VLW_SYSTEM || vlw_converter_error(converter)->system == EBADF);
    }
    /* From where it stands, after the program's own bytes; the descriptors stay the program's. */
    CHECK(write(to, "front", 5) == 5);
    wish.progress = asks_source, wish.user = converter;
    CHECK(vlw_converter_run_places(converter, &in, &out, &wish) == VLW_OK && vlw_converter_run_places(converter, &in, &made_by, &wish) == VLW_OK);
    CHECK(vlw_converter_source(converter, &source) == VLW_OK && source.frames == 500);
    bytes both = contents("fd.wav"), made_file = contents("by.wav");
    CHECK(both.size == made_file.size + 5 && memcmp(both.at + 5, made_file.at, made_file.size) == 0);
    CHECK(close(from) == 0 && close(to) == 0);
    vlw_converter_free(converter);
    free(both.at), free(made_file.at);
}

/* ---- several threads ---- */

static const wave kTallStereo = {PCM_16, 96000, 2};
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
    const wave *const kinds[] = {&kWaves[0], &kWaves[1], &kWaves[5], &kTallStereo};
    vlw_converter *const converter = new_converter();
    for (size_t k = 0; k < 4; ++k)
        for (size_t i = 0; i < sizeof kWishes / sizeof *kWishes; ++i) {
            if ((i + k) % 2) continue;
            vlw_conversion wish = kWishes[i];
            wish.size = sizeof wish;
            /* Pieces for two threads. */
            const uint64_t rate = wish.rate ? wish.rate : kinds[k]->rate < 48000 ? kinds[k]->rate : 48000;
            bytes made_file = make_wave(kinds[k], "fd", NULL, (size_t)(140000 * kinds[k]->rate / rate));
            put_file("long.wav", made_file);
            CHECK(same_for_all(converter, name_of(kinds[k]), wish, -1) == VLW_OK);
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

static void failing_calls(void) {
    vlw_converter *const converter = new_converter();
    const size_t kinds[] = {1, 8};
    unlink("b.wav");
    for (size_t i = 0; i < 2; ++i) {
        free(put_wave("a.wav", kinds[i], "fdl", is_coded(&kWaves[kinds[i]]) ? 300 : 60000).at);
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
            if (!good) fprintf(stderr, "  %s, after %ld allocations: %d %s\n", name_of(&kWaves[kind]), left, code, converter ? vlw_converter_error(converter)->text : "");
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

/* ---- much ---- */

static int peak(void *user, int64_t done, int64_t total) {
    struct rusage used;
    (void)done, (void)total;
    getrusage(RUSAGE_SELF, &used);
    *(long *)user = used.ru_maxrss;
    return 0;
}

/* An hour of silence takes no more memory than a minute. */
static void an_hour(void) {
    const wave kind = {PCM_16, 8000, 1};
    const uint32_t seconds[] = {60, 3600};
    long used[2] = {0};
    vlw_converter *const converter = new_converter();
    for (int i = 0; i < 2; ++i) {
        bytes head = make_wave(&kind, "fd", NULL, 0);
        set_le32(head.at + 40, seconds[i] * 16000);
        put_file("silence.wav", head);
        CHECK(truncate("silence.wav", 44 + (off_t)seconds[i] * 16000) == 0);
        vlw_conversion wish = kPlain;
        wish.bits = 8, wish.progress = peak, wish.user = &used[i];
        CHECK(made(converter, "silence.wav", "silent.wav", wish));
        free(head.at);
    }
    CHECK(used[0] > 0 && used[1] < used[0] + 4096);
    if (used[1] >= used[0] + 4096) fprintf(stderr, "  %ld KiB, %ld for a minute\n", used[1], used[0]);
    vlw_converter_free(converter);
}

int main(int argc, char **argv) {
    /* That of memory first: a later peak would hide what it takes. */
    static const check kChecks[] = {{"an_hour", an_hour, 1}, {"all_kinds", all_kinds, 0},     {"few_frames", few_frames, 0},       {"records", records, 0},
                                    {"tags", tags, 0},       {"notes", notes, 0},             {"cut_sources", cut_sources, 0},     {"targets", targets, 0},
                                    {"watched", watched, 0}, {"by_threads", by_threads, 0},   {"failing_calls", failing_calls, 0}, {"memory", memory_runs_out, 0},
                                    {"places", places, 0}};
    return argc == 2 ? run_checks(argv[1], kChecks, sizeof kChecks / sizeof *kChecks) : 2;
}
