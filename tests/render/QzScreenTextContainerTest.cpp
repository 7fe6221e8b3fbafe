#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/render/QzScreenTextContainer.h"
#include "QzAnno_AnnotatedTextFramework/render/ExpandRectConstrainedBy.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

/// A text system without a view: one storage, one manager, one screen of 720 x 576.
class ScreenTextContainerTest : public testing::Test {
protected:
    ScreenTextContainerTest() {
        container->replaceLayoutManager(manager);
        manager->replaceTextStorage(storage);
    }

    /// Lines of exactly 60 points.
    void setText(const char* text, Attributes attributes) {
        NSParagraphStyle::Values values;
        values.minimumLineHeight = values.maximumLineHeight = 60;
        values.alignment = NSTextAlignment::left;
        attributes.emplace_back(NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(values));
        attributes.emplace_back(NSFontAttributeName, NSFont::systemFontOfSize(40));
        storage->setAttributedString(
            *NSAttributedString::initWithString(NSString::stringWithUTF8String(text), dictionaryOf(attributes)));
        container->updateFromString();
    }

    LogCapture log;
    Ref<QzScreenTextContainer> container = QzScreenTextContainer::initWithScreenSize({720, 576});
    Ref<NSLayoutManager> manager = NSLayoutManager::init();
    Ref<NSTextStorage> storage = NSTextStorage::init();
};

TEST(ScreenTextContainer, ASizeFromOutsideIsANewScreenOnlyForAViewInFullScreenMode) {
    const LogCapture log;
    const auto container = QzScreenTextContainer::init();
    container->setContainerSize({800, 600});
    EXPECT_EQ(container->screenSize(), (NSSize{640, 480}));
    EXPECT_THAT(log.lines(), ElementsAre("No text view on set container size\n"));

    const auto view = NSTextView::init();
    container->setTextView(view);
    container->setContainerSize({800, 600});
    EXPECT_EQ(container->screenSize(), (NSSize{800, 600}));
    EXPECT_EQ(container->containerSize(), (NSSize{800, 600}));
    container->setFullscreen(false);
    container->setContainerSize({320, 240});
    EXPECT_EQ(container->screenSize(), (NSSize{800, 600}));
}

TEST(ScreenTextContainer, LinesAreClampedIntoTheBox) {
    const auto container = QzScreenTextContainer::initWithScreenSize({720, 576});
    container->setTextBox({{10, 30}, {690, 506}});
    const auto fragment = [&](NSRect proposed) {
        NSRect remaining = {{1, 2}, {3, 4}};
        const NSRect rect = container->lineFragmentRectForProposedRect(proposed, NSLineSweepDirection::right,
                                                                       NSLineMovementDirection::down, &remaining);
        EXPECT_EQ(remaining, NSRect{});
        return rect;
    };
    // Screen coordinates in full-screen mode.
    EXPECT_EQ(fragment({{0, 0}, {1e7f, 60}}), (NSRect{{10, 30}, {690, 60}}));
    EXPECT_EQ(fragment({{0, 100}, {1e7f, 60}}), (NSRect{{10, 100}, {690, 60}}));
    EXPECT_EQ(fragment({{0, 500}, {1e7f, 60}}), (NSRect{{10, 500}, {690, 36}}))
        << "the last line is cut at the box's foot";
    EXPECT_EQ(fragment({{0, 536}, {1e7f, 60}}), (NSRect{{10, 30}, {0, 0}})) << "no room: at the box's origin";
    // Box coordinates in box mode.
    container->setFullscreen(false);
    EXPECT_EQ(fragment({{0, 0}, {1e7f, 60}}), (NSRect{{0, 0}, {690, 60}}));
    EXPECT_EQ(fragment({{0, 506}, {1e7f, 60}}), NSRect{});
}

TEST(ScreenTextContainer, APointOnTheTopEdgeIsOutsideAndOnTheBottomEdgeInside) {
    const auto container = QzScreenTextContainer::init();
    container->setTextBox({{10, 20}, {30, 40}});
    EXPECT_TRUE(container->containsPoint({10, 60}));
    EXPECT_FALSE(container->containsPoint({10, 20}));
    EXPECT_FALSE(container->containsPoint({40, 40}));
    EXPECT_EQ(container->rescaleFromScreenToContainer({{64, 48}, {320, 240}}), (NSRect{{64, 48}, {320, 240}}));
    container->setFullscreen(false);
    EXPECT_EQ(container->rescaleFromScreenToContainer({{64, 48}, {320, 240}}), (NSRect{{3, 4}, {15, 20}}));
}

