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
/// Glyphs are numbered in text order: every character belongs to a cluster of one or more glyphs, and every glyph
/// represents one or more characters. Layout happens on demand, continuing from where it stopped, container after
/// container; text that does not fit any container has glyphs but no place. Geometry is in container coordinates.
class NSLayoutManager : public NSObject {
public:
    /// Has no text and no containers.
    static Ref<NSLayoutManager> init();
    ~NSLayoutManager() override;

    /// The owner of this layout manager, which it does not own; null before there is one and after it has been
    /// destroyed.
    Ref<NSTextStorage> textStorage() const;
    /// Moves this layout manager to another text storage, which then owns it.
    void replaceTextStorage(const Ref<NSTextStorage>& textStorage);
    /// Appends a container, which the layout manager then owns. Text fills containers in this order.
    void addTextContainer(const Ref<NSTextContainer>& container);
    /// Its text moves to the following containers. Does nothing if the container is not one of this layout manager's.
    void removeTextContainer(const NSTextContainer& container);

    /// Called by a container whose region has changed; discards the layout in it and in the following containers.
    void textContainerChangedGeometry(const NSTextContainer& container);
    /// Called by the text storage after an edit, and when it adds or removes this layout manager. The range contains
    /// the edited paragraphs as they are now, with substitute fonts set; `changeInLength` counts UTF-16 units. Discards
    /// the lines from there on, but not the shaping of other paragraphs.
    virtual void textStorageEdited(Range editedRange, int64_t changeInLength, bool charactersChanged);

    /// The number of glyphs in the whole text. Lays all of it out.
    uint32_t numberOfGlyphs() const;
    /// The first glyph that has not been laid out yet, or `numberOfGlyphs`. Glyphs without a place count as laid out
    /// once no container has room for them. There is no background layout, so waiting does not change this, and calling
    /// it lays nothing out.
    uint32_t firstUnlaidGlyphIndex() const;
    /// The container of the glyph, laying out as far as necessary; null if no container has room for it.
    /// `effectiveRange` receives the glyphs of that container.
    Ref<NSTextContainer> textContainerForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// Lays the container out and returns its glyphs.
    Range glyphRangeForTextContainer(const NSTextContainer& container) const;
    /// The area used by the lines in the container: line fragments without the free space at their ends, but with
    /// padding; the zero rectangle if there are no lines. Excludes paragraph spacing, and line spacing below the last
    /// line.
    NSRect usedRectForTextContainer(const NSTextContainer& container) const;

    /// The empty line after a text that ends with a line end, with its full height but only the width of its padding;
    /// the zero rectangle if the container has no such line.
    NSRect extraLineFragmentUsedRectForTextContainer(const NSTextContainer& container) const;

    /// The characters that have glyphs in the range; `actualGlyphRange` receives all glyphs of these characters.
    Range characterRangeForGlyphRange(Range glyphRange, Range* actualGlyphRange = nullptr) const;
    /// The glyphs of the characters in the range; `actualCharacterRange` receives all characters of these glyphs.
    Range glyphRangeForCharacterRange(Range characterRange, Range* actualCharacterRange = nullptr) const;
    /// The first character of the glyph's cluster; the length of the text for an index beyond the last glyph.
    uint32_t characterIndexForGlyphAtIndex(uint32_t glyphIndex) const;
    /// `NSControlGlyph` for a character that shows nothing, and beyond the last glyph.
    NSGlyph glyphAtIndex(uint32_t glyphIndex) const;
    /// Whether the glyph is not drawn: control characters, and white space hanging at a line's end.
    bool notShownAttributeForGlyphAtIndex(uint32_t glyphIndex) const;
    /// The glyph's origin on its baseline, including its own offset, relative to the origin of its line fragment.
    NSPoint locationForGlyphAtIndex(uint32_t glyphIndex) const;
    /// In points along the line, including kerning, tab stops and justification; 0 for white space hanging at a line's
    /// end, and beyond the last glyph.
    float advanceForGlyphAtIndex(uint32_t glyphIndex) const;
    /// The line fragment that contains the glyph; the zero rectangle if the glyph has no place. `effectiveRange`
    /// receives the fragment's glyphs.
    NSRect lineFragmentRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// The part of that fragment used by text, including padding but not the spacing below; the zero rectangle if the
    /// glyph has no place. `effectiveRange` as above.
    NSRect lineFragmentUsedRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange = nullptr) const;
    /// Whether the glyph was laid out in a right-to-left run.
    bool isRightToLeftGlyphAtIndex(uint32_t glyphIndex) const;

    /// The grapheme clusters of the glyph's line, in text order; empty if the glyph has no place. A ligature is divided
    /// as marked by the font, or else evenly.
    std::vector<CaretCell> caretCellsForLineOfGlyphAtIndex(uint32_t glyphIndex) const;
    /// Whether the glyph's paragraph runs from right to left; false if the glyph has no place.
    bool isRightToLeftParagraphOfGlyphAtIndex(uint32_t glyphIndex) const;

    /// Attributes for drawing only, which uses just the foreground colour: they override those of the text storage and
    /// do not affect layout. A paragraph loses them when its characters are edited.
    ///@{
    void addTemporaryAttributes(const NSDictionary& attributes, Range forCharacterRange);
    void removeTemporaryAttribute(const NSString& name, Range forCharacterRange);
    ///@}
    /// Returns an empty dictionary if there are no temporary attributes, and null beyond the text. `effectiveRange`
    /// receives the run around the index, inside the text.
    Ref<NSDictionary> temporaryAttributesAtCharacterIndex(uint32_t index, Range* effectiveRange = nullptr) const;

    /// Whether drawing calls `substituteFontForFont`; false by default.
    ///@{
    bool usesScreenFonts() const { return usesScreenFonts_; }
    void setUsesScreenFonts(bool uses) { usesScreenFonts_ = uses; }
    ///@}
    /// The font to draw with when screen fonts are used. Outlines are unhinted at every size, so this is the font
    /// itself.
    virtual Ref<NSFont> substituteFontForFont(const Ref<NSFont>& font) const { return font; }

    /// The rules of a run with these attributes. Subclasses define such attributes; this class has none.
    virtual TextRuleKinds ruleKinds(const NSDictionary& attributes) const;
    /// The rules under and through the glyphs' text, line by line, for the container's origin at `atPoint`. A rule is
    /// straight across a stretch of one font size and baseline, at the position given by the stretch's prevailing
    /// requested font. It includes blanks, except those hanging at a line's end.
    std::vector<TextRule> textRulesForGlyphRange(Range glyphRange, NSPoint atPoint) const;

    /// Draws glyphs and their rules into the current graphics context, each in the foreground colour of its characters:
    /// the temporary one, else the text storage's, else black. A colour glyph keeps its own colours unless there is a
    /// temporary one. `atPoint` is the container's origin.
    virtual void drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint);

    /// The cache of drawn glyphs. Never null; setting null sets a new cache.
    ///@{
    const Ref<GlyphCache>& glyphCache() const { return glyphCache_; }
    void setGlyphCache(const Ref<GlyphCache>& cache);
    ///@}

    std::string className() const override { return "NSLayoutManager"; }

protected:
    NSLayoutManager();

    /// The visible glyphs of the range, each with its place for the container's origin at `atPoint`.
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
