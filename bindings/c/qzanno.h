#ifndef QZANNO_H
#define QZANNO_H

/// @file
/// QzAnno from C, and from every language that calls C: a palette and a title in, pixels out.
///
/// Calls. A function that can fail returns a `qzanno_result`; unless that is QZANNO_OK it has changed nothing that it
/// was given, but for pixels that it had begun to draw, and `qzanno_last_error` has one line that says what, where and
/// what to do. No exception leaves a call. A pointer that must not be NULL, and is, fails with QZANNO_ERROR_ARGUMENT,
/// and so does an index beyond the last; a function that counts, or returns a string, gives 0 or NULL instead. What a
/// function returns in an `out` parameter is written on success only.
///
/// Ownership. Whoever gets an object from a function whose `out` parameter is a pointer to a pointer frees it with the
/// `…_free` of its kind; NULL may be freed. What is passed in is copied or shared: palettes, fonts, titles and buffers
/// may be freed or changed as soon as the call has returned. A `const char *` that is returned belongs to the object
/// that it was asked of, and is valid until that object changes or is freed.
///
/// Threads. Objects are independent of each other. Palettes, fonts, captions and reports never change: any number of
/// threads may use one at a time. A title may be read by several threads while none annotates it. A renderer is used by
/// one thread at a time; give each thread one of its own.
///
/// Units. Texts and paths are UTF-8; positions and lengths in a text count its bytes and do not cut a character. The
/// screen is measured in points, the frame that it stands for in pixels, both from the top left, y downward.
///
/// Growth. Within one SONAME functions are added, and none is changed or removed; structures stay as they are.

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

/// What has become of a call.
typedef enum qzanno_result {
    QZANNO_OK = 0,                ///< done
    QZANNO_ERROR_ARGUMENT = 1,    ///< the call breaks a rule of this header
    QZANNO_ERROR_FILE = 2,        ///< a file or a folder cannot be read
    QZANNO_ERROR_FORMAT = 3,      ///< what was read is not what it should be
    QZANNO_ERROR_ANNOTATION = 4,  ///< the palette has no annotation of that name
    QZANNO_ERROR_SIZE = 5,        ///< a picture of that size cannot be made
    QZANNO_ERROR_MEMORY = 6,      ///< memory has run out; the call may be tried again
    QZANNO_ERROR_INTERNAL = 7     ///< a fault of the library
} qzanno_result;

/// "0.1.0", of the library that is loaded.
QZANNO_API const char* qzanno_version(void);

/// One line on the last call of this thread that failed; empty when none has. Never NULL; valid until this thread's
/// next call that fails. A very long line is cut.
QZANNO_API const char* qzanno_last_error(void);

/// Receives a line of the library's log, without its line end. Called from any thread that is inside the library; it
/// must not call the library.
typedef void (*qzanno_log_function)(const char* line, void* context);

/// Sends the log of the process to a function; NULL for nowhere, where it also goes from the first object on if this
/// was never called. Not while another thread is inside the library.
QZANNO_API qzanno_result qzanno_set_log(qzanno_log_function function, void* context);

/// @}

/// @addtogroup c_palettes
/// @{

/// What annotations look like. Never changes.
typedef struct qzanno_palette qzanno_palette;

/// Reads a palette, an XML property list or an archive as its first bytes tell (.plist, .annopalette).
///@{
QZANNO_API qzanno_result qzanno_palette_load(const char* path, qzanno_palette** out);
QZANNO_API qzanno_result qzanno_palette_load_memory(const void* bytes, size_t size, qzanno_palette** out);
///@}
/// Renderers that use it keep what they need.
QZANNO_API void qzanno_palette_free(qzanno_palette* palette);

/// How many annotations there are besides the global one, which always holds.
QZANNO_API size_t qzanno_palette_annotation_count(const qzanno_palette* palette);
/// Their names, highest priority first; NULL beyond the last. A name may come twice: it then means the one of lowest
/// priority.
QZANNO_API const char* qzanno_palette_annotation_name(const qzanno_palette* palette, size_t index);

/// @}

/// @addtogroup c_fonts
/// @{

/// The fonts of the machine, and those in folders of the host's.
typedef struct qzanno_fonts qzanno_fonts;

