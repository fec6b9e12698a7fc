/* Editing in place: the tags change and nothing else, whatever happens. Started with a folder to work in. */
#define _GNU_SOURCE
#include "tests/capi/AudioFiles.h"
#include "tests/capi/Files.h"
#include "tests/capi/SystemCalls.h"

enum { UNITS = 300 };

static const char *const kEntries = "INAM=Old title|IXYZ~odd|IART=Someone|ICMT~no end";

static vlw_editor *new_editor(void) {
    vlw_editor *editor = NULL;
    CHECK(vlw_editor_new(NULL, &editor) == VLW_OK);
    return editor;
}

static bytes put_wave(const char *path, const wave *kind, const char *layout, const char *entries) {
    const bytes file = make_wave(kind, layout, entries, UNITS);
    put_file(path, file);
    return file;
}

static int failed(const vlw_editor *editor, vlw_code code, vlw_code expected, const char *path) {
    return told(vlw_editor_error(editor), code, expected, -1, path);
}

/* Opens, changes the title and saves; the tags fail alone where memory does. */
static vlw_code save_title(vlw_editor *editor, const char *path, const char *title) {
    vlw_code code = vlw_editor_open(editor, path);
    if (code == VLW_OK) code = vlw_tags_set(vlw_editor_tags(editor), "title", title);
    return code == VLW_OK ? vlw_editor_save(editor, 0) : code;
}

/* ---- nothing but the tags ---- */

/* Each chunk but the "INFO" lists stands where it stood, to the byte. A last size that lies has to be set right, since the new
 * list lies after it. */
static int others_are_kept(bytes before, bytes after) {
    for (size_t at = 12; at < before.size;) {
        size_t size = 8 + (size_t)number_at(before, at + 4);
        const int lies = size > before.size - at || (memcmp(before.at + at, "data", 4) == 0 && size == 8);
        const int is_list = memcmp(before.at + at, "LIST", 4) == 0 && memcmp(before.at + at + 8, "INFO", 4) == 0;
        if (before.size - at < 8) /* bytes that are no chunk go into one */
            return memmem(after.at + at, after.size - at, before.at + at, before.size - at) != NULL;
        if (lies) size = before.size - at;
        if (is_list) {
        } else if (at + size > after.size || memcmp(before.at + at, after.at + at, 4) != 0 ||
                   (!lies && memcmp(before.at + at + 4, after.at + at + 4, 4) != 0) ||
                   memcmp(before.at + at + 8, after.at + at + 8, size - 8) != 0) {
            return fprintf(stderr, "  the chunk at %zu\n", at), 0;
        }
        at += size + (size & 1);
    }
    return number_at(after, 4) + 8 == after.size;
}

static struct timespec mtime(const char *path) {
    struct stat status = {0};
    CHECK(stat(path, &status) == 0);
    return status.st_mtim;
}

static int is_untouched(const char *path, bytes before, struct timespec then) {
    const struct timespec now = mtime(path);
    return file_is(path, before) && now.tv_sec == then.tv_sec && now.tv_nsec == then.tv_nsec;
}

static void format_is(const vlw_editor *editor, const wave *kind) {
    vlw_format format = {.size = sizeof format};
    sound made = make_sound(kind->kind, kind->rate, kind->channels, UNITS);
    CHECK(vlw_editor_format(editor, &format) == VLW_OK && same(format.container, "WAV"));
    CHECK(format.rate == made.rate && format.channels == made.channels && format.bits == made.bits);
    CHECK(format.block_bytes == made.unit_bytes && format.codec_tag == made.tag && format.channel_mask == made.mask);
    CHECK(format.frames >= (int64_t)made.frames);
    free_sound(&made);
}

