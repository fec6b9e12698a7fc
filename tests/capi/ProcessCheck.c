/* What readers share with the rest of their process: signals, threads, forks and the locale. */
#define _GNU_SOURCE
#include <errno.h>
#include <locale.h>
#include <pthread.h>
#include <sys/time.h>

#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"

static volatile sig_atomic_t s_alarms;
static void on_alarm(int number) {
    (void)number;
    ++s_alarms;
}

static void alarms(int microseconds) {
    const struct itimerval every = {{0, microseconds}, {0, microseconds}};
    struct sigaction action = {.sa_handler = on_alarm};
    CHECK(sigaction(SIGALRM, &action, NULL) == 0 && setitimer(ITIMER_REAL, &every, NULL) == 0);
}

static int ended_well(pid_t child) {
    int status = 1;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    return status == 0;
}

/* Every millisecond a signal, into a pipe that is fed slowly. */
static void interrupted(vlw_reader *reader, const sound *made) {
    int ends[2];
    CHECK(pipe(ends) == 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        for (size_t at = 0; at < made->size;) {
            const size_t left = made->size - at;
            const ssize_t done = write(ends[1], made->file + at, left < 3001 ? left : 3001);
            if (done < 0) _exit(1);
            at += (size_t)done;
            usleep(2500);
        }
        _exit(0);
    }
    close(ends[1]);
    const int before = s_alarms;
    alarms(1000);
    CHECK(vlw_reader_open_fd(reader, ends[0]) == VLW_OK && reads_as(reader, made->samples, 0, made->frames, 300, VLW_END));
    alarms(0);
    CHECK(s_alarms - before > 2 && ended_well(child));
    close(ends[0]);
}

static void signals(vlw_reader *reader, const sound *made) {
    sigset_t mask, before, after;
    struct sigaction handlers[65], handler;
    sigemptyset(&mask), sigaddset(&mask, SIGUSR2), sigaddset(&mask, SIGHUP);
    CHECK(pthread_sigmask(SIG_SETMASK, &mask, &before) == 0 && pthread_sigmask(SIG_SETMASK, NULL, &mask) == 0);
    for (int i = 1; i <= 64; ++i) (void)sigaction(i, NULL, &handlers[i]);
    CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK && reads_as(reader, made->samples, 0, made->frames, 900, VLW_END));
    vlw_reader_close(reader);
    CHECK(pthread_sigmask(SIG_SETMASK, NULL, &after) == 0);
    for (int i = 1; i <= 64; ++i) {
        CHECK(sigismember(&mask, i) == sigismember(&after, i));
        if (sigaction(i, NULL, &handler) == 0) CHECK(handler.sa_handler == handlers[i].sa_handler && handler.sa_flags == handlers[i].sa_flags);
    }
    CHECK(pthread_sigmask(SIG_SETMASK, &before, NULL) == 0);
}

/* Threads of this process but for its first: how many there are, and how many of them take signals. */
static int other_threads(int *open) {
    DIR *const folder = opendir("/proc/self/task");
    int count = 0;
    *open = 0;
    for (const struct dirent *entry; (entry = readdir(folder));) {
        char path[300], line[256];
        unsigned long long blocked = 0;
        int living = 0; /* the system tells nothing of a thread that is ending, and 0 threads beside it */
        if (entry->d_name[0] == '.' || atoi(entry->d_name) == getpid()) continue;
        snprintf(path, sizeof path, "/proc/self/task/%s/status", entry->d_name);
        FILE *const file = fopen(path, "r");
        while (file && fgets(line, sizeof line, file)) {
            (void)sscanf(line, "Threads: %d", &living);
            if (sscanf(line, "SigBlk: %llx", &blocked) == 1) break;
        }
        if (file) fclose(file);
        if (living == 0) continue;
        ++count;
        /* All but 9 and 19, which nobody can block, and 32 and 33, which are the C library's. */
        if ((blocked | 1ull << 8 | 1ull << 18 | 1ull << 31 | 1ull << 32) != UINT64_MAX) ++*open;
    }
    closedir(folder);
    return count;
}

static void threads_block(vlw_reader *reader, const sound *made) {
    int16_t block[400];
    int open = 0, before = 0;
    const int own = other_threads(&before);
    CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK && vlw_reader_read_int16(reader, block, 100, NULL) == VLW_OK);
    const int count = other_threads(&open);
    CHECK(made->frames < 100000 ? count >= own : count > own);
#ifndef VLW_SKIP_THREAD_MASKS
    CHECK(open <= before);
#endif
    vlw_reader_close(reader);
}

static int s_open; /* threads of a conversion that take signals */

static int count_threads(void *most, int64_t done, int64_t total) {
    (void)done, (void)total;
    int open = 0;
    const int count = other_threads(&open);
    if (count > *(int *)most) *(int *)most = count;
    if (open > s_open) s_open = open;
    return 0;
}

