#ifndef QZANNO_H
#define QZANNO_H

/// @file
/// QzAnno for C, and for every language that can call C: palette and title in, pixels out.
///
/// Calls. A function that can fail returns a `qzanno_result`. If that is not QZANNO_OK, the call has changed nothing
/// except pixels that it had begun to draw, and `qzanno_last_error` returns one line that says what happened, where,
/// and what to do. No exception leaves a call. Passing NULL where it is not allowed, or an index out of range, fails
/// with QZANNO_ERROR_ARGUMENT; functions that return a count or a string return 0 or NULL instead. `out` parameters are
/// written on success only.
///
/// Ownership. An object returned through an `out` parameter that is a pointer to a pointer belongs to the caller, who
/// frees it with the `…_free` of its kind; freeing NULL does nothing. Arguments are copied or shared: palettes, fonts,
/// titles and buffers may be freed or changed as soon as the call has returned. A returned `const char *` belongs to
/// the object it was requested from and is valid until that object changes or is freed.
///
/// Threads. Objects are independent of each other. Palettes, fonts, captions and reports never change, so any number of
/// threads may use one at once. Several threads may read a title while no thread annotates it. Only one thread at a
/// time may use a renderer; give each thread its own.
///
/// Units. Texts and paths are UTF-8; positions and lengths in a text count bytes and must not split a character. The
/// screen is measured in points and the frame that it represents in pixels, both from the top left with y downward.
///
/// Compatibility. Within one SONAME, functions may be added, but none is changed or removed, and structures stay as
/// they are.

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define QZANNO_API __attribute__((visibility("default")))
#else
#define QZANNO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// @addtogroup c_calls
/// @{

/// The result of a call.
typedef enum qzanno_result {
    QZANNO_OK = 0,                ///< done
    QZANNO_ERROR_ARGUMENT = 1,    ///< the call violates a rule of this header
    QZANNO_ERROR_FILE = 2,        ///< a file or folder cannot be read
    QZANNO_ERROR_FORMAT = 3,      ///< the data read are not in the expected format
    QZANNO_ERROR_ANNOTATION = 4,  ///< the palette has no annotation of that name
    QZANNO_ERROR_SIZE = 5,        ///< a picture of that size cannot be made
    QZANNO_ERROR_MEMORY = 6,      ///< memory has run out; the call may be tried again
    QZANNO_ERROR_INTERNAL = 7     ///< a fault of the library
} qzanno_result;

/// The version of the loaded library, such as "0.1.0".
QZANNO_API const char* qzanno_version(void);

/// One line about this thread's last failed call; empty if no call has failed. Never NULL; valid until this thread's
/// next failed call. A very long line is cut.
QZANNO_API const char* qzanno_last_error(void);

/// Receives one line of the library's log, without its line end. Called on any thread that is inside the library; it
/// must not call the library.
typedef void (*qzanno_log_function)(const char* line, void* context);

/// Sends the process's log to a function; NULL drops it, which is also the default once an object has been made. Do not
/// call while another thread is inside the library.
QZANNO_API qzanno_result qzanno_set_log(qzanno_log_function function, void* context);

/// @}

/// @addtogroup c_palettes
/// @{

/// The looks of annotations. Immutable.
typedef struct qzanno_palette qzanno_palette;

/// Reads a palette from an XML property list (.plist) or an archive (.annopalette), told apart by the first bytes.
///@{
QZANNO_API qzanno_result qzanno_palette_load(const char* path, qzanno_palette** out);
QZANNO_API qzanno_result qzanno_palette_load_memory(const void* bytes, size_t size, qzanno_palette** out);
///@}
/// Renderers that use it keep what they need.
QZANNO_API void qzanno_palette_free(qzanno_palette* palette);

/// The number of annotations, not counting the global one, which always applies.
QZANNO_API size_t qzanno_palette_annotation_count(const qzanno_palette* palette);
/// The annotations' names, highest priority first; NULL if the index is out of range. A name that occurs twice refers
/// to the annotation of lowest priority.
QZANNO_API const char* qzanno_palette_annotation_name(const qzanno_palette* palette, size_t index);

/// @}

/// @addtogroup c_fonts
/// @{

/// The system's fonts and those in folders of the host's.
typedef struct qzanno_fonts qzanno_fonts;

