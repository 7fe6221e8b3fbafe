#include <algorithm>
#include <cmath>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

/// Reports a value that is not a string, which counts as absent.
void checkString(const NSDictionary& attributes, const NSString& name) {
    const Ref<NSObject> value = attributes.objectForKey(name);
    if (value && !dynamic_cast<const NSString*>(value.get()))
        NSLog("\"%@\" holds a value of class %@ and is ignored\n", {name, value->className()});
}

/// The number under the name, as a number or as text. Any other value is reported and counts as absent.
Ref<NSNumber> checkedNumber(const NSDictionary& attributes, const NSString& name) {
    const Ref<NSObject> value = attributes.objectForKey(name);
    Ref<NSNumber> number = numberFrom(value);
    if (value && !number) NSLog("\"%@\" holds %@, which is not a number, and is ignored\n", {name, value});
    return number;
}

/// The font size in points; 0 means the default size.
float fontSizeOf(const NSDictionary& attributes) {
    const auto number = checkedNumber(attributes, *QzFontSizeAttribute);
    if (!number) return 0;
    const float size = number->floatValue();
    if (size <= NSFont::kPointSizeMax) return size;
    const bool tooLarge = size > NSFont::kPointSizeMax;
    NSLog("Font size %@ is outside 0 to 10000 points; %@ is used\n",
          {number, tooLarge ? shortestDecimal(NSFont::kPointSizeMax) : "the default size"});
    return tooLarge ? NSFont::kPointSizeMax : 0;
}

FontTraits fontTraitsOf(const NSDictionary& attributes) {
    FontTraits traits;
    if (const auto bold = checkedNumber(attributes, *QzBoldAttribute)) traits.bold = bold->boolValue();
    if (const auto italic = checkedNumber(attributes, *QzItalicAttribute)) traits.italic = italic->boolValue();
    return traits;
}

/// The font that the attributes name, or the system's if they name no font, without traits. Null if it is missing.
Ref<NSFont> namedFont(const NSDictionary& attributes, float size, const NSFont::Library& library) {
    const Ref<NSString> fontName = fontNameAskedFor(attributes);
    return fontName ? fontWithName(fontName, {}, size, library) : NSFont::titleBarFontOfSize(size, library);
}

Ref<NSParagraphStyle> paragraphStyleOf(const NSDictionary& attributes) {
    NSParagraphStyle::Values values = NSParagraphStyle::defaultParagraphStyle()->values();
    if (const auto leading = checkedNumber(attributes, *QzLeadingAttribute)) {
        const float points = leading->floatValue();
        if (std::isfinite(points))
            values.lineSpacing = values.paragraphSpacing = points;
        else
            NSLog("Leading %@ is not a finite number and is ignored\n", {leading});
    }
    if (const auto alignment = checkedNumber(attributes, *QzHorizontalAlignmentAttribute)) {
        const int32_t number = alignment->intValue();
        if (number >= 0 && number <= static_cast<int32_t>(NSTextAlignment::natural)) {
            values.alignment = static_cast<NSTextAlignment>(number);
        } else {
            NSLog("Horizontal alignment %@ is outside 0 to 4 and is ignored\n", {alignment});
        }
    }
    return NSParagraphStyle::paragraphStyleWithValues(values);
}

/// Whether the values are equal, treating a number and its text as equal. Compares reals as 32-bit floats, since size
/// and leading have been through fonts and paragraph styles, which store floats, while an annotation's may be doubles
/// from a file.
bool areSameFormatting(const Ref<NSObject>& a, const Ref<NSObject>& b) {
    if (areEqual(a, b)) return true;
    const auto isText = [](const Ref<NSObject>& value) {
        return dynamic_cast<const NSString*>(value.get()) != nullptr;
    };
    if (isText(a) && isText(b)) return false;
    const Ref<NSNumber> first = numberFrom(a), second = numberFrom(b);
    return first && second && (first->isReal() || second->isReal()) && first->floatValue() == second->floatValue();
}

Ref<NSDictionary> orEmpty(const Ref<NSDictionary>& attributes) {
    return attributes ? attributes : NSDictionary::dictionary();
}

}  // namespace