static void layout(vlw_editor *editor, const wave *kind, const char *letters) {
    bytes before = put_wave("a.wav", kind, letters, kEntries), after;
    const struct timespec past[2] = {{1000000000, 7}, {1000000000, 7}};
    const int failures = s_failures;
    utimensat(AT_FDCWD, "a.wav", past, 0);
    /* Nothing changed, or changed and back, or dropped: nothing written. */
    CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_editor_save(editor, 0) == VLW_OK);
    CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK);
    format_is(editor, kind);
    vlw_tags *tags = vlw_editor_tags(editor);
    const char *const old = vlw_tags_get(tags, "title");
    char *const kept = old ? strdup(old) : NULL;
    CHECK(vlw_tags_set(tags, "title", "x") == VLW_OK && vlw_tags_set(tags, "title", kept) == VLW_OK);
    CHECK(vlw_editor_save(editor, 0) == VLW_OK && vlw_editor_tags(editor) == NULL && is_untouched("a.wav", before, past[0]));
    CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "title", "x") == VLW_OK);
    vlw_editor_close(editor);
    CHECK(is_untouched("a.wav", before, past[0]));
    /* Longer tags, shorter ones, none. */
    const char *const values[] = {"A title that is longer than the old one", "Short", NULL};
    for (size_t i = 0; i < 3; ++i) {
        CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "title", values[i]) == VLW_OK);
        if (!values[i]) vlw_tags_clear(vlw_editor_tags(editor));
        CHECK(vlw_editor_save(editor, 0) == VLW_OK);
        CHECK(tag_is("a.wav", "title", values[i]));
        after = contents("a.wav");
        CHECK(others_are_kept(before, after));
        free(after.at);
    }
    if (s_failures != failures) fprintf(stderr, "  %s as %s: %s\n", name_of(kind), letters, vlw_editor_error(editor)->text);
    free(kept);
    free(before.at);
}

static void layouts(void) {
    const char *const letters[] = {"fd", "fdl", "fld", "fjldb", "fdlj", "flbdi", "fdt", "jfabdal", "fp", "flp", "fz", "fo", "fol", "flc", "fdlt"};
    vlw_editor *const editor = new_editor();
    for (size_t k = 0; k < WAVES; ++k)
        for (size_t i = 0; i < sizeof letters / sizeof *letters; ++i) layout(editor, &kWaves[k], letters[i]);
    vlw_editor_free(editor);
}

/* ---- what a list becomes ---- */

#define JA "\xE6\x97\xA5\xE6\x9C\xAC"
#define ZE "\xC5\xBDi\xC5\xBE"

static const struct change {
    const char *entries, *keyword, *value;
    vlw_text text;
    const char *after;           /* NULL: the old ones, and `lost` in the sentence */
    const char *lost[3];
} kChanges[] = {
    /* One entry changes, the rest stays as it is, in its order and its form. */
    {"INAM=Old|IXYZ~odd|IART=A|ISFT=Program", "title", "New", 0, "INAM=New|IXYZ~odd|IART=A|ISFT=Program", {0}},
    {"INAM=Old|IXYZ~odd|IART=A", "title", NULL, 0, "IXYZ~odd|IART=A", {0}},
    {"INAM=Old|IART~A", "genre", "Jazz", 0, "INAM=Old|IART~A|IGNR=Jazz", {0}},
    {NULL, "artist", "Gr\xC3\xB6\xC3\x9F" "e", 0, "IART=Gr\xF6\xDF" "e", {0}},
    /* Dates keep month and day where they begin with the year. */
    {"ICRD=2004-05-06|INAM=x", "year", "2010", 0, "ICRD=2010-05-06|INAM=x", {0}},
    {"IARL=7|INAM=x", "track", "8", 0, "IARL=8|INAM=x", {0}},
    {"IARL=7th shelf", "title", "x", 0, "IARL=7th shelf|INAM=x", {0}},
    /* Encodings. */
    {"INAM=Gr\xC3\xBC\xC3\x9F" "e", "artist", "\xC3\x84", 0, "INAM=Gr\xC3\xBC\xC3\x9F" "e|IART=\xC3\x84", {0}},
    {"INAM=Gr\xFC\xDF" "e", "artist", "\xC3\x84", 0, "INAM=Gr\xFC\xDF" "e|IART=\xC4", {0}},
    {"INAM=Gr\xFC\xDF" "e|ICMT=ascii|IXYZ=\xFC", "artist", JA, 0, "INAM=Gr\xC3\xBC\xC3\x9F" "e|ICMT=ascii|IXYZ=\xFC|IART=" JA, {0}},
    {"INAM=ascii", "artist", JA, 0, "INAM=ascii|IART=" JA, {0}},
    {"INAM=ascii", "artist", "\xE2\x82\xAC", 0, "INAM=ascii|IART=\x80", {0}},
    {"INAM=ascii", "artist", JA, VLW_TEXT_1252, NULL, {"artist", JA, "\"??\""}},
    {"INAM=ascii", "artist", ZE, VLW_TEXT_1252, "INAM=ascii|IART=\x8Ei\x9E", {0}},
    {"INAM=ascii", "artist", ZE, VLW_TEXT_UTF8, "INAM=ascii|IART=" ZE, {0}},
    {"INAM=Gr\xFC\xDF" "e", "artist", "\xC3\x84", VLW_TEXT_UTF8, "INAM=Gr\xFC\xDF" "e|IART=\xC3\x84", {0}},
    {"INAM=Gr\xC3\xBC\xC3\x9F" "e", "artist", "\xC3\x84", VLW_TEXT_1252, "INAM=Gr\xC3\xBC\xC3\x9F" "e|IART=\xC4", {0}},
    /* A text whose Windows-1252 would be taken for UTF-8. */
    {NULL, "title", "\xC3\x83\xC2\xBC", 0, "INAM=\xC3\x83\xC2\xBC", {0}},
    /* What no list gives back. */
    {"INAM=x", "title", "  y", 0, NULL, {"title", "\"  y\"", "\"y\""}},
    {"INAM=x", "title", "   ", 0, NULL, {"title", "\"   \"", "nothing"}},
    {"INAM=x", "conductor", "Someone", 0, NULL, {"conductor", "\"Someone\"", "nothing"}},
};

