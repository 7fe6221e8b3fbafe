#include "apps/qzanno/PaletteReadability.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ranges>

#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"

namespace qz::tool {
namespace {

constexpr double kContrastMin = 4.5;
constexpr double kContrastOfLargeMin = 3;
// WCAG's large text is 24 reference pixels of 0.0213 degrees; a screen is viewed from 3.1 times its height (ITU-R
// BT.2022).
constexpr double kLargeShare = 0.0277;
constexpr double kLineShareMin = 0.8 / 15 / 2;
constexpr double kMarginShareMin = 0.05;

/// "4.52", "29"
std::string shown(double value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

/// A colour blended over another by its alpha, with stored components, as pictures are blended.
struct Paint {
    double red, green, blue;

    void lay(const NSColor& color) {
        const double alpha = color.alphaComponent();
        red += (double{color.redComponent()} - red) * alpha;
        green += (double{color.greenComponent()} - green) * alpha;
        blue += (double{color.blueComponent()} - blue) * alpha;
    }
    double luminance() const { return relativeLuminance(red, green, blue); }
};

/// The colours that show on every side of the letters, from the lowest up, excluding shadows.
std::vector<Ref<NSColor>> surroundings(const TextBox& box, const std::vector<Layer>& layers) {
    std::vector<Ref<NSColor>> colors;
    if (box.form == TextBox::Form::filled && box.isVisible()) colors.push_back(box.color);
    for (const Layer& layer : std::views::reverse(layers)) {
        const double shift = std::max(std::abs(layer.offset.x), std::abs(layer.offset.y));
        // Anything thinner than a point is invisible in the picture.
        if (layer.isVisible() && layer.width / 2 - shift >= 1) colors.push_back(layer.color);
    }
    return colors;
}

/// The lowest contrast with the surroundings over a black or a white picture; if the letters' luminance is in between,
/// some grey hides them.
double worstContrast(const NSColor& text, const std::vector<Ref<NSColor>>& around) {
    double letters[2];
    double ground[2];
    for (const int white : {0, 1}) {
        Paint paint = {double(white), double(white), double(white)};
        for (const Ref<NSColor>& color : around) paint.lay(*color);
        ground[white] = paint.luminance();
        paint.lay(text);
        letters[white] = paint.luminance();
    }
    if ((letters[0] - ground[0]) * (letters[1] - ground[1]) <= 0) return 1;
    return std::min(contrastRatio(letters[0], ground[0]), contrastRatio(letters[1], ground[1]));
}

class Reader {
public:
    Reader(const QzAnnoPalette& palette, NSSize screen) : palette_(palette), screen_(screen) {}

    void read(const QzAnno& anno, bool isGlobal) {
        name_ = anno.name()->utf8();
        const Ref<NSSet> set = isGlobal ? NSSet::set() : NSSet::setWithObject(anno.annokey());
        const Ref<NSDictionary> complete = palette_.assembleCompleteAttributes(palette_.attributesForSet(set));
        style_ = titleStyleOf(*complete);
        frame_ = frameStyleOf(*complete);
        margins_ = frame_.marginsOn(screen_);

        bool changesFont = isGlobal, changesInk = isGlobal, changesPlace = isGlobal;
        for (const Attribute& attribute : attributeVocabulary()) {
            using enum Attribute::Kind;
            if (!anno.attribute(*attribute.name)) continue;
            changesFont |= attribute.group == Attribute::Group::font && attribute.kind != flag;
            changesInk |= attribute.layer > 0 || attribute.kind == color || attribute.kind == box;
            changesPlace |= attribute.kind == margins || attribute.kind == rectangle;
        }
        if (changesFont || changesInk) checkContrast();
        if (changesFont) checkSize();
        if (changesPlace) checkMargins();
        if (changesPlace || changesFont) checkRoom(isGlobal ? 2 : 1);
    }

    std::vector<ReadabilityWarning> take() { return std::move(warnings_); }

private:
    void warn(std::string message) { warnings_.push_back({name_, std::move(message)}); }

    double lineHeight() const { return double{style_.font->ascender()} - double{style_.font->descender()}; }

    void checkContrast() {
        const bool isLarge = double{style_.font->pointSize()} >= kLargeShare * double{screen_.height};
        const double least = isLarge ? kContrastOfLargeMin : kContrastMin;
        const std::string bound =
            shown(least, 1) + ":1 is the minimum for " + (isLarge ? "large text" : "text of this size");
        const std::vector<Ref<NSColor>> around = surroundings(frame_.box, style_.layers);
        if (around.empty()) {
            return warn("nothing surrounds the letters, so some pictures hide them (contrast 1:1; " + bound +
                        "); give them an outline or a filled box");
        }
        const double contrast = worstContrast(*style_.color, around);
        if (contrast >= least) return;
        // Rounded down, so that an insufficient value does not look sufficient.
        warn("the letters' contrast with their outline or box may be as low as " +
             shown(std::floor(contrast * 100) / 100, 2) + ":1; " + bound +
             "; use more different or more opaque colours");
    }

    void checkSize() {
        const double least = kLineShareMin * double{screen_.height};
        if (lineHeight() >= least) return;
        warn("a line is " + shown(lineHeight(), 0) + " points high, " +
             shown(100 * lineHeight() / double{screen_.height}, 1) + " % of the screen; " +
             shown(100 * kLineShareMin, 1) + " % is the minimum for viewers to read; use a font size of at least " +
             shown(std::ceil(double{style_.font->pointSize()} * least / lineHeight()), 0));
    }

    void checkMargins() {
        static constexpr const char* sides[] = {"left", "right", "top", "bottom"};
        std::string list;
        for (size_t i = 0; i < 4; ++i) {
            const double least = kMarginShareMin * double{i < 2 ? screen_.width : screen_.height};
            // Allow for inexact fractions of the screen.
            const double margin = margins_.sides()[i];
            if (margin > least - 0.5) continue;
            list +=
                std::string(list.empty() ? "" : ", ") + sides[i] + " " + shown(margin, 0) + " of " + shown(least, 0);
        }
        if (list.empty()) return;
        warn("text may leave the safe title area, 5 % from each edge of the screen (" + list +
             " points); widen these margins");
    }

    void checkRoom(int lines) {
        const double room = double{screen_.height} - margins_.top - margins_.bottom;
        if (room >= lines * lineHeight()) return;
        warn("there are " + shown(std::max(0.0, room), 0) + " points between the top and the bottom margin, and " +
             (lines == 1 ? "a line needs " : "two lines need ") + shown(lines * lineHeight(), 0) +
             "; text is cut; use smaller margins or a smaller font");
    }

    const QzAnnoPalette& palette_;
    const NSSize screen_;
    std::vector<ReadabilityWarning> warnings_;
    // The name of the current annotation.
    std::string name_;
    TitleStyle style_;
    FrameStyle frame_;
    Margins margins_;
};

}  // namespace

double relativeLuminance(double red, double green, double blue) {
    const auto linear = [](double component) {
        return component <= 0.03928 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

double contrastRatio(double luminance, double otherLuminance) {
    const auto [darker, lighter] = std::minmax(luminance, otherLuminance);
    return (lighter + 0.05) / (darker + 0.05);
}

std::vector<ReadabilityWarning> readabilityOf(const QzAnnoPalette& palette, NSSize screen) {
    Reader reader(palette, screen);
    for (int32_t priority = 0; priority <= palette.maxPriority(); ++priority)
        reader.read(*palette.lookupAnno(palette.annoKeyAtPriority(priority)), priority == 0);
    return reader.take();
}

}  // namespace qz::tool
