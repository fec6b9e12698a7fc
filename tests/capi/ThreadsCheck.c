/* Four threads that read, convert, tag and fail at once, each on handles of its own that it makes anew now and then, all on
 * one module. Seconds to run and a folder to work in are arguments. What is wrong shows as a failed check here, and under
 * ThreadSanitizer. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdatomic.h>
#include <time.h>

#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"

enum { THREADS = 4, KINDS = 6, UNITS = 600, MOST = 400000 };
static const sound_kind kKinds[KINDS] = {PCM_16, PCM_8, PCM_24, IMA_ADPCM, A_LAW, AIFF_16};

static sound s_sounds[KINDS];
static vlw_module *s_module;
static const char *s_folder;
static time_t s_end;
static atomic_int s_wrong;
static atomic_long s_turns;

#define MUST(condition)                                                     \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            atomic_fetch_add(&s_wrong, 1);                                  \
        }                                                                   \
    } while (0)

static void read_one(vlw_reader *reader, const sound *from, int16_t *room, unsigned turn) {
    size_t got = 0;
    MUST(set_output(reader, turn % 2 ? 48000 : 0, 0) == VLW_OK);
    MUST(vlw_reader_open_memory(reader, from->file, from->size) == VLW_OK);
    MUST(vlw_reader_seek(reader, 100) == VLW_OK && vlw_reader_seek(reader, 0) == VLW_OK);
    MUST(read_rest(reader, room, MOST / 2, 1 + turn % 3000, &got) == VLW_END);
    MUST((int64_t)got == vlw_reader_frames(reader));
    if (turn % 2 == 0) MUST(got == from->frames && memcmp(room, from->samples, got * from->channels * 2) == 0);
}

static void fail_one(vlw_reader *reader, vlw_converter *converter, const sound *from, int16_t *room) {
    byte_stream stream = {0};
    size_t got = 0;
    stream.bytes = from->file;
    stream.size = from->size;
    stream.most = 997;
    stream.fail_read = 9;
    const vlw_stream given = as_stream(&stream);
    vlw_code code = vlw_reader_open_stream(reader, &given);
    if (code == VLW_OK) code = read_rest(reader, room, MOST / 2, 4096, &got);
    MUST(code == VLW_SYSTEM || code == VLW_END); /* a short file is read by then */
    vlw_reader_close(reader);
    MUST(stream.closes == 1);
    MUST(vlw_reader_open(reader, "/nowhere/a.wav") == VLW_NOT_FOUND);
    MUST(vlw_converter_run(converter, "/nowhere/a.wav", "/nowhere/b.wav", NULL) == VLW_NOT_FOUND);
}

static void convert_and_tag(vlw_converter *converter, vlw_editor *editor, const sound *from, int thread, unsigned turn) {
    char source[300], target[300], title[30];
    snprintf(source, sizeof source, "%s/threads%d.source", s_folder, thread);
    snprintf(target, sizeof target, "%s/threads%d.wav", s_folder, thread);
    snprintf(title, sizeof title, "turn %u", turn);
    put_file(source, (bytes){from->file, from->size});
    vlw_conversion wish = {.size = sizeof wish, .rate = turn % 3 ? 22050 : 0, .flags = VLW_OVERWRITE};
    MUST(vlw_converter_run(converter, source, target, &wish) == VLW_OK);
    MUST(vlw_editor_open(editor, target) == VLW_OK);
    MUST(vlw_tags_set(vlw_editor_tags(editor), "title", title) == VLW_OK);
    MUST(vlw_editor_save(editor, 0) == VLW_OK);
    unlink(source);
    unlink(target);
}

static void *work(void *number) {
    const int thread = (int)(size_t)number;
    int16_t *const room = malloc(MOST * sizeof *room);
    for (unsigned turn = 0; time(NULL) < s_end;) {
        vlw_reader *reader = NULL;
        vlw_converter *converter = NULL;
        vlw_editor *editor = NULL;
        MUST(vlw_reader_new(s_module, &reader) == VLW_OK && vlw_converter_new(s_module, &converter) == VLW_OK);
        MUST(vlw_editor_new(s_module, &editor) == VLW_OK);
        for (int i = 0; i < 20 && time(NULL) < s_end; ++i, ++turn) {
            const sound *const from = &s_sounds[(turn + (unsigned)thread) % KINDS];
            read_one(reader, from, room, turn);
            convert_and_tag(converter, editor, from, thread, turn);
            fail_one(reader, converter, from, room);
            atomic_fetch_add(&s_turns, 1);
        }
        vlw_reader_free(reader);
        vlw_converter_free(converter);
        vlw_editor_free(editor);
    }
    free(room);
    return NULL;
}

int main(int argc, char **argv) {
    pthread_t threads[THREADS];
    if (argc != 3) return 2;
    s_folder = argv[2];
    for (int i = 0; i < KINDS; ++i) s_sounds[i] = make_sound(kKinds[i], 44100, 2, kKinds[i] == IMA_ADPCM ? 40 : UNITS * 20);
    CHECK(vlw_module_new(&s_module) == VLW_OK && vlw_module_load(s_module, NULL) == VLW_OK);
    s_end = time(NULL) + atoi(argv[1]);
    for (size_t i = 0; i < THREADS; ++i) CHECK(pthread_create(&threads[i], NULL, work, (void *)i) == 0);
    for (int i = 0; i < THREADS; ++i) pthread_join(threads[i], NULL);
    vlw_module_free(s_module);
    for (int i = 0; i < KINDS; ++i) free_sound(&s_sounds[i]);
    printf("%ld turns\n", (long)s_turns);
    CHECK(s_turns > 0 && s_wrong == 0);
    return s_failures ? 1 : 0;
}
