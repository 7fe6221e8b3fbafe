#include "apps/qzanno-composer/TitleDocument.h"

#include <algorithm>
#include <utility>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeNames.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoLayoutManager.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/ui/QzAnnoEditor.h"
#include "platform/text/AttributeNames.h"
#include "platform/text/NSParagraphStyle.h"

namespace qz::composer {
namespace {

/// The string with another key in the place of each of its keys; keys that become none are left out.
Ref<QzAnnoString> withKeys(const QzAnnoString& string,
                           const std::function<Ref<QzAnnoKey>(const Ref<QzAnnoKey>&)>& keyFor) {
    const auto moved = QzMutableAnnoString::initWithString(string.string());
    for (const QzAnnoString::Run& run : string.runs()) {
        for (const auto& key : run.keys->objects<QzAnnoKey>()) moved->addAnno(keyFor(key), run.range);
    }
    return moved->copy();
}

}  // namespace

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
        this, [this](const NSNotification&) { paletteDidChange(); }, {}, palette_.get());
    notifications.addObserver(
        this, [this](const NSNotification&) { paletteDidChange(); }, NSUndoManagerDidUndoChangeNotification,
        undo_.get());
    markTitlesSaved();
    markPaletteSaved();
}

TitleDocument::~TitleDocument() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    undo_->removeAllActionsWithTarget(*this);
    undo_->removeAllActionsWithTarget(*allTitles_);
}

Ref<TitleDocument> TitleDocument::documentWithPalette(const Ref<QzAnnoPalette>& palette, NSSize screenSize) {
    Ref<TitleDocument> document(new TitleDocument(palette, screenSize));
    document->format();
    return document;
}

void TitleDocument::setTitles(std::vector<Title> titles) {
    if (titles.empty()) titles.push_back({QzAnnoString::init(), {}, {}});
    titles_ = std::move(titles);
    undo_->removeAllActionsWithTarget(*allTitles_);
    markTitlesSaved();
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
    if (changeHook_) changeHook_();
}

void TitleDocument::paletteDidChange() {
    const Ref<NSData> list = palette_->pListData();
    paletteIsEdited_ = !list || !savedPalette_ || !list->isEqual(*savedPalette_);
    format();
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
    view_->breakUndoCoalescing();
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
    const bool wasEdited = titlesAreEdited();
    // Titles go over to the annotations of the same names before the former keys are let go of.
    for (Title& each : titles_) {
        each.text = withKeys(*each.text, [&](const Ref<QzAnnoKey>& key) { return palette->findAnnoKey(key->name()); });
    }
    if (!wasEdited) markTitlesSaved();
    undo_->removeAllActions();
    palette_->retainContentsOfAnnoPalette(palette);
    markPaletteSaved();
}

size_t TitleDocument::replaceEverywhere(const Ref<QzAnnoKey>& key, const Ref<QzAnnoKey>& byKey) {
    if (!key || !byKey || key == byKey) return 0;
    std::vector<Ref<QzAnnoString>> former, replaced;
    size_t count = 0;
    for (const Title& title : titles_) {
        const bool holds = std::ranges::any_of(
            title.text->runs(), [&](const QzAnnoString::Run& run) { return run.keys->containsObject(*key); });
        former.push_back(title.text);
        replaced.push_back(
            holds ? withKeys(*title.text, [&](const Ref<QzAnnoKey>& each) { return each == key ? byKey : each; })
                  : title.text);
        count += holds;
    }
    if (count > 0) exchangeTitles(former, replaced);
    return count;
}

/// Puts each replacement where a title is still the expected one.
void TitleDocument::exchangeTitles(std::vector<Ref<QzAnnoString>> expected,
                                   std::vector<Ref<QzAnnoString>> replacements) {
    for (size_t i = 0; i < titles_.size(); ++i) {
        if (titles_[i].text->isEqualToAnnoString(*expected[i])) titles_[i].text = replacements[i];
    }
    undo_->prepareWithInvocationTarget(*allTitles_).invoke([this, expected, replacements] {
        exchangeTitles(replacements, expected);
    });
    undo_->setActionName("Replace Annotation");
    view_->breakUndoCoalescing();
    format();
}

bool TitleDocument::titlesAreEdited() const {
    if (titles_.size() != savedTitles_.size()) return true;
    for (size_t i = 0; i < titles_.size(); ++i) {
        if (titles_[i].text != savedTitles_[i] && !titles_[i].text->isEqualToAnnoString(*savedTitles_[i])) return true;
    }
    return false;
}

void TitleDocument::markTitlesSaved() {
    savedTitles_.clear();
    for (const Title& title : titles_) savedTitles_.push_back(title.text);
    if (changeHook_) changeHook_();
}

void TitleDocument::markPaletteSaved() {
    savedPalette_ = palette_->pListData();
    paletteIsEdited_ = false;
    if (changeHook_) changeHook_();
}

void TitleDocument::markUnsaved() {
    savedTitles_.clear();
    savedPalette_.reset();
    paletteIsEdited_ = true;
    if (changeHook_) changeHook_();
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
