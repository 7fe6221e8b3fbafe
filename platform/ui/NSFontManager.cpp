#include "QzAnno/platform/ui/NSFontManager.h"

#include "QzAnno/platform/ui/NSApplication.h"
#include "platform/ui/FontPanelWidget.h"

namespace qz {

NSFontManager& NSFontManager::sharedFontManager() {
    // Never destroyed: its panel must not outlive the toolkit.
    static const auto* manager = new Ref<NSFontManager>(new NSFontManager);
    return **manager;
}

void NSFontManager::setSelectedFont(const Ref<NSFont>& font, bool isMultiple) {
    selectedFont_ = font;
    if (panel_ && panel_->widget()) widget_->showFont(font, isMultiple);
}

void NSFontManager::modifyFontViaPanel(const Ref<NSObject>& /*sender*/) {
    if (!panel_ || !panel_->widget()) return;
    auto* validation = dynamic_cast<NSFontPanelValidation*>(delegate_.lock().get());
    const uint32_t modes = validation ? validation->validModesForFontPanel(*panel_) : ~0u;
    widget_->showControls((modes & NSFontPanelCollectionModeMask) != 0, (modes & NSFontPanelFaceModeMask) != 0,
                          (modes & NSFontPanelSizeModeMask) != 0);
    widget_->showFont(selectedFont_, false);
}

Ref<NSFont> NSFontManager::convertFont(const Ref<NSFont>& font) const {
    if (!selectedFont_) return {};
    return font ? selectedFont_->fontWithSize(font->pointSize()) : selectedFont_;
}

Ref<NSWindow> NSFontManager::fontPanel(bool create) {
    if (create && (!panel_ || !panel_->widget())) {
        widget_ = new FontPanelWidget(*this);
        panel_ = NSPanel::panelWithWidget(widget_);
        panel_->setFrameAutosaveName("Fonts");
    }
    return panel_;
}

void NSFontManager::chooseFont(const std::string& name, float size) {
    selectedFont_ = NSFont::fontWithName(*NSString::stringWithUTF8String(name), size,
                                         selectedFont_ ? selectedFont_->fontLibrary() : nullptr);
    const Ref<NSResponder> delegate = this->delegate();
    NSApplication::sharedApplication().sendAction(
        "changeFont:", delegate && delegate->respondsTo("changeFont:") ? delegate : nullptr, refTo(*this));
}

}  // namespace qz
