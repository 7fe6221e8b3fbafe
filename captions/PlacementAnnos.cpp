#include "captions/PlacementAnnos.h"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {
namespace {

using Alignment = CuePlacement::Alignment;
using Edge = CuePlacement::Edge;

// Points by which lines that just fit may seem to cross the edge, since their heights are 32-bit floats.
constexpr double kTolerance = 0.01;

Edge edgeOf(NSTextAlignment alignment) {
    return alignment == NSTextAlignment::left    ? Edge::start
           : alignment == NSTextAlignment::right ? Edge::end
                                                 : Edge::centre;
}

/// The distance from one line of the text to the next.
double lineHeightOf(const NSDictionary& complete) {
    const auto font = complete.objectForKey<NSFont>(*NSFontAttributeName);
    const auto style = complete.objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
    if (!font) return 0;
    return double{font->ascender()} - double{font->descender()} + double{font->leading()} +
           (style ? double{style->lineSpacing()} : 0.0);
}

}  // namespace

PlacementAnnos::PlacementAnnos(Ref<QzAnnoPalette> palette, NSSize screen, NSWritingDirection direction)
    : palette_(std::move(palette)), screen_(screen), direction_(direction) {
    palette_->setUndoManager(NSUndoManager::init());
}

void PlacementAnnos::place(const CuePlacement& placement, QzMutableAnnoString& text) {
    if (!placement.isEmpty() && text.length() > 0) text.addFrameAnno(keyOf(placeOf(placement, text)));
}

PlacementAnnos::Place PlacementAnnos::placeOf(const CuePlacement& placement, const QzMutableAnnoString& text) const {
    const Ref<NSDictionary> attributes = palette_->attributesForSet(text.frame());
    const FrameStyle frame = frameStyleOf(*attributes);
    const Margins safe = frameStyleOf(*palette_->attributesForSet({})).marginsOn(screen_);
    Place place;
    NSTextAlignment alignment = NSTextAlignment::natural;
    if (placement.alignment) {
        switch (*placement.alignment) {
            case Alignment::start:
                break;
            case Alignment::end:
                alignment = isRightToLeft(text) ? NSTextAlignment::left : NSTextAlignment::right;
                break;
            case Alignment::left:
                alignment = NSTextAlignment::left;
                break;
            case Alignment::centre:
                alignment = NSTextAlignment::center;
                break;
            case Alignment::right:
                alignment = NSTextAlignment::right;
                break;
        }
        place.alignment = alignment;
    } else {
        alignment = frame.horizontal.value_or(NSTextAlignment::natural);
    }
    if (alignment == NSTextAlignment::natural || alignment == NSTextAlignment::justified)
        alignment = isRightToLeft(text) ? NSTextAlignment::right : NSTextAlignment::left;

    Margins margins = frame.marginsOn(screen_);
    const bool hasColumn = placement.position || placement.size;
    if (hasColumn) placeColumn(placement, alignment, margins);
    if (placement.line || placement.row) {
        margins.top = safe.top;
        margins.bottom = safe.bottom;
    }
    if (placement.row) {
        using Row = CuePlacement::Row;
        place.row = *placement.row == Row::top      ? VerticalAlignment::top
                    : *placement.row == Row::centre ? VerticalAlignment::middle
                                                    : VerticalAlignment::bottom;
    } else if (placement.line) {
        const double lineHeight = lineHeightOf(*palette_->assembleCompleteAttributes(attributes));
        const auto lines = static_cast<double>(std::ranges::count(text.string()->characters(), u'\n') + 1);
        placeLine(*placement.line, lines * lineHeight, lineHeight, safe, margins, place);
    }
    if (hasColumn || placement.line || placement.row) place.margins = margins;
    return place;
}

// W3C WebVTT, "process the cue settings": the computed position, its alignment, and the size that they leave.
void PlacementAnnos::placeColumn(const CuePlacement& placement, NSTextAlignment alignment, Margins& margins) const {
    const Edge edge = placement.positionEdge.value_or(edgeOf(alignment));
    const Edge aligned = edgeOf(alignment);
    const double position = placement.position.value_or(aligned == Edge::start ? 0.0
                                                        : aligned == Edge::end ? 100.0
                                                                               : 50.0);
    const double room = edge == Edge::start ? 100 - position
                        : edge == Edge::end ? position
                                            : 2 * std::min(position, 100 - position);
    const double size = std::min(placement.size.value_or(100), room);
    const double left = edge == Edge::start ? position : edge == Edge::end ? position - size : position - size / 2;
    margins.left = left / 100 * double{screen_.width};
    margins.right = (100 - left - size) / 100 * double{screen_.width};
}

void PlacementAnnos::placeLine(const CuePlacement::Line& line, double textHeight, double lineHeight,
                               const Margins& safe, Margins& margins, Place& place) const {
    const double height = screen_.height;
    if (line.isPercentage) {
        margins.top = margins.bottom = 0;
        const double y = line.value / 100 * height;
        if (line.edge == Edge::centre) {
            place.row = VerticalAlignment::middle;
            (2 * y < height ? margins.bottom : margins.top) = std::abs(height - 2 * y);
        } else if (line.edge == Edge::start) {
            place.row = VerticalAlignment::top;
            margins.top = y;
        } else {
            place.row = VerticalAlignment::bottom;
            margins.bottom = height - y;
        }
    } else if (line.value >= 0) {
        place.row = VerticalAlignment::top;
        margins.top += line.value * lineHeight;
    } else {
        // The text's first line goes to the line, or higher if its last line needs it.
        place.row = VerticalAlignment::bottom;
        margins.bottom += std::max(0.0, -line.value * lineHeight - textHeight);
    }
    // A text that would cross the edge is moved until it fits.
    if (place.row == VerticalAlignment::middle || margins.top + textHeight + margins.bottom <= height + kTolerance)
        return;
    const Margins kept = line.isPercentage ? Margins{} : safe;
    place.row = place.row == VerticalAlignment::top ? VerticalAlignment::bottom : VerticalAlignment::top;
    margins.top = kept.top;
    margins.bottom = kept.bottom;
}

bool PlacementAnnos::isRightToLeft(const QzMutableAnnoString& text) const {
    if (direction_ != NSWritingDirection::natural) return direction_ == NSWritingDirection::rightToLeft;
    const std::u16string& characters = text.string()->characters();
    for (size_t i = 0; i < characters.size();) {
        UChar32 character = 0;
        U16_NEXT(characters.data(), i, characters.size(), character);
        const UCharDirection direction = u_charDirection(character);
        if (direction == U_LEFT_TO_RIGHT) return false;
        if (direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC) return true;
    }
    return false;
}

Ref<QzAnnoKey> PlacementAnnos::keyOf(const Place& place) {
    const auto [entry, isNew] = keys_.try_emplace(place);
    if (!isNew) return entry->second;
    const std::string name = "Cue Placement " + std::to_string(keys_.size());
    const Ref<QzMutableAnno> anno = palette_->createAnno(NSString::stringWithUTF8String(name))->mutableCopy();
    if (place.margins) anno->setAttribute(QzBoundingMarginsAttribute, place.margins->stored());
    if (place.row)
        anno->setAttribute(QzVerticalAlignmentAttribute, NSNumber::numberWithInt(static_cast<int32_t>(*place.row)));
    if (place.alignment) {
        anno->setAttribute(QzHorizontalAlignmentAttribute,
                           NSNumber::numberWithInt(static_cast<int32_t>(*place.alignment)));
    }
    palette_->replaceAnno(anno);
    palette_->undoManager()->removeAllActions();
    entry->second = anno->annokey();
    return entry->second;
}

}  // namespace qz
