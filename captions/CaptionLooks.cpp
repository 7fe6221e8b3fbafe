#include "captions/CaptionLooks.h"

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "captions/AssPalette.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

/// Copies everything except placement and box, which a style inside a line does not change.
void copyLetters(const ObjectMap& from, ObjectMap& to) {
    for (const ObjectMap::Entry& entry : from.entries()) {
        const Attribute* const attribute = attributeNamed(*entry.key);
        if (!attribute || attribute->group != Attribute::Group::place) to.set(entry.key, entry.value);
    }
}

}  // namespace

CaptionLooks::CaptionLooks(Ref<QzAnnoPalette> palette, NSSize screen, Looks which)
    : palette_(std::move(palette)), screen_(screen), which_(which) {
    palette_->setUndoManager(NSUndoManager::init());
    for (int32_t priority = 1; priority <= palette_->maxPriority(); ++priority)
        house_.push_back(palette_->annoKeyAtPriority(priority));
}

Ref<QzAnnoKey> CaptionLooks::keyOf(const CaptionLook& look) {
    const auto [entry, isNew] = keys_.try_emplace(look.identity());
    if (!isNew) return entry->second;
    // Do not record these changes in an editor's undo manager.
    const NSUndoManager::Pause pause(palette_->undoManager());
    entry->second = makeAnno(look);
    if (entry->second) looks_.emplace(entry->second.get(), std::make_shared<const CaptionLook>(look));
    return entry->second;
}

Ref<QzAnnoKey> CaptionLooks::makeAnno(const CaptionLook& look) {
    const Ref<const QzAnno> made = palette_->createAnno(NSString::stringWithUTF8String(look.name));
    if (!made) return {};
    const Ref<QzAnnoKey> key = made->annokey();
    const Ref<QzMutableAnno> anno = made->mutableCopy();
    anno->setAttributes(NSDictionary::dictionaryWithMap(attributesOf(look)));
    palette_->replaceAnno(anno);
    if (look.style && look.style->isReset)
        palette_->setAnnoKey(key, styles_ + ++resets_);
    else if (look.style)
        palette_->setAnnoKey(key, ++styles_);
    return key;
}

std::vector<std::shared_ptr<const CaptionLook>> CaptionLooks::all() const {
    std::vector<std::shared_ptr<const CaptionLook>> looks;
    for (const auto& [identity, key] : keys_) {
        if (key) looks.push_back(lookOf(key));
    }
    return looks;
}

std::shared_ptr<const CaptionLook> CaptionLooks::lookOf(const Ref<QzAnnoKey>& key) const {
    const auto found = looks_.find(key.get());
    return found == looks_.end() ? nullptr : found->second;
}

ObjectMap CaptionLooks::attributesOf(const CaptionLook& look) const {
    ObjectMap attributes = look.style ? attributesOf(*look.style) : ObjectMap();
    const std::pair<const Ref<NSString>&, const std::optional<bool>&> traits[] = {
        {QzBoldAttribute, look.isBold},
        {QzItalicAttribute, look.isItalic},
        {QzUnderlineAttribute, look.isUnderlined},
        {QzStrikeThroughAttribute, look.isStruck}};
    for (const auto& [name, flag] : traits) {
        if (flag) attributes.set(name, NSNumber::numberWithInt(*flag ? 1 : 0));
    }
    if (look.colour) attributes.set(QzTextColorAttribute, colorOf(*look.colour));
    if (look.box)
        attributes.set(QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(colorOf(*look.box), 2));
    if (!look.language.empty()) attributes.set(NSLanguageAttributeName, NSString::stringWithUTF8String(look.language));
    return attributes;
}

ObjectMap CaptionLooks::attributesOf(const CaptionLook::Style& style) const {
    const double scale = std::min(double{screen_.width}, double{screen_.height}) / style.shorterSide;
    const std::shared_ptr<FontLibrary>& fonts = palette_->fontLibrary();
    const ObjectMap own = style.isWhole ? attributesOfAssStyle(style.style, scale, fonts)
                                        : differencesOfAssStyle(style.style, style.global, scale, fonts);
    if (!style.isReset) return own;
    ObjectMap attributes;
    if (!style.isWhole) {
        // Attributes that the line's style may have changed and the global annotation does not set.
        for (const Attribute& attribute : attributeVocabulary()) {
            if (attribute.kind == Attribute::Kind::flag) attributes.set(attribute.name, NSNumber::numberWithInt(0));
        }
        copyLetters(palette_->lookupAnno({})->allAttributes()->map(), attributes);
    }
    copyLetters(own, attributes);
    return attributes;
}

}  // namespace qz
