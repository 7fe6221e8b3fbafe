#include "captions/Ass.h"

#include <algorithm>
#include <utility>

#include "captions/AssScript.h"
#include "captions/AssText.h"
#include "captions/CaptionEncoding.h"
#include "captions/CueAnnotator.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

/// The look of a script's style; empty if no style has that name.
std::optional<CaptionLook> lookOfStyle(const AssScript& script, const CueSpan& span, const CueNames& names,
                                       CaptionProblems& problems) {
    const auto place = script.stylePlaces.find(span.name);
    if (place == script.stylePlaces.end()) return {};
    const AssStyle& style = script.styles[place->second];
    for (const std::string& column : style.unsupported) {
        problems.addOnce(CaptionProblem::notShown, style.line,
                         column + " of the style " + quotedExcerpt(style.name) + " is ignored", column);
    }
    CaptionLook look{.name = span.name};
    look.style = std::make_shared<const CaptionLook::Style>(
        CaptionLook::Style{style, *script.globalStyle(), std::min(script.width, script.height),
                           names.looks->which() == Looks::file, span.kind == CueSpan::reset});
    return look;
}

}  // namespace

bool beginsAsAss(std::string_view bytes) {
    return withoutMark(bytes).starts_with("[Script Info]");
}

std::optional<CaptionFile> readAss(const NSData& file, const CueNames& names, const CueSink& sink,
                                   CaptionProblem* error) {
    CaptionProblems problems;
    const std::optional<AssScript> script = parseAssScript(file, problems, error);
    if (!script) return {};
    AssTextReader textReader(*script, problems, names.looks && names.looks->which() == Looks::file);
    CueAnnotator annotator(names, problems,
                           [&](const CueSpan& span) { return lookOfStyle(*script, span, names, problems); });
    uint32_t leftOut = 0;
    for (const AssEvent& event : script->events) {
        AssText read = textReader.read(event);
        if (read.isDrawing) {
            ++leftOut;
            continue;
        }
        CaptionCue cue;
        cue.leftOutBefore = std::exchange(leftOut, 0);
        cue.start = event.start;
        cue.end = event.end;
        cue.placement = read.placement;
        cue.text = annotator.annotated(read.text);
        cue.line = event.line;
        sink(std::move(cue));
    }
    CaptionFile captions;
    captions.problems = problems.take();
    return captions;
}

}  // namespace qz
