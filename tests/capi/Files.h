/* Files, folders and children for the checks in C, whose failures count as those of the check that includes
 * this. */
#ifndef FILES_H
#define FILES_H

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/capi/Bytes.h"
#include "tests/capi/Check.h"

/* Empty for what can't be read. */
static inline bytes contents(const char* path) {
    bytes file = {0};
    static unsigned char s_block[65536];
    const int number = open(path, O_RDONLY);
    ssize_t got;
    while (number >= 0 && (got = read(number, s_block, sizeof s_block)) > 0) add(&file, s_block, (size_t)got);
    close(number);
    return file;
}

static inline void put_file(const char* path, bytes content) {
    FILE* const file = fopen(path, "wb");
    CHECK(file && (content.size == 0 || fwrite(content.at, 1, content.size, file) == content.size) &&
          fclose(file) == 0);
}

static inline int file_is(const char* path, bytes expected) {
    bytes file = contents(path);
    const int is = equal(file, expected);
    free(file.at);
    return is;
}

static inline size_t names_in(const char* folder) {
    size_t count = 0;
    DIR* const opened = opendir(folder);
    while (opened && readdir(opened)) ++count;
    closedir(opened);
    return count;
}

/* A child that ends with end_check tells its own failures to join_check. */
static inline pid_t fork_to_check(void) {
    fflush(NULL);
    const pid_t child = fork();
    if (child == 0) s_failures = 0;
    return child;
}
static inline void end_check(void) { _exit(s_failures != 0); }
static inline void join_check(pid_t child) {
    int status = 0;
    CHECK(waitpid(child, &status, 0) == child && status == 0);
}

/* As somebody whom rights bind; from there on, in a child. */
static inline void become_nobody(void) {
    if (getuid() == 0 && setuid(65534) != 0) end_check();
}

/* Files of this process grow to so many bytes and no further. */
static inline void limit_files(rlim_t size) {
    const struct rlimit limit = {size, RLIM_INFINITY};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
}

/* Mounts an empty file system over a folder, in a child; where that can't be, the child ends. */
static inline void mount_small(const char* folder, const char* options) {
    if (unshare(CLONE_NEWNS) == 0 && mount("", "/", "", MS_REC | MS_PRIVATE, NULL) == 0 &&
        mount("tmpfs", folder, "tmpfs", 0, options) == 0)
        return;
    fprintf(stderr, "nothing can be mounted: not checked\n");
    end_check();
}

typedef struct check {
    const char* name;
    void (*run)(void);
    int apart; /* in a child */
} check;

/* Runs them one after the other in a new folder within `folder`; the program's exit code. */
static inline int run_checks(const char* folder, const check* checks, size_t count) {
    char path[4096], command[4200];
    snprintf(path, sizeof path, "%s/check-XXXXXX", folder);
    if (!mkdtemp(path) || chdir(path) != 0) return 2;
    for (size_t i = 0; i < count; ++i) {
        const int failures = s_failures;
        const pid_t child = checks[i].apart ? fork_to_check() : -1;
        if (child <= 0) checks[i].run();
        if (child == 0) end_check();
        if (child > 0) join_check(child);
        if (s_failures != failures) fprintf(stderr, "%s: %d\n", checks[i].name, s_failures - failures);
    }
    snprintf(command, sizeof command, "rm -rf '%s'", path);
    CHECK(chdir("/") == 0 && system(command) == 0);
    return s_failures ? 1 : 0;
}

#endif
