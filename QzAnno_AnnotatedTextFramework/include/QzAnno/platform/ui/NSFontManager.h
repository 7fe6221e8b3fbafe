#pragma once

#include <memory>

#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// The controls of a font panel, as a mask.
enum NSFontPanelModeMask : uint32_t {
    NSFontPanelFaceModeMask = 1,       ///< the faces of a family
    NSFontPanelSizeModeMask = 2,       ///< the size in points
    NSFontPanelCollectionModeMask = 4  ///< the families, with a search field
};

/// Decides which controls the font panel shows.
class NSFontPanelValidation {
public:
    virtual ~NSFontPanelValidation() = default;
    /// Returns a mask of `NSFontPanelModeMask`. Called by `NSFontManager::modifyFontViaPanel`.
    virtual uint32_t validModesForFontPanel(NSWindow& fontPanel) = 0;
};

/// The font being chosen, and the panel that offers the installed fonts.
class NSFontManager final : public NSObject {
public:
    /// Lives until the process ends.
    static NSFontManager& sharedFontManager();

    /// Receives "changeFont:" when the user chooses a font, and decides on the panel's controls if it is a
    /// `NSFontPanelValidation`; not owned. If it does not handle the action, that goes up the responder chain; if it
    /// does not decide, the panel shows all controls.
    ///@{
    void setDelegate(const Ref<NSResponder>& delegate) { delegate_ = delegate; }
    Ref<NSResponder> delegate() const { return delegate_.lock(); }
    ///@}

    /// The font that was last set or chosen; null before that, or if the chosen font has disappeared.
    const Ref<NSFont>& selectedFont() const { return selectedFont_; }
    /// Shows the font in the panel, or, with `isMultiple`, that several fonts are selected.
    void setSelectedFont(const Ref<NSFont>& font, bool isMultiple);
    /// Lets the panel change the font of the sender.
    void modifyFontViaPanel(const Ref<NSObject>& sender);
    /// The chosen face at the size of the given font; null if no face has been chosen or it has disappeared.
    Ref<NSFont> convertFont(const Ref<NSFont>& font) const;
    /// The panel; if there is none, makes it if `create`, else returns null.
    Ref<NSWindow> fontPanel(bool create);

    std::string className() const override { return "NSFontManager"; }

private:
    friend class FontPanelWidget;
    NSFontManager() = default;
    void chooseFont(const std::string& name, float size);

    WeakRef<NSResponder> delegate_;
    Ref<NSFont> selectedFont_;
    Ref<NSWindow> panel_;
    class FontPanelWidget* widget_ = nullptr;
};

}  // namespace qz
