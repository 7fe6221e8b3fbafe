#include "apps/qzanno-composer/TitleDocument.h"

#include <utility>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeNames.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoLayoutManager.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/ui/QzAnnoEditor.h"
#include "platform/text/AttributeNames.h"
#include "platform/text/NSParagraphStyle.h"

namespace qz::composer {

TitleDocument::TitleDocument(const Ref<QzAnnoPalette>& palette, NSSize screenSize) : palette_(palette) {
    palette_->setUndoManager(undo_);
    formatter_->setPalette(palette_);
    container_ = QzScreenTextContainer::initWithScreenSize(screenSize);
    const Ref<NSTextStorage> storage = NSTextStorage::init();
    const Ref<QzAnnoLayoutManager> layoutManager = QzAnnoLayoutManager::init();
    container_->replaceLayoutManager(layoutManager);
    layoutManager->replaceTextStorage(storage);
    view_ = NSTextView::initWithTextContainer(container_);
    view_->setUndoManager(undo_);
    titles_.push_back({QzAnnoString::init(), {}, {}});

    setHandler("requestScreenSize:", [this](const Ref<NSObject>& sender) {
        if (const auto editor = std::dynamic_pointer_cast<QzAnnoEditor>(sender))
            editor->setScreenSize(this->screenSize());
    });
    setHandler("toggleFrameAnno:",
               [this](const Ref<NSObject>& sender) { toggleFrameAnno(std::dynamic_pointer_cast<QzAnnoKey>(sender)); });
    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.addObserver(
        this, [this](const NSNotification&) { textDidChange(); }, NSTextDidChangeNotification, view_.get());
    notifications.addObserver(
        this, [this](const NSNotification&) { format(); }, {}, palette_.get());
    notifications.addObserver(
        this, [this](const NSNotification&) { format(); }, NSUndoManagerDidUndoChangeNotification, undo_.get());
}

TitleDocument::~TitleDocument() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    undo_->removeAllActionsWithTarget(*this);
}

Ref<TitleDocument> TitleDocument::documentWithPalette(const Ref<QzAnnoPalette>& palette, NSSize screenSize) {
    Ref<TitleDocument> document(new TitleDocument(palette, screenSize));
    document->format();
    return document;
}

void TitleDocument::setTitles(std::vector<Title> titles) {
    if (titles.empty()) titles.push_back({QzAnnoString::init(), {}, {}});
    titles_ = std::move(titles);
    show(0);
}

void TitleDocument::show(size_t title) {
    if (title >= titles_.size()) return;
    current_ = title;
    view_->forgetUndo();
    undo_->removeAllActionsWithTarget(*this);
    format();
    view_->setSelectedRange({view_->textStorage()->length(), 0});
}

/// Shows the title through the palette. Selection and places in the text stay.
void TitleDocument::format() {
    if (std::exchange(isFormatting_, true)) return;
    const Range selection = view_->selectedRange();
    const Ref<NSTextStorage> storage = view_->textStorage();
    if (title()->length() > 0) {
        storage->setAttributedString(*formatter_->attributedStringForObjectValue(title()));
    } else {
        // An empty text has no attributes; what is typed into it takes those of its frame, or the palette's.
        storage->setAttributedString(*NSAttributedString::init());
        const auto list = view_->typingAttributes()->objectForKey<NSSet>(*QzAnnoAttributeName);
        const auto sample = QzMutableAnnoString::initWithString(" "_ns);
        if (list) sample->setAnnos(list, {0, 1});
        view_->setTypingAttributes(formatter_->attributedStringForObjectValue(sample)->attributesAtIndex(0));
    }
    view_->setSelectedRange(selection);
    // Through the notification, so that container and window follow as they do when the user types.
    view_->didChangeText();
    isFormatting_ = false;
}

void TitleDocument::textDidChange() {
    if (isFormatting_) return;
    const Ref<QzAnnoString> former = title();
    const auto edited = QzMutableAnnoString::initWithKeyedAttributedString(*view_->textStorage());
    titles_[current_].text = edited->copy();
    // Typing is recorded by the view; a change of annotations alone is not.
    const bool isSameText = former->string()->isEqualToString(*edited->string());
    if (isSameText && !former->isEqualToAnnoString(*edited)) recordFormer(former);
    format();
}

void TitleDocument::recordFormer(const Ref<QzAnnoString>& title) {
    undo_->prepareWithInvocationTarget(*this).invoke([this, title] { restore(title); });
    undo_->setActionName("Change Annotations");
}

void TitleDocument::restore(const Ref<QzAnnoString>& title) {
    recordFormer(this->title());
    titles_[current_].text = title;
    format();
}

void TitleDocument::toggleFrameAnno(const Ref<QzAnnoKey>& key) {
    if (!key || title()->length() == 0) return;
    const auto toggled = title()->mutableCopy();
    toggled->toggleFrameAnno(key);
    restore(toggled->copy());
}

void TitleDocument::replacePalette(const Ref<QzAnnoPalette>& palette) {
    // Titles go over to the annotations of the same names before the former keys are let go of.
    for (Title& each : titles_) {
        const auto moved = QzMutableAnnoString::initWithString(each.text->string());
        for (const QzAnnoString::Run& run : each.text->runs()) {
            for (const auto& key : run.keys->objects<QzAnnoKey>()) {
                moved->addAnno(palette->findAnnoKey(key->name()), run.range);
            }
        }
        each.text = moved->copy();
    }
    undo_->removeAllActions();
    palette_->retainContentsOfAnnoPalette(palette);
}

NSRect TitleDocument::insertionPointOfEmptyTitle() const {
    const auto pipeline = QzAnnoStringToScreen::init();
    pipeline->setPalette(palette_);
    pipeline->setScreenSize(screenSize(), screenSize());
    pipeline->setAttributedString(NSAttributedString::initWithString("x"_ns, view_->typingAttributes()));
    pipeline->placeInFullScreen(true);
    const NSRect box = pipeline->textContainer()->textBox();
    const auto style = view_->typingAttributes()->objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
    const NSTextAlignment alignment = style ? style->alignment() : NSTextAlignment::natural;
    float x = box.origin.x;
    if (alignment == NSTextAlignment::center) x += box.size.width / 2;
    if (alignment == NSTextAlignment::right) x += box.size.width;
    return {{x, box.origin.y}, {0, box.size.height}};
}

Ref<NSBitmapImageRep> TitleDocument::picture() const {
    const auto pipeline = QzAnnoStringToScreen::init();
    pipeline->setPalette(palette_);
    pipeline->setScreenSize(screenSize(), screenSize());
    pipeline->setAnnoString(title());
    return pipeline->bitmapInFullScreen(true);
}

}  // namespace qz::composer
