#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "QzAnno/platform/text/NSLayoutManager.h"
#include "platform/text/CaretCell.h"
#include "platform/text/LinePlacement.h"
#include "platform/text/Paragraph.h"

namespace qz {

/// The lines and glyphs of a layout manager, made as far as somebody has asked, in the order of the text.
///
/// Lines are laid out one after the other until the text or the containers end. Only then, text without a place gets
/// glyphs: a line break may change glyphs, so those of text that is still to be laid out are not known.
class NSLayoutManager::Layout {
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

    explicit Layout(const NSLayoutManager& manager) : manager_(manager) {}

    /// The text; none when it has been edited in a way that nobody has told of yet, and so does not fit the glyphs.
    Ref<NSTextStorage> text() const;

    void textEdited(Range editedRange, int64_t changeInLength);
    void forgetText() { textEdited({}, -int64_t{length_}); }
    /// Forgets the lines in the container of this number and behind it.
    void forgetContainersFrom(size_t container);

    // Each lays out as far as it takes.
    void layOutContainer(size_t container);
    void layOutAll();
    /// Makes glyphs until there is this one, or one of this character; without a place when no container has room.
    void makeGlyph(uint32_t glyphIndex);
    void makeCharacter(uint32_t characterIndex);
    void makeAllGlyphs();

    const std::vector<PlacedGlyph>& glyphs() const { return glyphs_; }
    /// The lines laid out in the container so far, in order.
    std::span<const Line> linesOfContainer(size_t container) const;
    uint32_t placedGlyphCount() const;
    /// Whether the text has all its lines, or no container has room for more.
    bool isDone() const { return isDone_; }
    /// The line of a glyph; none when it has no place.
    const Line* lineOfGlyph(uint32_t glyphIndex) const;
    NSRect usedRectOfContainer(size_t container) const;
    /// The grapheme clusters of a line, in the order of the text.
    std::vector<CaretCell> caretCells(const Line& line) const;
    /// Points by which the text at a character of the line is raised above its baseline.
    float baselineOffsetAt(const Line& line, uint32_t character) const;
    /// Of a paragraph that has lines.
    bool isRightToLeftParagraph(size_t paragraph) const { return paragraphs_[paragraph].paragraph->isRightToLeft(); }
    /// The zero rectangle when the container does not hold the extra line.
    NSRect extraLineUsedRectOfContainer(size_t container) const {
        return extraLine_ && extraLine_->container == container ? extraLine_->usedRect : NSRect();
    }
    /// The glyphs of the cluster that holds the character, which has been made.
    Range glyphsOfCharacter(uint32_t characterIndex) const;
    /// The characters of the cluster of a glyph, which has been made.
    Range charactersOfGlyph(uint32_t glyphIndex) const;

private:
    /// A paragraph of the text; what is known of it is found when it is first laid out, and kept while its text stands.
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
    /// The empty line behind a text that ends with a line end.
    struct ExtraLine {
        NSRect usedRect;
        size_t container;
    };

    bool layOutLine();
    bool layOutLineOf(const NSTextStorage& storage);
    /// Forgets all that is known of the text but where its paragraphs are.
    void beginAnew();
    void layOutExtraLine(const NSAttributedString& text);
    /// Finds room for a line, from the current container on; none when no container has any.
    template <class Fit>
    auto inNextContainer(const Fit& fit) -> decltype(fit());
    std::optional<NSRect> askForFragment(float height, float spacingBefore);
    std::optional<FittedLine> fitLine(LineFiller& filler, const Paragraph& paragraph, uint32_t start);
    /// What stays free above the first line of a paragraph; none at the top of a container.
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

    const NSLayoutManager& manager_;
    ShapingCache shapingCache_;  // before the paragraphs, which use it
    std::vector<Entry> paragraphs_;
    uint32_t length_ = 0;

    std::vector<Line> lines_;
    std::optional<ExtraLine> extraLine_;
    /// Of the lines, and then of text without place.
    std::vector<PlacedGlyph> glyphs_;

    Position nextLine_;
    Position nextUnplaced_;
    size_t container_ = 0;
    float y_ = 0;
    bool isDone_ = false;
    /// Grows with everything that is forgotten: a container may change while it is asked for a fragment.
    uint64_t generation_ = 0;
    bool isLayingOut_ = false;
};

}  // namespace qz