static void change(vlw_editor *editor, const wave *kind, const struct change *row) {
    const int failures = s_failures;
    bytes before = put_wave("a.wav", kind, row->entries ? "fdl" : "fd", row->entries);
    CHECK(vlw_editor_text(editor, row->text) == VLW_OK && vlw_editor_open(editor, "a.wav") == VLW_OK);
    CHECK(vlw_tags_set(vlw_editor_tags(editor), row->keyword, row->value) == VLW_OK);
    const vlw_code code = vlw_editor_save(editor, 0);
    if (row->after) {
        bytes after = contents("a.wav"), entries = entries_of(after), expected = make_entries(row->after);
        CHECK(code == VLW_OK && equal(entries, expected) && others_are_kept(before, after));
        if (s_failures != failures) fprintf(stderr, "  \"%.*s\"\n", (int)entries.size, (char *)entries.at);
        free(after.at), free(entries.at), free(expected.at);
    } else {
        CHECK(failed(editor, code, VLW_WOULD_LOSE, "a.wav") && file_is("a.wav", before));
        for (size_t i = 0; i < 3; ++i) CHECK(strstr(vlw_editor_error(editor)->text, row->lost[i]));
    }
    if (s_failures != failures)
        fprintf(stderr, "  %s: %s of \"%s\": %s\n", row->keyword, row->value, row->entries, vlw_editor_error(editor)->text);
    vlw_editor_close(editor);
    vlw_editor_text(editor, VLW_TEXT_AUTO);
    free(before.at);
}

static void changes(void) {
    vlw_editor *const editor = new_editor();
    for (size_t i = 0; i < sizeof kChanges / sizeof *kChanges; ++i) change(editor, &kWaves[i % WAVES], &kChanges[i]);
    vlw_editor_free(editor);
}

/* An archival location that begins with a digit stays, whatever becomes of the track. */
static void locations(void) {
    vlw_editor *const editor = new_editor();
    const char *const tracks[] = {"9", "12345", NULL};
    for (size_t i = 0; i < 3; ++i) {
        free(put_wave("a.wav", &kWaves[1], "fdl", "IARL=7th shelf|INAM=x").at);
        CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "track", tracks[i]) == VLW_OK);
        CHECK(vlw_editor_save(editor, 0) == VLW_OK && tag_is("a.wav", "track", tracks[i]));
        bytes after = contents("a.wav"), entries = entries_of(after), location = make_entries("IARL=7th shelf|INAM=x");
        CHECK(entries.size >= location.size && memcmp(entries.at, location.at, location.size) == 0);
        free(after.at), free(entries.at), free(location.at);
    }
    vlw_editor_free(editor);
}

