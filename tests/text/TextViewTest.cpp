#include <gmock/gmock.h>

#include "platform/text/NSTextView.h"
#include "tests/text/TextSystem.h"

namespace qz {
namespace {

using testing::ElementsAre;

/// Writes down the notifications of a view.
class Notifications {
public:
    explicit Notifications(const NSTextView& view) {
        NSNotificationCenter::defaultCenter().addObserver(
            this, [this](const NSNotification& notification) { add(notification); }, {}, &view);
    }
    ~Notifications() { NSNotificationCenter::defaultCenter().removeObserver(this); }
    std::vector<std::string> take() { return std::exchange(names_, {}); }

private:
    void add(const NSNotification& notification) {
        if (notification.name->isEqual(*NSTextDidChangeNotification))
            names_.push_back("text");
        else
            names_.push_back(notification.userInfo->objectForKey(*"NSOldSelectedCharacterRange"_ns)->description());
    }
    std::vector<std::string> names_;
};

TEST(TextView, typesOverTheSelection) {
    const Ref<NSTextView> view = NSTextView::init();
    Notifications notifications(*view);
    EXPECT_TRUE(view->insertText("hello"_ns));
    EXPECT_THAT(notifications.take(), ElementsAre("{0, 0}", "text"));
    view->setSelectedRange({1, 3});
    view->setSelectedRange({1, 3});
    EXPECT_THAT(notifications.take(), ElementsAre("{5, 0}")) << "once, and not when nothing changes";
    EXPECT_TRUE(view->insertText("ipp"_ns));
    EXPECT_EQ(view->string()->utf8(), "hippo");
    EXPECT_EQ(view->selectedRange(), (Range{4, 0}));
    view->setEditable(false);
    EXPECT_FALSE(view->insertText("x"_ns));
    EXPECT_FALSE(view->deleteBackward());
    EXPECT_EQ(view->string()->utf8(), "hippo");
}

TEST(TextView, deletesWholeClusters) {
    const Ref<NSTextView> view = NSTextView::init();
    view->insertText("a\U0001F468\u200D\U0001F469\u200D\U0001F467e\u0301\r\n"_ns);
    EXPECT_TRUE(view->deleteBackward());
    EXPECT_EQ(view->string()->utf8(), "a\U0001F468\u200D\U0001F469\u200D\U0001F467e\u0301");
    EXPECT_TRUE(view->deleteBackward());
    EXPECT_TRUE(view->deleteBackward());
    EXPECT_EQ(view->string()->utf8(), "a");
    EXPECT_FALSE(view->deleteForward());
    view->setSelectedRange({0, 0});
    EXPECT_FALSE(view->deleteBackward());
    EXPECT_TRUE(view->deleteForward());
    EXPECT_EQ(view->string()->length(), 0u);
}

TEST(TextView, typesWithTheAttributesOfWhatStandsBefore) {
    const Ref<NSTextView> view = NSTextView::init();
    EXPECT_TRUE(view->typingAttributes()->objectForKey<NSFont>(*NSFontAttributeName));
    view->textStorage()->setAttributedString(*attributedString("ab", textAttributes(attributePair("mark"_ns, "1"_ns))));
    view->textStorage()->appendString(u"cd", textAttributes());
    view->setSelectedRange({2, 0});
    view->insertText("x"_ns);
    view->setSelectedRange({4, 0});
    view->insertText("y"_ns);
    EXPECT_TRUE(view->textStorage()->attributesAtIndex(2)->objectForKey(*"mark"_ns));
    EXPECT_FALSE(view->textStorage()->attributesAtIndex(4)->objectForKey(*"mark"_ns));
    view->setTypingAttributes(textAttributes(attributePair("mark"_ns, "2"_ns)));
    view->insertText("zz"_ns);
    view->insertText("z"_ns);
    EXPECT_EQ(view->string()->utf8(), "abxcyzzzd");
    EXPECT_TRUE(view->textStorage()->attributesAtIndex(7)->objectForKey(*"mark"_ns)->isEqual(*"2"_ns));
}

TEST(TextView, selectionStaysInsideTheText) {
    const Ref<NSTextView> view = NSTextView::init();
    view->insertText("0123456789"_ns);
    view->setSelectedRange({8, UINT32_MAX});
    EXPECT_EQ(view->selectedRange(), (Range{8, 2}));
    view->textStorage()->deleteCharactersInRange({1, 9});
    EXPECT_EQ(view->selectedRange(), (Range{1, 0}));
    EXPECT_FALSE(view->attributedSubstringFromRange({0, 2}));
    EXPECT_EQ(view->attributedSubstringFromRange({0, 1})->string()->utf8(), "0");
}

TEST(TextView, joinsTheTextSystemOfItsContainerAndLeavesItWhole) {
    const TextSystem system(*attributedString("text"));
    Ref<NSTextView> view = NSTextView::initWithTextContainer(system.container);
    EXPECT_EQ(view->textStorage(), system.storage);
    EXPECT_EQ(system.container->textView(), view);
    int displayed = 0;
    view->setDisplayHook([&] { ++displayed; });
    view->display();
    EXPECT_EQ(displayed, 1);
    view.reset();
    EXPECT_FALSE(system.container->textView());
    EXPECT_EQ(system.storage->string()->utf8(), "text");
}

}  // namespace
}  // namespace qz
