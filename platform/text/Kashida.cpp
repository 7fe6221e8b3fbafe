#include "platform/text/Kashida.h"

#include <algorithm>
#include <optional>
#include <string>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "platform/text/Joining.h"

namespace qz {
namespace {

constexpr char16_t kKashida = 0x0640;
// A longer stroke looks like a rule; blanks take the remaining space.
constexpr double kStrokeMaxEm = 1.0;

/// A place between two clusters, with the glyph of a kashida there.
struct Place {
    size_t firstGlyph;  ///< of the preceding cluster
    ShapedGlyph kashida;
    int countMax;
};

int joiningGroup(char16_t unit) {
    return u_getIntPropertyValue(unit, UCHAR_JOINING_GROUP);
}

bool isOneOf(int group, std::initializer_list<int> groups) {
    return std::ranges::find(groups, group) != groups.end();
}

/// Ranks the place between two letters for a kashida; 0 is best. Follows the order in which calligraphers lengthen a
/// word: after an existing kashida, after the teeth of seen and sad, before a final teh marbuta, heh or dal, before a
/// final alef, lam, kaf or tah, before a beh followed by reh or yeh, before another final letter.
int rankOfPlace(char16_t before, char16_t behind, char16_t second, bool isFinal) {
    const int left = joiningGroup(before), right = joiningGroup(behind), next = joiningGroup(second);
    if (before == kKashida || behind == kKashida) return 0;
    if (isOneOf(left, {U_JG_SEEN, U_JG_SAD})) return 1;
    if (isFinal && isOneOf(right, {U_JG_TEH_MARBUTA, U_JG_HEH, U_JG_HEH_GOAL, U_JG_DAL})) return 2;
    if (isFinal && isOneOf(right, {U_JG_ALEF, U_JG_LAM, U_JG_KAF, U_JG_GAF, U_JG_TAH})) return 3;
    if (right == U_JG_BEH && isOneOf(next, {U_JG_REH, U_JG_YEH, U_JG_FARSI_YEH})) return 4;
    if (isFinal && isOneOf(right, {U_JG_WAW, U_JG_AIN, U_JG_QAF, U_JG_FEH})) return 5;
    return isFinal ? 6 : 7;
}

bool isMark(char16_t unit) {
    return u_getIntPropertyValue(unit, UCHAR_JOINING_TYPE) == U_JT_TRANSPARENT;
}

char16_t letterFrom(std::u16string_view text, size_t index, size_t end) {
    while (index < end && isMark(text[index])) ++index;
    return index < end ? text[index] : u'\0';
}

/// The font's kashida for the position, if it changes nothing else.
std::optional<ShapedGlyph> kashidaAt(const Paragraph& paragraph, std::u16string_view text, size_t item, Range word,
                                     uint32_t position) {
    const NSGlyph kashida = paragraph.items()[item].font->glyphForCharacter(kKashida);
    if (kashida == 0) return std::nullopt;
    std::u16string longer(text.substr(word.location, word.length));
    longer.insert(position - word.location, 1, kKashida);
    const std::vector<ShapedGlyph> before =
        shape(paragraph.shapingItem(item, text.substr(word.location, word.length), {0, word.length}));
    const std::vector<ShapedGlyph> after = shape(paragraph.shapingItem(item, longer, {0, word.length + 1}));
    const uint32_t at = position - word.location;
    const auto stroke = std::ranges::find(after, at, &ShapedGlyph::cluster);
    if (after.size() != before.size() + 1 || stroke == after.end()) return std::nullopt;
    if (stroke->glyph != kashida || stroke->offsetY != 0 || stroke->advance <= 0) return std::nullopt;
    const auto behind = before.begin() + (stroke - after.begin());
    const auto isSame = [](const ShapedGlyph& a, const ShapedGlyph& b) {
        return a.glyph == b.glyph && a.offsetY == b.offsetY;
    };
    const bool isUnchanged = std::equal(before.begin(), behind, after.begin(), stroke, isSame) &&
                             std::equal(behind, before.end(), std::next(stroke), after.end(), isSame);
    return isUnchanged ? std::optional(*stroke) : std::nullopt;
}

/// The best place in a word whose clusters begin at the given glyphs.
std::optional<Place> placeInWord(const LineContent& content, const Paragraph& paragraph, std::u16string_view text,
                                 const std::vector<size_t>& clusters, Range word) {
    struct Candidate {
        int rank;
        size_t index;
    };
    std::vector<Candidate> candidates;
    for (size_t i = clusters.size() - 1; i > 0; --i) {
        const uint32_t position = content.glyphs[clusters[i]].cluster;
        if (!isJoined(text, position)) continue;
        const char16_t before = text[content.glyphs[clusters[i - 1]].cluster];
        const uint64_t end = i + 1 < clusters.size() ? content.glyphs[clusters[i + 1]].cluster : word.end();
        candidates.push_back(
            {rankOfPlace(before, text[position], letterFrom(text, end, word.end()), end == word.end()), i});
    }
    std::ranges::stable_sort(candidates, {}, &Candidate::rank);
    const size_t item = paragraph.itemIndexAt(word.location);
    for (const Candidate& candidate : candidates) {
        const uint32_t position = content.glyphs[clusters[candidate.index]].cluster;
        const std::optional<ShapedGlyph> kashida = kashidaAt(paragraph, text, item, word, position);
        if (!kashida) continue;
        const double strokeMax = kStrokeMaxEm * paragraph.items()[item].font->pointSize();
        return Place{clusters[candidate.index - 1], *kashida, static_cast<int>(strokeMax / kashida->advance)};
    }
    return std::nullopt;
}

/// One place for each word of the line.
std::vector<Place> placesInLine(const LineContent& content, const Paragraph& paragraph, std::u16string_view text) {
    std::vector<Place> places;
    std::vector<size_t> clusters;
    const auto finishWord = [&](uint32_t end) {
        if (clusters.size() > 1) {
            const uint32_t start = content.glyphs[clusters.front()].cluster;
            if (auto place = placeInWord(content, paragraph, text, clusters, {start, end - start}))
                places.push_back(*place);
        }
        clusters.clear();
    };
    for (size_t first = 0, last = 0; first < content.glyphs.size() && !content.glyphs[first].hangs; first = last) {
        last = endOfCluster(content.glyphs, first);
        const uint32_t cluster = content.glyphs[first].cluster;
        const bool isLetter =
            (content.glyphs[first].level & 1) && (u_isalpha(text[cluster]) || text[cluster] == kKashida);
        const bool isSameItem =
            clusters.empty() ||
            cluster < paragraph.items()[paragraph.itemIndexAt(content.glyphs[clusters.front()].cluster)].end;
        // A tab stop fixes the text after it.
        if (text[cluster] == u'\t') places.clear();
        if (!isLetter || !isSameItem) finishWord(cluster);
        if (isLetter) clusters.push_back(first);
    }
    if (!clusters.empty()) {
        const size_t last = endOfCluster(content.glyphs, clusters.back());
        finishWord(last < content.glyphs.size() ? content.glyphs[last].cluster : content.end);
    }
    return places;
}

}  // namespace

void stretchByKashidas(LineContent& content, const Paragraph& paragraph, std::u16string_view text, double room) {
    const std::vector<Place> places = placesInLine(content, paragraph, text);
    std::vector<int> counts(places.size());
    for (bool isGrowing = true; isGrowing;) {
        isGrowing = false;
        for (size_t i = 0; i < places.size(); ++i) {
            if (counts[i] >= places[i].countMax || places[i].kashida.advance > room) continue;
            ++counts[i];
            room -= places[i].kashida.advance;
            content.width += places[i].kashida.advance;
            isGrowing = true;
        }
    }
    // From the end, so that earlier glyph indices stay valid. In a right-to-left run the stroke after a letter is to
    // its left, so it is drawn before it.
    for (size_t i = places.size(); i > 0; --i) {
        const Place& place = places[i - 1];
        const LineGlyph& letter = content.glyphs[place.firstGlyph];
        const LineGlyph stroke{.glyph = place.kashida.glyph,
                               .cluster = letter.cluster,
                               .advance = place.kashida.advance,
                               .offsetX = 0,
                               .offsetY = 0,
                               .level = letter.level};
        content.glyphs.insert(content.glyphs.begin() + static_cast<std::ptrdiff_t>(place.firstGlyph),
                              static_cast<size_t>(counts[i - 1]), stroke);
    }
}

}  // namespace qz
