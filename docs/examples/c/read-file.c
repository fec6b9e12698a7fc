/* Reads a file and tells what it is and how loud it is: read-file IN.wav */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <vlwav.h>

enum { kFrames = 4096 };

int main(int argc, char** argv) {
    vlw_reader* reader = NULL;
    vlw_format format = {.size = sizeof format};
    int16_t* block = NULL;
    int64_t total = 0;
    int peak = 0;

    if (argc != 2) return fputs("usage: read-file IN.wav\n", stderr), 2;
    vlw_code code = vlw_reader_new(NULL, &reader);
    if (code == VLW_OK) code = vlw_reader_open(reader, argv[1]);
    if (code == VLW_OK) code = vlw_reader_format(reader, &format);
    const size_t channels = vlw_reader_channels(reader);
    if (code == VLW_OK && !(block = malloc(kFrames * channels * sizeof *block))) code = VLW_NO_MEMORY;
    while (code == VLW_OK) { /* the block that comes with the end holds the last frames */
        size_t frames = 0;
        code = vlw_reader_read_int16(reader, block, kFrames, &frames);
        for (size_t i = 0; i < frames * channels; ++i)
            if (abs(block[i]) > peak) peak = abs(block[i]);
        total += (int64_t)frames;
    }

    if (code < 0) {
        const vlw_error* error = vlw_reader_error(reader); /* NULL where there was no memory for a reader */
        fprintf(stderr, "%s\n", error && error->code == code ? error->text : vlw_error_text(code));
    } else {
        printf("%s, %s, %" PRIu32 " Hz, %" PRIu32 " channels, %" PRIu32 " bits\n", format.container,
               format.codec, format.rate, format.channels, format.bits);
        printf("%" PRId64 " frames, peak %d%s\n", total, peak, code == VLW_CUT ? ", cut off" : "");
    }
    free(block);
    vlw_reader_free(reader);
    return code < 0;
}