/* Every keyword that is kept, all at once, then a long text, then none. */
static void all_keywords(void) {
    static char text[300001];
    memset(text, 'x', sizeof text - 1);
    vlw_editor *const editor = new_editor();
    bytes before = put_wave("a.wav", &kWaves[2], "fdb", NULL);
    for (int with = 1; with >= 0; --with) {
        CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK);
        for (size_t i = 0; vlw_keyword(i); ++i)
            if (vlw_keyword_flags(i) & VLW_KEYWORD_KEPT)
                CHECK(vlw_tags_set(vlw_editor_tags(editor), vlw_keyword(i), !with ? NULL : vlw_keyword_flags(i) & VLW_KEYWORD_NUMBER ? "2147483647" : JA) == VLW_OK);
        if (with) CHECK(vlw_tags_set(vlw_editor_tags(editor), "COMMENT", text) == VLW_OK);
        CHECK(vlw_editor_save(editor, 0) == VLW_OK);
        for (size_t i = 0; vlw_keyword(i); ++i)
            if (vlw_keyword_flags(i) & VLW_KEYWORD_KEPT && !same(vlw_keyword(i), "comment"))
                CHECK(tag_is("a.wav", vlw_keyword(i), !with ? NULL : vlw_keyword_flags(i) & VLW_KEYWORD_NUMBER ? "2147483647" : JA));
        CHECK(tag_is("a.wav", "comment", with ? text : NULL));
    }
    CHECK(file_is("a.wav", before));
    free(before.at);
    vlw_editor_free(editor);
}

/* ---- what is lost ---- */

static void losses(void) {
    vlw_editor *const editor = new_editor();
    bytes before = put_wave("a.wav", &kWaves[1], "fdl", kEntries);
    CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK);
    vlw_tags *const tags = vlw_editor_tags(editor);
    CHECK(vlw_tags_set(tags, "title", "New") == VLW_OK && vlw_tags_set(tags, "conductor", "Gone") == VLW_OK);
    CHECK(vlw_tags_set_picture(tags, 3, "BM", 2) == VLW_OK);
    CHECK(failed(editor, vlw_editor_save(editor, 0), VLW_WOULD_LOSE, "a.wav") && file_is("a.wav", before));
    const char *const text = vlw_editor_error(editor)->text;
    CHECK(strstr(text, "conductor") && strstr(text, "\"Gone\"") && strstr(text, "picture 3") && !strstr(text, "title"));
    /* The handle is as it was: same tags, same file, still kept from others. */
    CHECK(vlw_editor_tags(editor) == tags && same(vlw_tags_get(tags, "conductor"), "Gone") && vlw_tags_picture_count(tags) == 1);
    vlw_editor *const other = new_editor();
    CHECK(failed(other, vlw_editor_open(other, "a.wav"), VLW_IN_USE, "a.wav"));
    CHECK(vlw_tags_set_picture(tags, 3, NULL, 0) == VLW_OK && vlw_tags_set(tags, "conductor", NULL) == VLW_OK);
    CHECK(vlw_editor_save(editor, 0) == VLW_OK && vlw_editor_error(editor)->code == VLW_OK && same(vlw_editor_error(editor)->text, ""));
    CHECK(tag_is("a.wav", "title", "New") && tag_is("a.wav", "artist", "Someone"));
    /* With leave: what can be kept is. */
    CHECK(vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "conductor", "Gone") == VLW_OK);
    CHECK(vlw_tags_set(vlw_editor_tags(editor), "artist", "  B ") == VLW_OK && vlw_tags_set_picture(vlw_editor_tags(editor), 0, "BM", 2) == VLW_OK);
    CHECK(vlw_editor_save(editor, VLW_LOSSY) == VLW_OK);
    CHECK(tag_is("a.wav", "artist", "B") && tag_is("a.wav", "conductor", NULL) && tag_is("a.wav", "title", "New"));
    bytes after = contents("a.wav");
    CHECK(others_are_kept(before, after));
    vlw_editor_free(other);
    vlw_editor_free(editor);
    free(before.at), free(after.at);
}

/* ---- who has the file ---- */

