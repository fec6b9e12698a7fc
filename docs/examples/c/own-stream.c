/* Reads a WAV file that lies inside another file, through a stream of the program's own: own-stream ARCHIVE
 * OFFSET SIZE */
#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <vlwav.h>

enum { kFrames = 4096, kMostChannels = 255 };

typedef struct Part {
    FILE* file;
    int64_t start, size, place; /* bytes; `place` counts from `start` */
} Part;

/* Bytes got; 0 at the end; -errno. */
static int64_t part_read(void* user, void* buffer, size_t bytes) {
    Part* p = user;
    const int64_t left = p->size - p->place;
    if ((int64_t)bytes > left) bytes = (size_t)(left > 0 ? left : 0);
    errno = 0;
    if (fseek(p->file, (long)(p->start + p->place), SEEK_SET) != 0) return -errno;
    const size_t got = fread(buffer, 1, bytes, p->file);
    if (got < bytes && ferror(p->file)) return errno ? -errno : -EIO;
    p->place += (int64_t)got;
    return (int64_t)got;
}

/* The new place; -errno. A stream whose bytes come in order only has NULL in place of this function. */
static int64_t part_seek(void* user, int64_t offset, int whence) {
    Part* p = user;
    const int64_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? p->place : p->size;
    if (offset < -from) return -EINVAL;
    return p->place = from + offset;
}

/* Called once, also when the opening fails. */
static void part_close(void* user) {
    Part* p = user;
    fclose(p->file);
}

int main(int argc, char** argv) {
    static float block[kFrames * kMostChannels];
    vlw_reader* reader = NULL;
    double sum = 0;

    if (argc != 4) return fputs("usage: own-stream ARCHIVE OFFSET SIZE\n", stderr), 2;
    Part part = {.file = fopen(argv[1], "rb"),
                 .start = strtoll(argv[2], NULL, 10),
                 .size = strtoll(argv[3], NULL, 10)};
    if (!part.file) return perror(argv[1]), 1;
    const vlw_stream stream = {
        .size = sizeof stream, .user = &part, .read = part_read, .seek = part_seek, .close = part_close};

    vlw_code code = vlw_reader_new(NULL, &reader);
    if (code == VLW_OK)
        code = vlw_reader_open_stream(reader, &stream);
    else
        part_close(&part);
    while (code == VLW_OK) {
        size_t frames = 0;
        code = vlw_reader_read_float(reader, block, kFrames, &frames);
        const size_t samples = frames * vlw_reader_channels(reader);
        for (size_t i = 0; i < samples; ++i) sum += block[i] < 0 ? -block[i] : block[i];
    }

    if (code < 0) {
        const vlw_error* error = vlw_reader_error(reader);
        fprintf(stderr, "%s\n", error && error->code == code ? error->text : vlw_error_text(code));
    } else {
        const int64_t frames = vlw_reader_tell(reader);
        const double samples = (double)frames * vlw_reader_channels(reader);
        printf("%" PRId64 " frames, mean level %.4f\n", frames, samples > 0 ? sum / samples : 0);
    }
    vlw_reader_free(reader);
    return code < 0;
}
