#define _GNU_SOURCE
#include "tests/capi/WaveFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/capi/Check.h"

/* ---- bytes ---- */

void add(bytes *to, const void *from, size_t count) {
    to->at = realloc(to->at, to->size + count + 1);
    if (count) memcpy(to->at + to->size, from, count);
    to->size += count;
}

void add_text(bytes *to, const char *text) { add(to, text, strlen(text)); }

void add_number(bytes *to, uint64_t value, int count) {
    for (int i = 0; i < count; ++i) add(to, &(unsigned char){(unsigned char)(value >> 8 * i)}, 1);
}

static void add_big(bytes *to, uint64_t value, int count) {
    while (count-- > 0) add(to, &(unsigned char){(unsigned char)(value >> 8 * count)}, 1);
}

int equal(bytes a, bytes b) { return a.size == b.size && (a.size == 0 || memcmp(a.at, b.at, a.size) == 0); }

uint32_t number_at(bytes file, size_t place) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4 && place + i < file.size; ++i) value |= (uint32_t)file.at[place + i] << 8 * i;
    return value;
}

static void add_chunk(bytes *to, const char *id, bytes content) {
    add(to, id, 4);
    add_number(to, content.size, 4);
    add(to, content.at, content.size);
    if (content.size & 1) add(to, "", 1);
    free(content.at);
}

static void set_number(bytes *file, size_t place, uint32_t value) {
    for (size_t i = 0; i < 4; ++i) file->at[place + i] = (unsigned char)(value >> 8 * i);
}

/* ---- WAV ---- */

const wave_kind kWaveKinds[WAVE_KINDS] = {
    {"8 bits", 1, 1, 22050, 8, 1, 0, 0},           {"16 bits", 1, 2, 44100, 16, 4, 0, 0},
    {"24 bits", 1, 2, 48000, 24, 6, 0, 0},         {"32 bits", 1, 1, 96000, 32, 4, 0, 0},
    {"float", 3, 2, 44100, 32, 8, 0, 0},           {"extensible", 0xFFFE, 6, 48000, 16, 12, 0, 0x3F},
    {"A-law", 6, 1, 8000, 8, 1, 0, 0},             {"mu-law", 7, 2, 11025, 8, 2, 0, 0},
    {"IMA ADPCM", 0x11, 2, 22050, 4, 72, 65, 0},   {"extensible 24", 0xFFFE, 2, 192000, 24, 6, 0, 3},
};

static bytes format_of(const wave_kind *kind) {
    static const char kRest[] = "\1\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"; /* PCM's id */
    bytes made = {0};
    add_number(&made, kind->tag, 2);
    add_number(&made, kind->channels, 2);
    add_number(&made, kind->rate, 4);
    add_number(&made, kind->block_frames ? kind->rate / kind->block_frames * kind->align : kind->rate * kind->align, 4);
    add_number(&made, kind->align, 2);
    add_number(&made, kind->bits, 2);
    if (kind->tag == 1) return made;
    add_number(&made, kind->mask ? 22 : kind->block_frames ? 2 : 0, 2);
    if (kind->block_frames) add_number(&made, kind->block_frames, 2);
    if (kind->mask) {
        add_number(&made, kind->bits, 2);
        add_number(&made, kind->mask, 4);
        add(&made, kRest, 16);
    }
    return made;
}

/* Noise that is sound in each codec: of floats up to 1, of ADPCM with an index that there is. */
static bytes audio_of(const wave_kind *kind, size_t units) {
    bytes made = {calloc(1, units * kind->align + 1), units * kind->align};
    uint32_t state = 4711;
    for (size_t i = 0; i < made.size; ++i) made.at[i] = (unsigned char)((state = state * 1664525 + 1013904223) >> 24);
    for (size_t i = 0; kind->tag == 3 && i + 3 < made.size; i += 4) made.at[i + 3] = 0x3E;
    for (size_t i = 0; kind->block_frames && i < made.size; i += kind->align)
        for (uint32_t c = 0; c < kind->channels; ++c) made.at[i + 4 * c + 2] %= 89, made.at[i + 4 * c + 3] = 0;
    return made;
}