/// Reads every font file in the folders and their subfolders, without installing anything. This is slow: open the
/// folders once for all renderers. Fails if a folder cannot be read; a file that is not a font is left out and listed
/// as a problem.
QZANNO_API qzanno_result qzanno_fonts_open(const char* const* folders, size_t count, qzanno_fonts** out);
/// Renderers that use them keep what they need.
QZANNO_API void qzanno_fonts_free(qzanno_fonts* fonts);

/// The number of files left out.
QZANNO_API size_t qzanno_fonts_problem_count(const qzanno_fonts* fonts);
/// One line, path first; NULL if the index is out of range.
QZANNO_API const char* qzanno_fonts_problem(const qzanno_fonts* fonts, size_t index);

/// @}

/// @addtogroup c_titles
/// @{

/// A text and the names of annotations on stretches of it. Independent of palettes: a title works with any palette that
/// has those names.
typedef struct qzanno_title qzanno_title;

/// A stretch of a title with an annotation, in bytes of the text.
typedef struct qzanno_span {
    const char* annotation;  ///< its name; in a cue also that of a look defined by the file, such as "i" or "#ff0000"
    size_t start;            ///< in bytes
    size_t length;           ///< in bytes
} qzanno_span;

/// Makes a title without annotations. Line feeds separate lines.
QZANNO_API qzanno_result qzanno_title_new(const char* text, qzanno_title** out);
/// Copies a title with its annotations and, if it is a cue's, its placement.
QZANNO_API qzanno_result qzanno_title_copy(const qzanno_title* title, qzanno_title** out);
/// Do not free the title of a cue, which belongs to the captions.
QZANNO_API void qzanno_title_free(qzanno_title* title);

/// Adds an annotation to a stretch of the text, which may have it already. An annotation of the whole text also gives
/// the title its margins, placement and box.
QZANNO_API qzanno_result qzanno_title_annotate(qzanno_title* title, const char* annotation, size_t start,
                                               size_t length);
/// Adds an annotation to the whole text.
QZANNO_API qzanno_result qzanno_title_annotate_all(qzanno_title* title, const char* annotation);

/// The text as given; for a cue, without its markup.
QZANNO_API const char* qzanno_title_text(const qzanno_title* title);
/// The number of spans; overlapping or equal spans count separately.
QZANNO_API size_t qzanno_title_span_count(const qzanno_title* title);
/// A span, in the order of creation; for a cue, in ascending priority and then text order.
QZANNO_API qzanno_result qzanno_title_span(const qzanno_title* title, size_t index, qzanno_span* out);

/// @}

/// @addtogroup c_captions
/// @{

/// The cues of a SubRip, WebVTT or SubStation Alpha file. docs/captions.md describes how markup becomes annotations.
typedef struct qzanno_captions qzanno_captions;

/// The format of captions in memory.
typedef enum qzanno_caption_format {
    QZANNO_CAPTIONS_SUBRIP = 1,
    QZANNO_CAPTIONS_WEBVTT = 2,
    QZANNO_CAPTIONS_ASS = 3  ///< SubStation Alpha, advanced or not
} qzanno_caption_format;

/// Which styles, colours, bold and italic the titles of caption files use.
typedef enum qzanno_looks {
    QZANNO_LOOKS_BOTH = 0,   ///< the palette's and, for names that it does not have, the file's
    QZANNO_LOOKS_HOUSE = 1,  ///< only the palette's
    QZANNO_LOOKS_FILE = 2    ///< the file's, even for names that the palette has
} qzanno_looks;

/// A title and its times.
typedef struct qzanno_cue {
    double start;               ///< seconds from the beginning of the programme
    double end;                 ///< not before the start
    const char* identifier;     ///< the line above the times, or empty
    const qzanno_title* title;  ///< with the cue's placement; belongs to the captions
} qzanno_cue;

/// Something in a caption file that has no effect, or not the intended one.
typedef struct qzanno_caption_problem {
    uint32_t line;        ///< from 1
    const char* message;  ///< one line, without file name and line number
} qzanno_caption_problem;

/// The format of files with an ending, which is given without its point: "srt", "vtt", "ass". A program that asks by
/// name also reads formats that are newer than its copy of this header.
QZANNO_API qzanno_result qzanno_caption_format_named(const char* name, qzanno_caption_format* out);
/// Reads a file whose format is given by its ending, .srt, .vtt, .ass or .ssa in either case, with QZANNO_LOOKS_BOTH. A
/// name that neither the palette nor the file defines has no effect and is listed as a problem.
QZANNO_API qzanno_result qzanno_captions_load(const char* path, const qzanno_palette* palette, qzanno_captions** out);
/// The same for a file in memory.
QZANNO_API qzanno_result qzanno_captions_load_memory(const void* bytes, size_t size, qzanno_caption_format format,
                                                     const qzanno_palette* palette, qzanno_captions** out);
