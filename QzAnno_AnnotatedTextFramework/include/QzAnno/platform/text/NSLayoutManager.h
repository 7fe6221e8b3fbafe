#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSTextContainer.h"

namespace qz {

class GlyphCache;
class NSGraphicsContext;
class NSTextStorage;
class TemporaryAttributes;
class TextLayout;
struct CaretCell;
struct GlyphAtPlace;
struct TextRule;
struct TextRuleKinds;

/// Turns the characters of a text storage into glyphs, lays them out as lines in text containers, and draws them.
///
/// Glyphs are numbered in the order of the text: every character lies in the cluster of one or more glyphs, and every
/// glyph stands for one or more characters. Layout happens when something is asked that needs it, from where it was
/// left, container after container; text for which no container has room has glyphs but no place. Geometry is in
/// container coordinates.
class NSLayoutManager : public NSObject {
public:
    /// Without text and containers.
    static Ref<NSLayoutManager> init();
    ~NSLayoutManager() override;

    /// Not owned, but the owner; none before there is one, and after it has died.
    Ref<NSTextStorage> textStorage() const;
    /// Moves this layout manager to another text storage, which then owns it.
    void replaceTextStorage(const Ref<NSTextStorage>& textStorage);
    /// Owns its containers. Text fills them in this order.
    void addTextContainer(const Ref<NSTextContainer>& container);
    /// Its text goes on in the containers behind it. Nothing happens when it is none of this layout manager's.
    void removeTextContainer(const NSTextContainer& container);
    /// In the order in which text fills them.
    const std::vector<Ref<NSTextContainer>>& textContainers() const;

    /// Called by a container whose region has changed: what is laid out in it and behind it is forgotten.
    void textContainerChangedGeometry(const NSTextContainer& container);
    /// Called by the text storage after an edit, and when it takes this layout manager in or lets go of it. The range
    /// holds the edited paragraphs as they are now, with fonts that serve; `changeInLength` counts UTF-16 units. The
    /// lines from there on are forgotten, but not how other paragraphs are shaped.
    virtual void textStorageEdited(Range editedRange, int64_t changeInLength, bool charactersChanged);

    /// Of the whole text, which is laid out for that.
    uint32_t numberOfGlyphs() const;
    /// The first glyph that has not been laid out yet; `numberOfGlyphs` when there is none. Glyphs without a place
    /// count as laid out once no container has room for them. Nothing is laid out in the background, so waiting does
    /// not change it, and asking for it lays nothing out.
    uint32_t firstUnlaidGlyphIndex() const;
    /// The container that holds the glyph, laid out as far as that takes; none when no container has room.
    /// `effectiveRange` receives the glyphs of that container.
    Ref<NSTextContainer> textContainerForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// The glyphs laid out in the container, after laying it out.
    Range glyphRangeForTextContainer(const NSTextContainer& container) const;
    /// What the lines in the container use: line fragments less the free space at their ends, padding included; the
    /// zero rectangle when there are none. Line spacing below the last line and paragraph spacing are not part of it.
    NSRect usedRectForTextContainer(const NSTextContainer& container) const;

    /// The empty line behind a text that ends with a line end, as high as it is and no wider than its padding; the zero
    /// rectangle when there is none in the container.
    NSRect extraLineFragmentUsedRectForTextContainer(const NSTextContainer& container) const;

    /// The characters that have glyphs in the range; `actualGlyphRange` receives all glyphs of these characters.
    Range characterRangeForGlyphRange(Range glyphRange, Range* actualGlyphRange = nullptr) const;
    /// The glyphs of the characters in the range; `actualCharacterRange` receives all characters of these glyphs.
    Range glyphRangeForCharacterRange(Range characterRange, Range* actualCharacterRange = nullptr) const;
    /// The first character of the glyph's cluster; the length of the text beyond the last glyph.
    uint32_t characterIndexForGlyphAtIndex(uint32_t glyphIndex) const;
    /// `NSControlGlyph` for a character that shows nothing, and beyond the last glyph.
    NSGlyph glyphAtIndex(uint32_t glyphIndex) const;
    /// Whether nothing of the glyph is to be drawn: control characters, white space that hangs at a line's end.
    bool notShownAttributeForGlyphAtIndex(uint32_t glyphIndex) const;
    /// The glyph's origin, on its baseline and with its own offset, from the origin of its line fragment.
    NSPoint locationForGlyphAtIndex(uint32_t glyphIndex) const;
    /// Points along the line, with kerning, tab stops and justification; 0 for white space that hangs at a line's end,
    /// and beyond the last glyph.
    float advanceForGlyphAtIndex(uint32_t glyphIndex) const;
    /// The line fragment that holds the glyph; the zero rectangle when it has no place. `effectiveRange` receives its
    /// glyphs.
    NSRect lineFragmentRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// What the text of that line takes of the fragment, padding included, and not the spacing below it; the zero
    /// rectangle when the glyph has no place. `effectiveRange` as above.
    NSRect lineFragmentUsedRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// Whether the glyph was laid out in a right-to-left run.
    bool isRightToLeftGlyphAtIndex(uint32_t glyphIndex) const;

