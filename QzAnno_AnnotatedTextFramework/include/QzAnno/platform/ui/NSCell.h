#pragma once

#include <cstdint>
#include <functional>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/ui/NSResponder.h"

namespace qz {

/// How a value looks and acts inside a table or a box. One cell serves all rows of a column: its value is set anew for
/// each.
class NSCell : public NSObject {
public:
    /// Owned; none at the start.
    ///@{
    const Ref<NSObject>& objectValue() const { return objectValue_; }
    void setObjectValue(const Ref<NSObject>& value) { objectValue_ = value; }
    ///@}
    /// The value's text: the value itself when it is a string, else its description; empty without a value.
    Ref<NSString> stringValue() const;
    /// The text becomes the value.
    void setStringValue(const Ref<NSString>& text) { setObjectValue(text); }
    /// What the owner of the cell means by it; owned, and none at the start. The cell shows nothing of it.
    ///@{
    const Ref<NSObject>& representedObject() const { return representedObject_; }
    void setRepresentedObject(const Ref<NSObject>& object) { representedObject_ = object; }
    ///@}
    /// None, as at the start: the font of the desktop. Of another one a table takes the size.
    ///@{
    const Ref<NSFont>& font() const { return font_; }
    void setFont(const Ref<NSFont>& font) { font_ = font; }
    ///@}
    /// Whether a table strikes the text out; false at the start.
    ///@{
    bool isStruckOut() const { return isStruckOut_; }
    void setStruckOut(bool flag) { isStruckOut_ = flag; }
    ///@}
    /// What a screen reader says instead of the text; null, as at the start, for the text itself.
    ///@{
    const Ref<NSString>& accessibilityLabel() const { return accessibilityLabel_; }
    void setAccessibilityLabel(const Ref<NSString>& label) { accessibilityLabel_ = label; }
    ///@}
    /// A number by which the owner knows the cell; 0 at the start.
    ///@{
    int32_t tag() const { return tag_; }
    void setTag(int32_t tag) { tag_ = tag; }
    ///@}

    std::string className() const override { return "NSCell"; }

private:
    Ref<NSObject> objectValue_;
    Ref<NSObject> representedObject_;
    Ref<NSFont> font_;
    Ref<NSString> accessibilityLabel_;
    int32_t tag_ = 0;
    bool isStruckOut_ = false;
};

/// A text.
class NSTextFieldCell final : public NSCell {
public:
    /// The text is the value.
    static Ref<NSTextFieldCell> initTextCell(const Ref<NSString>& text);
    std::string className() const override { return "NSTextFieldCell"; }
};

/// How a button looks; the numbers are the platform's.
enum class NSButtonType {
    momentary = 0,    ///< drawn by a table as a check box, by a box as a text
    toggle = 2,       ///< drawn by a table as a button that stays down until it is clicked again, by a box as a text
    switchButton = 3  ///< a check box
};
/// The frame of a button. Remembered only: buttons look as the desktop's do.
enum class NSBezelStyle { none = 0, rounded = 1, smallSquare = 10 };

/// A button: a check box (`switchButton`), or one that stays down (`toggle`). The value is its state: -1 mixed, 0 off,
/// 1 on.
class NSButtonCell final : public NSCell {
public:
    /// Momentary, enabled, without title, frame and action.
    static Ref<NSButtonCell> init();

    /// Never none, and empty at the start. A table shows it in a button that stays down.
    ///@{
    const Ref<NSString>& title() const { return title_; }
    void setTitle(const Ref<NSString>& title) { title_ = title; }
    ///@}
    /// A box looks at it when it is given the cell, a table at every drawing.
    ///@{
    NSButtonType buttonType() const { return buttonType_; }
    void setButtonType(NSButtonType type) { buttonType_ = type; }
    ///@}
    /// Shows nowhere.
    ///@{
    NSBezelStyle bezelStyle() const { return bezelStyle_; }
    void setBezelStyle(NSBezelStyle style) { bezelStyle_ = style; }
    ///@}
    /// A button of a table that is not enabled takes no clicks and no keys.
    ///@{
    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled) { isEnabled_ = enabled; }
    ///@}
    /// A transparent button is not drawn, and the pointer passes it by. Not so at the start.
    ///@{
    bool isTransparent() const { return isTransparent_; }
    void setTransparent(bool transparent) { isTransparent_ = transparent; }
    ///@}
    /// Whether the state may be mixed; a click never makes it so. Not at the start.
    ///@{
    bool allowsMixedState() const { return allowsMixedState_; }
    void setAllowsMixedState(bool allows) { allowsMixedState_ = allows; }
    ///@}
    /// The number of the value; mixed becomes on where it is not allowed.
    int32_t state() const;

    /// Where a click on a box's title goes: the target is not owned, and none means up the responder chain; an empty
    /// action goes nowhere. In a table a click goes to the data source instead.
    ///@{
    Ref<NSResponder> target() const { return target_.lock(); }
    const std::string& action() const { return action_; }
    void setTargetAndAction(const Ref<NSResponder>& target, const std::string& action);
    ///@}

    std::string className() const override { return "NSButtonCell"; }

private:
    Ref<NSString> title_ = NSString::string();
    NSButtonType buttonType_ = NSButtonType::momentary;
    NSBezelStyle bezelStyle_ = NSBezelStyle::none;
    bool isEnabled_ = true;
    bool isTransparent_ = false;
    bool allowsMixedState_ = false;
    WeakRef<NSResponder> target_;
    std::string action_;
};

}  // namespace qz
