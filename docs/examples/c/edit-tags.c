/* Sets a tag of a WAV file in place and shows all of its tags: edit-tags FILE.wav KEYWORD VALUE */
#include <stdio.h>
#include <vlwav.h>

int main(int argc, char** argv) {
    vlw_editor* editor = NULL;
    vlw_tags* tags = NULL;

    if (argc != 4) return fputs("usage: edit-tags FILE.wav KEYWORD VALUE\n", stderr), 2;
    vlw_code code = vlw_editor_new(NULL, &editor);
    if (code == VLW_OK) code = vlw_editor_open(editor, argv[1]);
    const vlw_error* error = vlw_editor_error(editor);
    if (code == VLW_OK) {
        tags = vlw_editor_tags(editor);              /* lent: the editor frees it */
        code = vlw_tags_set(tags, argv[2], argv[3]); /* "" takes a tag away */
        error = vlw_tags_error(tags);
    }
    if (code == VLW_OK) {
        const char *keyword = NULL, *value = NULL; /* shown before the save, which takes `tags` back */
        for (size_t i = 0; vlw_tags_at(tags, i, &keyword, &value) == VLW_OK; ++i)
            printf("%s: %s\n", keyword, value);
        code = vlw_editor_save(editor, 0); /* VLW_LOSSY: also if a tag can't be kept as it is */
        error = vlw_editor_error(editor);
    }
    if (code < 0) fprintf(stderr, "%s\n", error && error->code == code ? error->text : vlw_error_text(code));
    vlw_editor_free(editor); /* what isn't saved is dropped */
    return code < 0;
}
