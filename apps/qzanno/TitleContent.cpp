#include "apps/qzanno/TitleContent.h"

#include <bit>
#include <map>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz::tool {
namespace {

template <class Enumeration>
void addOptional(Sha256& hash, const std::optional<Enumeration>& value) {
    hash.addNumber(value ? static_cast<uint64_t>(*value) + 1 : 0);
}

void addOptional(Sha256& hash, const std::optional<double>& value) {
    hash.addNumber(value ? 1 : 0);
    if (value) hash.addNumber(std::bit_cast<uint64_t>(*value));
}

}  // namespace

TitleContent contentOf(const Title& title, const CaptionLooks& looks) {
    TitleContent content{title.text->string()->characters(), {}, title.placement};
    const auto add = [&](const Ref<QzAnnoKey>& key, int32_t priority, const std::shared_ptr<const CaptionLook>& look) {
        Range run;
        for (uint32_t i = 0; i < title.text->length(); i = static_cast<uint32_t>(run.end())) {
            if (title.text->annotation(key, i, &run)) content.spans.push_back({priority, run, look});
        }
    };
    for (int32_t priority = 1; priority <= looks.houseCount(); ++priority) {
        const Ref<QzAnnoKey> key = looks.houseKeyAt(priority);
        if (title.text->bitsFor(key)) add(key, priority, {});
    }
    // Keyed by identity, so that titles that look the same have the same content.
    std::map<std::string, Ref<QzAnnoKey>> ofFile;
    for (const auto& key : title.text->allKeys()->objects<QzAnnoKey>()) {
        if (const auto look = looks.lookOf(key)) ofFile.emplace(look->identity(), key);
    }
    for (const auto& [identity, key] : ofFile) add(key, 0, looks.lookOf(key));
    return content;
}

Ref<QzMutableAnnoString> annotatedString(const TitleContent& content, CaptionLooks& looks) {
    auto string = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(content.text));
    for (const TitleContent::Span& span : content.spans)
        string->addAnno(span.look ? looks.keyOf(*span.look) : looks.houseKeyAt(span.priority), span.range);
    return string;
}

void addContent(Sha256& hash, const TitleContent& content) {
    hash.addText(utf8FromUtf16(content.text));
    hash.addNumber(content.spans.size());
    for (const TitleContent::Span& span : content.spans) {
        hash.addNumber(static_cast<uint64_t>(span.priority));
        hash.addNumber(span.range.location);
        hash.addNumber(span.range.length);
        hash.addText(span.look ? span.look->identity() : std::string());
    }
    const CuePlacement& placement = content.placement;
    addOptional(hash, placement.alignment);
    hash.addNumber(placement.line ? 1 : 0);
    if (placement.line) {
        hash.addNumber(std::bit_cast<uint64_t>(placement.line->value));
        hash.addNumber(placement.line->isPercentage);
        hash.addNumber(static_cast<uint64_t>(placement.line->edge));
    }
    addOptional(hash, placement.position);
    addOptional(hash, placement.positionEdge);
    addOptional(hash, placement.size);
    addOptional(hash, placement.row);
}

}  // namespace qz::tool
