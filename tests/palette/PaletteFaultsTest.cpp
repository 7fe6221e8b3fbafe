#include <gmock/gmock.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno_AnnotatedTextFramework/palette/PaletteFaults.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using testing::ElementsAre;

/// One line for each fault: "annotation|attribute|message".
std::vector<std::string> linesOf(const std::vector<PaletteFault>& faults) {
    std::vector<std::string> lines;
    for (const PaletteFault& fault : faults) {
        lines.push_back(fault.annotationName + "|" + fault.attributeName + "|" + fault.message);
    }
    return lines;
}

std::vector<std::string> faultsOf(const std::string& elements, FontLibrary* fonts = FontLibrary::shared().get()) {
    const auto plist = NSPropertyListSerialization::propertyListFromData(
        *NSData::dataWithBytes("<plist><dict><key>Palette</key><array>" + elements + "</array></dict></plist>"));
    return linesOf(faultsOfPropertyList(*plist, fonts));
}

std::string entry(const Ref<NSString>& name, const std::string& value) {
    return "<key>" + name->utf8() + "</key>" + value;
}

std::string color(const std::string& tag, const std::string& components) {
    return "<dict><key>Object Name</key><string>" + tag + "</string>" + components + "</dict>";
}

const std::string kGoodComponents =
    "<key>Red</key><integer>1</integer><key>Green</key><real>0.5</real><key>Blue</key><real>0</real>"
    "<key>Alpha</key><real>1</real>";

TEST(PaletteFaultsTest, ValuesThatAreClampedOrIgnoredAreNamed) {
    const std::string rgb = "NSColor RGBCalibrated";
    const struct {
        Ref<NSString> attribute;
        std::string value;
        const char* message;  // empty: no fault
    } cases[] = {
        {QzFontSizeAttribute, "<integer>0</integer>", ""},
        {QzFontSizeAttribute, "<string>72</string>", ""},
        {QzFontSizeAttribute, "<string>+7e1 pt</string>", "\"+7e1 pt\" is not a number; 70 is used"},
        {QzFontSizeAttribute, "<string>large</string>", "a number is needed, found a string; it is ignored"},
        {QzFontSizeAttribute, "<real>20000</real>", "font size 20000 is outside 0 to 10000 points; 10000 is used"},
        {QzFontSizeAttribute, "<real>nan</real>",
         "font size nan is outside 0 to 10000 points; the default size is used"},
        {QzFontSizeAttribute, "<integer>-1</integer>",
         "font size -1 is outside 0 to 10000 points; the default size is used"},
        {QzLeadingAttribute, "<real>inf</real>", "a finite number is needed, found inf; it is ignored"},
        {NSKernAttributeName, "<date>2024-01-01T00:00:00Z</date>", "a number is needed, found a date; it is ignored"},
        {QzHorizontalAlignmentAttribute, "<integer>4</integer>", ""},
        {QzHorizontalAlignmentAttribute, "<integer>5</integer>",
         "horizontal alignment 5 is outside 0 to 4; it is ignored"},
        {QzVerticalAlignmentAttribute, "<integer>2</integer>", ""},
        {QzVerticalAlignmentAttribute, "<integer>3</integer>",
         "vertical alignment 3 is outside 0 to 2; the text is placed at the top"},
        {QzBoundingMarginsAttribute,
         "<array><real>1</real><real>1</real><integer>1</integer><integer>1</integer></array>", ""},
        {QzBoundingMarginsAttribute, "<array><real>1</real><real>1</real></array>",
         "margins need four numbers, found 2; the margins are ignored"},
        {QzBoundingMarginsAttribute,
         "<array><real>1</real><real>nan</real><string>x</string><real>1</real><real>1</real></array>",
         "margins need four numbers, found 3; the margins are ignored"},
        {QzBoundingMarginsAttribute, "<string>1,2,3,4</string>",
         "an array of four numbers is needed, found a string; it is ignored"},
        {QzBoundingBoxAttribute, "<string>{{0, 0}, {1, 1}}</string>", ""},
        {QzBoundingBoxAttribute, "<string>{{0, 0}, {1}}</string>",
         "a rectangle {{x, y}, {width, height}} is needed, found \"{{0, 0}, {1}}\"; it is ignored"},
        {QzBackground2OffsetAttribute, "<string>2 2</string>",
         "a point {x, y} is needed, found \"2 2\"; it is ignored"},
        {QzBackgroundWidthAttribute, "<real>-2</real>", "width -2 is below 0; the layer is not drawn"},
        {QzTextColorAttribute, color(rgb, kGoodComponents), ""},
        {QzTextColorAttribute, color(rgb, kGoodComponents + "<key>Red</key><real>1.5</real>"),
         "the component Red is 1.5, outside 0 to 1; 1 is used"},
        {QzTextColorAttribute,
         color(rgb, kGoodComponents + "<key>Blue</key><string>.1</string><key>Red</key><string>full</string>"),
         "the component Red needs a number, found a string; 0 is used"},
        {QzTextColorAttribute,
         color("NSColor Named", "<key>CatalogName</key><string>Mine</string><key>ColorName</key><string>puce</string>"),
         "the colour \"puce\" of the catalogue \"Mine\" is unknown; nothing is drawn in it"},
        {QzBackgroundColorAttribute, color("NSColor Nmaed", kGoodComponents),
         "a colour is needed, found a dictionary; it is ignored"},
        {QzBackground2ColorAttribute, color("BBox with " + rgb, kGoodComponents),
         "a colour is needed, found a box appearance; it is ignored"},
        {QzTextBoundingBoxAppearanceAttribute,
         color("BBox with " + rgb, kGoodComponents + "<key>bbtype</key><integer>1</integer>"), ""},
        {QzTextBoundingBoxAppearanceAttribute, color("BBox with " + rgb, kGoodComponents),
         "the type of the box is not a number; no box is drawn"},
        {QzTextBoundingBoxAppearanceAttribute, color(rgb, kGoodComponents),
         "a box appearance is needed, found a colour; it is ignored"},
        {"Unknown"_ns, "<array/>", ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.attribute->utf8() + " " + row.value);
        std::vector<std::string> expected;
        if (*row.message) expected.push_back("GLOBALS|" + row.attribute->utf8() + "|" + row.message);
        EXPECT_EQ(faultsOf("<dict>" + entry(row.attribute, row.value) + "</dict>"), expected);
    }
}

