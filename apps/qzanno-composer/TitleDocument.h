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
/// Everything the user types or switches on, and every change of the palette, updates the annotated string and
/// reformats it, so the view always shows the title as it will be rendered. One undo manager serves text, annotations,
/// palette and the list of titles, and shows the title that a step concerns. Handles "requestScreenSize:" and
/// "toggleFrameAnno:".
///
/// A title keeps its annotation names whatever palette is loaded: a name missing from the palette stays on the text as
/// a loose key until a palette has it or gains an annotation of that name. Looks defined by a caption file join each
/// palette as annotations, unless it has one of that name; this does not count as an edit of the palette.
class TitleDocument final : public NSResponder {
public:
    static Ref<TitleDocument> documentWithPalette(const Ref<QzAnnoPalette>& palette, NSSize screenSize);
    ~TitleDocument() override;

    const Ref<QzAnnoPalette>& palette() const { return palette_; }
    const Ref<NSTextView>& textView() const { return view_; }
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    NSSize screenSize() const { return container_->screenSize(); }

    /// Takes at least one title. The titles count as saved, and cannot be undone.
    void setTitles(TitleFile file);
    const std::vector<Title>& titles() const { return file_.titles; }
    const TitleFile& file() const { return file_; }
    size_t current() const { return current_; }
    void show(size_t title);
    /// Inserts an empty title after the current one and shows it, with times if the current one has some. Text typed
    /// into it gets the current title's frame annotations.
    void insertTitle();
    /// Removes the current title; an only title is replaced by an empty one. Comments above it stay in the file.
    void removeTitle();
    /// Refused if the end is before the start.
    bool setTimes(size_t title, double start, double end);
    /// Gives times to titles without any.
    void completeTimes();
    /// The current title with all edits.
    const Ref<QzAnnoString>& title() const { return file_.titles[current_].text; }
    /// A picture of the title at the screen's size in pixels, on a transparent background.
    Ref<NSBitmapImageRep> picture() const;

    /// The insertion point of an empty title, in screen points: the place of its first character.
    NSRect insertionPointOfEmptyTitle() const;

    /// Moves the contents of another palette into this document's, in one undo step, and maps the titles to the keys of
    /// the same names. Saved titles still count as saved. `file` is the palette's path.
    void replacePalette(const Ref<QzAnnoPalette>& palette, const std::string& file = {});
    void toggleFrameAnno(const Ref<QzAnnoKey>& key);
    /// Replaces `key` by `byKey` in all titles, in one undo step. Returns the number of titles changed.
    size_t replaceEverywhere(const Ref<QzAnnoKey>& key, const Ref<QzAnnoKey>& byKey);

    /// The files that titles and palette were last read from or saved to; empty if there are none.
    ///@{
    const std::string& titlesFile() const { return titlesFile_; }
    const std::string& paletteFile() const { return paletteFile_; }
    void setTitlesFile(const std::string& file) { titlesFile_ = file; }
    void setPaletteFile(const std::string& file) { paletteFile_ = file; }
    ///@}

    /// Whether titles, or the palette, differ from what was last opened or saved. Renaming an annotation in use counts
    /// as a change of the titles.
    bool titlesAreEdited() const;
    bool paletteIsEdited() const { return paletteIsEdited_; }
    void markTitlesSaved();
    void markPaletteSaved();
    /// For contents that do not come from a file of the user's.
    void markUnsaved();
    /// Called after every change of what is shown or would be saved.
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
    // Keys for names missing from the palette.
    LooseKeys looseKeys_;
    // Annotations from looks of the titles' file, with their original attributes.
    std::map<Ref<QzAnnoKey>, Ref<NSDictionary>> joined_;
    // A superset of the keys in use, to avoid walking thousands of titles that do not use a key.
    std::set<Ref<QzAnnoKey>> keys_;
    std::string titlesFile_;
    std::string paletteFile_;
    std::vector<Title> savedTitles_;
    // The names of their annotations by key, since renaming does not change a key.
    KeyNames savedNames_;
    // The title found to differ from the saved one last time, since every keystroke asks.
    mutable size_t lastEdited_ = 0;
    // As a property list; null if the palette has no such form.
    Ref<NSData> savedPalette_;
    bool paletteIsEdited_ = false;
    std::function<void()> changeHook_;
    bool isFormatting_ = false;
};

}  // namespace qz::composer
