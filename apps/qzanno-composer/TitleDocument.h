#pragma once

#include <functional>

#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/platform/ui/NSResponder.h"
#include "QzAnno/render/QzScreenTextContainer.h"
#include "apps/qzanno-composer/KeysByName.h"
#include "apps/qzanno-composer/TitleFile.h"

namespace qz::composer {

/// Titles, their palette, and the text view in which one of them is edited.
///
/// Whatever the user types or switches on, and every change of the palette, is turned back into the annotated string
/// and formatted anew, so the view always shows the title as it will be rendered. One undo manager serves text,
/// annotations, palette and the list of titles, and brings back the title that a step concerns. Answers
/// "requestScreenSize:" and "toggleFrameAnno:".
///
/// A title keeps the names that it came with, whatever palette is loaded: a name that the palette lacks lies on the
/// text as a loose key, until a palette has it or the palette gets an annotation of that name. The looks that a caption
/// file itself defines join each palette as annotations, unless it has one of the name; they are no edit of it.
class TitleDocument final : public NSResponder {
public:
    static Ref<TitleDocument> documentWithPalette(const Ref<QzAnnoPalette>& palette, NSSize screenSize);
    ~TitleDocument() override;

    const Ref<QzAnnoPalette>& palette() const { return palette_; }
    const Ref<NSTextView>& textView() const { return view_; }
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    NSSize screenSize() const { return container_->screenSize(); }

    /// At least one title; they count as saved, and no step leads back behind them.
    void setTitles(TitleFile file);
    const std::vector<Title>& titles() const { return file_.titles; }
    const TitleFile& file() const { return file_; }
    size_t current() const { return current_; }
    void show(size_t title);
    /// Shows an empty title behind the current one, with times when that has some; what is typed into it has the
    /// annotations of that one's frame.
    void insertTitle();
    /// Takes the current title away; in place of the only one comes an empty one. Comments above it stay in the file.
    void removeTitle();
    /// Refused when the end is before the start.
    bool setTimes(size_t title, double start, double end);
    /// Gives times to the titles that have none.
    void completeTimes();
    /// The current title with all edits.
    const Ref<QzAnnoString>& title() const { return file_.titles[current_].text; }
    /// The title of the screen's size in pixels, over nothing.
    Ref<NSBitmapImageRep> picture() const;

    /// Where the insertion point of an empty title stands, in screen points: where its first character would.
    NSRect insertionPointOfEmptyTitle() const;

    /// Moves the contents of another palette into this document's, whose keys of the same names take over the titles,
    /// in one step that can be undone. Titles that were saved count as saved. `file` is where the palette came from.
    void replacePalette(const Ref<QzAnnoPalette>& palette, const std::string& file = {});
    void toggleFrameAnno(const Ref<QzAnnoKey>& key);
    /// Puts one annotation in the place of another in all titles, in one step. Returns how many titles have changed.
    size_t replaceEverywhere(const Ref<QzAnnoKey>& key, const Ref<QzAnnoKey>& byKey);

    /// The files that titles and palette came from or went to last; empty before they have one.
    ///@{
    const std::string& titlesFile() const { return titlesFile_; }
    const std::string& paletteFile() const { return paletteFile_; }
    void setTitlesFile(const std::string& file) { titlesFile_ = file; }
    void setPaletteFile(const std::string& file) { paletteFile_ = file; }
    ///@}

    /// Whether titles, or the palette, differ from what was last opened or saved. Titles differ too when an annotation
    /// of theirs has got another name.
    bool titlesAreEdited() const;
    bool paletteIsEdited() const { return paletteIsEdited_; }
    void markTitlesSaved();
    void markPaletteSaved();
    /// For contents that came from no file of the user's.
    void markUnsaved();
    /// Called after every change of what is shown or of what is to be saved.
    void setChangeHook(std::function<void()> hook) { changeHook_ = std::move(hook); }

    std::string className() const override { return "TitleDocument"; }

private:
    TitleDocument(const Ref<QzAnnoPalette>& palette, NSSize screenSize);

    void textDidChange();
    void format();
    void restore(size_t title, const Ref<QzAnnoString>& text);
    void recordFormer(const Ref<QzAnnoString>& text);
    void exchangeTitles(TitleFile file, size_t current, const std::string& actionName);
    void finishComposing();
    void joinLooks(const Ref<QzAnnoPalette>& palette);
    void removeLooks();
    void exchangePalette(const Ref<QzAnnoPalette>& palette, const std::string& file, const Ref<NSData>& saved);
    using KeyNames = std::map<Ref<QzAnnoKey>, std::string>;
    void noteKeys(const QzAnnoString& text);
    const std::set<Ref<QzAnnoKey>>& keysInUse();
    bool mayReviveNames() const;
    void exchangeKeys(KeyMap keys, const KeyNames& namesThen = {});
    void reviveNames(bool isUndoable);
    void paletteDidChange();
    void undoDidChange();
    void showPalette();
    bool isEdited(size_t title) const;

    const Ref<QzAnnoPalette> palette_;
    const Ref<NSUndoManager> undo_ = NSUndoManager::init();
    const Ref<QzAnnoStringFormatter> formatter_ = QzAnnoStringFormatter::init();
    Ref<QzScreenTextContainer> container_;
    Ref<NSTextView> view_;
    // Without warnings.
    TitleFile file_;
    size_t current_ = 0;
    // Of names that the palette lacks.
    LooseKeys looseKeys_;
    // Annotations that are looks of the titles' file, as they joined.
    std::map<Ref<QzAnnoKey>, Ref<NSDictionary>> joined_;
    // At least the keys in use, so that nobody need walk thousands of titles where none of them matters.
    std::set<Ref<QzAnnoKey>> keys_;
    std::string titlesFile_;
    std::string paletteFile_;
    std::vector<Title> savedTitles_;
    // Of their annotations, by their keys: a key that gets another name stays what it is.
    KeyNames savedNames_;
    // Where titles differed from the saved ones when that was last asked: whoever types asks at every key.
    mutable size_t lastEdited_ = 0;
    // As a property list; none when the palette has no such form.
    Ref<NSData> savedPalette_;
    bool paletteIsEdited_ = false;
    std::function<void()> changeHook_;
    bool isFormatting_ = false;
};

}  // namespace qz::composer
