/* The C interface as a C99 program uses it: what it refuses and says. The programs of examples/host draw by it.

   Usage: c_interface PALETTE */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <qzanno.h>

static int faults = 0;

static void expect(int holds, const char *what) {
    if (holds) return;
    fprintf(stderr, "%s; last error: %s\n", what, qzanno_last_error());
    ++faults;
}

/* A call that must be refused with a code and a line that has a word in it. */
static void refused(qzanno_result result, qzanno_result code, const char *word) {
    char what[200];
    snprintf(what, sizeof what, "expected code %d and \"%s\", found code %d", (int)code, word, (int)result);
    expect(result == code && strstr(qzanno_last_error(), word) != NULL, what);
    expect(strchr(qzanno_last_error(), '\n') == NULL, "a message has one line");
}

static void check_refusals(const qzanno_palette *palette) {
    static const char title_text[] = "Gr\xC3\xBC\xC3\x9F" "e"; /* two characters of two bytes */
    qzanno_palette *other = NULL;
    qzanno_fonts *fonts = NULL;
    qzanno_captions *captions = NULL;
    qzanno_title *title = NULL;
    qzanno_renderer *renderer = NULL;
    qzanno_span span;
    const char *folder = "no/such/folder";
    uint8_t pixel[4] = {1, 2, 3, 4};
    qzanno_buffer small = {pixel, 1, 1, 4};

    refused(qzanno_palette_load(NULL, &other), QZANNO_ERROR_ARGUMENT, "\"path\" must not be NULL");
    refused(qzanno_palette_load("no/such.plist", &other), QZANNO_ERROR_FILE, "no/such.plist: ");
    refused(qzanno_palette_load_memory("<plist>", 7, &other), QZANNO_ERROR_FORMAT, "1");
    refused(qzanno_fonts_open(&folder, 1, &fonts), QZANNO_ERROR_FILE, "no/such/folder");
    refused(qzanno_captions_load("titles.doc", palette, &captions), QZANNO_ERROR_ARGUMENT, ".srt, .vtt, .ass or .ssa");
    refused(qzanno_captions_load_memory("1", 1, QZANNO_CAPTIONS_WEBVTT, palette, &captions), QZANNO_ERROR_FORMAT, "captions:1: ");
    refused(qzanno_title_new("\xFFoops", &title), QZANNO_ERROR_ARGUMENT, "byte 0");
    expect(other == NULL && fonts == NULL && captions == NULL && title == NULL, "what is refused leaves the out parameter alone");

    expect(qzanno_title_new(title_text, &title) == QZANNO_OK, "a title is made");
    refused(qzanno_title_annotate(title, "Role", 3, 1), QZANNO_ERROR_ARGUMENT, "Role");
    refused(qzanno_title_annotate(title, "Role", 2, SIZE_MAX), QZANNO_ERROR_ARGUMENT, "Role");
    refused(qzanno_title_span(title, 0, &span), QZANNO_ERROR_ARGUMENT, "there are 0");
    expect(qzanno_title_annotate(title, "Role", 2, 4) == QZANNO_OK && qzanno_title_span(title, 0, &span) == QZANNO_OK &&
               strcmp(span.annotation, "Role") == 0 && span.start == 2 && span.length == 4,
           "a span that is made can be read");
    expect(qzanno_title_annotate_all(title, "Nobody") == QZANNO_OK, "a title knows no palette");

    expect(qzanno_renderer_new(palette, &renderer) == QZANNO_OK, "a renderer is made");
    refused(qzanno_renderer_set_title(renderer, title), QZANNO_ERROR_ANNOTATION, "\"Nobody\"");
    refused(qzanno_renderer_set_language(renderer, "?"), QZANNO_ERROR_ARGUMENT, "\"?\"");
    refused(qzanno_renderer_set_screen(renderer, 1920, 0, 1920, 1080), QZANNO_ERROR_SIZE, "points");
    refused(qzanno_renderer_set_screen(renderer, 1920, 1080, 100000, 100000), QZANNO_ERROR_SIZE, "100000 x 100000");
    refused(qzanno_renderer_render(renderer, QZANNO_AREA_SCREEN, QZANNO_ALPHA_PREMULTIPLIED, &small, NULL), QZANNO_ERROR_ARGUMENT,
            "1920 x 1080");
    small.width = 1920;
    small.height = 1080;
    small.bytes_per_row = 7;
    refused(qzanno_renderer_render(renderer, QZANNO_AREA_SCREEN, QZANNO_ALPHA_PREMULTIPLIED, &small, NULL), QZANNO_ERROR_ARGUMENT,
            "rows of 7 bytes");
    expect(pixel[0] == 1 && pixel[3] == 4, "a buffer that is refused is left alone");

    qzanno_renderer_free(renderer);
    qzanno_title_free(title);
    qzanno_title_free(NULL);
}

int main(int argc, char **argv) {
    qzanno_palette *palette = NULL;
    if (argc != 2) return 2;
    expect(strcmp(qzanno_last_error(), "") == 0, "no call has failed yet");
    if (qzanno_palette_load(argv[1], &palette) != QZANNO_OK) {
        fprintf(stderr, "%s\n", qzanno_last_error());
        return 1;
    }
    expect(qzanno_palette_annotation_count(palette) > 0 && qzanno_palette_annotation_name(palette, 0) != NULL &&
               qzanno_palette_annotation_name(palette, qzanno_palette_annotation_count(palette)) == NULL,
           "a palette names its annotations");
    check_refusals(palette);
    qzanno_palette_free(palette);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
