#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "captions/CueSettings.h"
#include "captions/PlacementAnnos.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

class CuePlacementTest : public test::CaptionTest {
protected:
    CuePlacementTest() : CaptionTest({"Low"}) {
        give(palette_->lookupAnno({}), {100, 200, 50, 50});
        give(palette_->lookupAnno(palette_->annoKeyAtPriority(1)), {300, 300, 800, 100});
    }

    void give(const Ref<const QzAnno>& anno, std::vector<int32_t> margins) {
        const Ref<QzMutableAnno> changed = anno->mutableCopy();
        std::vector<Ref<NSObject>> numbers;
        for (const int32_t margin : margins) numbers.push_back(NSNumber::numberWithInt(margin));
        changed->setAttribute(QzBoundingMarginsAttribute, NSArray::arrayWithObjects(std::move(numbers)));
        palette_->replaceAnno(changed);
    }

    // "480 480 0 540 row 2 align 1": left, right, top, bottom and alignments of a title on a screen of 1920 x 1080;
    // unset values are left out.
    std::string placed(std::string_view settings, const std::string& text = "One\nTwo", const char* frame = nullptr) {
        CaptionProblems problems;
        return placed(parseCueSettings(settings, 1, problems), text, frame);
    }

    std::string placed(const CuePlacement& placement, const std::string& utf8, const char* frame) {
        PlacementAnnos placements(palette_, {1920, 1080}, NSWritingDirection::natural);
        const auto text = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(utf8));
        if (frame) text->addFrameAnno(palette_->findAnnoKey(NSString::stringWithUTF8String(frame)));
        placements.place(placement, *text);
        const auto attributes = palette_->attributesForSet(text->frame());
        std::ostringstream line;
        for (const auto& number : attributes->objectForKey<NSArray>(*QzBoundingMarginsAttribute)->elements()) {
            line << std::dynamic_pointer_cast<NSNumber>(number)->floatValue() << " ";
        }
        if (const auto row = attributes->objectForKey<NSNumber>(*QzVerticalAlignmentAttribute))
            line << "row " << row->intValue() << " ";
        if (const auto alignment = attributes->objectForKey<NSNumber>(*QzHorizontalAlignmentAttribute))
            line << "align " << alignment->intValue();
        return line.str();
    }
};

TEST_F(CuePlacementTest, SettingsPlaceTheBox) {
    const struct {
        const char *settings, *place, *reason;
    } cases[] = {
        {"", "100 200 50 50 ", "the palette's margins alone"},
        {"align:center", "100 200 50 50 align 2", "no more than it says"},
        {"align:start", "100 200 50 50 align 4", "the start goes with the text"},
        {"align:end", "100 200 50 50 align 1", "so does the end"},
        {"position:25% size:50% align:left", "480 480 50 50 align 0", "the left edge at a quarter"},
        {"position:25% size:50% align:center", "0 960 50 50 align 2", "the middle at a quarter"},
        {"position:75% size:50% align:right", "480 480 50 50 align 1", "the right edge at three quarters"},
        {"position:75%,line-left align:center", "1440 0 50 50 align 2", "the edge as it says; the size that is left"},
        {"position:10% align:center", "0 1536 50 50 align 2", "as wide as it can be on both sides"},
        {"size:50%", "0 960 50 50 ", "at the start, where the palette puts text"},
        {"line:50%", "100 200 540 0 row 0 ", "the top in the middle of the screen"},
        {"line:50%,end", "100 200 0 540 row 2 ", "the foot in the middle"},
        {"line:25%,center", "100 200 0 540 row 1 ", "the middle at a quarter: a box twice as high"},
        {"line:75%,center", "100 200 540 0 row 1 ", "and at three quarters"},
        {"line:0", "100 200 50 50 row 0 ", "the first line of the safe part"},
        {"line:-1", "100 200 50 50 row 2 ", "the last; two lines of text end there"},
        {"line:100%", "100 200 0 0 row 2 ", "moved up until it fits"},
        {"line:0%,end", "100 200 0 0 row 0 ", "moved down"},
        {"line:4000", "100 200 50 50 row 2 ", "moved up to the safe part's foot"},
    };
    for (const auto& c : cases) EXPECT_EQ(placed(c.settings), c.place) << c.settings << ": " << c.reason;
    EXPECT_EQ(placed("align:end", "שלום"), "100 200 50 50 align 0") << "the end of a text from right to left";
    EXPECT_EQ(placed("size:50%", "שלום"), "960 0 50 50 ");
}