static void sharing(void) {
    free(put_wave("a.wav", &kWaves[1], "fdl", kEntries).at);
    vlw_editor *const first = new_editor(), *const second = new_editor();
    vlw_reader *reader = NULL;
    int16_t frames[8];
    CHECK(vlw_reader_new(NULL, &reader) == VLW_OK && vlw_editor_open(first, "a.wav") == VLW_OK);
    CHECK(failed(second, vlw_editor_open(second, "a.wav"), VLW_IN_USE, "a.wav") && vlw_editor_tags(second) == NULL);
    CHECK(vlw_reader_open(reader, "a.wav") == VLW_OK && vlw_reader_read_int16(reader, frames, 4, NULL) == VLW_OK);
    const pid_t child = fork_to_check();
    if (child == 0) {
        vlw_editor *const other = new_editor();
        CHECK(failed(other, vlw_editor_open(other, "a.wav"), VLW_IN_USE, "a.wav"));
        vlw_editor_free(first); /* the parent's */
        CHECK(failed(other, vlw_editor_open(other, "a.wav"), VLW_IN_USE, "a.wav"));
        vlw_editor_free(other);
        end_check();
    }
    join_check(child);
    vlw_reader_close(reader);
    CHECK(vlw_tags_set(vlw_editor_tags(first), "title", "First") == VLW_OK && vlw_editor_save(first, 0) == VLW_OK);
    /* Open to all after each way to end it: saved, closed, another file opened, an opening that failed, freed. */
    for (int way = 0; way < 4; ++way) {
        CHECK(vlw_editor_open(second, "a.wav") == VLW_OK);
        vlw_editor_close(second);
        CHECK(vlw_editor_open(first, "a.wav") == VLW_OK && vlw_editor_open(second, "a.wav") == VLW_IN_USE);
        if (way == 0) vlw_editor_close(first);
        if (way == 1) CHECK(vlw_editor_open(first, "nowhere.wav") == VLW_NOT_FOUND);
        if (way == 2) CHECK(vlw_editor_open(first, NULL) == VLW_BAD_ARGUMENT);
        if (way == 3) vlw_editor_free(first);
        if (way < 3) CHECK(vlw_editor_tags(first) == NULL && vlw_editor_save(first, 0) == VLW_BAD_STATE);
    }
    CHECK(vlw_editor_open(second, "a.wav") == VLW_OK);
    vlw_editor_free(second);
    /* What a reader has open isn't written to. */
    vlw_editor *const third = new_editor();
    CHECK(vlw_reader_open(reader, "a.wav") == VLW_OK && vlw_editor_open(third, "a.wav") == VLW_IN_USE);
    vlw_reader_free(reader);
    vlw_editor_free(third);
    CHECK(tag_is("a.wav", "title", "First"));
}

/* A child that lives on doesn't hold what its parent has let go of; and frees it without a trace. */
static void forked(void) {
    bytes before = put_wave("a.wav", &kWaves[1], "fdl", kEntries);
    vlw_editor *const editor = new_editor();
    int ends[2];
    CHECK(pipe(ends) == 0 && vlw_editor_open(editor, "a.wav") == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "title", "New") == VLW_OK);
    const pid_t freeing = fork_to_check();
    if (freeing == 0) {
        vlw_editor_free(editor);
        CHECK(file_is("a.wav", before));
        end_check();
    }
    join_check(freeing);
    const pid_t child = fork_to_check();
    if (child == 0) {
        char byte;
        close(ends[1]);
        CHECK(read(ends[0], &byte, 1) == 0);
        end_check();
    }
    CHECK(vlw_editor_save(editor, 0) == VLW_OK && tag_is("a.wav", "title", "New"));
    close(ends[1]), close(ends[0]);
    join_check(child);
    vlw_editor_free(editor);
    free(before.at);
}

/* ---- what isn't edited ---- */

static void refused(vlw_editor *editor, const char *path, vlw_code code, int number) {
    CHECK(failed(editor, vlw_editor_open(editor, path), code, path) && vlw_editor_error(editor)->system == number);
    CHECK(vlw_editor_tags(editor) == NULL && vlw_editor_save(editor, 0) == VLW_BAD_STATE);
}

