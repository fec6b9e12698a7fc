/* Audio files of each kind that is read, made byte by byte, with the frames that reading them must give:
 * computed here from what the formats say. And a stream over bytes that does what a program's own may do. */
#ifndef AUDIO_FILES_H
#define AUDIO_FILES_H

#include <stdatomic.h>
#include <stddef.h>
#include <stdint.h>

#include "capi/vlwav.h"

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
void put_le32(uint8_t* place, uint32_t value);

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