/* The threads of a conversion take no signals, and are gone with it. */
static void conversion_blocks(void) {
    int before = 0, after = 0, most = 0;
    const int own = other_threads(&before);
    sound made = make_sound(PCM_16, 44100, 2, 500000);
    char source[] = "/tmp/vlw-process-XXXXXX";
    vlw_converter *converter = NULL;
    const vlw_conversion wish = {.size = sizeof wish, .rate = 48000, .flags = VLW_OVERWRITE, .threads = 4, .progress = count_threads, .user = &most};
    const int number = mkstemp(source);
    CHECK(write(number, made.file, made.size) == (ssize_t)made.size && close(number) == 0);
    CHECK(vlw_converter_new(NULL, &converter) == VLW_OK && vlw_converter_run(converter, source, "/dev/null", &wish) == VLW_OK);
    CHECK(most > own && other_threads(&after) == own);
#ifndef VLW_SKIP_THREAD_MASKS
    CHECK(s_open <= before);
#endif
    vlw_converter_free(converter);
    free_sound(&made);
    unlink(source);
}

/* The child frees what the parent has, at any moment of its decoding, and reads something itself. */
static void forks(const sound *made, const char *path) {
    for (int i = 0; i < 12; ++i) {
        byte_stream from = {.bytes = made->file, .size = made->size, .most = 100};
        const vlw_stream stream = as_stream(&from);
        vlw_reader *reader = NULL;
        int16_t block[2000];
        CHECK(vlw_reader_new(NULL, &reader) == VLW_OK && (i % 2 ? vlw_reader_open(reader, path) : vlw_reader_open_stream(reader, &stream)) == VLW_OK);
        if (i % 4 > 1) CHECK(vlw_reader_output(reader, 48000, 1) == VLW_OK);
        if (i > 3) CHECK(vlw_reader_read_int16(reader, block, 1 + 70 * (size_t)i, NULL) == VLW_OK);
#ifdef __SANITIZE_ADDRESS__
        usleep(200000); /* that allocator doesn't survive a fork while another thread is in it */
#endif
        const pid_t child = fork();
        if (child == 0) {
            alarm(20); /* nobody handles it here, so that a child that hangs ends in failure */
            signal(SIGALRM, SIG_DFL);
            vlw_reader *own = NULL;
            const int calls = from.reads + from.seeks;
            if (i & 1) vlw_reader_free(reader);
            int good = vlw_reader_new(NULL, &own) == VLW_OK && vlw_reader_open(own, path) == VLW_OK;
            good = good && reads_as(own, made->samples, 0, made->frames, 500, VLW_END);
            good = good && vlw_reader_seek(own, 20) == VLW_OK && reads_as(own, made->samples, 20, made->frames, 500, VLW_END);
            if (!good) fprintf(stderr, "  in a child, %d: %s\n", i, vlw_reader_error(own)->text);
            if (!(i & 1)) vlw_reader_free(reader);
            vlw_reader_free(own);
            _exit(good && from.closes == 0 && from.reads + from.seeks == calls ? 0 : 1);
        }
        const int good = ended_well(child);
        CHECK(good);
        if (!good) fprintf(stderr, "  child %d\n", i);
        if (i % 4 < 2) CHECK(vlw_reader_seek(reader, 9) == VLW_OK && reads_as(reader, made->samples, 9, made->frames, 100, VLW_END));
        vlw_reader_free(reader);
        CHECK(from.closes == !(i % 2));
    }
}

/* A handle goes from thread to thread. */
static void *read_a_part(void *argument) {
    int16_t block[200];
    return vlw_reader_read_int16(argument, block, 100, NULL) == VLW_OK ? argument : NULL;
}

static void handed_on(vlw_reader *reader, const sound *made) {
    CHECK(vlw_reader_open_memory(reader, made->file, made->size) == VLW_OK);
    for (int i = 0; i < 3; ++i) {
        pthread_t other;
        void *result = NULL;
        CHECK(pthread_create(&other, NULL, read_a_part, reader) == 0 && pthread_join(other, &result) == 0 && result == reader);
    }
    CHECK(reads_as(reader, made->samples, 300, made->frames, 77, VLW_END));
}

int main(void) {
    static const sound_kind kKinds[] = {PCM_24, PCM_16, MS_ADPCM, A_LAW};
    char path[] = "/tmp/vlw-process-XXXXXX";
    sound sounds[4];
    vlw_reader *reader = NULL;
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK);
    for (size_t i = 0; i < 4; ++i) sounds[i] = make_sound(kKinds[i], 44100, 2, i == 2 ? 200 : 20000);
    const int number = mkstemp(path);
    CHECK(write(number, sounds[0].file, sounds[0].size) == (ssize_t)sounds[0].size && close(number) == 0);
    for (size_t i = 0; i < 4; ++i) {
        signals(reader, &sounds[i]);
        threads_block(reader, &sounds[i]);
        interrupted(reader, &sounds[i]);
        handed_on(reader, &sounds[i]);
    }
    vlw_reader_close(reader);
    sound longer = make_sound(PCM_24, 44100, 2, 500000);
    threads_block(reader, &longer);
    free_sound(&longer);
    conversion_blocks();
    forks(&sounds[0], path);
    /* Where commas part numbers, and where an I has no dot. Without such a locale this runs as before. */
    static const char *const kLocales[] = {"de_DE.UTF-8", "tr_TR.UTF-8", "C.UTF-8"};
    for (size_t i = 0; i < 3; ++i) {
        setlocale(LC_ALL, kLocales[i]);
        signals(reader, &sounds[i]);
        CHECK(vlw_reader_open(reader, "/nowhere") == VLW_NOT_FOUND && strstr(vlw_reader_error(reader)->text, "No such file"));
    }
    vlw_reader_free(reader);
    for (size_t i = 0; i < 4; ++i) free_sound(&sounds[i]);
    unlink(path);
    return s_failures ? 1 : 0;
}