static void refusals(void) {
    vlw_editor *const editor = new_editor();
    vlw_format format = {.size = sizeof format};
    CHECK(vlw_editor_new(NULL, NULL) == VLW_BAD_ARGUMENT && vlw_editor_error(NULL) == NULL && vlw_editor_tags(NULL) == NULL);
    CHECK(vlw_editor_open(NULL, "a.wav") == VLW_BAD_ARGUMENT && vlw_editor_save(NULL, 0) == VLW_BAD_ARGUMENT);
    CHECK(vlw_editor_format(NULL, &format) == VLW_BAD_ARGUMENT && vlw_editor_text(NULL, VLW_TEXT_AUTO) == VLW_BAD_ARGUMENT);
    vlw_editor_close(NULL);
    vlw_editor_free(NULL);
    CHECK(vlw_editor_format(editor, &format) == VLW_BAD_STATE && vlw_editor_tags(editor) == NULL);
    CHECK(vlw_editor_save(editor, 0) == VLW_BAD_STATE && vlw_editor_text(editor, (vlw_text)3) == VLW_BAD_ARGUMENT);
    vlw_editor_close(editor);

    refused(editor, "nowhere.wav", VLW_NOT_FOUND, ENOENT);
    refused(editor, ".", VLW_SYSTEM, EISDIR);
    bytes none = {0}, aiff = make_aiff(2, 50), wave = make_wave(&kWaves[1], "fdl", kEntries, UNITS);
    put_file("empty.wav", none);
    refused(editor, "empty.wav", VLW_NOT_AUDIO, 0);
    refused(editor, "empty.wav/a.wav", VLW_NOT_FOUND, ENOTDIR);
    put_file("a.aiff", aiff);
    refused(editor, "a.aiff", VLW_UNSUPPORTED, 0);
    CHECK(file_is("a.aiff", aiff));
    refused(editor, "/dev/zero", VLW_NOT_SEEKABLE, 0);
    CHECK(mkfifo("fifo", 0600) == 0);
    alarm(20);
    refused(editor, "fifo", VLW_NOT_SEEKABLE, 0); /* nobody writes to it */
    alarm(0);
    /* A head that ends early, at each byte: refused, or the tags are as they were. */
    for (size_t size = 1; size < 60; ++size) {
        bytes cut = {wave.at, size};
        put_file("cut.wav", cut);
        const vlw_code code = vlw_editor_open(editor, "cut.wav");
        CHECK((size < 44 ? code == VLW_NOT_AUDIO || code == VLW_DAMAGED : code == VLW_OK) && file_is("cut.wav", cut));
        vlw_editor_close(editor);
    }
    /* A list that ends early, at each byte: what the module can't walk it doesn't write to. */
    for (size_t less = 1; less < 60; ++less) {
        bytes cut = {wave.at, wave.size - less};
        put_file("cut.wav", cut);
        const vlw_code code = save_title(editor, "cut.wav", "New");
        if (code == VLW_OK)
            CHECK(tag_is("cut.wav", "title", "New"));
        else
            CHECK(failed(editor, code, VLW_DAMAGED, "cut.wav") && file_is("cut.wav", cut));
    }
    put_file("cut.wav", wave);
    CHECK(vlw_editor_open(editor, "cut.wav") == VLW_OK && vlw_editor_save(editor, 32) == VLW_BAD_ARGUMENT);
    CHECK(vlw_editor_save(editor, VLW_OVERWRITE) == VLW_BAD_ARGUMENT && vlw_editor_tags(editor) != NULL);
    format.size = 3;
    CHECK(vlw_editor_format(editor, &format) == VLW_BAD_ARGUMENT && vlw_editor_format(editor, NULL) == VLW_BAD_ARGUMENT);
    vlw_editor_free(editor);
    free(aiff.at), free(wave.at);
}

static void rights(void) {
    bytes file = put_wave("protected.wav", &kWaves[1], "fdl", kEntries);
    free(put_wave("secret.wav", &kWaves[1], "fdl", kEntries).at);
    CHECK(chmod("protected.wav", 0444) == 0 && chmod(".", 0777) == 0 && chmod("secret.wav", 0000) == 0);
    become_nobody();
    vlw_editor *const editor = new_editor();
    refused(editor, "protected.wav", VLW_NO_PERMISSION, EACCES);
    refused(editor, "secret.wav", VLW_NO_PERMISSION, EACCES);
    CHECK(file_is("protected.wav", file));
    vlw_editor_free(editor);
    free(file.at);
}

