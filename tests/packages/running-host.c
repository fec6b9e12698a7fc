/* A host that goes on while its packages are upgraded: running-host FIRST.wav LATER.wav
 * Opens FIRST.wav, says "ready", waits for a line, and reads LATER.wav, for which it loads what it hasn't needed
 * before: a decoder for a compressed file. Says how many frames there were, or why there were none. */
#include <inttypes.h>
#include <stdio.h>
#include <vlwav.h>

int main(int argc, char** argv) {
    static int16_t block[2 * 4096];
    vlw_reader* reader = NULL;
    int64_t total = 0;
    if (argc != 3) return 2;
    vlw_code code = vlw_reader_new(NULL, &reader);
    if (code == VLW_OK) code = vlw_reader_open(reader, argv[1]);
    if (code == VLW_OK) {
        puts("ready");
        fflush(stdout);
        getchar();
        code = vlw_reader_open(reader, argv[2]);
    }
    while (code == VLW_OK) {
        size_t frames = 0;
        code = vlw_reader_read_int16(reader, block, 4096, &frames);
        total += (int64_t)frames;
    }
    if (code == VLW_END)
        printf("%" PRId64 " frames\n", total);
    else
        printf("%s\n", vlw_reader_error(reader)->text);
    vlw_reader_free(reader);
    return code != VLW_END;
}
