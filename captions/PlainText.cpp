#include "captions/PlainText.h"

#include "captions/CaptionEncoding.h"

namespace qz {

std::optional<Ref<QzMutableAnnoString>> readPlainText(const NSData& file, CaptionProblem* error) {
    const std::optional<std::string_view> text = utf8TextOfFile(file, error);
    if (!text) return {};
    std::string title = withLineFeeds(*text);
    if (title.ends_with('\n')) title.pop_back();
    return QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(title));
}

}  // namespace qz