bytes make_entries(const char *entries) {
    bytes made = {0};
    while (entries && *entries) {
        const char *const end = strchrnul(entries, '|');
        bytes content = {0};
        add(&content, entries + 5, (size_t)(end - entries) - 5);
        if (entries[4] == '=') add(&content, "", 1);
        add_chunk(&made, entries, content);
        entries = *end ? end + 1 : end;
    }
    return made;
}

static bytes list_of(const char *type, bytes entries) {
    bytes made = {0};
    add_text(&made, type);
    add(&made, entries.at, entries.size);
    free(entries.at);
    return made;
}

static bytes filled(size_t size) {
    bytes made = {malloc(size), size};
    memset(made.at, 0x5A, size);
    return made;
}

static void add_audio(bytes *file, const wave_kind *kind, char how, size_t units) {
    bytes audio = audio_of(kind, units);
    if (how == 'o') add(&audio, "?", 1);
    const size_t place = file->size + 4;
    add_chunk(file, "data", audio);
    if (how == 'p') set_number(file, place, 0xFFFFFFFF);
    if (how == 'z') set_number(file, place, 0);
    if (how == 'c') set_number(file, place, number_at(*file, place) + 1000);
}

bytes make_wave(const wave_kind *kind, const char *layout, const char *entries, size_t units) {
    bytes file = {0}, fact = {0};
    const size_t promised = units + (strchr(layout, 'c') ? 1000 / kind->align : 0);
    add(&file, "RIFF\0\0\0\0WAVE", 12);
    for (; *layout; ++layout) {
        if (*layout == 'f') {
            add_chunk(&file, "fmt ", format_of(kind));
            add_number(&fact, promised * (kind->block_frames ? kind->block_frames : 1), 4);
            if (kind->tag != 1 && kind->tag != 0xFFFE) add_chunk(&file, "fact", fact);
            else free(fact.at);
            fact = (bytes){0};
        } else if (strchr("dpzco", *layout)) {
            add_audio(&file, kind, *layout, units);
        } else if (*layout == 'l') {
            add_chunk(&file, "LIST", list_of("INFO", make_entries(entries)));
        } else if (*layout == 'i') {
            add_chunk(&file, "LIST", list_of("INFO", make_entries("INAM=Other")));
        } else if (*layout == 'a') {
            add_chunk(&file, "LIST", list_of("adtl", make_entries("labl~1234mark")));
        } else if (*layout == 'j') {
            add_chunk(&file, "JUNK", filled(3));
        } else if (*layout == 'b') {
            add_chunk(&file, "bext", filled(602));
        } else if (*layout == 't') {
            add(&file, "\1\2\3\4\5\6\7", 7);
        }
    }
    set_number(&file, 4, (uint32_t)file.size - 8);
    return file;
}

bytes make_mp3(size_t frames, uint32_t promised) {
    /* MPEG 1, layer III, 128 kbit/s, 44100 Hz, one channel: 417 bytes, and 418 for each with padding. */
    static const wave_kind kMp3 = {"MP3", 0x55, 1, 44100, 0, 1, 0, 0};
    bytes file = {0}, format = format_of(&kMp3), fact = {0}, audio = {0};
    format.at[8] = 0x80, format.at[9] = 0x3E, format.at[10] = format.at[11] = 0; /* bytes a second */
    format.size -= 2;
    add_number(&format, 12, 2);
    add_number(&format, 1, 2);
    add_number(&format, 2, 4);
    add_number(&format, 417, 2);
    add_number(&format, 1, 2);
    add_number(&format, 1393, 2);
    add_number(&fact, promised, 4);
    for (size_t i = 0; i < frames; ++i) {
        static const unsigned char kFrame[417] = {0xFF, 0xFB, 0x90, 0xC4};
        add(&audio, kFrame, sizeof kFrame);
    }
    add(&file, "RIFF\0\0\0\0WAVE", 12);
    add_chunk(&file, "fmt ", format);
    add_chunk(&file, "fact", fact);
    add_chunk(&file, "data", audio);
    set_number(&file, 4, (uint32_t)file.size - 8);
    return file;
}