    /// The grapheme clusters of the line that holds the glyph, in the order of the text; none when it has no place. A
    /// ligature is shared out where the font marks its parts, or else evenly.
    std::vector<CaretCell> caretCellsForLineOfGlyphAtIndex(uint32_t glyphIndex) const;
    /// Whether the paragraph of the glyph runs from right to left; false when the glyph has no place.
    bool isRightToLeftParagraphOfGlyphAtIndex(uint32_t glyphIndex) const;

    /// Attributes that serve drawing only, which heeds the foreground colour: they lie over those of the text storage
    /// and change no layout. A paragraph whose characters are edited loses them.
    ///@{
    void addTemporaryAttributes(const NSDictionary& attributes, Range forCharacterRange);
    void removeTemporaryAttribute(const NSString& name, Range forCharacterRange);
    ///@}
    /// The empty dictionary where there are none, and none beyond the text. `effectiveRange` receives the run around
    /// the index, inside the text.
    Ref<NSDictionary> temporaryAttributesAtCharacterIndex(uint32_t index, Range* effectiveRange = nullptr) const;

    /// Whether drawing asks `substituteFontForFont`; not at the start.
    ///@{
    bool usesScreenFonts() const { return usesScreenFonts_; }
    void setUsesScreenFonts(bool uses) { usesScreenFonts_ = uses; }
    ///@}
    /// The font that draws for another when screen fonts are used. Outlines are unhinted at every size, so it is the
    /// font itself.
    virtual Ref<NSFont> substituteFontForFont(const Ref<NSFont>& font) const { return font; }

    /// Which rules a run of these attributes has. The names of such attributes are a subclass's, so here it has none.
    virtual TextRuleKinds ruleKinds(const NSDictionary& attributes) const;
    /// The rules under and through the text of the glyphs, line by line, for the container's origin at `atPoint`. A
    /// rule lies where the font asked for has it, straight over a stretch of one font size and baseline, that of its
    /// prevailing font. Blanks have it but for those that hang at a line's end.
    std::vector<TextRule> textRulesForGlyphRange(Range glyphRange, NSPoint atPoint) const;

    /// Draws glyphs and their rules into the current graphics context, each in the foreground colour of its characters,
    /// the temporary one first; black without one. A colour glyph keeps its own colours, unless a temporary one lies
    /// over them. `atPoint` is where the origin of the container lies.
    virtual void drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint);

    /// What has been drawn before and can be drawn again. Never none; none given stands for a fresh one.
    ///@{
    const Ref<GlyphCache>& glyphCache() const { return glyphCache_; }
    void setGlyphCache(const Ref<GlyphCache>& cache);
    ///@}

    std::string className() const override { return "NSLayoutManager"; }

protected:
    NSLayoutManager();

    /// The glyphs of the range that show something, each where it is drawn when the container's origin lies at
    /// `atPoint`.
    std::vector<GlyphAtPlace> shownGlyphs(Range glyphRange, NSPoint atPoint) const;

private:
    friend class NSTextStorage;
    class RuleFinder;
    struct RunAppearance;

    /// For the text storage, which tells of the edit that this is as well.
    void setTextStorage(const Ref<NSTextStorage>& textStorage);
    RunAppearance appearanceAt(const NSTextStorage& text, uint32_t character) const;
    void drawGlyphsWithRules(NSGraphicsContext& context, Range glyphRange, NSPoint atPoint,
                             const std::vector<TextRule>& rules) const;
    template <class Visit>
    void visitShownGlyphs(Range glyphRange, NSPoint atPoint, const Visit& visit) const;

    const std::unique_ptr<TextLayout> layout_;
    std::unique_ptr<TemporaryAttributes> temporaryAttributes_;
    Ref<GlyphCache> glyphCache_;
    bool usesScreenFonts_ = false;
};

}  // namespace qz
