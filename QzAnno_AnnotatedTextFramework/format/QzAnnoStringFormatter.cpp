#include "QzAnno/format/QzAnnoStringFormatter.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

// Space that list lines add to the font size, in points.
constexpr float kListLineAir = 2.0f;

constexpr char16_t kLineFeed = u'\n';

const Ref<NSString>& paragraphMarker() {
    static const Ref<NSString> marker = NSString::stringWithCharacters(u"\u204B");
    return marker;
}

Range wholeOf(const NSAttributedString& text) {
    return {0, text.length()};
}

void applyFrame(NSMutableAttributedString& text, const Ref<NSSet>& frame, const QzAnnoPalette& palette) {
    const Ref<NSDictionary> attributes = palette.assembleCompleteAttributes(palette.attributesForSet(frame));
    // Only the global annotation and the frame annotations may give what styles a title as a whole.
    std::vector<std::pair<Ref<NSString>, Ref<NSObject>>> ofFrame;
    for (const Attribute& attribute : attributeVocabulary()) {
        if (attribute.isOfFrame) ofFrame.emplace_back(attribute.name, attributes->objectForKey(*attribute.name));
    }
    text.changeAttributes(wholeOf(text), [&](const Ref<NSDictionary>& run) {
        ObjectMap map = run->map();
        map.set(QzFrameAnnoAttributeName, frame);
        for (const auto& [name, value] : ofFrame) {
            if (value)
                map.set(name, value);
            else
                map.remove(*name);
        }
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
}

void applyListParagraphs(NSMutableAttributedString& text) {
    NSParagraphStyle::Values values;
    values.minimumLineHeight = values.maximumLineHeight = NSFont::systemFontSize() + kListLineAir;
    values.alignment = NSTextAlignment::center;
    text.addAttribute(NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(values), wholeOf(text));
}

Ref<NSAttributedString> inListLooks(const NSAttributedString& text, const NSFont::Library& library) {
    const auto list = NSMutableAttributedString::initWithAttributedString(text);
    for (Range run; run.end() < list->length();) {
        const Ref<NSObject> value =
            list->attribute(*NSFontAttributeName, run.location + run.length, &run, wholeOf(*list));
        const auto font = std::dynamic_pointer_cast<NSFont>(value);
        const float size = NSFont::systemFontSize();
        list->addAttribute(NSFontAttributeName,
                           font ? font->fontWithSize(size) : NSFont::systemFontOfSize(size, library), run);
        list->addAttribute(NSForegroundColorAttributeName, NSColor::blackColor(), run);
    }
    return list;
}

// One unit replaces one unit, so positions stay valid during the change.
template <class Text>
void replaceLineFeeds(Text& text, const Ref<NSString>& before) {
    const std::u16string& characters = before->characters();
    for (size_t i = characters.find(kLineFeed); i != std::u16string::npos; i = characters.find(kLineFeed, i + 1)) {
        text.replaceCharactersInRange({static_cast<uint32_t>(i), 1}, paragraphMarker());
    }
}

}  // namespace

Ref<QzAnnoStringFormatter> QzAnnoStringFormatter::init() {
    return Ref<QzAnnoStringFormatter>(new QzAnnoStringFormatter);
}

Ref<NSDictionary> QzAnnoStringFormatter::defaultAttributes() const {
    const Ref<QzAnnoPalette> palette = this->palette();
    return palette ? palette->attributesForSet(NSSet::set()) : Ref<NSDictionary>();
}

Ref<NSObject> QzAnnoStringFormatter::stringForObjectValue(const Ref<NSObject>& object) const {
    if (const auto string = std::dynamic_pointer_cast<QzAnnoString>(object)) return string->string();
    if (const auto string = std::dynamic_pointer_cast<NSAttributedString>(object)) return string->string();
    return object;
}

Ref<NSAttributedString> QzAnnoStringFormatter::attributedStringForObjectValue(
    const Ref<NSObject>& object, const Ref<NSDictionary>& /*withDefaultAttributes*/) const {
    const Ref<QzAnnoPalette> palette = this->palette();
    if (const auto text = std::dynamic_pointer_cast<NSAttributedString>(object)) {
        if (!listmode_) return text;
        return inListLooks(*text, palette ? palette->fontLibrary() : nullptr);
    }
    const auto string = std::dynamic_pointer_cast<QzAnnoString>(object);
    return string && palette ? formatted(*string, *palette) : Ref<NSAttributedString>();
}

Ref<NSAttributedString> QzAnnoStringFormatter::formatted(const QzAnnoString& string,
                                                         const QzAnnoPalette& palette) const {
    const auto text = NSMutableAttributedString::init();
    const std::u16string_view characters = string.string()->characters();
    // Runs with the same keys share one set, and so can share one dictionary.
    std::unordered_map<const NSSet*, Ref<NSDictionary>> attributesOfKeys;
    for (const QzAnnoString::Run& run : string.runs()) {
        Ref<NSDictionary>& attributes = attributesOfKeys[run.keys.get()];
        if (!attributes) attributes = completeAttributes(run.keys, palette);
        text->appendString(characters.substr(run.range.location, run.range.length), attributes);
    }
    if (listmode_)
        applyListParagraphs(*text);
    else
        applyFrame(*text, string.frame(), palette);
    return text->copy();
}

Ref<NSDictionary> QzAnnoStringFormatter::completeAttributes(const Ref<NSSet>& keys,
                                                            const QzAnnoPalette& palette) const {
    Ref<NSDictionary> attributes = palette.attributesForSet(keys);
    if (listmode_) {
        ObjectMap map = attributes->map();
        map.set(QzFontSizeAttribute, NSNumber::numberWithFloat(NSFont::systemFontSize()));
        map.set(NSForegroundColorAttributeName, NSColor::blackColor());
        attributes = NSDictionary::dictionaryWithMap(std::move(map));
    }
    return palette.assembleCompleteAttributes(attributes);
}

bool QzAnnoStringFormatter::getObjectValue(Ref<NSObject>& objectValue, const Ref<NSObject>& forString,
                                           std::string* /*errorDescription*/) const {
    if (!std::dynamic_pointer_cast<NSAttributedString>(forString)) {
        reportFailedAssertion("QzAnno_AnnotatedTextFramework/QzAnnoStringFormatter", 210, "no go!");
        return false;
    }
    NSLog("I can't convert \"%@\" to an annotated string\n", {forString->className()});
    objectValue = "flurble flurble flounder"_ns;
    return true;
}

void QzAnnoStringFormatter::replaceNewlineWithParagraphMarkers(NSMutableAttributedString& text) {
    replaceLineFeeds(text, text.string());
}

void QzAnnoStringFormatter::replaceNewlineWithParagraphMarkers(QzMutableAnnoString& text) {
    replaceLineFeeds(text, text.string());
}

}  // namespace qz
