#include <optional>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "bindings/c/Calls.h"
#include "bindings/c/Objects.h"
#include "captions/Format.h"

struct qzanno_captions {
    struct Cue {
        double start;
        double end;
        std::string identifier;
        qzanno_title title;
    };

    std::vector<Cue> cues;
    std::vector<qz::CaptionProblem> problems;
};

namespace qz::c {
namespace {

/// The caption formats have their numbers, from 1, by their places among the others.
///@{
const Format* formatOfNumber(int number) {
    for (const Format& format : formats()) {
        if (format.kind == Format::captions && --number == 0) return &format;
    }
    return nullptr;
}

int numberOf(const Format& wanted) {
    int number = 1;
    while (formatOfNumber(number) != &wanted) ++number;
    return number;
}
///@}

const Format* captionsOfPath(std::string_view path) {
    const Format* const format = formatOfPath(path);
    return format && format->kind == Format::captions ? format : nullptr;
}

qzanno_title titleOf(const CaptionCue& cue, const CaptionLooks& looks) {
    qzanno_title title;
    title.text = cue.text->string()->utf8();
    size_t malformed = 0;
    title.positions = *TextPositions::of(title.text, &malformed);
    title.placement = cue.placement;
    const QzAnnoPalette& palette = *looks.palette();
    for (int32_t priority = 1; priority <= palette.maxPriority(); ++priority) {
        const Ref<QzAnnoKey> key = palette.annoKeyAtPriority(priority);
        if (!cue.text->bitsFor(key)) continue;
        Range run;
        for (uint32_t i = 0; i < cue.text->length(); i = static_cast<uint32_t>(run.end())) {
            if (cue.text->annotation(key, i, &run))
                title.spans.push_back({key->name()->utf8(), title.positions.bytesOf(run), looks.lookOf(key)});
        }
    }
    return title;
}

/// "SubRip, WebVTT or SubStation Alpha"
std::string captionNames() {
    std::vector<std::string> names;
    for (const Format& format : formats()) {
        if (format.kind == Format::captions) names.emplace_back(format.name);
    }
    return listOf(names);
}

std::optional<Looks> looksOf(qzanno_looks looks) {
    switch (looks) {
        case QZANNO_LOOKS_BOTH:
            return Looks::both;
        case QZANNO_LOOKS_HOUSE:
            return Looks::house;
        case QZANNO_LOOKS_FILE:
            return Looks::file;
    }
    return {};
}

qzanno_result readCaptions(const NSData& file, const std::string& place, const Format& format,
                           const qzanno_palette& palette, qzanno_looks which, qzanno_captions** out) {
    const std::optional<Looks> ofWhom = looksOf(which);
    if (!ofWhom) return fail(QZANNO_ERROR_ARGUMENT, "there are no looks " + std::to_string(int{which}));
    // Lengths are converted to the actual screen when the titles are drawn.
    CaptionLooks looks(newPalette(palette.file), {1920, 1080}, *ofWhom);
    auto made = std::make_unique<qzanno_captions>();
    const CueSink sink = [&](CaptionCue&& cue) {
        made->cues.push_back({cue.start, cue.end, cue.identifier, titleOf(cue, looks)});
    };
    CaptionProblem error;
    auto captions = format.read(file, looks, sink, &error);
    if (!captions) return fail(QZANNO_ERROR_FORMAT, place + std::to_string(error.line) + ": " + error.message);
    made->problems = std::move(captions->problems);
    *out = made.release();
    return QZANNO_OK;
}

}  // namespace
}  // namespace qz::c

using namespace qz::c;

qzanno_result qzanno_captions_load(const char* path, const qzanno_palette* palette, qzanno_captions** out) {
    return qzanno_captions_load_looks(path, palette, QZANNO_LOOKS_BOTH, out);
}

qzanno_result qzanno_captions_load_looks(const char* path, const qzanno_palette* palette, qzanno_looks looks,
                                         qzanno_captions** out) {
    if (!path) return failNull("path");
    if (!palette) return failNull("palette");
    if (!out) return failNull("out");
    return guarded([=] {
        const std::string place = std::string(path) + ":";
        const qz::Format* const format = captionsOfPath(path);
        if (!format)
            return fail(QZANNO_ERROR_ARGUMENT, place + " is not a " + qz::listOf(qz::endingsOf(qz::Format::captions)) +
                                                   " file; give captions as " + captionNames());
        std::string reason;
        const qz::Ref<qz::NSData> file = qz::readFile(path, &reason);
        if (!file) return fail(QZANNO_ERROR_FILE, place + " " + reason);
        return readCaptions(*file, place, *format, *palette, looks, out);
    });
}

qzanno_result qzanno_captions_load_memory(const void* bytes, size_t size, qzanno_caption_format format,
                                          const qzanno_palette* palette, qzanno_captions** out) {
    return qzanno_captions_load_memory_looks(bytes, size, format, palette, QZANNO_LOOKS_BOTH, out);
}

qzanno_result qzanno_captions_load_memory_looks(const void* bytes, size_t size, qzanno_caption_format format,
                                                const qzanno_palette* palette, qzanno_looks looks,
                                                qzanno_captions** out) {
    if (!bytes) return failNull("bytes");
    if (!palette) return failNull("palette");
    if (!out) return failNull("out");
    return guarded([=] {
        const qz::Format* const row = formatOfNumber(static_cast<int>(format));
        if (!row) return fail(QZANNO_ERROR_ARGUMENT, "there is no caption format " + std::to_string(int{format}));
        const auto file = qz::NSData::dataWithBytes(std::string_view(static_cast<const char*>(bytes), size));
        return readCaptions(*file, "captions:", *row, *palette, looks, out);
    });
}

qzanno_result qzanno_caption_format_named(const char* name, qzanno_caption_format* out) {
    if (!name) return failNull("name");
    if (!out) return failNull("out");
    return guarded([=] {
        const qz::Format* const format = captionsOfPath(std::string("captions.") + name);
        if (!format) {
            std::vector<std::string> names;
            for (const std::string& ending : qz::endingsOf(qz::Format::captions))
                names.push_back("\"" + ending.substr(1) + "\"");
            return fail(QZANNO_ERROR_ARGUMENT, "format is " + qz::listOf(names) + ", not \"" + name + "\"");
        }
        *out = static_cast<qzanno_caption_format>(numberOf(*format));
        return QZANNO_OK;
    });
}

void qzanno_captions_free(qzanno_captions* captions) {
    delete captions;
}

size_t qzanno_captions_count(const qzanno_captions* captions) {
    return captions ? captions->cues.size() : 0;
}

qzanno_result qzanno_captions_cue(const qzanno_captions* captions, size_t index, qzanno_cue* out) {
    if (!captions) return failNull("captions");
    if (!out) return failNull("out");
    return guarded([=] {
        if (index >= captions->cues.size()) return failIndex(index, captions->cues.size());
        const qzanno_captions::Cue& cue = captions->cues[index];
        *out = {cue.start, cue.end, cue.identifier.c_str(), &cue.title};
        return QZANNO_OK;
    });
}

size_t qzanno_captions_problem_count(const qzanno_captions* captions) {
    return captions ? captions->problems.size() : 0;
}

qzanno_result qzanno_captions_problem(const qzanno_captions* captions, size_t index, qzanno_caption_problem* out) {
    if (!captions) return failNull("captions");
    if (!out) return failNull("out");
    return guarded([=] {
        if (index >= captions->problems.size()) return failIndex(index, captions->problems.size());
        const qz::CaptionProblem& problem = captions->problems[index];
        *out = {problem.line, problem.message.c_str()};
        return QZANNO_OK;
    });
}
