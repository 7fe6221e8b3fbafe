// Unicode's own test files, through the layer that layout asks. Positions are UTF-16 units.

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include "platform/text/Paragraph.h"
#include "platform/text/TextBreaker.h"

namespace qz {
namespace {

const std::string kFolder = "/usr/share/unicode/";

template <class Visit>
void forEachLine(const std::string& file, const Visit& visit) {
    std::ifstream stream(kFolder + file);
    ASSERT_TRUE(stream) << kFolder + file << " is missing; install the package unicode-data";
    for (std::string line; std::getline(stream, line) && !testing::Test::HasFatalFailure();) {
        line.resize(std::min(line.size(), line.find('#')));
        if (line.find_first_not_of(" \t") != std::string::npos) visit(line);
    }
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::u16string utf16(const std::vector<std::string>& codePoints) {
    std::u16string text;
    for (const std::string& hex : codePoints) {
        const unsigned long character = std::stoul(hex, nullptr, 16);
        if (character < 0x10000) {
            text += static_cast<char16_t>(character);
        } else {
            text += static_cast<char16_t>(0xD7C0 + (character >> 10));
            text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
        }
    }
    return text;
}

struct BidiCase {
    std::u16string text;
    NSWritingDirection direction;
    std::vector<std::string> levels;  ///< "x" for a character that the algorithm removes and that may have any
    std::vector<std::string> order;   ///< of the others, from left to right
};

/// Whether levels and order are the expected ones. Text that runs in one direction may have the paragraph's level
/// throughout, which shows the same: ICU does not resolve it further.
bool isBidiRight(const BidiCase& row) {
    uint8_t base = 0;
    const std::vector<uint8_t> unitLevels = bidiLevels(row.text, row.direction, base);
    std::vector<uint8_t> levels;
    std::vector<std::string> shown, order;
    bool areEqual = true, isOneDirection = true;
    size_t unit = 0;
    for (size_t i = 0; i < row.levels.size(); ++i, ++unit) {
        if (row.levels[i] != "x") {
            const int expected = std::stoi(row.levels[i]);
            areEqual &= unitLevels.at(unit) == expected;
            isOneDirection &= unitLevels[unit] == base && expected % 2 == base % 2;
            levels.push_back(unitLevels[unit]);
            shown.push_back(std::to_string(i));
        }
        if (row.text[unit] >= 0xD800 && row.text[unit] < 0xDC00) ++unit;
    }
    for (const size_t i : visualOrder(levels)) order.push_back(shown[i]);
    return (areEqual || isOneDirection) && order == row.order;
}

/// Where ICU 72 differs from the file: a mark behind a closing bracket that has taken its level from the pair, and
/// brackets or isolates that touch the ends of embeddings and overrides, and more brackets within each other than the
/// algorithm has to pair, 63.
bool hasKnownBidiDifference(std::u16string_view text) {
    const bool hasEmbeddings = text.find_first_of(u"\u202A\u202B\u202D\u202E") != text.npos;
    const size_t bracket = text.find_first_of(u"()[]");
    const bool hasMark = text.find_first_of(u"\u0331\u0332\u0333\u20D6") != text.npos;
    const bool isDeep = std::ranges::count(text, u'(') > 63;
    return isDeep || hasEmbeddings || (bracket != text.npos && hasMark);
}

TEST(UnicodeConformance, bidiOfCharacters) {
    int cases = 0, differences = 0;
    forEachLine("BidiCharacterTest.txt", [&](const std::string& line) {
        const std::vector<std::string> fields = split(line, ';');
        constexpr NSWritingDirection kDirections[] = {NSWritingDirection::leftToRight, NSWritingDirection::rightToLeft,
                                                      NSWritingDirection::natural};
        const BidiCase row = {utf16(words(fields.at(0))), kDirections[std::stoi(fields.at(1))], words(fields.at(3)),
                              words(fields.size() > 4 ? fields[4] : "")};
        uint8_t base = 0;
        bidiLevels(row.text, row.direction, base);
        EXPECT_EQ(base, std::stoi(fields.at(2))) << line;
        if (!isBidiRight(row)) {
            EXPECT_TRUE(hasKnownBidiDifference(row.text)) << line;
            ++differences;
        }
        ++cases;
    });
    EXPECT_GT(cases, 90'000);
    EXPECT_LE(differences, 30);
}

/// A line of a break test: characters with "÷" where a break is and "×" where none is, the ends included.
struct BreakCase {
    std::u16string text;
    std::vector<bool> breaksBefore;  ///< one a unit
};

BreakCase breakCase(const std::string& line) {
    BreakCase result;
    bool isBreak = false;
    for (const std::string& word : words(line)) {
        if (word == "\u00F7" || word == "\u00D7") {
            isBreak = word == "\u00F7";
            continue;
        }
        result.text += utf16({word});
        result.breaksBefore.push_back(isBreak);
        while (result.breaksBefore.size() < result.text.size()) result.breaksBefore.push_back(false);
    }
    return result;
}

TEST(UnicodeConformance, graphemeClusters) {
    int cases = 0;
    forEachLine("auxiliary/GraphemeBreakTest.txt", [&](const std::string& line) {
        const BreakCase row = breakCase(line);
        const std::vector<uint8_t> flags = TextBreaker::clustersInText(row.text);
        for (size_t i = 0; i < row.text.size(); ++i) {
            EXPECT_EQ((flags[i] & TextBreak::clusterStart) != 0, row.breaksBefore[i]) << line << ": unit " << i;
        }
        ++cases;
    });
    EXPECT_GT(cases, 600);
}

/// Why layout, or ICU, breaks lines otherwise at this place than the file; none when it should not.
const char* knownLineDifference(const BreakCase& row, size_t at, bool isCluster) {
    if (!isCluster) return "a line never begins within a grapheme cluster, such as a space with a mark on it";
    size_t before = at - 1;
    if (row.text[before] == 0x0308 && before > 0) --before;
    const char16_t left = row.text[before], right = row.text[at];
    if (left == u'-' && before == 0) return "ICU keeps a hyphen at the start of a word with it";
    const auto isHangul = [](char16_t unit) {
        return u_getIntPropertyValue(unit, UCHAR_HANGUL_SYLLABLE_TYPE) != U_HST_NOT_APPLICABLE;
    };
    if (isHangul(left) && isHangul(right)) return "Korean words are kept whole";
    const auto isDigit = [&](size_t i) { return i < row.text.size() && row.text[i] >= u'0' && row.text[i] <= u'9'; };
    if ((left == u'.' || left == u',') && isDigit(at)) return "ICU takes .5 for a number";
    if (right == u'.' && isDigit(at + 1)) return "and so lets a line begin before it";
    return nullptr;
}

TEST(UnicodeConformance, lineBreaks) {
    int cases = 0;
    forEachLine("auxiliary/LineBreakTest.txt", [&](const std::string& line) {
        const BreakCase row = breakCase(line);
        const std::vector<uint8_t> flags = TextBreaker::breaksInParagraph(row.text);
        for (size_t i = 1; i < row.text.size(); ++i) {
            const bool isBreak = (flags[i] & (TextBreak::lineMayBegin | TextBreak::lineMustBegin)) != 0;
            if (isBreak == row.breaksBefore[i]) continue;
            EXPECT_TRUE(knownLineDifference(row, i, flags[i] & TextBreak::clusterStart)) << line << ": unit " << i;
        }
        ++cases;
    });
    EXPECT_GT(cases, 7'000);
}

}  // namespace
}  // namespace qz
