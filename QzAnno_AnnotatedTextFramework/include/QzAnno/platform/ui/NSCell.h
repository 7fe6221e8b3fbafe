#pragma once

#include <cstdint>
#include <functional>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/ui/NSResponder.h"

namespace qz {

/// How a value looks and behaves in a table or box. One cell serves all rows of a column: its value is set for each row
/// in turn.
class NSCell : public NSObject {
public:
    /// Owned; null by default.
    ///@{
    const Ref<NSObject>& objectValue() const { return objectValue_; }
    void setObjectValue(const Ref<NSObject>& value) { objectValue_ = value; }
    ///@}
    /// The value if it is a string, else its description; empty if the value is null.
    Ref<NSString> stringValue() const;
    /// Sets the text as value.
    void setStringValue(const Ref<NSString>& text) { setObjectValue(text); }
    /// Null, the default, means the desktop's font. A table uses only the font's size.
    ///@{
    const Ref<NSFont>& font() const { return font_; }
    void setFont(const Ref<NSFont>& font) { font_ = font; }
    ///@}
    /// Whether a table strikes the text out; false by default.
    ///@{
    bool isStruckOut() const { return isStruckOut_; }
    void setStruckOut(bool flag) { isStruckOut_ = flag; }
    ///@}
    /// What a screen reader says instead of the text; null, the default, means the text itself.
    ///@{
    const Ref<NSString>& accessibilityLabel() const { return accessibilityLabel_; }
    void setAccessibilityLabel(const Ref<NSString>& label) { accessibilityLabel_ = label; }
    ///@}
    /// A number that identifies the cell to its owner; 0 by default.
    ///@{
    int32_t tag() const { return tag_; }
    void setTag(int32_t tag) { tag_ = tag; }
    ///@}

    std::string className() const override { return "NSCell"; }

private:
    Ref<NSObject> objectValue_;
    Ref<NSFont> font_;
    Ref<NSString> accessibilityLabel_;
    int32_t tag_ = 0;
    bool isStruckOut_ = false;
};

/// A cell that shows text.
class NSTextFieldCell final : public NSCell {
public:
    /// Takes the text as value.
    static Ref<NSTextFieldCell> initTextCell(const Ref<NSString>& text);
    std::string className() const override { return "NSTextFieldCell"; }
};

/// The look of a button; the numbers are the platform's.
enum class NSButtonType {
    momentary = 0,    ///< a check box in a table, a text in a box
    toggle = 2,       ///< in a table a button that stays down until clicked again, in a box a text
    switchButton = 3  ///< a check box
};
/// A button: a check box (`switchButton`) or a button that stays down (`toggle`). The value is its state: -1 mixed, 0
/// off, 1 on.
class NSButtonCell final : public NSCell {
public:
    /// Momentary and enabled, with no title, frame or action.
    static Ref<NSButtonCell> init();

    /// Never null; empty by default. A table shows it in a button that stays down.
    ///@{
    const Ref<NSString>& title() const { return title_; }
    void setTitle(const Ref<NSString>& title) { title_ = title; }
    ///@}
    /// A box reads it when it is given the cell, a table whenever it draws.
    ///@{
    NSButtonType buttonType() const { return buttonType_; }
    void setButtonType(NSButtonType type) { buttonType_ = type; }
    ///@}
    /// A disabled button in a table ignores clicks and keys.
    ///@{
    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled) { isEnabled_ = enabled; }
    ///@}
    /// A transparent button is not drawn and ignores the pointer. False by default.
    ///@{
    bool isTransparent() const { return isTransparent_; }
    void setTransparent(bool transparent) { isTransparent_ = transparent; }
    ///@}
    /// Whether the state may be mixed, which a click never sets. False by default.
    void setAllowsMixedState(bool allows) { allowsMixedState_ = allows; }
    /// The value as a number; mixed becomes on if it is not allowed.
    int32_t state() const;

    /// The receiver of clicks on a box's title. The target is not owned; null means the responder chain. An empty
    /// action is not sent. In a table, clicks go to the data source instead.
    ///@{
    Ref<NSResponder> target() const { return target_.lock(); }
    const std::string& action() const { return action_; }
    void setTargetAndAction(const Ref<NSResponder>& target, const std::string& action);
    ///@}

    std::string className() const override { return "NSButtonCell"; }

private:
    Ref<NSString> title_ = NSString::string();
    NSButtonType buttonType_ = NSButtonType::momentary;
    bool isEnabled_ = true;
    bool isTransparent_ = false;
    bool allowsMixedState_ = false;
    WeakRef<NSResponder> target_;
    std::string action_;
};

}  // namespace qz