/// The same with the given looks. Titles keep the looks of their file, whatever palette draws them.
///@{
QZANNO_API qzanno_result qzanno_captions_load_looks(const char* path, const qzanno_palette* palette, qzanno_looks looks,
                                                    qzanno_captions** out);
QZANNO_API qzanno_result qzanno_captions_load_memory_looks(const void* bytes, size_t size, qzanno_caption_format format,
                                                           const qzanno_palette* palette, qzanno_looks looks,
                                                           qzanno_captions** out);
///@}
/// Frees the captions and the titles of their cues.
QZANNO_API void qzanno_captions_free(qzanno_captions* captions);

/// The cues, in the order of the file.
///@{
QZANNO_API size_t qzanno_captions_count(const qzanno_captions* captions);
QZANNO_API qzanno_result qzanno_captions_cue(const qzanno_captions* captions, size_t index, qzanno_cue* out);
///@}
/// The problems, in the order in which they were found.
///@{
QZANNO_API size_t qzanno_captions_problem_count(const qzanno_captions* captions);
QZANNO_API qzanno_result qzanno_captions_problem(const qzanno_captions* captions, size_t index,
                                                 qzanno_caption_problem* out);
///@}

/// @}

/// @addtogroup c_rendering
/// @{

/// Lays out and draws titles for one screen, one after another. Caches drawn glyphs for later titles, so reuse the
/// renderer.
typedef struct qzanno_renderer qzanno_renderer;

/// The direction of paragraphs, and so the side where lines begin.
typedef enum qzanno_direction {
    QZANNO_DIRECTION_NATURAL = 0,  ///< that of the first letter with a direction
    QZANNO_DIRECTION_LEFT_TO_RIGHT = 1,
    QZANNO_DIRECTION_RIGHT_TO_LEFT = 2
} qzanno_direction;

/// The part of the screen that a picture shows.
typedef enum qzanno_area {
    QZANNO_AREA_SCREEN = 0,
    QZANNO_AREA_BOX = 1  ///< the text's box with 10 points around it, cut at the screen's edges
} qzanno_area;

/// Whether colours are multiplied by alpha.
typedef enum qzanno_alpha {
    QZANNO_ALPHA_PREMULTIPLIED = 0,
    QZANNO_ALPHA_STRAIGHT = 1  ///< rounded to the nearest; black where transparent
} qzanno_alpha;

/// Pixels in the host's memory: R, G, B, A, one byte each, `height` rows from the top.
typedef struct qzanno_buffer {
    uint8_t* pixels;        ///< belongs to the host
    int32_t width;          ///< in pixels
    int32_t height;         ///< in pixels
    int32_t bytes_per_row;  ///< from one row to the next, at least 4 * width; 0 means 4 * width
} qzanno_buffer;

/// The size of a picture and the place of its top left corner on the frame, in pixels; the corner may lie between
/// pixels.
typedef struct qzanno_place {
    float x;         ///< rightward from the frame's left edge
    float y;         ///< downward from the frame's top edge
    int32_t width;   ///< required of a buffer
    int32_t height;  ///< required of a buffer
} qzanno_place;

/// A rectangle of a buffer's pixels.
typedef struct qzanno_pixels {
    int32_t x;       ///< from the buffer's left edge
    int32_t y;       ///< from the buffer's top edge
    int32_t width;   ///< 0 if empty
    int32_t height;  ///< 0 if empty
} qzanno_pixels;

/// Starts with a screen of 1920 x 1080 points and pixels, the system's fonts, no language, natural direction and an
/// empty title.
QZANNO_API qzanno_result qzanno_renderer_new(const qzanno_palette* palette, qzanno_renderer** out);
/// Frees the renderer and its cached glyphs.
QZANNO_API void qzanno_renderer_free(qzanno_renderer* renderer);

/// Sets the screen's size in points, the unit of the palette, and the frame's in pixels; a title keeps its look if only
/// the frame changes. Sides of the screen must be above 0 and at most 1,000,000 points, sides of the frame at least 1
/// pixel, and the whole frame at most 1 GiB.
QZANNO_API qzanno_result qzanno_renderer_set_screen(qzanno_renderer* renderer, float width_points, float height_points,
                                                    int32_t frame_width, int32_t frame_height);