TEST_F(CuePlacementTest, LinesAreCountedInTheHeightOfTheFont) {
    const auto topOf = [this](const char* settings) { return std::stod(placed(settings, "One").substr(8)); };
    const double lineHeight = topOf("line:1") - 50;
    EXPECT_GT(lineHeight, 12) << "the system's font has 13 points";
    EXPECT_LT(lineHeight, 30);
    EXPECT_NEAR(topOf("line:5"), 50 + 5 * lineHeight, 0.01);
    const auto bottomOf = [this](const char* settings, const char* text) {
        return std::stod(placed(settings, text).substr(11));
    };
    EXPECT_NEAR(bottomOf("line:-3", "One"), 50 + 2 * lineHeight, 0.01) << "two lines stay free below";
    EXPECT_NEAR(bottomOf("line:-3", "One\nTwo"), 50 + lineHeight, 0.01) << "the first line stands third from the foot";
    EXPECT_NEAR(bottomOf("line:-1", "One\nTwo"), 50, 0.01);
}

TEST_F(CuePlacementTest, ATitlesOwnFrameYieldsWhereTheCueSays) {
    CuePlacement top;
    top.row = CuePlacement::Row::top;
    EXPECT_EQ(placed(top, "One", "Low"), "300 300 50 50 row 0 ") << "the top of the screen, not of the low box";
    EXPECT_EQ(placed("size:50% align:left", "One", "Low"), "0 960 800 100 align 0") << "the height stays";
    EXPECT_EQ(placed("", "One", "Low"), "300 300 800 100 ");
}

TEST_F(CuePlacementTest, SettingsThatAreNoneAreReported) {
    for (const char* setting :
         {"line:", "line:1%%", "line:-5%", "line:.5", "line:1e3", "position:50", "position:101%", "size:-1%", "size:5",
          "align", "vertical:rl", "region:a", "colour:red", ":", "align:start:end"}) {
        CaptionProblems found;
        const CuePlacement placement = parseCueSettings("size:50%  " + std::string(setting) + "\talign:left", 7, found);
        const std::vector<CaptionProblem> problems = found.take();
        ASSERT_EQ(problems.size(), 1u) << setting;
        EXPECT_EQ(problems[0].line, 7u);
        EXPECT_THAT(problems[0].message, testing::HasSubstr("\"" + std::string(setting) + "\""));
        CuePlacement expected;
        expected.size = 50;
        expected.alignment = CuePlacement::Alignment::left;
        EXPECT_EQ(placement, expected) << setting << " changes nothing else";
    }
    // Values of old drafts are reported and read with their old meaning; for an unknown edge the number is kept.
    for (const auto& [old, now] : std::map<std::string, std::string>{{"line:10%,middle", "line:10%,center"},
                                                                     {"line:-2,top", "line:-2"},
                                                                     {"position:5%,start", "position:5%,line-left"},
                                                                     {"align:middle", "align:center"}}) {
        CaptionProblems problems;
        EXPECT_EQ(parseCueSettings(old, 1, problems), parseCueSettings(now, 1, problems));
        EXPECT_THAT(problems.take(), testing::SizeIs(1)) << old;
    }
}

TEST_F(CuePlacementTest, OnePlaceIsOneAnnotation) {
    PlacementAnnos placements(palette_, {1920, 1080}, NSWritingDirection::natural);
    const int32_t before = palette_->maxPriority();
    for (int i = 0; i < 100; ++i) {
        CuePlacement placement;
        placement.row = i % 2 ? CuePlacement::Row::top : CuePlacement::Row::bottom;
        placements.place(placement, *QzMutableAnnoString::initWithString("One"_ns));
    }
    EXPECT_EQ(palette_->maxPriority(), before + 2);
}

}  // namespace
}  // namespace qz
