#pragma once

#include <cstdint>
#include <functional>

#include "platform/foundation/NSString.h"
#include "platform/text/NSFont.h"
#include "platform/ui/NSResponder.h"

namespace qz {

/// How a value looks and acts inside a table or a box. One cell serves all rows of a column: its value is set anew for
/// each.
class NSCell : public NSObject {
public:
    const Ref<NSObject>& objectValue() const { return objectValue_; }
    void setObjectValue(const Ref<NSObject>& value) { objectValue_ = value; }
    /// The value's text; empty without a value.
    Ref<NSString> stringValue() const;
    void setStringValue(const Ref<NSString>& text) { setObjectValue(text); }
    const Ref<NSObject>& representedObject() const { return representedObject_; }
    void setRepresentedObject(const Ref<NSObject>& object) { representedObject_ = object; }
    /// None: the font of the desktop. Its size counts, and its family where the desktop has it.
    const Ref<NSFont>& font() const { return font_; }
    void setFont(const Ref<NSFont>& font) { font_ = font; }
    int32_t tag() const { return tag_; }
    void setTag(int32_t tag) { tag_ = tag; }

    std::string className() const override { return "NSCell"; }

private:
    Ref<NSObject> objectValue_;
    Ref<NSObject> representedObject_;
    Ref<NSFont> font_;
    int32_t tag_ = 0;
};

/// A text.
class NSTextFieldCell final : public NSCell {
public:
    static Ref<NSTextFieldCell> initTextCell(const Ref<NSString>& text);
    std::string className() const override { return "NSTextFieldCell"; }
};

enum class NSButtonType { momentary = 0, toggle = 2, switchButton = 3 };
enum class NSBezelStyle { none = 0, rounded = 1, smallSquare = 10 };

/// A button: a check box (`switchButton`), or one that stays down (`toggle`). The value is its state: -1 mixed, 0 off,
/// 1 on.
class NSButtonCell final : public NSCell {
public:
    static Ref<NSButtonCell> init();

    const Ref<NSString>& title() const { return title_; }
    void setTitle(const Ref<NSString>& title) { title_ = title; }
    NSButtonType buttonType() const { return buttonType_; }
    void setButtonType(NSButtonType type) { buttonType_ = type; }
    NSBezelStyle bezelStyle() const { return bezelStyle_; }
    void setBezelStyle(NSBezelStyle style) { bezelStyle_ = style; }
    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled) { isEnabled_ = enabled; }
    /// A transparent button is not drawn, and the pointer passes it by.
    bool isTransparent() const { return isTransparent_; }
    void setTransparent(bool transparent) { isTransparent_ = transparent; }
    bool allowsMixedState() const { return allowsMixedState_; }
    void setAllowsMixedState(bool allows) { allowsMixedState_ = allows; }
    /// The number of the value; mixed becomes on where it is not allowed.
    int32_t state() const;

    /// Where a click goes: not owned; none means up the responder chain.
    Ref<NSResponder> target() const { return target_.lock(); }
    const std::string& action() const { return action_; }
    void setTargetAndAction(const Ref<NSResponder>& target, const std::string& action);

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
