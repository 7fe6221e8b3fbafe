#include "QzAnno/ui/QzTextViewAnnoCategory.h"

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeySets.h"

namespace qz {
namespace {

const Ref<NSString>& changedFontName() {
    static const Ref<NSString> name = "Hoefler Text Black"_ns;
    return name;
}
constexpr float kChangedFontSize = 12.0f;

std::string textOf(Range range) {
    return stringWithFormat("{%u, %u}", {range.location, range.length});
}

/// The keys that cover every character of the range.
Ref<NSSet> commonKeys(const NSAttributedString& text, Range range) {
    Ref<NSSet> common;
    forEachAnnoRun(text, range, [&](Range, const Ref<NSSet>& list) {
        common = common ? intersectionOf(common, list) : unionOf(list, {});
    });
    return common;
}

void switchKeys(NSMutableAttributedString& text, Range range, const Ref<NSSet>& enable, const Ref<NSSet>& disable) {
    // Walk over a copy, so that edits of earlier runs do not affect it.
    forEachAnnoRun(*text.copy(), range, [&](Range run, const Ref<NSSet>& list) {
        Ref<NSSet> step = unionOf(list, {});
        NSLog("Mod %@\n", {textOf(run)});
        NSLog("Step = %@\n", {step});
        step = difference(unionOf(step, enable), disable);
        NSLog("Step now = %@\n", {step});
        text.addAttribute(QzAnnoAttributeName, step, run);
    });
}

}  // namespace

void changeAnno(NSTextView& textView, const QzAnnoChanging& sender) {
    NSLog("changeAnno received, my lord!\n");
    const Ref<NSTextStorage> storage = textView.textStorage();
    if (!storage || storage->length() == 0) return;
    const auto text = NSMutableAttributedString::initWithAttributedString(*storage);
    const Range selection = textView.selectedRange();
    Range range = selection;
    if (range.length == 0) {
        NSLog("Attributing all the text..\n");
        range = {0, text->length()};
    }
    const Ref<NSSet> enable = unionOf(sender.selectedAnnoKeys(), {});
    const Ref<NSSet> disable = difference(commonKeys(*text, range), enable);
    NSLog("Enable: %@   Disable: %@\n", {enable, disable});
    switchKeys(*text, range, enable, disable);
    if (const Ref<NSFont> font = NSFont::fontWithName(*changedFontName(), kChangedFontSize)) {
        text->addAttribute(NSFontAttributeName, font, range);
    } else {
        NSLog("Missing Font: %@\n", {changedFontName()});
    }
    storage->setAttributedString(*text);
    textView.setSelectedRange(selection);
    NSLog("changed anno attribute at %d length %d\n", {range.location, range.length});
    textView.didChangeText();
}

bool isAnnoUsing(const NSObject& object) {
    return dynamic_cast<const NSTextView*>(&object) || dynamic_cast<const QzAnnoUsing*>(&object);
}

bool sendChangeAnno(NSObject& toObject, const QzAnnoChanging& sender) {
    if (auto* textView = dynamic_cast<NSTextView*>(&toObject)) {
        changeAnno(*textView, sender);
        return true;
    }
    auto* user = dynamic_cast<QzAnnoUsing*>(&toObject);
    if (user) user->changeAnno(sender);
    return user != nullptr;
}

}  // namespace qz
