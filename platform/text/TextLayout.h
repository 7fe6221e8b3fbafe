#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "QzAnno/platform/text/NSTextContainer.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/text/CaretCell.h"
#include "platform/text/LinePlacement.h"
#include "platform/text/Paragraph.h"

namespace qz {

/// Lays a text out in containers: owns the containers, the lines and the glyphs.
///
/// Every query lays out as far as necessary, in text order. Lines are made one after another until the text or the
/// containers end. Only then does text without a place get glyphs: since a line break may change glyphs, those of text
/// not yet laid out are unknown.
class TextLayout {
public:
    struct Line {
        Range glyphs;
        Range characters;
        NSRect fragment;
        NSRect usedRect;
        float baseline;  ///< from the top of the fragment
        size_t container;
        size_t paragraph;
    };

    /// Not owned; call `textEdited` for a new text. Null until one is set.
    ///@{
    Ref<NSTextStorage> storage() const { return storage_.lock(); }
    void setStorage(const Ref<NSTextStorage>& storage) { storage_ = storage; }
    ///@}
    /// The text; null if it has been edited but `textEdited` has not been called yet, so that it does not match the
    /// glyphs.
    Ref<NSTextStorage> text() const;
    void textEdited(Range editedRange, int64_t changeInLength);
    void forgetText() { textEdited({}, -int64_t{length_}); }

    /// In the order in which the text fills them.
    const std::vector<Ref<NSTextContainer>>& containers() const { return containers_; }
    void addContainer(const Ref<NSTextContainer>& container);
    /// Returns the removed container; null if it is not one of these.
    Ref<NSTextContainer> removeContainer(const NSTextContainer& container);
    /// Discards the lines in the container and the following ones.
    void containerChanged(const NSTextContainer& container);

    /// The lines in the container, in order; empty if it is not one of these.
    std::span<const Line> linesOfContainer(const NSTextContainer& container);
    /// The area used by the lines in the container; the zero rectangle if there are none.
    NSRect usedRectOfContainer(const NSTextContainer& container);
    /// The zero rectangle if the container does not have the extra line.
    NSRect extraLineUsedRectOfContainer(const NSTextContainer& container);

    /// How many glyphs the whole text has.
    uint32_t glyphCount();
    /// The first glyph without a line so far; `glyphCount` once nothing more fits.
    uint32_t firstUnlaidGlyph();
    /// How many glyphs have a line so far.
    uint32_t placedGlyphCount() const;
    /// Null beyond the last glyph. A glyph has no place if no container has room. Valid until the next query.
    const PlacedGlyph* glyph(uint32_t glyphIndex);
    /// The line of a glyph; null if it has no place. Valid until the next query.
    const Line* lineOfGlyph(uint32_t glyphIndex);
    /// The same for a glyph that has a place already.
    const Line* knownLineOfGlyph(uint32_t glyphIndex) const;
    /// The characters of the glyphs, with all glyphs of these characters in `actualGlyphs`; and the reverse. Ranges are
    /// cut to the text.
    ///@{
    Range charactersOfGlyphs(Range glyphs, Range* actualGlyphs);
    Range glyphsOfCharacters(Range characters, Range* actualCharacters);
    ///@}
    /// The characters of the cluster of a glyph that has been made.
    Range charactersOfGlyph(uint32_t glyphIndex) const;

    /// The grapheme clusters of a line, in the order of the text.
    std::vector<CaretCell> caretCells(const Line& line) const;
    /// The baseline offset, in points upward, of the text at a character of the line.
    float baselineOffsetAt(const Line& line, uint32_t character) const;
    bool isRightToLeftParagraph(const Line& line) const {
        return paragraphs_[line.paragraph].paragraph->isRightToLeft();
    }

private:
    /// A paragraph of the text, analysed on first layout and kept until its text changes.
    struct Entry {
        uint32_t location;
        uint32_t length;
        std::unique_ptr<Paragraph> paragraph;
    };
    struct Position {
        size_t paragraph = 0;
        uint32_t offset = 0;  ///< within the paragraph
    };
    struct FittedLine {
        LineContent content;
        LineMetrics metrics;
        NSRect fragment;
        LineSpan span;
    };
    /// The empty line after a text that ends with a line end.
    struct ExtraLine {
        NSRect usedRect;
        size_t container;
    };

    std::optional<size_t> indexOfContainer(const NSTextContainer& container) const;
    void forgetContainersFrom(size_t container);
    void layOutContainer(size_t container);
    /// Make glyphs up to this one, or one of this character, without a place if no container has room.
    void makeGlyph(uint32_t glyphIndex);
    void makeCharacter(uint32_t characterIndex);
    std::span<const Line> knownLinesOfContainer(size_t container) const;
    /// The glyphs of the cluster of a character, which must have been made.
    Range glyphsOfCharacter(uint32_t characterIndex) const;

    bool layOutLine();
    bool layOutLineOf(const NSTextStorage& storage);
    /// Discards everything about the text except the ranges of its paragraphs.
    void beginAnew();
    void layOutExtraLine(const NSAttributedString& text);
    /// Finds room for a line, from the current container on; null if no container has any.
    template <class Fit>
    auto inNextContainer(const Fit& fit) -> decltype(fit());
    std::optional<NSRect> askForFragment(float height, float spacingBefore);
    std::optional<FittedLine> fitLine(LineFiller& filler, const Paragraph& paragraph, uint32_t start);
    /// The space above the first line of a paragraph; 0 at the top of a container.
    float spacingBefore(const Paragraph& paragraph) const;
    void addLine(const Entry& entry, std::u16string_view paragraphText, FittedLine fitted);
    bool makeUnplacedGlyphs();

    Paragraph& analysed(const NSAttributedString& text, Entry& entry);
    std::u16string_view textOf(const NSAttributedString& text, const Entry& entry) const;
    void forgetUnplacedGlyphs();
    void forgetLinesFrom(size_t line);
    void splitText(Range region, size_t at);
    uint32_t locationOf(Position position) const;
    void addCaretCells(const Line& line, uint32_t firstGlyph, uint32_t lastGlyph, uint32_t charactersEnd,
                       std::vector<CaretCell>& cells) const;

    WeakRef<NSTextStorage> storage_;
    std::vector<Ref<NSTextContainer>> containers_;
    ShapingCache shapingCache_;  // before the paragraphs, which use it
    std::vector<Entry> paragraphs_;
    uint32_t length_ = 0;

    std::vector<Line> lines_;
    std::optional<ExtraLine> extraLine_;
    /// The glyphs of the lines, then those of text without a place.
    std::vector<PlacedGlyph> glyphs_;

    Position nextLine_;
    Position nextUnplaced_;
    size_t container_ = 0;
    float y_ = 0;
    bool isDone_ = false;
    /// Incremented whenever something is discarded, since a container may change while granting a fragment.
    uint64_t generation_ = 0;
    bool isLayingOut_ = false;
};

}  // namespace qz
