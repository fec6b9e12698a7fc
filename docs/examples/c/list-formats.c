/* Lists the formats that can be written, in Japanese: list-formats [LANGUAGE] */
#include <stdio.h>
#include <vlwav.h>

int main(int argc, char** argv) {
    const char* language = argc > 1 ? argv[1] : "ja";
    vlw_module* module = NULL;

    vlw_code code = vlw_module_new(&module);
    if (code == VLW_OK)
        code = vlw_module_load(module, NULL); /* NULL: the registered module, or the installed one */
    if (code < 0) {
        const vlw_error* error = vlw_module_error(module);
        fprintf(stderr, "%s\n", error ? error->text : vlw_error_text(code));
    }
    for (size_t i = 0; code == VLW_OK && i < vlw_module_format_count(module); ++i) {
        char* text = NULL;
        code = vlw_module_format_text(module, i, language, &text);
        if (code == VLW_OK)
            printf("%2zu  %s\n", i, text); /* UTF-8, whatever the locale */
        else
            fprintf(stderr, "%s\n", vlw_error_text(code));
        vlw_free(text);
    }
    vlw_module_free(module);
    return code < 0;
}
