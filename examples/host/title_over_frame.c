/* The same as title_over_frame.cpp, in C.

       title_over_frame_c broadcast.plist "Lower Third" "Good evening" frame.ppm */
#include <stdio.h>
#include <stdlib.h>

#include <qzanno.h>

enum { WIDTH = 1280, HEIGHT = 720 };

/* The host's own frame of opaque R, G, B, A: here a dusk sky, in an editor what the decoder gives. */
static void make_frame(uint8_t *pixel) {
    int x, y;
    for (y = 0; y < HEIGHT; ++y) {
        const int light = 255 * y / HEIGHT;
        for (x = 0; x < WIDTH; ++x, pixel += 4) {
            pixel[0] = (uint8_t)(40 + light / 2);
            pixel[1] = (uint8_t)(60 + light / 4);
            pixel[2] = 110;
            pixel[3] = 255;
        }
    }
}

static int write_ppm(const char *path, const uint8_t *pixels) {
    size_t i;
    FILE *file = fopen(path, "wb");
    if (file == NULL) return 0;
    fprintf(file, "P6\n%d %d\n255\n", WIDTH, HEIGHT);
    for (i = 0; i < (size_t)WIDTH * HEIGHT; ++i) fwrite(pixels + 4 * i, 1, 3, file);
    return fclose(file) == 0;
}

int main(int argc, char **argv) {
    qzanno_palette *palette = NULL;
    qzanno_title *title = NULL;
    qzanno_renderer *renderer = NULL;
    qzanno_buffer buffer = {NULL, WIDTH, HEIGHT, 0};
    int done = 0;

    if (argc != 5) {
        fprintf(stderr, "usage: title_over_frame_c PALETTE ANNOTATION TEXT FRAME.ppm\n");
        return 2;
    }
    buffer.pixels = malloc((size_t)4 * WIDTH * HEIGHT);
    if (buffer.pixels == NULL) return 1;
    make_frame(buffer.pixels);

    /* The palette's sizes are for a screen of 1920 x 1080 points; the frame that it stands for may have any size. */
    done = qzanno_palette_load(argv[1], &palette) == QZANNO_OK && qzanno_title_new(argv[3], &title) == QZANNO_OK &&
           qzanno_title_annotate_all(title, argv[2]) == QZANNO_OK && qzanno_renderer_new(palette, &renderer) == QZANNO_OK &&
           qzanno_renderer_set_screen(renderer, 1920, 1080, WIDTH, HEIGHT) == QZANNO_OK &&
           qzanno_renderer_set_title(renderer, title) == QZANNO_OK &&
           qzanno_renderer_composite(renderer, QZANNO_AREA_SCREEN, &buffer, NULL) == QZANNO_OK;
    if (!done) {
        fprintf(stderr, "title_over_frame_c: %s\n", qzanno_last_error());
    } else if (!write_ppm(argv[4], buffer.pixels)) {
        fprintf(stderr, "title_over_frame_c: %s: cannot be written\n", argv[4]);
        done = 0;
    }

    qzanno_renderer_free(renderer);
    qzanno_title_free(title);
    qzanno_palette_free(palette);
    free(buffer.pixels);
    return done ? 0 : 1;
}
