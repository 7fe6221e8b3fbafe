#pragma once

#include <optional>

#include "platform/text/NSAttributedString.h"

namespace qz {

class NSLayoutManager;

/// The attributed string that layout managers lay out and keep up with.
///
/// After an edit, or the outermost `endEditing` of a series, the edited paragraphs get fonts that have their
/// characters: where the font lacks some, `NSFontAttributeName` becomes one that serves and
/// `NSOriginalFontAttributeName` keeps the one asked for; where there is no font the default one is set. Then every
/// layout manager is told. Owns its layout managers.
class NSTextStorage final : public NSMutableAttributedString {
public:
    static Ref<NSTextStorage> init();

    void addLayoutManager(const Ref<NSLayoutManager>& layoutManager);
    void removeLayoutManager(const NSLayoutManager& layoutManager);
    const std::vector<Ref<NSLayoutManager>>& layoutManagers() const { return layoutManagers_; }

    void beginEditing();
    void endEditing();

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
    void fixFontsInRange(Range range);
    /// Where the stretch that asks for the same font and language as the run ends, at `end` at the latest.
    uint32_t endOfAskedFont(size_t run, uint32_t end) const;

    std::vector<Ref<NSLayoutManager>> layoutManagers_;
    std::optional<Edit> edit_;
    uint32_t editingDepth_ = 0;
};

}  // namespace qz
