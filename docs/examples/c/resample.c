/* Writes a file's audio as raw 16-bit samples of another rate and channel count: resample IN.wav RATE
 * CHANNELS OUT.raw */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <vlwav.h>

enum { kFrames = 4096, kMostChannels = 255 };

int main(int argc, char** argv) {
    static int16_t block[kFrames * kMostChannels];
    vlw_reader* reader = NULL;
    int failed = 0;

    if (argc != 5) return fputs("usage: resample IN.wav RATE CHANNELS OUT.raw\n", stderr), 2;
    vlw_code code = vlw_reader_new(NULL, &reader);
    if (code == VLW_OK)
        code = vlw_reader_output(reader, (uint32_t)strtoul(argv[2], NULL, 10),
                                 (uint32_t)strtoul(argv[3], NULL, 10));
    if (code == VLW_OK) code = vlw_reader_open(reader, argv[1]);
    FILE* out = code == VLW_OK ? fopen(argv[4], "wb") : NULL;
    if (code == VLW_OK && !out) perror(argv[4]), failed = 1;

    /* Known before the first frame is read; VLW_UNKNOWN, -1, for a source without a length. */
    const int64_t expected = vlw_reader_frames(reader);
    while (code == VLW_OK && !failed) {
        size_t frames = 0;
        code = vlw_reader_read_int16(reader, block, kFrames, &frames);
        const size_t samples = frames * vlw_reader_channels(reader);
        if (fwrite(block, sizeof *block, samples, out) != samples) perror(argv[4]), failed = 1;
    }

    if (code < 0) {
        const vlw_error* error = vlw_reader_error(reader);
        fprintf(stderr, "%s\n", error && error->code == code ? error->text : vlw_error_text(code));
    } else if (!failed) {
        printf("%" PRId64 " frames expected, %" PRId64 " written\n", expected, vlw_reader_tell(reader));
    }
    if (out && fclose(out) != 0) perror(argv[4]), failed = 1;
    vlw_reader_free(reader);
    return code < 0 || failed;
}
