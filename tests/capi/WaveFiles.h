/* For the checks of tags and conversions: WAV and AIFF files, head and audio byte by byte, of any layout; and
 * files, folders and children to check them with. */
#ifndef WAVE_FILES_H
#define WAVE_FILES_H

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

typedef struct bytes {
    unsigned char* at; /* from malloc */
    size_t size;
} bytes;

void add(bytes* to, const void* from, size_t count);
void add_text(bytes* to, const char* text);
void add_number(bytes* to, uint64_t value, int count); /* little-endian */
int equal(bytes a, bytes b);
uint32_t number_at(bytes file, size_t place);

typedef struct wave_kind {
    const char* name;
    uint32_t tag, channels, rate, bits, align; /* tag 0xFFFE: extensible PCM, of which `mask` is told */
    uint32_t block_frames;                     /* of ADPCM, else 0 */
    uint32_t mask;
} wave_kind;

enum { WAVE_KINDS = 10 };
extern const wave_kind kWaveKinds[WAVE_KINDS];

/* A file whose chunks are told by letters, in their order:
 *   f  the format, and "fact" where the codec needs it        d  `units` frames or blocks of noise
 *   l  an "INFO" list of `entries`                             i  another one, of the title "Other" alone
 *   j  JUNK of 3 bytes           b  "bext" of 602 bytes        a  a list of another type
 *   p  as d, of size 0xFFFFFFFF  z  as d, of size 0            c  as d, promising 1000 bytes more than there
 * are o  as d, and a byte more     t  7 bytes that are no chunk `entries`: parts between "|" of four letters
 * and then "=", a text and its zero byte, or "~" and a text without one. */
bytes make_wave(const wave_kind* kind, const char* layout, const char* entries, size_t units);
/* The list's entries as bytes, each with its pad byte. */
bytes make_entries(const char* entries);
/* 16 bits, 44100 Hz, with name, author and annotation "A name", "An author", "A note". */
bytes make_aiff(uint32_t channels, uint32_t frames);
/* Silence of 44100 Hz, one channel, as frames of MPEG layer III in a WAV file; "fact" promises `promised`
 * samples. */
bytes make_mp3(size_t frames, uint32_t promised);

/* The entries of the last "INFO" list of a file, which walks it anew. Empty where there is none. */
bytes entries_of(bytes file);

/* ---- files and children ---- */

bytes contents(const char* path); /* empty for what can't be read */
void put_file(const char* path, bytes content);
int file_is(const char* path, bytes expected);
size_t names_in(const char* folder);
/* A new folder to work in, which becomes the current one; 0 for a failure. */
int enter_folder(const char* within);
int leave_folder(void);
/* A child whose own failures it tells, with end_check. */
pid_t fork_to_check(void);
void end_check(void);
void join_check(pid_t child);

#endif
