#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"

namespace qz {
namespace {

/// The result fits in a `float`.
double numberUnder(const NSDictionary& attributes, const NSString& name) {
    constexpr double kMost = std::numeric_limits<float>::max();
    const Ref<NSNumber> number = numberFrom(attributes.objectForKey(name));
    if (!number || !std::isfinite(number->doubleValue())) return 0;
    return std::clamp(number->doubleValue(), -kMost, kMost);
}

std::optional<NSRect> areaFrom(const Ref<NSObject>& value) {
    const auto text = std::dynamic_pointer_cast<NSString>(value);
    std::optional<NSRect> area = text ? wellFormedRectFromString(*text) : std::nullopt;
    if (value && !area)
        NSLog("A bounding box has the form {{x, y}, {width, height}}, not %@; it is ignored\n", {value});
    return area;
}

/// The index into the choices of an attribute; no value if it is absent or out of range.
std::optional<int32_t> choiceUnder(const NSDictionary& attributes, const NSString& name, int32_t last) {
    const Ref<NSNumber> number = numberFrom(attributes.objectForKey(name));
    if (!number || number->intValue() < 0 || number->intValue() > last) return {};
    return number->intValue();
}

}  // namespace

std::vector<Layer> layersOf(const NSDictionary& attributes) {
    std::vector<Layer> layers;
    layers.reserve(layerAttributes().size());
    for (const LayerAttributes& names : layerAttributes()) {
        Layer& layer = layers.emplace_back();
        layer.color = attributes.objectForKey<NSColor>(*names.color);
        layer.width = numberUnder(attributes, *names.width);
        if (const auto offset = attributes.objectForKey<NSString>(*names.offset))
            layer.offset = NSPointFromString(*offset);
    }
    return layers;
}

bool isOn(const NSDictionary& attributes, const NSString& flag) {
    const Ref<NSNumber> number = numberFrom(attributes.objectForKey(flag));
    return number && number->boolValue();
}

TitleStyle titleStyleOf(const NSDictionary& attributes) {
    TitleStyle style;
    style.font = attributes.objectForKey<NSFont>(*NSFontAttributeName);
    style.color = attributes.objectForKey<NSColor>(*QzTextColorAttribute);
    if (!style.color) style.color = NSColor::blackColor();
    style.kern = numberUnder(attributes, *NSKernAttributeName);
    style.slant = numberUnder(attributes, *NSObliquenessAttributeName);
    style.isUnderlined = isOn(attributes, *QzUnderlineAttribute);
    style.isStruckThrough = isOn(attributes, *QzStrikeThroughAttribute);
    style.layers = layersOf(attributes);
    return style;
}

Ref<NSObject> Margins::stored() const {
    std::vector<Ref<NSObject>> numbers;
    for (const double side : sides()) numbers.push_back(NSNumber::numberWithFloat(static_cast<float>(side)));
    return NSArray::arrayWithObjects(std::move(numbers));
}

std::optional<Margins> marginsFrom(const Ref<NSObject>& value) {
    const auto array = std::dynamic_pointer_cast<NSArray>(value);
    std::array<double, 4> sides{};
    for (size_t i = 0; i < sides.size(); ++i) {
        const Ref<NSNumber> number = array ? numberFrom(array->objectAtIndex(i)) : nullptr;
        if (!number || !std::isfinite(number->doubleValue())) return {};
        sides[i] = number->doubleValue();
    }
    return Margins{sides[0], sides[1], sides[2], sides[3]};
}

TextBox textBoxOf(const NSDictionary& attributes) {
    const auto box = attributes.objectForKey<QzBBoxInfo>(*QzTextBoundingBoxAppearanceAttribute);
    if (!box || box->type() <= 0) return {};
    return {box->type() == 1 ? TextBox::Form::outlined : TextBox::Form::filled, box->color()};
}

FrameStyle frameStyleOf(const NSDictionary& attributes) {
    FrameStyle style;
    const Ref<NSObject> margins = attributes.objectForKey(*QzBoundingMarginsAttribute);
    style.margins = marginsFrom(margins);
    if (margins && !style.margins) NSLog("Margins need four numbers, not %@; they are ignored\n", {margins});
    style.area = areaFrom(attributes.objectForKey(*QzBoundingBoxAttribute));
    const auto vertical = choiceUnder(attributes, *QzVerticalAlignmentAttribute, 2);
    style.vertical = static_cast<VerticalAlignment>(vertical.value_or(0));
    constexpr auto kLastAlignment = static_cast<int32_t>(NSTextAlignment::natural);
    if (const auto horizontal = choiceUnder(attributes, *QzHorizontalAlignmentAttribute, kLastAlignment))
        style.horizontal = static_cast<NSTextAlignment>(*horizontal);
    style.box = textBoxOf(attributes);
    return style;
}

Margins FrameStyle::marginsOn(NSSize screen) const {
    if (margins) return *margins;
    if (!area) return {};
    const double width = screen.width, height = screen.height;
    return {area->origin.x * width, (1 - double{area->origin.x} - double{area->size.width}) * width,
            area->origin.y * height, (1 - double{area->origin.y} - double{area->size.height}) * height};
}

}  // namespace qz
