#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The name of a colour space. Calibrated components are those of the pixels: they are drawn as they are, 1 as 255, and
/// no colour profile is applied.
///@{
inline const Ref<NSString> NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace"_ns;
inline const Ref<NSString> NSCalibratedWhiteColorSpace = "NSCalibratedWhiteColorSpace"_ns;
inline const Ref<NSString> NSNamedColorSpace = "NSNamedColorSpace"_ns;
///@}

/// An immutable colour: calibrated red, green and blue, calibrated white, or a name within a catalogue. Components run
/// from 0 to 1 and are not premultiplied; what lies outside is clamped, not-a-number counts as 0.
///
/// Equal when colour space and components, or the names, are equal.
class NSColor final : public NSObject {
public:
    /// Straight components, clamped as the class says.
    ///@{
    static Ref<NSColor> colorWithCalibratedRed(float red, float green, float blue, float alpha);
    static Ref<NSColor> colorWithCalibratedWhite(float white, float alpha);
    ///@}
    /// A colour of a catalogue. Always made, so that a name unknown here is kept; an unknown one has no components. The
    /// catalogue known here is "System", whose names are those of the user interface ("textColor", "gridColor"). No
    /// name counts as the empty one.
    static Ref<NSColor> colorWithCatalogName(Ref<NSString> catalogName, Ref<NSString> colorName);
    /// Opaque, in calibrated white.
    ///@{
    static Ref<NSColor> blackColor();
    static Ref<NSColor> whiteColor();
    ///@}
    /// Black of alpha 0, in calibrated white.
    static Ref<NSColor> clearColor();

    /// One of the three colour-space constants.
    Ref<NSString> colorSpaceName() const;
    /// The names of a named colour; none for others.
    ///@{
    Ref<NSString> catalogNameComponent() const;
    Ref<NSString> colorNameComponent() const;
    ///@}
    /// The colour in another space; itself when it is in that space already, none when it cannot be converted: to a
    /// name, to a space unknown here, or from an unknown name. The white of a colour is 0.30 R + 0.59 G + 0.11 B, as
    /// the PostScript language defines it.
    Ref<NSColor> colorUsingColorSpaceName(const NSString& colorSpaceName) const;

    /// Components in calibrated RGB, from 0 to 1; a white has three equal ones. Those of a named colour are its
    /// catalogue's, all 0 when the name is unknown.
    ///@{
    float redComponent() const;
    float greenComponent() const;
    float blueComponent() const;
    float alphaComponent() const;
    ///@}

    /// Makes this the colour for stroke and fill of the current graphics context; nothing without one.
    void set() const;

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSColor"; }

private:
    enum class Space { rgb, white, named };
    // Straight; a white is kept as three equal components.
    struct Components {
        float red = 0, green = 0, blue = 0, alpha = 0;
        friend bool operator==(const Components&, const Components&) = default;
    };

    NSColor(Space space, Components components) : space_(space), components_(components) {}
    NSColor(Ref<NSString> catalogName, Ref<NSString> colorName);

    Ref<NSColor> self() const;

    const Space space_;
    Components components_;
    // Whether the components mean anything: always but for an unknown name.
    bool isKnown_ = true;
    const Ref<NSString> catalogName_;
    const Ref<NSString> colorName_;
};

}  // namespace qz
