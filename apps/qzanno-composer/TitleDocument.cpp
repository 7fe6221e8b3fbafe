#include "apps/qzanno-composer/TitleDocument.h"

#include <algorithm>
#include <utility>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno/ui/QzAnnoEditor.h"
#include "apps/qzanno-composer/TitleTimes.h"
#include "captions/CaptionLooks.h"
#include "captions/KeyExchange.h"
#include "platform/foundation/ObjectMap.h"

namespace qz::composer {
namespace {

CueSource sourceOf(const Title& title) {
    return title.source ? *title.source : CueSource();
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
    file_.titles.push_back({QzAnnoString::init(), {}, {}});

    setHandler("requestScreenSize:", [this](const Ref<NSObject>& sender) {
        if (const auto editor = std::dynamic_pointer_cast<QzAnnoEditor>(sender))
            editor->setScreenSize(this->screenSize());
    });
    setHandler("toggleFrameAnno:",
               [this](const Ref<NSObject>& sender) { toggleFrameAnno(std::dynamic_pointer_cast<QzAnnoKey>(sender)); });
    // For when no text view has the focus, as in the list of titles.
    setHandler("undo:", [this](const Ref<NSObject>&) { undo_->undo(); });
    setHandler("redo:", [this](const Ref<NSObject>&) { undo_->redo(); });
    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.addObserver(
        this, [this](const NSNotification&) { textDidChange(); }, NSTextDidChangeNotification, view_.get());
    notifications.addObserver(
        this, [this](const NSNotification&) { paletteDidChange(); }, {}, palette_.get());
    for (const auto& undone : {NSUndoManagerDidUndoChangeNotification, NSUndoManagerDidRedoChangeNotification}) {
        notifications.addObserver(
            this, [this](const NSNotification&) { undoDidChange(); }, undone, undo_.get());
    }
    markTitlesSaved();
    markPaletteSaved();
}

TitleDocument::~TitleDocument() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    undo_->removeAllActionsWithTarget(*this);
    view_->forgetUndo();
    view_->setUndoPlace({});
}

Ref<TitleDocument> TitleDocument::documentWithPalette(const Ref<QzAnnoPalette>& palette, NSSize screenSize) {
    Ref<TitleDocument> document(new TitleDocument(palette, screenSize));
    document->show(0);
    return document;
}

void TitleDocument::setTitles(TitleFile file) {
    finishComposing();
    if (file.titles.empty()) file.titles.push_back({QzAnnoString::init(), {}, {}});
    file.warnings.clear();
    const bool wasEdited = paletteIsEdited_;
    removeLooks();
    file_ = std::move(file);
    current_ = 0;
    savedTitles_.clear();
    looseKeys_ = {};
    joinLooks(palette_);
    if (!wasEdited) savedPalette_ = palette_->pListData();
    paletteIsEdited_ = wasEdited;
    keysInUse();
    reviveNames(false);
    view_->forgetUndo();
    undo_->removeAllActionsWithTarget(*this);
    markTitlesSaved();
    show(0);
}

/// Ends an input method's composition in the title where it began.
void TitleDocument::finishComposing() {
    if (!undo_->isUndoing() && !undo_->isRedoing()) view_->unmarkText();
}

void TitleDocument::show(size_t title) {
    if (title >= file_.titles.size()) return;
    finishComposing();
    current_ = title;
    view_->breakUndoCoalescing();
    view_->setUndoPlace([this, title] {
        if (current_ != title) show(title);
    });
    // Do not annotate text typed into an empty title like the previous title.
    if (this->title()->length() == 0) view_->setTypingAttributes({});
    format();
    view_->setSelectedRange({view_->textStorage()->length(), 0});
}

void TitleDocument::insertTitle() {
    finishComposing();
    TitleFile file = file_;
    const size_t place = current_ + 1;
    file.titles.insert(file.titles.begin() + static_cast<ptrdiff_t>(place), {QzAnnoString::init(), {}, {}});
    if (file.titles[current_].end) giveTimes(file.titles, place);
    const Ref<NSSet> frame = title()->frame();
    exchangeTitles(std::move(file), place, "New Title");
    ObjectMap attributes;
    attributes.set(QzAnnoAttributeName, frame);
    view_->setTypingAttributes(NSDictionary::dictionaryWithMap(std::move(attributes)));
    format();
}

void TitleDocument::removeTitle() {
    finishComposing();
    TitleFile file = file_;
    const std::string comments = sourceOf(file.titles[current_]).preamble;
    file.titles.erase(file.titles.begin() + static_cast<ptrdiff_t>(current_));
    if (!comments.empty()) {
        const bool isLast = current_ == file.titles.size();
        CueSource next = isLast ? CueSource() : sourceOf(file.titles[current_]);
        std::string& following = isLast ? file.trailer : next.preamble;
        following = comments + (following.empty() ? "" : "\n\n") + following;
        if (!isLast) file.titles[current_].source = std::make_shared<const CueSource>(std::move(next));
    }
    if (file.titles.empty()) file.titles.push_back({QzAnnoString::init(), {}, {}});
    exchangeTitles(std::move(file), current_, "Delete Title");
}

bool TitleDocument::setTimes(size_t title, double start, double end) {
    if (title >= file_.titles.size() || !(0 <= start && start <= end)) return false;
    finishComposing();
    TitleFile file = file_;
    file.titles[title].start = start;
    file.titles[title].end = end;
    exchangeTitles(std::move(file), current_, "Change Times");
    return true;
}

void TitleDocument::completeTimes() {
    finishComposing();
    TitleFile file = file_;
    bool isChanged = false;
    for (size_t i = 0; i < file.titles.size(); ++i) {
        if (file.titles[i].start && file.titles[i].end) continue;
        giveTimes(file.titles, i);
        isChanged = true;
    }
    if (isChanged) exchangeTitles(std::move(file), current_, "Change Times");
}

void TitleDocument::noteKeys(const QzAnnoString& text) {
    for (const Ref<QzAnnoKey>& key : text.allKeys()->objects<QzAnnoKey>()) keys_.insert(key);
}

const std::set<Ref<QzAnnoKey>>& TitleDocument::keysInUse() {
    keys_.clear();
    for (const std::vector<Title>* titles : {&file_.titles, &savedTitles_}) {
        for (const Title& title : *titles) noteKeys(*title.text);
    }
    return keys_;
}

/// Replaces the list of titles and shows one of them, in one undo step.
void TitleDocument::exchangeTitles(TitleFile file, size_t current, const std::string& actionName) {
    undo_->prepareWithInvocationTarget(*this).invoke([this, former = file_, formerCurrent = current_, actionName] {
        exchangeTitles(former, formerCurrent, actionName);
    });
    undo_->setActionName(actionName);
    view_->breakUndoCoalescing();
    const Ref<QzAnnoString> shown = title();
    file_ = std::move(file);
    current = std::min(current, file_.titles.size() - 1);
    // Keep the selection and positions in the text where possible.
    if (current == current_ && shown->string()->isEqualToString(*title()->string()))
        format();
    else
        show(current);
}

/// Formats the title with the palette. Selection and positions in the text stay.
void TitleDocument::format() {
    if (std::exchange(isFormatting_, true)) return;
    const Range selection = view_->selectedRange();
    const Ref<NSTextStorage> storage = view_->textStorage();
    if (title()->length() > 0) {
        storage->setAttributedString(*formatter_->attributedStringForObjectValue(title()));
    } else {
        // An empty text has no attributes; text typed into it gets those of its frame, or the palette's.
        storage->setAttributedString(*NSAttributedString::init());
        const auto list = view_->typingAttributes()->objectForKey<NSSet>(*QzAnnoAttributeName);
        const auto sample = QzMutableAnnoString::initWithString(" "_ns);
        if (list) sample->setAnnos(list, {0, 1});
        view_->setTypingAttributes(formatter_->attributedStringForObjectValue(sample)->attributesAtIndex(0));
    }
    view_->setSelectedRange(selection);
    // Use the notification, so that container and window follow as when the user types.
    view_->didChangeText();
    isFormatting_ = false;
    if (changeHook_) changeHook_();
}

void TitleDocument::paletteDidChange() {
    // While a group is being undone, names are still changing.
    if (!undo_->isUndoing() && !undo_->isRedoing()) reviveNames(true);
    showPalette();
}

void TitleDocument::showPalette() {
    const Ref<NSData> list = palette_->pListData();
    paletteIsEdited_ = !list || !savedPalette_ || !list->isEqual(*savedPalette_);
    format();
}

/// Restoring the palette records nothing, so neither must its consequences.
void TitleDocument::undoDidChange() {
    reviveNames(false);
    showPalette();
}

bool TitleDocument::mayReviveNames() const {
    return std::ranges::any_of(keys_, [this](const Ref<QzAnnoKey>& key) {
        return palette_->lookupPrio(key) < 0 && isNamedIn(*palette_, key, looseKeys_);
    });
}

/// Gives titles the palette's keys for names that it did not have until now.
void TitleDocument::reviveNames(bool isUndoable) {
    if (!mayReviveNames()) return;
    KeyMap keys = keysByName(*palette_, *palette_, looseKeys_, keysInUse());
    if (keys.isEmpty()) return;
    if (isUndoable) {
        KeyNames names;
        const KeyMap back = keys.inverted();
        for (const auto& [key, former] : back.keys()) names[key] = key->name()->utf8();
        undo_->prepareWithInvocationTarget(*this).invoke([this, titles = file_.titles, back, names] {
            exchangeKeys(back, names);
            file_.titles = titles;
        });
    }
    exchangeKeys(std::move(keys));
}

/// Replaces the keys of the saved titles, for comparison with the current ones. `namesThen` holds the former names of
/// keys renamed since.
void TitleDocument::exchangeKeys(KeyMap keys, const KeyNames& namesThen) {
    keys.takeOver(file_.titles);
    keys.takeOver(savedTitles_);
    for (const auto& [key, becomes] : keys.keys()) keys_.insert(becomes);
    KeyNames names;
    for (const auto& [key, saved] : savedNames_) {
        const auto then = namesThen.find(key);
        const bool isSaved = saved == (then == namesThen.end() ? key->name()->utf8() : then->second);
        const Ref<QzAnnoKey> becomes = keys(key);
        names[becomes] = isSaved ? becomes->name()->utf8() : saved;
    }
    savedNames_ = std::move(names);
    if (const auto list = view_->typingAttributes()->objectForKey<NSSet>(*QzAnnoAttributeName)) {
        ObjectMap attributes = view_->typingAttributes()->map();
        attributes.set(QzAnnoAttributeName, keys.takenOver(list));
        view_->setTypingAttributes(NSDictionary::dictionaryWithMap(std::move(attributes)));
    }
}

void TitleDocument::textDidChange() {
    if (isFormatting_) return;
    const Ref<QzAnnoString> former = title();
    const auto edited = QzMutableAnnoString::initWithKeyedAttributedString(*view_->textStorage());
    file_.titles[current_].text = edited->copy();
    noteKeys(*edited);
    // The view records typing, but not a mere change of annotations.
    const bool isSameText = former->string()->isEqualToString(*edited->string());
    if (isSameText && !former->isEqualToAnnoString(*edited)) recordFormer(former);
    format();
}

void TitleDocument::recordFormer(const Ref<QzAnnoString>& text) {
    undo_->prepareWithInvocationTarget(*this).invoke([this, title = current_, text] { restore(title, text); });
    undo_->setActionName("Change Annotations");
    view_->breakUndoCoalescing();
}

void TitleDocument::restore(size_t title, const Ref<QzAnnoString>& text) {
    if (title != current_) show(title);
    recordFormer(this->title());
    file_.titles[current_].text = text;
    format();
}

void TitleDocument::toggleFrameAnno(const Ref<QzAnnoKey>& key) {
    if (!key || title()->length() == 0) return;
    const auto toggled = title()->mutableCopy();
    toggled->toggleFrameAnno(key);
    keys_.insert(key);
    // Drop keys that hold nowhere any more, or the title would differ from the saved one.
    restore(current_, withKeys(*toggled, [](const Ref<QzAnnoKey>& each) { return each; }));
}

void TitleDocument::replacePalette(const Ref<QzAnnoPalette>& palette, const std::string& file) {
    finishComposing();
    undo_->endEvent();
    joinLooks(palette);
    exchangePalette(palette, file, palette->pListData());
    undo_->endEvent();
}

void TitleDocument::joinLooks(const Ref<QzAnnoPalette>& palette) {
    CaptionLooks looks(palette, screenSize());
    for (const auto& look : file_.looks) {
        if (palette->findAnnoKey(NSString::stringWithUTF8String(look->name))) continue;
        if (const Ref<QzAnnoKey> key = looks.keyOf(*look)) joined_[key] = palette->lookupAnno(key)->allAttributes();
    }
}

/// Removes the looks of the former titles' file from the palette, unless they have been edited.
void TitleDocument::removeLooks() {
    const NSUndoManager::Pause pause(undo_);
    for (const auto& [key, attributes] : std::exchange(joined_, {})) {
        const bool isAsItJoined = palette_->contains(key) && palette_->lookupAnno(key)->allAttributes() == attributes;
        if (isAsItJoined) palette_->removeAnno(key);
    }
}

void TitleDocument::exchangePalette(const Ref<QzAnnoPalette>& palette, const std::string& file,
                                    const Ref<NSData>& saved) {
    const auto former = QzAnnoPalette::init();
    // Use the palette as target, as its own steps do: they are valid only for its contents at the time, and must be
    // dropped along with this one.
    undo_->prepareWithInvocationTarget(*palette_).invoke([document = WeakRef<TitleDocument>(refTo(*this)), former,
                                                          formerFile = paletteFile_, formerSaved = savedPalette_] {
        if (const auto self = document.lock()) self->exchangePalette(former, formerFile, formerSaved);
    });
    undo_->setActionName("Open Palette");
    view_->breakUndoCoalescing();
    // Move titles to the annotations of the same names before the former ones leave the palette.
    exchangeKeys(keysByName(*palette_, *palette, looseKeys_, keysInUse()));
    former->retainContentsOfAnnoPalette(palette_);
    paletteFile_ = file;
    savedPalette_ = saved;
    palette_->retainContentsOfAnnoPalette(palette);
}

size_t TitleDocument::replaceEverywhere(const Ref<QzAnnoKey>& key, const Ref<QzAnnoKey>& byKey) {
    if (!key || !byKey || key == byKey) return 0;
    finishComposing();
    TitleFile file = file_;
    size_t count = 0;
    for (Title& title : file.titles) {
        const bool holds = std::ranges::any_of(
            title.text->runs(), [&](const QzAnnoString::Run& run) { return run.keys->containsObject(*key); });
        if (!holds) continue;
        title.text = withKeys(*title.text, [&](const Ref<QzAnnoKey>& each) { return each == key ? byKey : each; });
        ++count;
    }
    keys_.insert(byKey);
    if (count > 0) exchangeTitles(std::move(file), current_, "Replace Annotation");
    return count;
}

bool TitleDocument::isEdited(size_t title) const {
    const Title& one = file_.titles[title];
    const Title& saved = savedTitles_[title];
    return one.start != saved.start || one.end != saved.end || one.source != saved.source ||
           (one.text != saved.text && !one.text->isEqualToAnnoString(*saved.text));
}

bool TitleDocument::titlesAreEdited() const {
    const size_t count = file_.titles.size();
    if (count != savedTitles_.size()) return true;
    const auto isRenamed = [](const auto& saved) { return saved.first->name()->utf8() != saved.second; };
    if (std::ranges::any_of(savedNames_, isRenamed)) return true;
    if (lastEdited_ < count && isEdited(lastEdited_)) return true;
    for (lastEdited_ = 0; lastEdited_ < count; ++lastEdited_) {
        if (isEdited(lastEdited_)) return true;
    }
    return false;
}

void TitleDocument::markTitlesSaved() {
    savedTitles_ = file_.titles;
    savedNames_.clear();
    for (const Title& title : file_.titles) {
        for (const Ref<QzAnnoKey>& key : title.text->allKeys()->objects<QzAnnoKey>())
            savedNames_.emplace(key, key->name()->utf8());
    }
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
