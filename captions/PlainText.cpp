#include "captions/PlainText.h"

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/CaptionEncoding.h"

namespace qz {

std::optional<CaptionFile> readPlainText(const NSData& file, const CueNames&, const CueSink& sink,
                                         CaptionProblem* error) {
    const std::optional<std::string_view> text = utf8TextOfFile(file, error);
    if (error) error->line = 0;
    if (!text) return {};
    std::string title = withLineFeeds(*text);
    if (title.ends_with('\n')) title.pop_back();
    const Ref<NSString> characters = NSString::stringWithUTF8String(title);
    if (characters->length() > Limits::kTitleUnitsMax) {
        if (error) {
            *error = {CaptionProblem::malformed, 0,
                      "the title has " + std::to_string(characters->length()) + " characters; " +
                          std::to_string(Limits::kTitleUnitsMax) + " is the limit"};
        }
        return {};
    }
    CaptionCue cue;
    cue.hasTimes = false;
    cue.text = QzMutableAnnoString::initWithString(characters);
    sink(std::move(cue));
    return CaptionFile();
}

}  // namespace qz
