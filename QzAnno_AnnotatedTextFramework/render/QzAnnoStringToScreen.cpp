#include "QzAnno/render/QzAnnoStringToScreen.h"

#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/text/LanguageTag.h"

namespace qz {
namespace {

Ref<NSAttributedString> textInDirection(const NSAttributedString& text, NSWritingDirection direction) {
    const auto directed = NSMutableAttributedString::initWithAttributedString(text);
    directed->changeAttributes({0, text.length()}, [direction](const Ref<NSDictionary>& attributes) {
        auto style = attributes->objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
        if (!style) style = NSParagraphStyle::defaultParagraphStyle();
        NSParagraphStyle::Values values = style->values();
        values.baseWritingDirection = direction;
        ObjectMap map = attributes->map();
        map.set(NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(values));
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
    return directed;
}

}  // namespace

QzAnnoStringToScreen::QzAnnoStringToScreen()
    : textStorage_ts_(QzAnnoStringFormatter::init()),
      textStorage_(NSTextStorage::init()),
      textContainer_(QzScreenTextContainer::init()),
      layoutManager_(QzAnnoLayoutManager::init()) {
    textContainer_->replaceLayoutManager(layoutManager_);
    layoutManager_->replaceTextStorage(textStorage_);
}

Ref<QzAnnoStringToScreen> QzAnnoStringToScreen::init() {
    return Ref<QzAnnoStringToScreen>(new QzAnnoStringToScreen);
}

void QzAnnoStringToScreen::awakeFromNib() {
    textStorage_ts_->setPalette(palette_.lock());
}

void QzAnnoStringToScreen::setPalette(const Ref<QzAnnoPalette>& palette) {
    palette_ = palette;
    textStorage_ts_->setPalette(palette);
}

void QzAnnoStringToScreen::setScreenSize(NSSize screenSize, NSSize dataSize) {
    NSLog("Screensize changed on toscreen\n");
    if (NSEqualSizes(screenSize, screensize_)) return;
    NSLog("For reall!\n");
    available_ = false;
    screensize_ = screenSize;
    datasize_ = dataSize;
    textContainer_->setScreenSize(screenSize);
}

void QzAnnoStringToScreen::setAnnoString(const Ref<QzAnnoString>& string) {
    string_ = string;
    realString_.reset();
    available_ = false;
}

void QzAnnoStringToScreen::setAttributedString(const Ref<NSAttributedString>& string) {
    realString_ = string;
    string_.reset();
    available_ = false;
}

bool QzAnnoStringToScreen::setLanguage(std::string_view tag) {
    if (!tag.empty() && !isLanguageTag(tag)) return false;
    language_ = tag.empty() ? nullptr : NSString::stringWithUTF8String(std::string(tag));
    available_ = false;
    return true;
}

void QzAnnoStringToScreen::setBaseWritingDirection(NSWritingDirection direction) {
    if (direction == direction_) return;
    direction_ = direction;
    available_ = false;
}

void QzAnnoStringToScreen::build() {
    Ref<NSAttributedString> text = realString_;
    if (!text) text = textStorage_ts_->attributedStringForObjectValue(string_);
    if (!text) text = NSAttributedString::init();
    if (language_) {
        const auto inLanguage = NSMutableAttributedString::initWithAttributedString(*text);
        // An annotation's own language is more specific.
        inLanguage->changeAttributes({0, text->length()}, [this](const Ref<NSDictionary>& attributes) {
            if (attributes->objectForKey<NSString>(*NSLanguageAttributeName)) return attributes;
            ObjectMap map = attributes->map();
            map.set(NSLanguageAttributeName, language_);
            return NSDictionary::dictionaryWithMap(std::move(map));
        });
        text = inLanguage;
    }
    if (direction_ != NSWritingDirection::natural) text = textInDirection(*text, direction_);
    const Ref<QzAnnoPalette> palette = palette_.lock();
    textStorage_->setFontLibrary(palette ? palette->fontLibrary() : nullptr);
    textStorage_->setAttributedString(*text);
    // An empty series of edits makes the text system process the new text at once.
    textStorage_->beginEditing();
    textStorage_->endEditing();
    textContainer_->updateFromString();
    available_ = true;
}

Ref<NSAttributedString> QzAnnoStringToScreen::attributedString() {
    if (!available_) build();
    return textStorage_->copy();
}

}  // namespace qz
