#include "QzAnno/platform/text/NSTextStorage.h"

#include <algorithm>
#include <map>
#include <utility>

#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/text/FontFixing.h"
#include "platform/text/ParagraphRange.h"

namespace qz {
namespace {

std::string languageOf(const NSDictionary& attributes) {
    const auto language = attributes.objectForKey<NSString>(*NSLanguageAttributeName);
    return language ? language->utf8() : std::string();
}

bool areSame(const Ref<NSString>& a, const Ref<NSString>& b) {
    return a == b || (a && b && a->isEqualToString(*b));
}

Ref<NSDictionary> attributesWithFont(const Ref<NSDictionary>& attributes, const Ref<NSFont>& asked,
                                     const Ref<NSFont>& serving) {
    const bool isSubstitute = !serving->isEqual(*asked);
    const Ref<NSObject> font = attributes->objectForKey(*NSFontAttributeName);
    const bool wasSubstitute = attributes->objectForKey(*NSOriginalFontAttributeName) != nullptr;
    if (font && font->isEqual(*serving) && wasSubstitute == isSubstitute) return attributes;
    ObjectMap map = attributes->map();
    map.set(NSFontAttributeName, serving);
    if (isSubstitute)
        map.set(NSOriginalFontAttributeName, asked);
    else if (wasSubstitute)
        map.remove(*NSOriginalFontAttributeName);
    return NSDictionary::dictionaryWithMap(std::move(map));
}

}  // namespace

Ref<NSTextStorage> NSTextStorage::init() {
    return Ref<NSTextStorage>(new NSTextStorage());
}

void NSTextStorage::addLayoutManager(const Ref<NSLayoutManager>& layoutManager) {
    if (!layoutManager || layoutManager->textStorage().get() == this) return;
    if (const Ref<NSTextStorage> former = layoutManager->textStorage()) former->removeLayoutManager(*layoutManager);
    // Pending edits do not concern the new layout manager.
    processEditing();
    layoutManager->setTextStorage(refTo(*this));
    layoutManagers_.push_back(layoutManager);
    layoutManager->textStorageEdited({0, length()}, length(), true);
}

void NSTextStorage::removeLayoutManager(const NSLayoutManager& layoutManager) {
    const auto found = std::ranges::find(layoutManagers_, &layoutManager, &Ref<NSLayoutManager>::get);
    if (found == layoutManagers_.end()) return;
    const Ref<NSLayoutManager> removed = *found;
    layoutManagers_.erase(found);
    removed->setTextStorage({});
    removed->textStorageEdited({0, 0}, -int64_t{length()}, true);
}

void NSTextStorage::beginEditing() {
    ++editingDepth_;
}

void NSTextStorage::endEditing() {
    if (editingDepth_ == 0) return;
    --editingDepth_;
    if (editingDepth_ == 0) processEditing();
}

void NSTextStorage::edited(Range range, int64_t changeInLength, bool charactersChanged) {
    if (!edit_) {
        edit_ = {range, changeInLength, charactersChanged};
    } else {
        // The end of this edit before it changed the length, to compare with the earlier edit's end in the same text.
        const int64_t endBefore = static_cast<int64_t>(range.end()) - changeInLength;
        const int64_t end = std::max(static_cast<int64_t>(edit_->range.end()), endBefore) + changeInLength;
        const uint32_t location = std::min(edit_->range.location, range.location);
        edit_->range = {location, static_cast<uint32_t>(end - location)};
        edit_->changeInLength += changeInLength;
        edit_->charactersChanged |= charactersChanged;
    }
    if (editingDepth_ == 0) processEditing();
}

void NSTextStorage::processEditing() {
    if (!edit_) return;
    const Range paragraphs = paragraphRange(characters(), edit_->range);
    fixFontsInRange(paragraphs);
    // A notified layout manager may add or remove others.
    const std::vector<Ref<NSLayoutManager>> layoutManagers = layoutManagers_;
    const Edit edit = *std::exchange(edit_, std::nullopt);
    for (const Ref<NSLayoutManager>& layoutManager : layoutManagers) {
        layoutManager->textStorageEdited(paragraphs, edit.changeInLength, edit.charactersChanged);
    }
}

Ref<NSFont> NSTextStorage::askedFont(const NSDictionary& attributes) const {
    if (Ref<NSFont> original = attributes.objectForKey<NSFont>(*NSOriginalFontAttributeName)) return original;
    const Ref<NSFont> font = attributes.objectForKey<NSFont>(*NSFontAttributeName);
    return font ? font : defaultFont(fontLibrary_);
}

/// Whether the same fonts are chosen for both runs.
bool NSTextStorage::askAlike(const NSDictionary& a, const NSDictionary& b) const {
    return askedFont(a)->isEqual(*askedFont(b)) && areSame(a.objectForKey<NSString>(*NSLanguageAttributeName),
                                                           b.objectForKey<NSString>(*NSLanguageAttributeName));
}

uint32_t NSTextStorage::endOfAskedFont(size_t run, uint32_t end) const {
    const NSDictionary& first = *runs_[run].attributes;
    while (run + 1 < runs_.size() && runs_[run].end < end && askAlike(*runs_[run + 1].attributes, first)) ++run;
    return std::min(runs_[run].end, end);
}

void NSTextStorage::fixFontsInRange(Range range) {
    std::vector<Run> fixed;
    bool isChanged = false;
    std::map<std::pair<const NSDictionary*, Ref<NSFont>>, Ref<NSDictionary>> made;
    uint32_t position = range.location;
    for (size_t run = runIndexAt(range.location); position < range.end();) {
        // Shaping ignores changes of colour and the like, and so must the choice of fonts.
        const Ref<NSFont> asked = askedFont(*runs_[run].attributes);
        const uint32_t start = position;
        const uint32_t end = endOfAskedFont(run, static_cast<uint32_t>(range.end()));
        const auto text = std::u16string_view(characters_).substr(start, end - start);
        for (const FontStretch& stretch : fontsForText(asked, text, languageOf(*runs_[run].attributes))) {
            while (position < start + stretch.end) {
                const Ref<NSDictionary>& attributes = runs_[run].attributes;
                Ref<NSDictionary>& withFont = made[{attributes.get(), stretch.font}];
                if (!withFont) withFont = attributesWithFont(attributes, asked, stretch.font);
                isChanged |= withFont != attributes;
                position = std::min(runs_[run].end, start + stretch.end);
                fixed.push_back({position, withFont});
                if (position == runs_[run].end) ++run;
            }
        }
    }
    if (isChanged) replaceRuns(range, std::move(fixed));
}

}  // namespace qz