/// Reads every font file of the folders and of those below them; nothing is installed. Costs time: open them once, for
/// all renderers. A folder that cannot be read fails; a file that is no font is a problem, and left out.
QZANNO_API qzanno_result qzanno_fonts_open(const char* const* folders, size_t count, qzanno_fonts** out);
/// Renderers that use them keep what they need.
QZANNO_API void qzanno_fonts_free(qzanno_fonts* fonts);

/// How many files were left out.
QZANNO_API size_t qzanno_fonts_problem_count(const qzanno_fonts* fonts);
/// One line, path first; NULL beyond the last.
QZANNO_API const char* qzanno_fonts_problem(const qzanno_fonts* fonts, size_t index);

/// @}

/// @addtogroup c_titles
/// @{

/// A text and the names of annotations that hold on stretches of it. Knows no palette, so one title goes with any that
/// has those names.
typedef struct qzanno_title qzanno_title;

/// A stretch of a title on which an annotation holds; bytes of the text.
typedef struct qzanno_span {
    const char* annotation;  ///< its name; of a cue also that of a look of the file's own, "i" or "#ff0000"
    size_t start;            ///< in bytes
    size_t length;           ///< in bytes
} qzanno_span;

/// A title without annotations. Line feeds separate lines.
QZANNO_API qzanno_result qzanno_title_new(const char* text, qzanno_title** out);
/// With its annotations and, of a cue, the place that it asks for.
QZANNO_API qzanno_result qzanno_title_copy(const qzanno_title* title, qzanno_title** out);
/// Not for the title of a cue: it belongs to the captions.
QZANNO_API void qzanno_title_free(qzanno_title* title);

/// Lets an annotation hold on a stretch of the text, also where it holds already. An annotation that holds on the whole
/// text also gives the title margins, place and box.
QZANNO_API qzanno_result qzanno_title_annotate(qzanno_title* title, const char* annotation, size_t start,
                                               size_t length);
/// On the whole text.
QZANNO_API qzanno_result qzanno_title_annotate_all(qzanno_title* title, const char* annotation);

/// As it was given; of a cue, without its marks.
QZANNO_API const char* qzanno_title_text(const qzanno_title* title);
/// Of stretches that overlap, or are the same, each counts.
QZANNO_API size_t qzanno_title_span_count(const qzanno_title* title);
/// In the order in which they were made; of a cue, in rising priority, then along the text.
QZANNO_API qzanno_result qzanno_title_span(const qzanno_title* title, size_t index, qzanno_span* out);

/// @}

/// @addtogroup c_captions
/// @{

/// The cues of a SubRip, WebVTT or SubStation Alpha file. docs/captions.md says how marks become annotations.
typedef struct qzanno_captions qzanno_captions;

/// What captions in memory are read as.
typedef enum qzanno_caption_format {
    QZANNO_CAPTIONS_SUBRIP = 1,
    QZANNO_CAPTIONS_WEBVTT = 2,
    QZANNO_CAPTIONS_ASS = 3  ///< SubStation Alpha, advanced or not
} qzanno_caption_format;

/// Whose styles, colours, bold and italic letters titles of caption files have.
typedef enum qzanno_looks {
    QZANNO_LOOKS_BOTH = 0,   ///< the palette's, and for names that it does not have the file's
    QZANNO_LOOKS_HOUSE = 1,  ///< the palette's alone
    QZANNO_LOOKS_FILE = 2    ///< the file's, also where the palette has an annotation of that name
} qzanno_looks;

/// A title and its times.
typedef struct qzanno_cue {
    double start;               ///< seconds from the begin of the programme
    double end;                 ///< not before the start
    const char* identifier;     ///< the line above the times; empty without one
    const qzanno_title* title;  ///< stands where the cue asks to stand; belongs to the captions
} qzanno_cue;

/// Something in a caption file that adds nothing, or not what was meant.
typedef struct qzanno_caption_problem {
    uint32_t line;        ///< from 1
    const char* message;  ///< one line, without the file's name and the line's number
} qzanno_caption_problem;

/// By the ending of its name, .srt, .vtt, .ass or .ssa, with both looks. What neither the palette nor the file defines
/// is a problem and adds nothing.
QZANNO_API qzanno_result qzanno_captions_load(const char* path, const qzanno_palette* palette, qzanno_captions** out);
/// The same of a file in memory.
QZANNO_API qzanno_result qzanno_captions_load_memory(const void* bytes, size_t size, qzanno_caption_format format,
                                                     const qzanno_palette* palette, qzanno_captions** out);
