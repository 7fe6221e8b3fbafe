#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

class FontLibrary;
class NSFont;
class NSLayoutManager;

/// The attributed string that layout managers lay out and keep up with.
///
/// After an edit, or the outermost `endEditing` of a series, the edited paragraphs get fonts that have their
/// characters: where the font lacks some, `NSFontAttributeName` becomes one that serves and
/// `NSOriginalFontAttributeName` keeps the one asked for; where there is no font the default one is set. Then every
/// layout manager is told. Owns its layout managers.
class NSTextStorage final : public NSMutableAttributedString {
public:
    /// The empty text, without layout managers.
    static Ref<NSTextStorage> init();

    /// Where the default font is looked up from now on; null stands for the fonts of this machine.
    void setFontLibrary(std::shared_ptr<FontLibrary> library) { fontLibrary_ = std::move(library); }

    /// Takes it from the storage that it had. Edits of a series that is not ended yet are told of first.
    void addLayoutManager(const Ref<NSLayoutManager>& layoutManager);
    /// It is then without text. Nothing happens when it is none of this storage's.
    void removeLayoutManager(const NSLayoutManager& layoutManager);
    /// In the order in which they are told of edits.
    const std::vector<Ref<NSLayoutManager>>& layoutManagers() const { return layoutManagers_; }

    /// Brackets a series of edits. Series nest; an end without a beginning does nothing. Until the outermost end,
    /// layout managers know nothing of the edits, and should not be asked.
    ///@{
    void beginEditing();
    void endEditing();
    ///@}

    std::string className() const override { return "NSTextStorage"; }

private:
    /// What has been edited since layout managers were last told.
    struct Edit {
        Range range;
        int64_t changeInLength = 0;
        bool charactersChanged = false;
    };

    NSTextStorage() = default;

    void edited(Range range, int64_t changeInLength, bool charactersChanged) override;
    void processEditing();
    Ref<NSFont> askedFont(const NSDictionary& attributes) const;
    bool askAlike(const NSDictionary& a, const NSDictionary& b) const;
    void fixFontsInRange(Range range);
    /// Where the stretch that asks for the same font and language as the run ends, at `end` at the latest.
    uint32_t endOfAskedFont(size_t run, uint32_t end) const;

    std::shared_ptr<FontLibrary> fontLibrary_;
    std::vector<Ref<NSLayoutManager>> layoutManagers_;
    std::optional<Edit> edit_;
    uint32_t editingDepth_ = 0;
};

}  // namespace qz
