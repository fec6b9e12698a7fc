/* Defines pread, pwrite, ftruncate, fsync and, without a sanitizer, the allocation for the whole process,
 * libraries too, so that the n-th of them fails, is torn, or is the last thing that the process does. To be
 * included once in a program. */
#ifndef SYSTEM_CALLS_H
#define SYSTEM_CALLS_H

#include <errno.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OWN_ALLOCATION 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OWN_ALLOCATION 0
#endif
#endif
#ifndef OWN_ALLOCATION
#define OWN_ALLOCATION 1
#endif

/* Changes of files. */
static struct {
    int until; /* the change that fails, from 1; 0: none */
    int lasts; /* those after it fail too */
    int error; /* errno; 0: the process is killed in the middle of it */
    int seen;
} s_changes;

/* Reads at places, by any thread. */
static atomic_int s_reads_left = -1; /* those that go through before all others fail; -1: all go through */

ssize_t pread(int file, void* to, size_t size, off_t place) {
    if (s_reads_left >= 0 && atomic_fetch_sub(&s_reads_left, 1) <= 0) {
        s_reads_left = 0;
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, file, to, size, place);
}

static int change_fails(void) {
    ++s_changes.seen;
    if (s_changes.until == 0 || s_changes.seen < s_changes.until) return 0;
    return s_changes.lasts || s_changes.seen == s_changes.until;
}

static int end_change(void) {
    if (s_changes.error == 0) raise(SIGKILL);
    errno = s_changes.error;
    return -1;
}

ssize_t pwrite(int file, const void* from, size_t size, off_t place) {
    if (!change_fails()) return syscall(SYS_pwrite64, file, from, size, place);
    if (s_changes.seen == s_changes.until && size > 8) syscall(SYS_pwrite64, file, from, size / 2, place);
    return end_change();
}

int ftruncate(int file, off_t size) {
    return change_fails() ? end_change() : (int)syscall(SYS_ftruncate, file, size);
}

int fsync(int file) {
    (void)file; /* the checks would wait for the medium */
    return change_fails() ? end_change() : 0;
}

#if OWN_ALLOCATION
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
static _Thread_local long s_allocations_left = -1; /* of this thread; -1: no end of them */

static int allocation_fails(void) {
    if (s_allocations_left < 0) return 0;
    if (s_allocations_left > 0) return --s_allocations_left, 0;
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) { return allocation_fails() ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return allocation_fails() ? NULL : __libc_calloc(count, size); }
void* realloc(void* block, size_t size) { return allocation_fails() ? NULL : __libc_realloc(block, size); }
#endif

#endif