/* Names are the system's bytes; a file is the one that was opened, wherever the program stands. */
static void names(void) {
    const char *const odd[] = {"\xFF\xFE .wav", "a\nb\t.wav", "\xE6\x97\xA5.wav", "\xED\xA0\x80.wav", "-.wav", "\xC3.wav", "%s.wav"};
    vlw_editor *const editor = new_editor();
    for (size_t i = 0; i < sizeof odd / sizeof *odd; ++i) {
        free(put_wave(odd[i], &kWaves[4], "fdl", kEntries).at);
        CHECK(vlw_editor_open(editor, odd[i]) == VLW_OK && vlw_tags_set(vlw_editor_tags(editor), "title", "New") == VLW_OK);
        CHECK(vlw_editor_save(editor, 0) == VLW_OK && tag_is(odd[i], "title", "New") && unlink(odd[i]) == 0);
        refused(editor, odd[i], VLW_NOT_FOUND, ENOENT);
    }
    free(put_wave("a.wav", &kWaves[1], "fd", NULL).at);
    CHECK(mkdir("deep", 0755) == 0 && symlink("../a.wav", "deep/link.wav") == 0);
    CHECK(vlw_editor_open(editor, "deep/link.wav") == VLW_OK && chdir("deep") == 0);
    CHECK(vlw_tags_set(vlw_editor_tags(editor), "title", "New") == VLW_OK);
    CHECK(vlw_editor_save(editor, 0) == VLW_OK && chdir("..") == 0 && tag_is("a.wav", "title", "New"));
    struct stat status;
    CHECK(lstat("deep/link.wav", &status) == 0 && S_ISLNK(status.st_mode));
    vlw_editor_free(editor);
}

/* ---- failures ---- */

static const char *const kLong = "A title that needs more room than the one before it, by far";

/* Old or new, the new one after a success, and all else as it was. */
static int old_or_new(const char *path, vlw_code code, bytes before, const char *old, const char *new) {
    bytes after = contents(path);
    vlw_editor *const editor = new_editor();
    int good = vlw_editor_open(editor, path) == VLW_OK;
    const char *const title = good ? vlw_tags_get(vlw_editor_tags(editor), "title") : NULL;
    good = good && (same(title, new) || (code != VLW_OK && same(title, old))) &&
           same(vlw_tags_get(vlw_editor_tags(editor), "artist"), "Someone");
    for (size_t at = 12; good && at < before.size;) { /* the same chunks in the same places, but for lists and what follows */
        const size_t size = 8 + (size_t)number_at(before, at + 4);
        if (before.size - at < 8)
            good = memmem(after.at + at, after.size - at, before.at + at, before.size - at) != NULL;
        else if (memcmp(before.at + at, "LIST", 4) != 0)
            good = at + size <= after.size && memcmp(before.at + at, after.at + at, size < before.size - at ? size : before.size - at) == 0;
        at += size + (size & 1);
    }
    if (!good) fprintf(stderr, "  %d: \"%s\"\n", code, title ? title : vlw_editor_error(editor)->text);
    vlw_editor_free(editor);
    free(after.at);
    return good;
}

static const char *const kSaved[] = {"fdl", "fld", "fjldb", "fdlt", "fol", "ifald"};

static void failing_changes(void) {
    vlw_editor *const editor = new_editor();
    for (size_t i = 0; i < 2 * sizeof kSaved / sizeof *kSaved; ++i) {
        const char *const letters = kSaved[i / 2];
        int failures = 0;
        for (int until = 1, fails = 1; fails; ++until, failures += fails) {
            const int failed_before = s_failures;
            bytes before = put_wave("a.wav", &kWaves[i % WAVES], letters, kEntries);
            const char *const new = until % 2 ? kLong : "New";
            memset(&s_changes, 0, sizeof s_changes);
            s_changes.until = until, s_changes.lasts = i % 2, s_changes.error = until % 3 ? ENOSPC : EIO;
            const vlw_code code = save_title(editor, "a.wav", new);
            fails = s_changes.seen >= until;
            memset(&s_changes, 0, sizeof s_changes);
            CHECK(fails == (code != VLW_OK)); /* a failure is never told as a success */
            if (code != VLW_OK) CHECK(failed(editor, code, until % 3 ? VLW_NO_SPACE : VLW_SYSTEM, "a.wav"));
            CHECK(old_or_new("a.wav", code, before, "Old title", new));
            if (s_failures != failed_before) fprintf(stderr, "  of %s, change %d\n", letters, until);
            free(before.at);
            vlw_editor_close(editor);
        }
        CHECK(failures > 4);
    }
    vlw_editor_free(editor);
}