/// The same with the looks that are asked for. Titles keep the looks of their file, with any palette that draws them.
///@{
QZANNO_API qzanno_result qzanno_captions_load_looks(const char* path, const qzanno_palette* palette, qzanno_looks looks,
                                                    qzanno_captions** out);
QZANNO_API qzanno_result qzanno_captions_load_memory_looks(const void* bytes, size_t size, qzanno_caption_format format,
                                                           const qzanno_palette* palette, qzanno_looks looks,
                                                           qzanno_captions** out);
///@}
/// Frees the titles of its cues too.
QZANNO_API void qzanno_captions_free(qzanno_captions* captions);

/// The cues, in the order of the file.
///@{
QZANNO_API size_t qzanno_captions_count(const qzanno_captions* captions);
QZANNO_API qzanno_result qzanno_captions_cue(const qzanno_captions* captions, size_t index, qzanno_cue* out);
///@}
/// The problems, in the order in which they were met.
///@{
QZANNO_API size_t qzanno_captions_problem_count(const qzanno_captions* captions);
QZANNO_API qzanno_result qzanno_captions_problem(const qzanno_captions* captions, size_t index,
                                                 qzanno_caption_problem* out);
///@}

/// @}

/// @addtogroup c_rendering
/// @{

/// Lays out titles for one screen and draws them, one after the other. Keeps drawn glyphs for the next title, so keep
/// the renderer.
typedef struct qzanno_renderer qzanno_renderer;

/// Where lines begin.
typedef enum qzanno_direction {
    QZANNO_DIRECTION_NATURAL = 0,  ///< by the first letter that has a direction
    QZANNO_DIRECTION_LEFT_TO_RIGHT = 1,
    QZANNO_DIRECTION_RIGHT_TO_LEFT = 2
} qzanno_direction;

/// Which part of the screen a picture shows.
typedef enum qzanno_area {
    QZANNO_AREA_SCREEN = 0,
    QZANNO_AREA_BOX = 1  ///< the text's box and 10 points round it, cut at the screen's edges
} qzanno_area;

/// Whether colours are multiplied by their alpha.
typedef enum qzanno_alpha {
    QZANNO_ALPHA_PREMULTIPLIED = 0,
    QZANNO_ALPHA_STRAIGHT = 1  ///< rounded to the nearest; black where it is transparent
} qzanno_alpha;

/// Pixels in the host's memory: R, G, B, A, a byte each, `height` rows from the top.
typedef struct qzanno_buffer {
    uint8_t* pixels;        ///< belongs to the host
    int32_t width;          ///< in pixels
    int32_t height;         ///< in pixels
    int32_t bytes_per_row;  ///< from one row to the next; at least 4 * width, or 0 for just that
} qzanno_buffer;

/// A picture and where its top left corner comes on the frame, in pixels; the corner may lie between two.
typedef struct qzanno_place {
    float x;         ///< rightward from the frame's left edge
    float y;         ///< downward from the frame's top edge
    int32_t width;   ///< that a buffer must have
    int32_t height;  ///< that a buffer must have
} qzanno_place;

/// A rectangle of a buffer's pixels.
typedef struct qzanno_pixels {
    int32_t x;       ///< from the buffer's left edge
    int32_t y;       ///< from the buffer's top edge
    int32_t width;   ///< 0 for none
    int32_t height;  ///< 0 for none
} qzanno_pixels;

/// A screen of 1920 x 1080 points and pixels, the fonts of the machine, no language, natural direction, an empty title.
QZANNO_API qzanno_result qzanno_renderer_new(const qzanno_palette* palette, qzanno_renderer** out);
/// Frees the glyphs that it keeps too.
QZANNO_API void qzanno_renderer_free(qzanno_renderer* renderer);

/// The screen in points, which the palette's sizes are given in, and the frame in pixels; a title keeps its look when
/// only the frame changes. Of the screen more than 0 and at most 1,000,000; of the frame at least 1 and together at
/// most 1 GiB.
QZANNO_API qzanno_result qzanno_renderer_set_screen(qzanno_renderer* renderer, float width_points, float height_points,
                                                    int32_t frame_width, int32_t frame_height);
