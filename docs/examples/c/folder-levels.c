/* Tells the peak of each WAV file of a folder, several files at once: folder-levels FOLDER [THREADS] */
#define _POSIX_C_SOURCE 200809L
#include <dirent.h>
#include <inttypes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vlwav.h>

enum { kFrames = 4096, kMostChannels = 255, kMostThreads = 64 };

/* A file, and what a thread found out about it. */
typedef struct Entry {
    char* path;
    int64_t frames;
    int peak;
    vlw_code code; /* negative: it failed, and this is why */
    char* failure;
} Entry;

typedef struct Folder {
    vlw_module* module; /* loaded once, for all threads */
    pthread_mutex_t lock;
    size_t next; /* guarded by `lock`: the first entry that no thread has taken */
    size_t count;
    Entry* entries;
} Folder;

static void measure(vlw_reader* reader, int16_t* block, Entry* file) {
    vlw_code code = vlw_reader_open(reader, file->path); /* closes the file before it */
    while (code == VLW_OK) {
        size_t frames = 0;
        code = vlw_reader_read_int16(reader, block, kFrames, &frames);
        for (size_t i = 0; i < frames * vlw_reader_channels(reader); ++i)
            if (abs(block[i]) > file->peak) file->peak = abs(block[i]);
        file->frames += (int64_t)frames;
    }
    file->code = code;
    if (code < 0) file->failure = strdup(vlw_reader_error(reader)->text); /* the next call takes the record */
}

/* What each thread does: one reader of its own, for all files that it takes. NULL, or the folder where it
 * failed. */
static void* work(void* argument) {
    Folder* folder = argument;
    vlw_reader* reader = NULL;
    int16_t* block = malloc(sizeof *block * kFrames * kMostChannels);
    const vlw_code code = vlw_reader_new(folder->module, &reader);
    while (block && code == VLW_OK) {
        pthread_mutex_lock(&folder->lock);
        const size_t mine = folder->next < folder->count ? folder->next++ : folder->count;
        pthread_mutex_unlock(&folder->lock);
        if (mine == folder->count) break;
        measure(reader, block, &folder->entries[mine]);
    }
    const int failed = !block || code != VLW_OK;
    vlw_reader_free(reader);
    free(block);
    return failed ? folder : NULL;
}

static int is_wav(const struct dirent* file) {
    const char* dot = strrchr(file->d_name, '.');
    return dot && strcmp(dot, ".wav") == 0;
}

/* The files of the folder by name. 0, or 1 where it can't be listed. */
static int list(Folder* folder, const char* path) {
    struct dirent** names = NULL;
    const int count = scandir(path, &names, is_wav, alphasort);
    if (count < 0) return perror(path), 1;
    folder->entries = calloc((size_t)count + 1, sizeof *folder->entries);
    for (int i = 0; i < count; ++i) {
        const size_t size = strlen(path) + strlen(names[i]->d_name) + 2;
        char* const whole = malloc(size);
        if (whole && folder->entries) {
            snprintf(whole, size, "%s/%s", path, names[i]->d_name);
            folder->entries[folder->count++].path = whole;
        }
        free(names[i]);
    }
    free(names);
    if (folder->count < (size_t)count) return fputs("no memory\n", stderr), 1;
    return 0;
}

/* Runs the threads. 0, or 1 where one could do nothing. */
static int run(Folder* folder, unsigned threads) {
    pthread_t started[kMostThreads];
    unsigned count = 0;
    int failed = 0;
    while (count < threads && pthread_create(&started[count], NULL, work, folder) == 0) ++count;
    if (count == 0) failed = work(folder) != NULL; /* without a second thread this one does it */
    while (count > 0) {
        void* result = NULL;
        pthread_join(started[--count], &result);
        if (result) failed = 1;
    }
    if (failed) fputs("a thread had no memory\n", stderr);
    return failed;
}

/* Prints what was found, and frees it. 0, or 1 where a file failed. */
static int report(Folder* folder) {
    int failed = 0;
    for (size_t i = 0; i < folder->count; ++i) {
        Entry* file = &folder->entries[i];
        if (file->code < 0)
            fprintf(stderr, "%s\n", file->failure ? file->failure : vlw_error_text(file->code)), failed = 1;
        else
            printf("%s: %" PRId64 " frames, peak %d\n", strrchr(file->path, '/') + 1, file->frames,
                   file->peak);
        free(file->failure);
        free(file->path);
    }
    free(folder->entries);
    return failed;
}

int main(int argc, char** argv) {
    Folder folder = {.lock = PTHREAD_MUTEX_INITIALIZER};
    if (argc < 2) return fputs("usage: folder-levels FOLDER [THREADS]\n", stderr), 2;
    const unsigned long asked = argc > 2 ? strtoul(argv[2], NULL, 10) : 4;
    const unsigned threads = asked < kMostThreads ? (unsigned)asked : kMostThreads;

    vlw_code code = vlw_module_new(&folder.module);
    if (code == VLW_OK) code = vlw_module_load(folder.module, NULL);
    if (code != VLW_OK) {
        const vlw_error* error = vlw_module_error(folder.module);
        fprintf(stderr, "%s\n", error ? error->text : vlw_error_text(code));
    }
    int failed = code != VLW_OK || list(&folder, argv[1]) || run(&folder, threads);
    failed |= report(&folder);
    vlw_module_free(folder.module);
    return failed;
}
