/* Audio files of each kind that is read, made byte by byte, with the frames that reading them must give:
 * computed here from what the formats say. And a stream over bytes that does what a program's own may do. */
#ifndef AUDIO_FILES_H
#define AUDIO_FILES_H

#include <stdatomic.h>
#include <stddef.h>
#include <stdint.h>

#include "capi/vlwav.h"
#include "tests/capi/Bytes.h"

typedef enum {
    PCM_8,
    PCM_16,
    PCM_24,
    PCM_32,
    FLOAT_32,
    EXTENSIBLE_16,
    EXTENSIBLE_24,
    A_LAW,
    MU_LAW,
    IMA_ADPCM,
    MS_ADPCM,
    AIFF_8,
    AIFF_16,
    AIFF_24,
    AIFC_SOWT,
    AIFC_ULAW,
    SOUND_KINDS
} sound_kind;

typedef struct {
    const char *name, *container, *codec;
    uint32_t tag, bits, mask; /* as vlw_format tells them */
    uint32_t rate, channels;
    size_t unit_bytes, unit_frames; /* a frame of PCM, a block of a codec */
    uint8_t* file;
    size_t size, audio, audio_bytes; /* the audio's place and size */
    size_t size_place;               /* of the 32 bits of the audio's size */
    int16_t* samples;
    size_t frames;
} sound;

/* Of so many whole units. For free_sound. */
sound make_sound(sound_kind kind, uint32_t rate, uint32_t channels, size_t units);
void free_sound(sound* made);
/* Whole frames in the first bytes of the audio. */
size_t frames_in(const sound* made, size_t audio_bytes);

/* ---- files of any layout, for tags and conversions ---- */

typedef struct {
    sound_kind kind;
    uint32_t rate, channels;
} wave;
enum { WAVES = 10 };
extern const wave kWaves[WAVES];
const char* name_of(const wave* of);
int is_coded(const wave* of); /* in blocks of many frames */

/* A file whose chunks are told by letters, in their order:
 *   f  the format, and "fact" where the codec needs it        d  `units` frames or blocks of noise
 *   l  an "INFO" list of `entries`                             i  another one, of the title "Other" alone
 *   j  JUNK of 3 bytes           b  "bext" of 602 bytes        a  a list of another type
 *   p  as d, of size 0xFFFFFFFF  z  as d, of size 0            c  as d, promising 1000 bytes more than there
 * are o  as d, and a byte more     t  7 bytes that are no chunk `entries`: parts between "|" of four letters
 * and then "=", a text and its zero byte, or "~" and a text without one. */
bytes make_wave(const wave* of, const char* layout, const char* entries, size_t units);
/* The list's entries as bytes, each with its pad byte. */
bytes make_entries(const char* entries);
/* The entries of the last "INFO" list of a file, which walks it anew. Empty where there is none. */
bytes entries_of(bytes file);
/* 16 bits, 44100 Hz, with name, author and annotation "A name", "An author", "A note". */
bytes make_aiff(uint32_t channels, uint32_t frames);

/* ---- reading ---- */

/* Whether a failure is the expected one and its record tells of it; a `system` of -1 and no
 * path are any. */
int told(const vlw_error* error, vlw_code code, vlw_code expected, int system, const char* path);
/* Whether both a new reader and a new editor find this value of a tag, or NULL for none. */
int tag_is(const char* path, const char* keyword, const char* value);
/* Closes the file, so that the output can be set in any case, and sets it. */
vlw_code set_output(vlw_reader* reader, uint32_t rate, uint32_t channels);
/* Reads to the end by blocks of `block` frames, and returns what ended it. `most` frames have room. */
vlw_code read_rest(vlw_reader* reader, int16_t* frames, size_t most, size_t block, size_t* got);
/* Whether reading on gives these frames from `start` to their end, and then `end`. */
int reads_as(vlw_reader* reader, const int16_t* frames, size_t start, size_t count, size_t block,
             vlw_code end);

/* All 0 but `bytes` and `size`: seekable, reads whole, and never fails. Counts from 1. */
typedef struct {
    const uint8_t* bytes;
    size_t size, place;
    size_t most; /* bytes of a read; 0: all */
    int in_order;
    int fail_read, fail_seek; /* this one fails, counted from 1 */
    int fail_for;             /* so many times; 0: once */
    int failure;              /* errno; 0: EIO */
    int64_t odd_answer;       /* in place of a failure */
    int reads, seeks, closes, overlaps;
    atomic_int inside;
} byte_stream;
vlw_stream as_stream(byte_stream* from);

#endif
