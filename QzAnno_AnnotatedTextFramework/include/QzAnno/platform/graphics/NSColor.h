#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// The name of a colour space. Calibrated components are pixel values: they are drawn unchanged, 1 as 255, without any
/// colour profile.
///@{
inline const Ref<NSString> NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace"_ns;
inline const Ref<NSString> NSCalibratedWhiteColorSpace = "NSCalibratedWhiteColorSpace"_ns;
inline const Ref<NSString> NSNamedColorSpace = "NSNamedColorSpace"_ns;
///@}

/// An immutable colour: calibrated red, green and blue, calibrated white, or a name in a catalogue. Components range
/// from 0 to 1 and are not premultiplied; values outside are clamped, and NaN counts as 0.
///
/// Two colours are equal if their spaces and components, or their names, are equal.
class NSColor final : public NSObject {
public:
    /// Takes straight components, clamped as described for the class.
    ///@{
    static Ref<NSColor> colorWithCalibratedRed(float red, float green, float blue, float alpha);
    static Ref<NSColor> colorWithCalibratedWhite(float white, float alpha);
    ///@}
    /// A colour from a catalogue. The only catalogue known here is "System", with the names of the user interface's
    /// colours ("textColor", "gridColor"). Unknown names are kept, but have no components. A null name counts as empty.
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
    /// The names of a named colour; null for others.
    ///@{
    Ref<NSString> catalogNameComponent() const;
    Ref<NSString> colorNameComponent() const;
    ///@}
    /// Converts the colour to another space; returns the colour itself if it is in that space already, and null if it
    /// cannot be converted: to a name, to an unknown space, or from an unknown name. The white of a colour is 0.30 R +
    /// 0.59 G + 0.11 B, as in the PostScript language.
    Ref<NSColor> colorUsingColorSpaceName(const NSString& colorSpaceName) const;

    /// Components in calibrated RGB, from 0 to 1; for a white, all three are equal. A named colour has its catalogue's
    /// components, all 0 if the name is unknown.
    ///@{
    float redComponent() const;
    float greenComponent() const;
    float blueComponent() const;
    float alphaComponent() const;
    ///@}

    /// Sets this colour for stroke and fill in the current graphics context, if there is one.
    void set() const;

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSColor"; }

private:
    enum class Space { rgb, white, named };
    // Straight; a white is stored as three equal components.
    struct Components {
        float red = 0, green = 0, blue = 0, alpha = 0;
        friend bool operator==(const Components&, const Components&) = default;
    };

    NSColor(Space space, Components components) : space_(space), components_(components) {}
    NSColor(Ref<NSString> catalogName, Ref<NSString> colorName);

    Ref<NSColor> self() const;

    const Space space_;
    Components components_;
    // Whether the components are valid; false only for an unknown name.
    bool isKnown_ = true;
    const Ref<NSString> catalogName_;
    const Ref<NSString> colorName_;
};

}  // namespace qz