TEST(PaletteFaultsTest, NamesAreCheckedAcrossTheList) {
    const auto named = [](const std::string& value) {
        return "<dict>" + entry(QzAnnoPalette_AnnotationNameKey, value) + "</dict>";
    };
    EXPECT_THAT(
        faultsOf("<dict/>" + named("<string>A</string>") + named("<string>A</string>") +
                 named("<string>GLOBALS</string>") + named("<integer>1</integer>") + "<string>no element</string>"),
        ElementsAre("A||an annotation below has the same name; this one cannot be found by name",
                    "GLOBALS||an annotation below has the same name; this one cannot be found by name",
                    "Fark new|__Annotation Name|a name is needed, found a number; \"Fark new\" is used"));
}

TEST(PaletteFaultsTest, FontsAreSoughtAsARunOfTheAnnotationGetsThem) {
    const auto font = [](const Ref<NSString>& name, const char* value) {
        return entry(name, std::string("<string>") + value + "</string>");
    };
    const auto missing = [](const char* name) {
        return std::string("there is no font \"") + name + "\"; the title-bar font is used";
    };
    EXPECT_THAT(
        faultsOf("<dict>" + font(QzFontNameAttribute, "DejaVuSans") + "</dict><dict>" +
                 font(QzAnnoPalette_AnnotationNameKey, "style") + font(QzFontStyleAttribute, "Bold") + "</dict><dict>" +
                 font(QzAnnoPalette_AnnotationNameKey, "odd style") + font(QzFontStyleAttribute, "Wobbly") +
                 "</dict><dict>" + font(QzAnnoPalette_AnnotationNameKey, "full") +
                 font(QzFontAttribute, "No Such Font") + "</dict>"),
        ElementsAre("odd style|FontName as NSString|" + missing("DejaVuSans-Wobbly"),
                    "full|Full FontName as NSString|" + missing("No Such Font")));
    // A wrong name in the global annotation is reported only there.
    EXPECT_THAT(faultsOf("<dict>" + font(QzFontAttribute, "No Such Font") + "</dict><dict>" +
                         font(QzAnnoPalette_AnnotationNameKey, "plain") + "</dict>"),
                ElementsAre("GLOBALS|Full FontName as NSString|" + missing("No Such Font")));
}

}  // namespace
}  // namespace qz