/// NULL means the system's fonts.
QZANNO_API qzanno_result qzanno_renderer_set_fonts(qzanno_renderer* renderer, const qzanno_fonts* fonts);
/// Sets the language by a BCP 47 tag such as "ja" or "zh-Hant"; NULL or empty means no language. It determines which
/// font supplies characters shared between languages, and which letter forms a font uses.
QZANNO_API qzanno_result qzanno_renderer_set_language(qzanno_renderer* renderer, const char* tag);
/// Sets the direction of every paragraph.
QZANNO_API qzanno_result qzanno_renderer_set_direction(qzanno_renderer* renderer, qzanno_direction direction);
/// Copies the title. Fails with QZANNO_ERROR_ANNOTATION and keeps the former title if it names an annotation that the
/// palette does not have.
QZANNO_API qzanno_result qzanno_renderer_set_title(qzanno_renderer* renderer, const qzanno_title* title);

/// The size required of a buffer, and its place on the frame.
QZANNO_API qzanno_result qzanno_renderer_measure(qzanno_renderer* renderer, qzanno_area area, qzanno_place* out);
/// Clears the buffer and draws the title. `changed`, unless NULL, receives the area that may not be clear. Bytes
/// between rows are left alone.
QZANNO_API qzanno_result qzanno_renderer_render(qzanno_renderer* renderer, qzanno_area area, qzanno_alpha alpha,
                                                const qzanno_buffer* buffer, qzanno_pixels* changed);
/// Draws the title over the buffer's contents: an opaque frame, or premultiplied pixels. `changed`, unless NULL,
/// receives the area that may have changed.
QZANNO_API qzanno_result qzanno_renderer_composite(qzanno_renderer* renderer, qzanno_area area,
                                                   const qzanno_buffer* buffer, qzanno_pixels* changed);

/// @}

/// @addtogroup c_reports
/// @{

/// What is not shown as requested in a title.
typedef struct qzanno_report qzanno_report;

/// The kinds of report items.
typedef enum qzanno_report_kind {
    QZANNO_REPORT_FONT_MISSING = 1,        ///< another font shows the text, since the requested one is missing
    QZANNO_REPORT_FONT_SUBSTITUTED = 2,    ///< another font shows characters missing from the requested one
    QZANNO_REPORT_GLYPH_MISSING = 3,       ///< no font has the character; an empty box or nothing is shown
    QZANNO_REPORT_TEXT_CLIPPED = 4,        ///< the text does not fit its box
    QZANNO_REPORT_GLYPHS_CLIPPED = 5,      ///< glyphs reach beyond the picture
    QZANNO_REPORT_LAYER1_CLIPPED = 6,      ///< the layer beneath the glyphs does, though the glyphs do not
    QZANNO_REPORT_LAYER2_CLIPPED = 7,      ///< the same for the second layer or one beneath it
    QZANNO_REPORT_BOLD_SYNTHESISED = 8,    ///< the font has no bold face; its outlines are emboldened
    QZANNO_REPORT_ITALIC_SYNTHESISED = 9,  ///< the font has no italic face; its outlines are slanted
    QZANNO_REPORT_REGULAR_MISSING = 10,    ///< text is bold against its style, since the font has no other face
    QZANNO_REPORT_UPRIGHT_MISSING = 11     ///< text is italic against its style, since the font has no other face
} qzanno_report_kind;

/// One kind of deviation on one stretch of the text.
typedef struct qzanno_report_item {
    qzanno_report_kind kind;  ///< what is different
    size_t start;             ///< bytes of the title's text
    size_t length;            ///< bytes of the title's text
    const char* font_asked;   ///< as named by the palette; empty unless another font is used
    const char* font_used;    ///< used instead, or missing the character or face; empty for clipping
} qzanno_report_item;

/// Reports on the current title as a picture of the area shows it. The report does not change when another title is
/// set.
QZANNO_API qzanno_result qzanno_renderer_report(qzanno_renderer* renderer, qzanno_area area, qzanno_report** out);
/// Frees the report and the strings of its items.
QZANNO_API void qzanno_report_free(qzanno_report* report);
/// 0 if everything is shown as requested.
QZANNO_API size_t qzanno_report_count(const qzanno_report* report);
/// Items are ordered by kind: fonts, missing glyphs, faces, clipping.
QZANNO_API qzanno_result qzanno_report_item_at(const qzanno_report* report, size_t index, qzanno_report_item* out);

/// @}

#ifdef __cplusplus
}
#endif

#endif
