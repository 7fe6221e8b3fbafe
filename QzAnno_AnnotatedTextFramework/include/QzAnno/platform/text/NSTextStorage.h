#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

class FontLibrary;
class NSFont;
class NSLayoutManager;

/// The attributed string that layout managers lay out and follow.
///
/// After an edit, or the outermost `endEditing` of a series, the edited paragraphs get fonts that have their
/// characters: if a font does not have some, `NSFontAttributeName` becomes a substitute and
/// `NSOriginalFontAttributeName` keeps the requested font; text without a font gets the default font. Then every layout
/// manager is notified. Owns its layout managers.
class NSTextStorage final : public NSMutableAttributedString {
public:
    /// An empty text without layout managers.
    static Ref<NSTextStorage> init();

    /// Sets the library for looking up the default font; null means the system's fonts.
    void setFontLibrary(std::shared_ptr<FontLibrary> library) { fontLibrary_ = std::move(library); }

    /// Moves the layout manager from its former storage. First notifies layout managers of edits in a series that has
    /// not ended.
    void addLayoutManager(const Ref<NSLayoutManager>& layoutManager);
    /// The layout manager then has no text. Does nothing if it is not one of this storage's.
    void removeLayoutManager(const NSLayoutManager& layoutManager);
    /// In the order in which they are notified of edits.
    const std::vector<Ref<NSLayoutManager>>& layoutManagers() const { return layoutManagers_; }

    /// Brackets a series of edits. Series nest; an end without a beginning does nothing. Until the outermost end,
    /// layout managers do not know of the edits; do not query them.
    ///@{
    void beginEditing();
    void endEditing();
    ///@}

    std::string className() const override { return "NSTextStorage"; }

private:
    /// The edits since layout managers were last notified.
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
    /// The end of the stretch that requests the same font and language as the run, at most `end`.
    uint32_t endOfAskedFont(size_t run, uint32_t end) const;

    std::shared_ptr<FontLibrary> fontLibrary_;
    std::vector<Ref<NSLayoutManager>> layoutManagers_;
    std::optional<Edit> edit_;
    uint32_t editingDepth_ = 0;
};

}  // namespace qz
