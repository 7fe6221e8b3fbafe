#include "captions/PlainText.h"

#include "QzAnno/platform/foundation/Limits.h"
#include "captions/CaptionEncoding.h"

namespace qz {

std::optional<Ref<QzMutableAnnoString>> readPlainText(const NSData& file, CaptionProblem* error) {
    const std::optional<std::string_view> text = utf8TextOfFile(file, error);
    if (!text) return {};
    std::string title = withLineFeeds(*text);
    if (title.ends_with('\n')) title.pop_back();
    const Ref<NSString> characters = NSString::stringWithUTF8String(title);
    if (characters->length() > Limits::kTitleUnitsMax) {
        if (error) {
            *error = {CaptionProblem::malformed, 1,
                      "the title has " + std::to_string(characters->length()) + " characters; " +
                          std::to_string(Limits::kTitleUnitsMax) + " are the most"};
        }
        return {};
    }
    return QzMutableAnnoString::initWithString(characters);
}

}  // namespace qz
