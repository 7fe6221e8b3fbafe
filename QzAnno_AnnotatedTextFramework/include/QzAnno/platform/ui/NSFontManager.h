#pragma once

#include <memory>

#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/ui/NSWindow.h"

namespace qz {

/// What a font panel offers, as a mask.
enum NSFontPanelModeMask : uint32_t {
    NSFontPanelFaceModeMask = 1,       ///< the faces of a family
    NSFontPanelSizeModeMask = 2,       ///< the size in points
    NSFontPanelCollectionModeMask = 4  ///< the families, and the search for one
};

/// Decides what the font panel offers.
class NSFontPanelValidation {
public:
    virtual ~NSFontPanelValidation() = default;
    /// A mask of `NSFontPanelModeMask`. Asked by `NSFontManager::modifyFontViaPanel`.
    virtual uint32_t validModesForFontPanel(NSWindow& fontPanel) = 0;
};

/// The font that is being chosen, and the panel that offers the installed ones.
class NSFontManager final : public NSObject {
public:
    /// Lives until the process ends.
    static NSFontManager& sharedFontManager();

    /// Gets "changeFont:" when the user has chosen, and decides on the panel's controls when it is a
    /// `NSFontPanelValidation`. Not owned. Without one that takes the action it goes up the responder chain; without
    /// one that decides the panel offers everything.
    ///@{
    void setDelegate(const Ref<NSResponder>& delegate) { delegate_ = delegate; }
    Ref<NSResponder> delegate() const { return delegate_.lock(); }
    ///@}

    /// The font that was set or chosen last; none before, and when the library has lost the chosen one.
    const Ref<NSFont>& selectedFont() const { return selectedFont_; }
    /// The panel follows. With `isMultiple` it shows that several fonts are selected.
    void setSelectedFont(const Ref<NSFont>& font, bool isMultiple);
    /// Lets the panel change the font of the sender.
    void modifyFontViaPanel(const Ref<NSObject>& sender);
    /// The chosen face at the size of the given font; none when none has been chosen or it is gone.
    Ref<NSFont> convertFont(const Ref<NSFont>& font) const;
    /// The panel; made when asked, none otherwise when there is none.
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