/// NULL for those of the machine.
QZANNO_API qzanno_result qzanno_renderer_set_fonts(qzanno_renderer* renderer, const qzanno_fonts* fonts);
/// A BCP 47 tag such as "ja" or "zh-Hant"; NULL or empty for none. It tells which font serves characters that languages
/// share, and which forms a font gives its letters.
QZANNO_API qzanno_result qzanno_renderer_set_language(qzanno_renderer* renderer, const char* tag);
/// Of every paragraph.
QZANNO_API qzanno_result qzanno_renderer_set_direction(qzanno_renderer* renderer, qzanno_direction direction);
/// Copies the title. QZANNO_ERROR_ANNOTATION, and the former title stays, when it names an annotation that the palette
/// lacks.
QZANNO_API qzanno_result qzanno_renderer_set_title(qzanno_renderer* renderer, const qzanno_title* title);

/// The size that a buffer must have, and where it comes on the frame.
QZANNO_API qzanno_result qzanno_renderer_measure(qzanno_renderer* renderer, qzanno_area area, qzanno_place* out);
/// Clears the buffer and draws the title. `changed`, unless it is NULL, receives the pixels that may be other than
/// clear. The bytes between rows stay as they are.
QZANNO_API qzanno_result qzanno_renderer_render(qzanno_renderer* renderer, qzanno_area area, qzanno_alpha alpha,
                                                const qzanno_buffer* buffer, qzanno_pixels* changed);
/// Draws the title over what the buffer holds: an opaque frame, or premultiplied pixels. `changed`, unless it is NULL,
/// receives the pixels that may have changed.
QZANNO_API qzanno_result qzanno_renderer_composite(qzanno_renderer* renderer, qzanno_area area,
                                                   const qzanno_buffer* buffer, qzanno_pixels* changed);

/// @}

/// @addtogroup c_reports
/// @{

/// What of a title is not shown as it was asked for.
typedef struct qzanno_report qzanno_report;

/// What there is to report.
typedef enum qzanno_report_kind {
    QZANNO_REPORT_FONT_MISSING = 1,        ///< another font shows the text, since the one asked for is not there
    QZANNO_REPORT_FONT_SUBSTITUTED = 2,    ///< another font shows characters that the one asked for lacks
    QZANNO_REPORT_GLYPH_MISSING = 3,       ///< no font has the character: an empty box, or nothing, is shown
    QZANNO_REPORT_TEXT_CLIPPED = 4,        ///< the text's box has no room for it
    QZANNO_REPORT_GLYPHS_CLIPPED = 5,      ///< letters reach beyond the picture
    QZANNO_REPORT_LAYER1_CLIPPED = 6,      ///< the layer beneath the letters does, and the letters do not
    QZANNO_REPORT_LAYER2_CLIPPED = 7,      ///< likewise the second layer, or one beneath that
    QZANNO_REPORT_BOLD_SYNTHESISED = 8,    ///< the font has no bold face; its outlines are emboldened
    QZANNO_REPORT_ITALIC_SYNTHESISED = 9,  ///< the font has no italic face; its outlines are slanted
    QZANNO_REPORT_REGULAR_MISSING = 10,    ///< text that should not be bold is, since the font has no other face
    QZANNO_REPORT_UPRIGHT_MISSING = 11     ///< text that should not be italic is, since the font has no other face
} qzanno_report_kind;

/// One matter on one stretch of the text.
typedef struct qzanno_report_item {
    qzanno_report_kind kind;  ///< of the matter
    size_t start;             ///< bytes of the title's text
    size_t length;            ///< bytes of the title's text
    const char* font_asked;   ///< as the palette names it; empty unless another one serves
    const char* font_used;    ///< that serves, or that lacks the character or face; empty for what is clipped
} qzanno_report_item;

/// On the title that is set, as a picture of the area shows it. Stays as it is when another title is set.
QZANNO_API qzanno_result qzanno_renderer_report(qzanno_renderer* renderer, qzanno_area area, qzanno_report** out);
/// Frees the strings of its items too.
QZANNO_API void qzanno_report_free(qzanno_report* report);
/// 0 when all is shown as it was asked for.
QZANNO_API size_t qzanno_report_count(const qzanno_report* report);
/// First the fonts, then the missing glyphs, the faces, and what is clipped.
QZANNO_API qzanno_result qzanno_report_item_at(const qzanno_report* report, size_t index, qzanno_report_item* out);

/// @}

#ifdef __cplusplus
}
#endif

#endif
