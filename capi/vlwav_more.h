/**
 * @file vlwav_more.h
 * Functions of libvlwav.so.1 that came after vlwav.h was settled, by the rules of growth that stand there:
 * how the module was found, its entry in the registry, the languages of its texts, pictures made anew, the
 * chunks of a file, dither, conversions from and to descriptors, and whole files of any bytes. The command
 * vlwav uses them. Symbol version VLWAV_1.1.
 */
#ifndef VLWAV_MORE_H
#define VLWAV_MORE_H

#include "vlwav.h"

#ifdef __cplusplus
extern "C" {
#endif

/** How a module was found. */
typedef enum vlw_found {
    VLW_FOUND_NOT = 0,         /* nothing is loaded */
    VLW_FOUND_BY_PATH = 1,     /* the program named it */
    VLW_FOUND_BY_REGISTRY = 2, /* it is the registered one */
    VLW_FOUND_BESIDE = 3       /* it is that of this library's installation */
} vlw_found;

/** As vlw_module_load, but the module of this library's installation, whatever is registered. [handle] */
VLW_CHECKED vlw_code vlw_module_load_beside(vlw_module* module);
/** [any once it is loaded] */
VLW_API vlw_found vlw_module_found(const vlw_module* module);
/** Enters the loaded module into the user's registry, and takes out the one that is there; one of the
 * system's is then found again. All or nothing, even where the program is killed. The record names the
 * registry's file and the reason: VLW_IN_USE where another program has held it for 5 seconds,
 * VLW_NO_PERMISSION, VLW_NO_SPACE, VLW_DAMAGED for a file that is no registry, VLW_UNSUPPORTED for one of a
 * newer version, VLW_SYSTEM; VLW_BAD_STATE without a module. [handle] */
VLW_CHECKED vlw_code vlw_module_register(vlw_module* module);
VLW_CHECKED vlw_code vlw_module_unregister(vlw_module* module);
/** The same in the system's registry, for all users, which takes the rights to write it. [handle] */
VLW_CHECKED vlw_code vlw_module_register_system(vlw_module* module);
VLW_CHECKED vlw_code vlw_module_unregister_system(vlw_module* module);

/** The tags of the languages that vlw_module_format_text has texts in ("de", "de-DE", …); NULL past the last.
 * Lent for ever. Beside them it takes the platform's language numbers, as decimal text. [any] */
VLW_API const char* vlw_language(size_t index);
/** Whether a text names one of them, or such a number. [any] */
VLW_API int vlw_is_language(const char* text);

/** Decodes a picture (JPEG, PNG, GIF, BMP) and encodes it as "jpg" or "bmp". *made is given, to vlw_free.
 * VLW_BAD_VALUE for bytes that aren't a whole picture, VLW_BAD_ARGUMENT for another kind, VLW_NO_DECODER
 * without the library for pictures, VLW_BAD_STATE without a module. [handle] */
VLW_CHECKED vlw_code vlw_picture_convert(vlw_module* module, const void* bytes, size_t size, const char* kind,
                                         void** made, size_t* made_size);

/** 1: a file opened from now on whose head tells its length is opened without its decoder, for programs that
 * only look. The first read or seek asks for it, so VLW_NO_DECODER and VLW_DAMAGED may come then. 0, as a new
 * reader has it: the opening asks for it. [handle] */
VLW_API vlw_code vlw_reader_decode_late(vlw_reader* reader, int late);
/** Whether the open file's head tells how much audio there is: 1 or 0. Recordings that were piped or whose
 * recorder was killed have none, and are read to the end of the file. [handle] */
VLW_API int vlw_reader_length_told(const vlw_reader* reader);

/** A chunk of a WAV or AIFF file. Allocated by the program, filled by the library as far as its size goes. */
typedef struct vlw_chunk {
    size_t size;     /* in: sizeof(vlw_chunk) */
    char id[4];      /* as it stands in the file, not terminated */
    char type[4];    /* of a "LIST", likewise; zeros for other chunks */
    uint64_t offset; /* of its head in the source, in bytes */
    uint32_t bytes;  /* of its content, as the head declares them */
} vlw_chunk;
/** How many chunks the open file has at its top level, as far as one follows the other; 0 without a file.
 * Walks over the file. 0 too where that fails, which the record tells: VLW_NOT_SEEKABLE, and what reading
 * gives. After audio whose length isn't told no chunk is looked for. [handle] */
VLW_API size_t vlw_reader_chunk_count(vlw_reader* reader);
/** The chunks in the order of the file; VLW_END past the last. Any number can be asked for: nothing is kept
 * of them, and one after the other, by ascending index, they cost one walk in all. [handle] */
VLW_API vlw_code vlw_reader_chunk(vlw_reader* reader, size_t index, vlw_chunk* chunk);

/** Where a conversion reads or writes. Allocated by the program. */
typedef struct vlw_place {
    size_t size;      /* in: sizeof(vlw_place) */
    const char* path; /* of a file; NULL: the descriptor */
    int fd;           /* duplicated, used from where it stands; without a meaning beside a path */
} vlw_place;
/** As vlw_converter_run, from and to such places. A regular file behind a target's descriptor gets its bytes
 * when all are made. A pipe, a socket or a device, by descriptor or by path and without VLW_OVERWRITE, gets
 * each as it is made, so bytes have gone out when a run fails later. In a head that goes there, the sizes are
 * those of the file where the source tells the length of its audio, else 0xFFFFFFFF, and tags and chunks then
 * come before the audio. A source in order isn't taken at its word with VLW_PARTIAL. [handle] */
VLW_CHECKED vlw_code vlw_converter_run_places(vlw_converter* converter, const vlw_place* source,
                                              const vlw_place* target, const vlw_conversion* conversion);
/** What the source of the run is, also while it goes on, or of the last one; VLW_BAD_STATE where none was
 * opened. [handle, and from the run's progress callback] */
VLW_API vlw_code vlw_converter_source(const vlw_converter* converter, vlw_format* format);
/** Whether the last run failed because its source ends early, so that VLW_PARTIAL would let it go on: 1 or 0.
 * [handle] */
VLW_API int vlw_converter_refused_cut(const vlw_converter* converter);
/** A flag of vlw_conversion: of a source without a single frame nothing is made, VLW_DAMAGED. Far from those
 * of vlwav.h, which leave the next bits for their own. */
enum { VLW_NOT_EMPTY = 1 << 22 };
/** Another: where samples of 8 bits are made of wider ones, triangular noise of two of their steps comes
 * first, so that what is lost turns into an even hiss. Samples of 8 bits that stay as they are get none. */
enum { VLW_DITHER = 1 << 23 };
/** Of the noise, for the runs that follow: the same seed gives the same file. 0 before it is set. [handle] */
VLW_API vlw_code vlw_converter_seed(vlw_converter* converter, uint64_t seed);

/** A file of any bytes, which comes into being whole, in vlw_file_finish: until then, and if anything fails,
 * there is no file, or the old one. A device or a pipe that stands at the path gets each byte at once. */
typedef struct vlw_file vlw_file;
VLW_API vlw_code vlw_file_new(vlw_file** file);                /* [any] */
VLW_API void vlw_file_free(vlw_file* file);                    /* drops an unfinished file. [handle] */
VLW_API const vlw_error* vlw_file_error(const vlw_file* file); /* [handle] */
/** VLW_EXISTS where there is a regular file and `flags` has no VLW_OVERWRITE, which is the only one. [handle]
 */
VLW_CHECKED vlw_code vlw_file_create(vlw_file* file, const char* path, uint32_t flags);
/** Takes all bytes or fails; after a failure the file can only be dropped. [handle] */
VLW_CHECKED vlw_code vlw_file_write(vlw_file* file, const void* bytes, size_t size);
VLW_CHECKED vlw_code vlw_file_finish(vlw_file* file); /* [handle] */

/** Removes what unfinished files of this process are called now, for a program that is about to end by a
 * signal. Most file systems have nameless files, and there is nothing to remove. [any] */
VLW_API void vlw_remove_temporaries(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VLWAV_MORE_H */
