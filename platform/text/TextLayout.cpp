#include "platform/text/TextLayout.h"

#include <algorithm>

#include "platform/text/ParagraphRange.h"

namespace qz {
namespace {

// The height of a line is known once it is filled, but filling may depend on the requested height.
constexpr int kFragmentTriesMax = 3;
constexpr float kHeightTolerance = 0.001f;
// The minimum height, in points, that a fragment adds. In 32-bit floats a full container may have a little room left,
// where endless lines would pile up without filling it.
constexpr float kLowestFragment = 0.01f;

}  // namespace

Ref<NSTextStorage> TextLayout::text() const {
    Ref<NSTextStorage> text = storage_.lock();
    return text && text->length() == length_ ? text : nullptr;
}

// Keeping up with text and containers

void TextLayout::textEdited(Range editedRange, int64_t changeInLength) {
    const Ref<NSTextStorage> storage = storage_.lock();
    if (storage && editedRange == Range{0, storage->length()}) {
        // A new text does not need anything of the old one, whose last edit may not have been reported.
        beginAnew();
        paragraphs_.clear();
        length_ = storage->length();
        return splitText(editedRange, 0);
    }
    const uint32_t editedStart = std::min(editedRange.location, length_);
    const auto oldEnd = static_cast<uint32_t>(
        std::clamp<int64_t>(static_cast<int64_t>(editedRange.end()) - changeInLength, editedStart, length_));
    const auto isBefore = [](const Entry& entry, uint32_t position) {
        return entry.location + entry.length <= position;
    };
    const auto first = std::lower_bound(paragraphs_.begin(), paragraphs_.end(), editedStart, isBefore);
    auto last = first;
    while (last != paragraphs_.end() && last->location < oldEnd) ++last;
    const auto at = static_cast<size_t>(first - paragraphs_.begin());

    const auto line = std::ranges::lower_bound(lines_, at, {}, &Line::paragraph);
    forgetLinesFrom(static_cast<size_t>(line - lines_.begin()));

    const uint32_t start = first == last ? editedStart : first->location;
    const int64_t oldRegionEnd = first == last ? oldEnd : std::prev(last)->location + std::prev(last)->length;
    const auto end = static_cast<uint32_t>(std::max<int64_t>(start, oldRegionEnd + changeInLength));
    const auto behind = paragraphs_.erase(first, last);
    for (auto entry = behind; entry != paragraphs_.end(); ++entry) {
        entry->location = static_cast<uint32_t>(entry->location + changeInLength);
    }
    length_ = static_cast<uint32_t>(length_ + changeInLength);
    splitText({start, end - start}, at);
}

void TextLayout::splitText(Range region, size_t at) {
    const Ref<NSTextStorage> storage = text();
    if (!storage || region.length == 0) return;
    const std::u16string_view characters = storage->characters();
    std::vector<Entry> entries;
    uint32_t start = region.location;
    for (uint32_t i = start; i < region.end(); ++i) {
        if (!endsParagraph(characters, i) && i + 1 < region.end()) continue;
        entries.push_back({start, i + 1 - start, nullptr});
        start = i + 1;
    }
    paragraphs_.insert(paragraphs_.begin() + static_cast<std::ptrdiff_t>(at), std::move_iterator(entries.begin()),
                       std::move_iterator(entries.end()));
}

std::optional<size_t> TextLayout::indexOfContainer(const NSTextContainer& container) const {
    const auto found = std::ranges::find(containers_, &container, &Ref<NSTextContainer>::get);
    if (found == containers_.end()) return std::nullopt;
    return static_cast<size_t>(found - containers_.begin());
}

void TextLayout::addContainer(const Ref<NSTextContainer>& container) {
    containers_.push_back(container);
    forgetContainersFrom(containers_.size() - 1);
}

Ref<NSTextContainer> TextLayout::removeContainer(const NSTextContainer& container) {
    const std::optional<size_t> index = indexOfContainer(container);
    if (!index) return {};
    Ref<NSTextContainer> removed = containers_[*index];
    forgetContainersFrom(*index);
    containers_.erase(containers_.begin() + static_cast<std::ptrdiff_t>(*index));
    return removed;
}

void TextLayout::containerChanged(const NSTextContainer& container) {
    if (const std::optional<size_t> index = indexOfContainer(container)) forgetContainersFrom(*index);
}

void TextLayout::forgetContainersFrom(size_t container) {
    const auto line = std::ranges::lower_bound(lines_, container, {}, &Line::container);
    forgetLinesFrom(static_cast<size_t>(line - lines_.begin()));
}

void TextLayout::forgetLinesFrom(size_t line) {
    ++generation_;
    extraLine_.reset();
    isDone_ = false;
    if (line < lines_.size()) {
        const Line& forgotten = lines_[line];
        nextLine_ = {forgotten.paragraph, forgotten.characters.location - paragraphs_[forgotten.paragraph].location};
        lines_.resize(line);
    }
    forgetUnplacedGlyphs();
    container_ = lines_.empty() ? 0 : lines_.back().container;
    y_ = lines_.empty() ? 0 : lines_.back().fragment.maxY();
}

void TextLayout::beginAnew() {
    lines_.clear();
    nextLine_ = {};
    forgetLinesFrom(0);
    for (Entry& entry : paragraphs_) entry.paragraph.reset();
}

void TextLayout::forgetUnplacedGlyphs() {
    glyphs_.resize(placedGlyphCount());
    nextUnplaced_ = nextLine_;
}

Paragraph& TextLayout::analysed(const NSAttributedString& text, Entry& entry) {
    if (!entry.paragraph) entry.paragraph = std::make_unique<Paragraph>(entry.length);
    entry.paragraph->analyse(text, entry.location, shapingCache_);
    return *entry.paragraph;
}

std::u16string_view TextLayout::textOf(const NSAttributedString& text, const Entry& entry) const {
    return std::u16string_view(text.characters()).substr(entry.location, entry.length);
}

// Lines

float TextLayout::spacingBefore(const Paragraph& paragraph) const {
    const bool isFirst = lines_.empty() || lines_.back().container != container_;
    return isFirst ? 0 : paragraph.style().paragraphSpacingBefore;
}

std::optional<NSRect> TextLayout::askForFragment(float height, float spacingBefore) {
    const Ref<NSTextContainer> container = containers_[container_];
    const float width = container->containerSize().width;
    const NSRect proposed = {{0, y_ + spacingBefore}, {width > 0 ? width : kUnboundedLength, height}};
    NSRect remaining;
    const uint64_t generation = generation_;
    const NSRect fragment = container->lineFragmentRectForProposedRect(proposed, NSLineSweepDirection::right,
                                                                       NSLineMovementDirection::down, &remaining);
    if (generation != generation_ || NSIsEmptyRect(fragment)) return std::nullopt;
    if (fragment.maxY() - fragment.origin.y < kLowestFragment) return std::nullopt;
    // A line narrower than its padding has no room for text, like an empty one.
    if (fragment.size.width < 2 * container->lineFragmentPadding()) return std::nullopt;
    return fragment;
}

template <class Fit>
auto TextLayout::inNextContainer(const Fit& fit) -> decltype(fit()) {
    const uint64_t generation = generation_;
    while (container_ < containers_.size()) {
        if (auto fitted = fit()) return fitted;
        if (generation != generation_) return std::nullopt;
        ++container_;
        y_ = 0;
    }
    return std::nullopt;
}

std::optional<TextLayout::FittedLine> TextLayout::fitLine(LineFiller& filler, const Paragraph& paragraph,
                                                          uint32_t start) {
    const float padding = containers_[container_]->lineFragmentPadding();
    float height = filler.metrics(start, start + 1).height;
    for (int tries = 1;; ++tries) {
        const std::optional<NSRect> fragment = askForFragment(height, start == 0 ? spacingBefore(paragraph) : 0);
        if (!fragment) return std::nullopt;
        const LineSpan span = filler.span(start, fragment->size.width, padding);
        FittedLine line{.content = filler.fill(start, span.width), .metrics = {}, .fragment = *fragment, .span = span};
        line.metrics = filler.metrics(line.content.start, line.content.end);
        if (line.metrics.height <= height + kHeightTolerance || tries == kFragmentTriesMax) {
            // An earlier try may have been higher than necessary.
            line.fragment.size.height = std::min(fragment->size.height, line.metrics.height);
            return line;
        }
        height = line.metrics.height;
    }
}

bool TextLayout::layOutLine() {
    if (isDone_ || isLayingOut_) return false;
    const Ref<NSTextStorage> storage = text();
    if (!storage) return false;
    const uint64_t generation = generation_;
    isLayingOut_ = true;
    bool isLaidOut = false;
    try {
        isLaidOut = layOutLineOf(*storage);
    } catch (...) {
        // Memory ran out half-way: the next query lays out the whole text again.
        isLayingOut_ = false;
        beginAnew();
        throw;
    }
    isLayingOut_ = false;
    isDone_ = !isLaidOut && generation == generation_;
    return isLaidOut;
}

bool TextLayout::layOutLineOf(const NSTextStorage& storage) {
    if (nextLine_.paragraph < paragraphs_.size()) {
        Entry& entry = paragraphs_[nextLine_.paragraph];
        Paragraph& paragraph = analysed(storage, entry);
        LineFiller filler(paragraph, textOf(storage, entry));
        std::optional<FittedLine> line = inNextContainer([&] { return fitLine(filler, paragraph, nextLine_.offset); });
        if (line) addLine(entry, textOf(storage, entry), std::move(*line));
        return line.has_value();
    }
    layOutExtraLine(storage);
    return false;
}

void TextLayout::addLine(const Entry& entry, std::u16string_view paragraphText, FittedLine fitted) {
    const Paragraph& paragraph = *entry.paragraph;
    const uint32_t start = fitted.content.start;
    const uint32_t end = fitted.content.end;
    PlacedLine placed = placeLine(std::move(fitted.content), paragraph, paragraphText, entry.location, fitted.metrics,
                                  {fitted.fragment, containers_[container_]->lineFragmentPadding(), fitted.span});
    // Spacing needs no room: at the end of a container, whatever remains is enough.
    const bool endsItsParagraph = end == entry.length;
    fitted.fragment.size.height += paragraph.style().lineSpacing;
    if (endsItsParagraph) fitted.fragment.size.height += paragraph.style().paragraphSpacing;

    lines_.push_back({.glyphs = {placedGlyphCount(), static_cast<uint32_t>(placed.glyphs.size())},
                      .characters = {entry.location + start, end - start},
                      .fragment = fitted.fragment,
                      .usedRect = placed.usedRect,
                      .baseline = fitted.metrics.baseline,
                      .container = container_,
                      .paragraph = nextLine_.paragraph});
    glyphs_.insert(glyphs_.end(), placed.glyphs.begin(), placed.glyphs.end());
    y_ = fitted.fragment.maxY();
    nextLine_ = endsItsParagraph ? Position{nextLine_.paragraph + 1, 0} : Position{nextLine_.paragraph, end};
    nextUnplaced_ = nextLine_;
}

void TextLayout::layOutExtraLine(const NSAttributedString& text) {
    if (lines_.empty()) return;
    const char16_t last = text.characters().back();
    if (!endsLine(last) && !endsParagraph(text.characters(), text.length() - 1)) return;
    Entry& entry = paragraphs_.back();
    const Paragraph& paragraph = analysed(text, entry);
    LineFiller filler(*entry.paragraph, textOf(text, entry));
    const LineMetrics metrics = filler.metrics(entry.length - 1, entry.length);
    const bool beginsParagraph = endsParagraph(text.characters(), text.length() - 1);
    const std::optional<NSRect> fragment =
        inNextContainer([&] { return askForFragment(metrics.height, beginsParagraph ? spacingBefore(paragraph) : 0); });
    if (!fragment) return;
    const float padding = containers_[container_]->lineFragmentPadding();
    const LineSpan span = filler.span(beginsParagraph ? 0 : entry.length, fragment->size.width, padding);
    const LineContent content{.start = entry.length, .end = entry.length, .glyphs = {}};
    const PlacedLine placed =
        placeLine(content, paragraph, textOf(text, entry), entry.location, metrics, {*fragment, padding, span});
    extraLine_ = {placed.usedRect, container_};
}

// Laying out on demand

void TextLayout::layOutContainer(size_t container) {
    while (container_ <= container && layOutLine()) {
    }
}

void TextLayout::makeGlyph(uint32_t glyphIndex) {
    while (placedGlyphCount() <= glyphIndex && layOutLine()) {
    }
    while (glyphs_.size() <= glyphIndex && makeUnplacedGlyphs()) {
    }
}

void TextLayout::makeCharacter(uint32_t characterIndex) {
    while (locationOf(nextLine_) <= characterIndex && layOutLine()) {
    }
    while (locationOf(nextUnplaced_) <= characterIndex && makeUnplacedGlyphs()) {
    }
}

uint32_t TextLayout::glyphCount() {
    while (layOutLine()) {
    }
    while (makeUnplacedGlyphs()) {
    }
    return static_cast<uint32_t>(glyphs_.size());
}

uint32_t TextLayout::firstUnlaidGlyph() {
    return isDone_ ? glyphCount() : placedGlyphCount();
}

bool TextLayout::makeUnplacedGlyphs() {
    const Ref<NSTextStorage> storage = text();
    if (!storage || isLayingOut_ || nextUnplaced_.paragraph >= paragraphs_.size()) return false;
    Entry& entry = paragraphs_[nextUnplaced_.paragraph];
    Paragraph& paragraph = analysed(*storage, entry);
    const uint32_t start = nextUnplaced_.offset;
    const uint32_t end = paragraph.items()[paragraph.itemIndexAt(start)].end;
    const LineContent content = LineFiller(paragraph, textOf(*storage, entry)).content(start, end, false);
    for (const LineGlyph& glyph : content.glyphs) {
        glyphs_.push_back({.glyph = glyph.glyph,
                           .character = entry.location + glyph.cluster,
                           .location = {},
                           .pen = 0,
                           .advance = glyph.advance,
                           .isNotShown = glyph.glyph == NSControlGlyph,
                           .isRightToLeft = (glyph.level & 1) != 0});
    }
    nextUnplaced_ =
        end == entry.length ? Position{nextUnplaced_.paragraph + 1, 0} : Position{nextUnplaced_.paragraph, end};
    return true;
}

// Queries

uint32_t TextLayout::placedGlyphCount() const {
    return lines_.empty() ? 0 : static_cast<uint32_t>(lines_.back().glyphs.end());
}

const PlacedGlyph* TextLayout::glyph(uint32_t glyphIndex) {
    makeGlyph(glyphIndex);
    return glyphIndex < glyphs_.size() ? &glyphs_[glyphIndex] : nullptr;
}

const TextLayout::Line* TextLayout::lineOfGlyph(uint32_t glyphIndex) {
    makeGlyph(glyphIndex);
    return knownLineOfGlyph(glyphIndex);
}

const TextLayout::Line* TextLayout::knownLineOfGlyph(uint32_t glyphIndex) const {
    const auto behind =
        std::ranges::upper_bound(lines_, glyphIndex, {}, [](const Line& line) { return line.glyphs.location; });
    if (behind == lines_.begin()) return nullptr;
    const Line& line = *std::prev(behind);
    return line.glyphs.contains(glyphIndex) ? &line : nullptr;
}

float TextLayout::baselineOffsetAt(const Line& line, uint32_t character) const {
    const Entry& entry = paragraphs_[line.paragraph];
    const size_t style = entry.paragraph->styleIndexAt(character - entry.location);
    return entry.paragraph->styles()[style].baselineOffset;
}

std::span<const TextLayout::Line> TextLayout::linesOfContainer(const NSTextContainer& container) {
    const std::optional<size_t> index = indexOfContainer(container);
    if (!index) return {};
    layOutContainer(*index);
    return knownLinesOfContainer(*index);
}

std::span<const TextLayout::Line> TextLayout::knownLinesOfContainer(size_t container) const {
    const auto first = std::ranges::lower_bound(lines_, container, {}, &Line::container);
    return {first, std::ranges::upper_bound(first, lines_.end(), container, {}, &Line::container)};
}

NSRect TextLayout::extraLineUsedRectOfContainer(const NSTextContainer& container) {
    const std::optional<size_t> index = indexOfContainer(container);
    if (index) layOutContainer(*index);
    return index && extraLine_ && extraLine_->container == *index ? extraLine_->usedRect : NSRect();
}

NSRect TextLayout::usedRectOfContainer(const NSTextContainer& container) {
    const std::optional<size_t> index = indexOfContainer(container);
    if (!index) return {};
    layOutContainer(*index);
    std::optional<NSRect> used;
    // Not a union of areas, since an empty line has no area but counts.
    const auto add = [&](const NSRect& rect) {
        if (!used) used = rect;
        const float left = std::min(used->origin.x, rect.origin.x);
        const float top = std::min(used->origin.y, rect.origin.y);
        used = {{left, top}, {std::max(used->maxX(), rect.maxX()) - left, std::max(used->maxY(), rect.maxY()) - top}};
    };
    for (const Line& line : knownLinesOfContainer(*index)) add(line.usedRect);
    if (extraLine_ && extraLine_->container == *index) add(extraLine_->usedRect);
    return used.value_or(NSRect());
}

Range TextLayout::charactersOfGlyphs(Range glyphs, Range* actualGlyphs) {
    const uint32_t first = glyphs.location;
    const uint64_t lastWanted = glyphs.length > 0 ? glyphs.end() - 1 : first;
    makeGlyph(static_cast<uint32_t>(std::min<uint64_t>(lastWanted, UINT32_MAX)));
    const auto count = static_cast<uint32_t>(glyphs_.size());
    const auto end = static_cast<uint32_t>(std::min<uint64_t>(glyphs.end(), count));
    if (first >= end) {
        if (actualGlyphs) *actualGlyphs = {std::min(first, count), 0};
        const Ref<NSTextStorage> text = storage_.lock();
        return {first < count ? glyphs_[first].character : text ? text->length() : 0, 0};
    }
    const uint32_t start = charactersOfGlyph(first).location;
    const Range last = charactersOfGlyph(end - 1);
    if (actualGlyphs) {
        const uint32_t firstGlyph = glyphsOfCharacter(start).location;
        *actualGlyphs = {firstGlyph, static_cast<uint32_t>(glyphsOfCharacter(last.location).end()) - firstGlyph};
    }
    return {start, static_cast<uint32_t>(last.end()) - start};
}

Range TextLayout::glyphsOfCharacters(Range characters, Range* actualCharacters) {
    const Ref<NSTextStorage> text = this->text();
    const uint32_t length = text ? text->length() : 0;
    const auto end = static_cast<uint32_t>(std::min<uint64_t>(characters.end(), length));
    const uint32_t start = std::min(characters.location, end);
    if (start >= end) {
        if (actualCharacters) *actualCharacters = {start, 0};
        makeCharacter(start);
        return {start < length ? glyphsOfCharacter(start).location : glyphCount(), 0};
    }
    makeCharacter(end - 1);
    const Range first = glyphsOfCharacter(start);
    const Range last = glyphsOfCharacter(end - 1);
    if (actualCharacters) {
        const uint32_t firstCharacter = charactersOfGlyph(first.location).location;
        const uint64_t lastEnd = charactersOfGlyph(last.location).end();
        *actualCharacters = {firstCharacter, static_cast<uint32_t>(lastEnd) - firstCharacter};
    }
    return {first.location, static_cast<uint32_t>(last.end()) - first.location};
}

Range TextLayout::glyphsOfCharacter(uint32_t characterIndex) const {
    const auto behind = std::ranges::upper_bound(glyphs_, characterIndex, {}, &PlacedGlyph::character);
    if (behind == glyphs_.begin()) return {};
    const uint32_t cluster = std::prev(behind)->character;
    const auto first = std::ranges::lower_bound(glyphs_, cluster, {}, &PlacedGlyph::character);
    return {static_cast<uint32_t>(first - glyphs_.begin()), static_cast<uint32_t>(behind - first)};
}

Range TextLayout::charactersOfGlyph(uint32_t glyphIndex) const {
    const uint32_t start = glyphs_[glyphIndex].character;
    const auto next = std::ranges::upper_bound(glyphs_, start, {}, &PlacedGlyph::character);
    const uint32_t end = next == glyphs_.end() ? locationOf(nextUnplaced_) : next->character;
    return {start, end - start};
}

uint32_t TextLayout::locationOf(Position position) const {
    return position.paragraph < paragraphs_.size() ? paragraphs_[position.paragraph].location + position.offset
                                                   : length_;
}

}  // namespace qz