/* ---- AIFF ---- */

static void add_big_chunk(bytes *to, const char *id, bytes content) {
    add(to, id, 4);
    add_big(to, content.size, 4);
    add(to, content.at, content.size);
    if (content.size & 1) add(to, "", 1);
    free(content.at);
}

static bytes text_of(const char *text) {
    bytes made = {0};
    add_text(&made, text);
    return made;
}

bytes make_aiff(uint32_t channels, uint32_t frames) {
    bytes form = text_of("AIFF"), common = {0}, sound = {0}, file = {0};
    add_big(&common, channels, 2);
    add_big(&common, frames, 4);
    add_big(&common, 16, 2);
    add_big(&common, 0x400EAC44, 4); /* 44100 as a number of 80 bits */
    add_big(&common, 0, 6);
    add_big_chunk(&form, "COMM", common);
    add_big_chunk(&form, "NAME", text_of("A name"));
    add_big_chunk(&form, "AUTH", text_of("An author"));
    add_big(&sound, 0, 8);
    for (uint32_t i = 0; i < frames * channels; ++i) add_big(&sound, i * 7919, 2);
    add_big_chunk(&form, "SSND", sound);
    add_big_chunk(&form, "ANNO", text_of("A note"));
    add_big_chunk(&file, "FORM", form);
    return file;
}

/* ---- looking ---- */

bytes entries_of(bytes file) {
    bytes found = {0};
    for (size_t at = 12; at + 12 <= file.size;) {
        const size_t size = number_at(file, at + 4);
        if (memcmp(file.at + at, "LIST", 4) == 0 && memcmp(file.at + at + 8, "INFO", 4) == 0 && at + 8 + size <= file.size) {
            found.size = 0;
            add(&found, file.at + at + 12, size - 4);
        }
        at += 8 + size + (size & 1);
    }
    return found;
}

/* ---- files and children ---- */

bytes contents(const char *path) {
    bytes file = {0};
    unsigned char block[65536];
    const int fd = open(path, O_RDONLY);
    ssize_t got;
    while (fd >= 0 && (got = read(fd, block, sizeof block)) > 0) add(&file, block, (size_t)got);
    close(fd);
    return file;
}

void put_file(const char *path, bytes content) {
    FILE *const file = fopen(path, "wb");
    CHECK(file && (content.size == 0 || fwrite(content.at, 1, content.size, file) == content.size) && fclose(file) == 0);
}

int file_is(const char *path, bytes expected) {
    bytes file = contents(path);
    const int is = equal(file, expected);
    free(file.at);
    return is;
}

size_t names_in(const char *folder) {
    size_t count = 0;
    DIR *const opened = opendir(folder);
    while (opened && readdir(opened)) ++count;
    closedir(opened);
    return count;
}

static char s_folder[4096];

int enter_folder(const char *within) {
    snprintf(s_folder, sizeof s_folder, "%s/check-XXXXXX", within);
    return mkdtemp(s_folder) && chdir(s_folder) == 0;
}

int leave_folder(void) {
    char command[4200];
    snprintf(command, sizeof command, "rm -rf '%s'", s_folder);
    return chdir("/") == 0 && system(command) == 0;
}

pid_t fork_to_check(void) {
    fflush(NULL);
    return fork();
}

void end_check(void) { _exit(s_failures != 0); }

void join_check(pid_t child) {
    int status = 0;
    CHECK(waitpid(child, &status, 0) == child && status == 0);
}