Ref<NSDictionary> QzAnnoPalette::attributesForSet(const Ref<NSSet>& givenSet) const {
    const Ref<NSSet> set = givenSet ? givenSet : NSSet::set();
    ObjectMap merged = globals_->allAttributes()->map();
    // A formatter calls this for every run of a text, so compare many keys by address only.
    std::vector<const NSObject*> members;
    for (const ObjectMap::Entry& entry : set->map().entries()) members.push_back(entry.key.get());
    std::ranges::sort(members);
    size_t missing = members.size();
    for (auto key = priorities_->begin(); missing > 0 && key != priorities_->end(); ++key) {
        if (!std::ranges::binary_search(members, static_cast<const NSObject*>(key->get()))) continue;
        merged.setAll(lookupAnno(*key)->allAttributes()->map());
        --missing;
    }
    merged.set(QzAnnoAttributeName, set);
    return NSDictionary::dictionaryWithMap(std::move(merged));
}

Ref<NSDictionary> QzAnnoPalette::assembleCompleteAttributes(const Ref<NSDictionary>& givenAttributes) const {
    const Ref<NSDictionary> attributes = orEmpty(givenAttributes);
    ObjectMap complete = attributes->map();
    complete.set(NSParagraphStyleAttributeName, paragraphStyleOf(*attributes));
    const float size = fontSizeOf(*attributes);
    for (const auto& name : {QzFontAttribute, QzFontNameAttribute, QzFontStyleAttribute})
        checkString(*attributes, *name);
    Ref<NSFont> font = namedFont(*attributes, size, fontLibrary_);
    if (!font) {
        reportMissingFont(fontNameAskedFor(*attributes));
        font = NSFont::titleBarFontOfSize(size, fontLibrary_);
    }
    if (const FontTraits traits = fontTraitsOf(*attributes); !traits.isEmpty()) font = font->fontWithTraits(traits);
    complete.set(NSFontAttributeName, font);
    return NSDictionary::dictionaryWithMap(std::move(complete));
}

void QzAnnoPalette::reportMissingFont(const Ref<NSString>& fullName) const {
    if (const Ref<QzLog> log = logger_.lock()) {
        ObjectMap entry;
        entry.set(QzLogEntry_Name, "Font Missing"_ns);
        entry.set(QzLogEntry_Message,
                  NSString::stringWithUTF8String(stringWithFormat(
                      "The font named\n\"%@\" failed to load.\nText display may not be accurate.", {fullName})));
        entry.set(QzLogEntry_Tag, "QZA_NOFONT"_ns);
        entry.set(QzLogEntry_Cause, fullName);
        entry.set(QzLogEntry_Source, "Fragment Assembly"_ns);
        log->logError(*NSDictionary::dictionaryWithMap(std::move(entry)));
    }
    NSLog("Missing Font: %@\n", {oneLine(fullName->utf8())});
}

Ref<NSDictionary> QzAnnoPalette::disassembleFragments(const Ref<NSDictionary>& givenAttributes) const {
    const Ref<NSDictionary> attributes = orEmpty(givenAttributes);
    ObjectMap fragments = attributes->map();
    if (const auto font = attributes->objectForKey<NSFont>(*NSFontAttributeName)) {
        fragments.remove(*NSFontAttributeName);
        fragments.set(QzFontSizeAttribute, NSNumber::numberWithFloat(font->pointSize()));
        // Traits stay separate attributes, beside the name of the font they were requested of.
        Ref<NSFont> named = font;
        if (!font->traits().isEmpty()) {
            named = namedFont(*attributes, font->pointSize(), font->fontLibrary());
            if (!named) named = NSFont::titleBarFontOfSize(font->pointSize(), font->fontLibrary());
            if (!named->fontWithTraits(font->traits())->isEqual(*font)) named = font;
        }
        fragments.set(QzFontAttribute, named->fontName());
    }
    if (const auto style = attributes->objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName)) {
        fragments.remove(*NSParagraphStyleAttributeName);
        fragments.set(QzLeadingAttribute, NSNumber::numberWithDouble(style->lineSpacing()));
        fragments.set(QzHorizontalAlignmentAttribute,
                      NSNumber::numberWithInt(static_cast<int32_t>(style->alignment())));
    }
    return NSDictionary::dictionaryWithMap(std::move(fragments));
}

Ref<NSDictionary> QzAnnoPalette::findInlines(const Ref<NSDictionary>& givenAttributes) const {
    const Ref<NSDictionary> attributes = orEmpty(givenAttributes);
    const Ref<NSDictionary> merged = attributesForSet(attributes->objectForKey<NSSet>(*QzAnnoAttributeName));
    const Ref<NSDictionary> fragments = disassembleFragments(attributes);
    ObjectMap inlines;
    for (const ObjectMap::Entry& entry : fragments->map().entries()) {
        if (!areSameFormatting(entry.value, merged->objectForKey(*entry.key))) inlines.set(entry.key, entry.value);
    }
    return NSDictionary::dictionaryWithMap(std::move(inlines));
}

}  // namespace qz