TEST_F(ScreenTextContainerTest, TheBoxShrinksToTheTextAndGoesWhereTheAlignmentAsks) {
    const auto margined = [](const char* text, int32_t alignment) {
        return std::pair(text, Attributes{{QzBoundingMarginsAttribute, margins(10, 20, 30, 40)},
                                          {QzVerticalAlignmentAttribute, integer(alignment)}});
    };
    const auto boxed = [](const char* text, const Ref<NSString>& box) {
        return std::pair(text, Attributes{{QzBoundingBoxAttribute, box}});
    };
    auto both = margined("A", 0);
    both.second.emplace_back(QzBoundingBoxAttribute, "{{0.5, 0.5}, {0.5, 0.5}}"_ns);
    const struct {
        const char* reason;
        std::pair<const char*, Attributes> title;
        float x, y, height;
    } cases[] = {
        {"top", margined("A", 0), 10, 30, 60},
        {"centre of 506 points: 223 above and below", margined("A", 1), 10, 253, 60},
        {"bottom", margined("A", 2), 10, 476, 60},
        {"an unknown alignment is top", margined("A", 9), 10, 30, 60},
        {"two lines", margined("A\nB", 2), 10, 416, 120},
        {"margins win over a bounding box", both, 10, 30, 60},
        {"bounding box in fractions of the screen", boxed("A", "{{0.1, 0.25}, {0.5, 0.25}}"_ns), 72, 144, 60},
        {"the whole screen, without an alignment", {"A", {}}, 0, 0, 60},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        setText(c.title.first, c.title.second);
        EXPECT_EQ(container->textBox().origin, (NSPoint{c.x, c.y}));
        EXPECT_EQ(container->textBox().size.height, c.height);
        EXPECT_LT(container->textBox().size.width, 100);
        EXPECT_EQ(manager->usedRectForTextContainer(*container).origin.y, c.y) << "the text did not follow its box";

        const NSRect inFullScreen = container->textBox();
        container->setFullscreen(false);
        container->updateFromString();
        EXPECT_EQ(container->textBox(), inFullScreen) << "in box mode the text sits elsewhere on the screen";
        EXPECT_EQ(manager->usedRectForTextContainer(*container).origin, NSPoint{});
        container->setFullscreen(true);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ScreenTextContainerTest, AttributesThatMakeNoBoxAreIgnoredWithALine) {
    const Attributes cases[] = {
        {{QzBoundingMarginsAttribute, NSArray::arrayWithObjects({number(1), number(2)})}},
        {{QzBoundingMarginsAttribute, margins(10, std::numeric_limits<float>::quiet_NaN(), 30, 40)}},
        {{QzBoundingMarginsAttribute, "10"_ns}},
        {{QzBoundingBoxAttribute, "abc"_ns}},
        {{QzBoundingBoxAttribute, number(1)}},
    };
    for (const Attributes& attributes : cases) {
        SCOPED_TRACE(attributes.front().second->description());
        log.clear();
        setText("A", attributes);
        EXPECT_EQ(container->textBox().origin, NSPoint{});
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_NE(log.lines()[0].find("ignored"), std::string::npos) << log.lines()[0];
    }
}

TEST_F(ScreenTextContainerTest, MarginsWiderThanTheScreenLeaveNoRoom) {
    setText("A", {{QzBoundingMarginsAttribute, margins(400, 400, 0, 0)}});
    EXPECT_EQ(manager->glyphRangeForTextContainer(*container).length, 0u);
    // So do boxes that overflow when scaled to the screen.
    for (const auto& box : {"{{0, -3e38}, {-3e38, -3e38}}"_ns, "{{3e38, 0}, {3e38, 3e38}}"_ns}) {
        setText("A", {{QzBoundingBoxAttribute, box}, {QzVerticalAlignmentAttribute, integer(1)}});
        const NSRect placed = container->textBox();
        for (const float side : {placed.origin.x, placed.origin.y, placed.size.width, placed.size.height})
            EXPECT_LE(std::abs(side), 2 * Limits::kLengthMax) << box->utf8();
    }
    setText("A", {});
    EXPECT_EQ(manager->glyphRangeForTextContainer(*container).length, 1u) << "the next text is not held up by the last";
}

TEST(ScreenTextContainer, FollowsTheEditsOfItsTextView) {
    const auto container = QzScreenTextContainer::initWithScreenSize({720, 576});
    const auto view = NSTextView::initWithTextContainer(container);
    container->setTextView(view);
    int displays = 0;
    view->setDisplayHook([&] { ++displays; });
    // Numbers may be text, as in a list that a person wrote.
    const auto typed = NSArray::arrayWithObjects({"100"_ns, number(0), " 50 "_ns, number(0)});
    view->setTypingAttributes(dictionaryOf({{QzBoundingMarginsAttribute, typed}}));
    container->updateFromString();
    EXPECT_EQ(container->textBox(), (NSRect{{100, 50}, {1, 1}})) << "nothing is typed yet";
    displays = 0;
    view->insertText("A"_ns);
    EXPECT_EQ(container->textBox().origin, (NSPoint{100, 50}));
    EXPECT_EQ(displays, 1);
    EXPECT_TRUE(container->heightTracksTextView()) << "the tracking flag must come back after an update";

    const NSRect one = container->textBox();
    view->insertText("B"_ns);
    EXPECT_GT(container->textBox().size.width, one.size.width);

    container->setTextView({});
    const NSRect two = container->textBox();
    view->insertText("C"_ns);
    EXPECT_EQ(container->textBox(), two) << "still listens to a view that it has lost";
}

TEST(ExpandRectConstrainedBy, GrowsAndCutsToTheScreen) {
    constexpr NSSize screen = {720, 576};
    const struct {
        const char* reason;
        NSRect rect;
        NSRect result;
        NSPoint offset;
    } cases[] = {
        {"inside", {{100, 50}, {200, 40}}, {{90, 40}, {220, 60}}, {10, 10}},
        {"cut at the top left", {{3, 4}, {50, 20}}, {{0, 0}, {63, 34}}, {3, 4}},
        {"cut at the right", {{600, 50}, {120, 40}}, {{590, 40}, {130, 60}}, {10, 10}},
        {"cut at the bottom", {{100, 550}, {20, 26}}, {{90, 540}, {40, 36}}, {10, 10}},
        {"larger than the screen", {{-5, -5}, {800, 700}}, {{0, 0}, {720, 576}}, {-5, -5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const test::LogCapture log;
        NSPoint offset;
        EXPECT_EQ(ExpandRectConstrainedBy(c.rect, 10, 10, 10, 10, screen, &offset), c.result);
        EXPECT_EQ(offset, c.offset);
    }
}

}  // namespace
}  // namespace qz