static void limited_sizes(void) {
    vlw_editor *const editor = new_editor();
    bytes before = make_wave(&kWaves[2], "fdl", kEntries, UNITS);
    for (rlim_t size = before.size - 100; size < before.size + 400; size += 13) {
        put_file("limited.wav", before);
        limit_files(size);
        const vlw_code code = save_title(editor, "limited.wav", kLong);
        CHECK(code == VLW_OK || failed(editor, code, VLW_TOO_LARGE, "limited.wav"));
        CHECK(code == VLW_OK ? size > before.size + 20 : size < before.size + 380);
        if (size < before.size + 20) CHECK(file_is("limited.wav", before));
        limit_files(RLIM_INFINITY);
        CHECK(old_or_new("limited.wav", code, before, "Old title", kLong));
    }
    vlw_editor_free(editor);
    free(before.at);
}

static void full_disk(void) {
    static char text[9000];
    memset(text, 'y', sizeof text - 1);
    CHECK(mkdir("disk", 0755) == 0);
    mount_small("disk", "size=64k");
    vlw_editor *const editor = new_editor();
    bytes before = put_wave("disk/full.wav", &kWaves[2], "fdl", kEntries);
    const int filler = open("disk/filler", O_WRONLY | O_CREAT, 0600);
    while (write(filler, text, 4096) > 0) {}
    const vlw_code code = save_title(editor, "disk/full.wav", text);
    CHECK(failed(editor, code, VLW_NO_SPACE, "disk/full.wav") && vlw_editor_error(editor)->system == ENOSPC);
    CHECK(file_is("disk/full.wav", before));
    CHECK(syscall(SYS_ftruncate, filler, 0) == 0 && save_title(editor, "disk/full.wav", text) == VLW_OK);
    CHECK(tag_is("disk/full.wav", "title", text));
    /* A disk that nothing may be written to. */
    CHECK(close(filler) == 0 && mount("", "disk", "", MS_REMOUNT | MS_RDONLY, NULL) == 0);
    refused(editor, "disk/full.wav", VLW_NO_PERMISSION, EROFS);
    vlw_editor_free(editor);
    free(before.at);
}

/* Each allocation fails in its turn. */
static void memory_runs_out(void) {
#if OWN_ALLOCATION
    vlw_module *module = NULL;
    vlw_editor *editor = NULL;
    CHECK(vlw_module_new(&module) == VLW_OK && vlw_module_load(module, NULL) == VLW_OK);
    bytes before = make_wave(&kWaves[2], "fdl", kEntries, UNITS);
    vlw_code code = VLW_NO_MEMORY;
    int failures = 0;
    for (long left = 0; code != VLW_OK && left < 10000; ++left) {
        const int failed_before = s_failures;
        put_file("a.wav", before);
        s_allocations_left = left;
        code = vlw_editor_new(module, &editor);
        if (code == VLW_OK) code = save_title(editor, "a.wav", kLong);
        s_allocations_left = -1;
        if (code != VLW_OK) CHECK(code == VLW_NO_MEMORY);
        if (code != VLW_OK && editor) {
            const vlw_error *const error = vlw_editor_error(editor), *const of_tags = vlw_tags_error(vlw_editor_tags(editor));
            CHECK((error->code == VLW_NO_MEMORY && error->text[0]) || (of_tags && of_tags->code == VLW_NO_MEMORY && of_tags->text[0]));
        }
        vlw_editor_free(editor);
        editor = NULL;
        CHECK(old_or_new("a.wav", code, before, "Old title", kLong));
        if (s_failures != failed_before) fprintf(stderr, "  after %ld allocations: %d\n", left, code);
        failures += code != VLW_OK;
    }
    CHECK(failures > 50 && code == VLW_OK);
    vlw_module_free(module);
    free(before.at);
#endif
}

int main(int argc, char **argv) {
    static const check kChecks[] = {
        {"layouts", layouts, 0}, {"changes", changes, 0},     {"locations", locations, 0}, {"all_keywords", all_keywords, 0},   {"losses", losses, 0},
        {"sharing", sharing, 0}, {"forked", forked, 0},       {"refusals", refusals, 0},           {"rights", rights, 1},
        {"names", names, 0},     {"full_disk", full_disk, 1}, {"limited_sizes", limited_sizes, 1}, {"failing_changes", failing_changes, 0},
        {"memory", memory_runs_out, 0}};
    return argc == 2 ? run_checks(argv[1], kChecks, sizeof kChecks / sizeof *kChecks) : 2;
}
