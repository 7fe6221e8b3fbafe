#include <algorithm>

#include <gmock/gmock.h>

#include "QzAnno/platform/text/NSTextView.h"
#include "platform/text/TextCaret.h"
#include "platform/text/WordBreaks.h"
#include "tests/text/TextSystem.h"

namespace qz {
namespace {

using Motion = TextCaret::Motion;
using testing::ElementsAre;
using testing::ElementsAreArray;

/// A view on a text, in a column of the width, and its caret.
struct Editor {
    TextSystem system;
    Ref<NSTextView> view;
    TextCaret caret;

    explicit Editor(std::string_view utf8, float width = 0)
        : system(*attributedString(utf8), {width, 0}),
          view(NSTextView::initWithTextContainer(system.container)),
          caret(view) {}

    /// The places that a motion leads through from the one given, until it does not move any more.
    std::vector<uint32_t> placesFrom(uint32_t start, Motion motion) {
        view->setSelectedRange({start, 0});
        std::vector<uint32_t> places = {start};
        for (size_t i = 0; i <= view->string()->length(); ++i) {
            caret.move(motion, false);
            if (caret.position() == places.back()) break;
            places.push_back(caret.position());
        }
        return places;
    }
};

TEST(TextCaret, goesThroughTheTextBySight) {
    struct Case {
        const char* text;
        std::vector<uint32_t> rightward;
        const char* reason;
    };
    const Case cases[] = {
        {"abc", {0, 1, 2, 3}, "plain"},
        {"a\U0001F468‍\U0001F469‍\U0001F467b", {0, 1, 9, 10}, "a family of three is one place"},
        {"e\u0301x", {0, 2, 3}, "a mark belongs to its letter"},
        {"ab\ncd", {0, 1, 2, 3, 4, 5}, "over a line end into the next line"},
        {"אבג", {3, 2, 1, 0}, "right to left, so rightward is back"},
        {"سلام", {4, 3, 2, 1, 0}, "lam-alef is a ligature of two letters, with a place inside"},
        {"ab אב cd", {0, 1, 2, 3, 4, 3, 6, 7, 8}, "before the Hebrew word stands on the screen at both its ends"},
        {"हिन्दी", {0, 2, 6}, "Devanagari by syllables"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        Editor editor(c.text);
        EXPECT_THAT(editor.placesFrom(c.rightward.front(), Motion::right), ElementsAreArray(c.rightward));
        EXPECT_EQ(editor.placesFrom(c.rightward.back(), Motion::left).size(), c.rightward.size());
        // Moving right moves the caret right, and a click at the caret leaves it there.
        editor.view->setSelectedRange({c.rightward.front(), 0});
        NSRect before = editor.caret.rect();
        for (size_t step = 1; step < c.rightward.size(); ++step) {
            editor.caret.move(Motion::right, false);
            const NSRect caret = editor.caret.rect();
            EXPECT_TRUE(caret.origin.x > before.origin.x || caret.origin.y > before.origin.y) << step;
            editor.caret.moveToPoint({caret.origin.x, caret.origin.y + caret.size.height / 2}, false);
            EXPECT_EQ(editor.caret.rect(), caret) << step;
            before = caret;
        }
    }
}

TEST(TextCaret, collapsesASelectionToTheSideAskedFor) {
    Editor latin("abcdef");
    latin.view->setSelectedRange({1, 3});
    latin.caret.move(Motion::left, false);
    EXPECT_EQ(latin.view->selectedRange(), (Range{1, 0}));
    latin.view->setSelectedRange({1, 3});
    latin.caret.move(Motion::right, false);
    EXPECT_EQ(latin.view->selectedRange(), (Range{4, 0}));
    Editor hebrew("אבגדה");
    hebrew.view->setSelectedRange({1, 3});
    hebrew.caret.move(Motion::left, false);
    EXPECT_EQ(hebrew.view->selectedRange(), (Range{4, 0}));
}

TEST(TextCaret, extendsFromTheEndThatStays) {
    Editor editor("one two three");
    editor.view->setSelectedRange({4, 0});
    editor.caret.move(Motion::wordRight, true);
    EXPECT_EQ(editor.view->selectedRange(), (Range{4, 3}));
    editor.caret.move(Motion::textStart, true);
    EXPECT_EQ(editor.view->selectedRange(), (Range{0, 4}));
    editor.caret.moveToPoint({1000, 5}, true);
    EXPECT_EQ(editor.view->selectedRange(), (Range{4, 9}));
    // A selection that somebody else sets is extended from its start.
    editor.view->setSelectedRange({8, 2});
    editor.caret.move(Motion::right, true);
    EXPECT_EQ(editor.view->selectedRange(), (Range{8, 3}));
}

TEST(TextCaret, keepsItsColumnAcrossLines) {
    Editor editor("long line\nx\nlong line\n");
    editor.view->setSelectedRange({7, 0});
    editor.caret.move(Motion::down, false);
    EXPECT_EQ(editor.caret.position(), 11u) << "the short line's end";
    editor.caret.move(Motion::down, false);
    EXPECT_EQ(editor.caret.position(), 19u);
    editor.caret.move(Motion::down, false);
    EXPECT_EQ(editor.caret.position(), 22u) << "the empty line at the end";
    const NSRect last = editor.caret.rect();
    EXPECT_GT(last.origin.y, 60) << "below three lines of 20 points";
    EXPECT_GT(last.size.height, 20);
    editor.caret.move(Motion::up, false);
    editor.caret.move(Motion::up, false);
    editor.caret.move(Motion::up, false);
    EXPECT_EQ(editor.caret.position(), 7u);
    editor.caret.move(Motion::up, false);
    EXPECT_EQ(editor.caret.position(), 0u);
}

TEST(TextCaret, tellsTheEndOfAWrappedLineFromTheStartOfTheNext) {
    Editor editor("first second", widthOf("first se"));
    editor.view->setSelectedRange({2, 0});
    editor.caret.move(Motion::lineEnd, false);
    EXPECT_EQ(editor.caret.position(), 6u);
    EXPECT_EQ(editor.caret.rect().origin.y, 0);
    editor.caret.move(Motion::right, false);
    editor.caret.move(Motion::lineStart, false);
    EXPECT_EQ(editor.caret.position(), 6u);
    EXPECT_GT(editor.caret.rect().origin.y, 0);
    EXPECT_EQ(editor.caret.rect().origin.x, 0);
}

TEST(TextCaret, selectsWordsAndDeletesThem) {
    Editor editor("one, two");
    const auto at = [&](uint32_t index) { return NSPoint{editor.system.xOfCharacter(index) + 1, 5}; };
    editor.caret.selectWordAtPoint(at(6));
    EXPECT_EQ(editor.view->selectedRange(), (Range{5, 3}));
    editor.view->setSelectedRange({8, 0});
    EXPECT_TRUE(editor.caret.deleteWord(true));
    EXPECT_EQ(editor.view->string()->utf8(), "one, ");
    EXPECT_TRUE(editor.caret.deleteWord(true));
    EXPECT_EQ(editor.view->string()->utf8(), "");
    EXPECT_FALSE(editor.caret.deleteWord(true));
    // Thai has no blanks: two words, "hello" and "world".
    EXPECT_EQ(wordAt(u"สวัสดีโลก", 7), (Range{6, 3}));
}

TEST(TextViewUndo, takesBackWhatWasTypedInOneGo) {
    const Ref<NSTextView> view = NSTextView::init();
    const Ref<NSUndoManager> undo = NSUndoManager::init();
    view->setUndoManager(undo);
    const auto type = [&](const char* text) {
        for (; *text; ++text) {
            view->insertText(NSString::stringWithUTF8String({text, 1}));
            undo->endEvent();
        }
    };
    type("hello world");
    view->setSelectedRange({0, 5});
    type("goodbye");
    EXPECT_EQ(undo->undoActionName(), "Typing");
    view->deleteBackward();
    undo->endEvent();
    view->deleteBackward();
    undo->endEvent();
    EXPECT_EQ(view->string()->utf8(), "goodb world");
    EXPECT_TRUE(undo->undo());
    EXPECT_EQ(view->string()->utf8(), "goodbye world");
    EXPECT_TRUE(undo->undo());
    EXPECT_EQ(view->string()->utf8(), "hello world");
    EXPECT_EQ(view->selectedRange(), (Range{0, 5}));
    EXPECT_TRUE(undo->redo());
    EXPECT_EQ(view->string()->utf8(), "goodbye world");
    EXPECT_TRUE(undo->undo());
    EXPECT_TRUE(undo->undo());
    EXPECT_EQ(view->string()->utf8(), "");
    EXPECT_FALSE(undo->canUndo());
}

TEST(TextViewMarkedText, isNoEditUntilItIsTyped) {
    const Ref<NSTextView> view = NSTextView::init();
    const Ref<NSUndoManager> undo = NSUndoManager::init();
    view->setUndoManager(undo);
    view->insertText("ab"_ns);
    undo->endEvent();
    view->setSelectedRange({1, 0});
    view->setMarkedText("に"_ns, {1, 0});
    view->setMarkedText("にほ"_ns, {2, 0});
    EXPECT_EQ(view->string()->utf8(), "aにほb");
    EXPECT_EQ(view->markedRange(), (Range{1, 2}));
    EXPECT_EQ(view->selectedRange(), (Range{3, 0}));
    view->insertText("日本"_ns);
    EXPECT_EQ(view->string()->utf8(), "a日本b");
    EXPECT_EQ(view->markedRange().length, 0u);
    EXPECT_TRUE(undo->undo());
    EXPECT_EQ(view->string()->utf8(), "ab");
    view->setMarkedText("x"_ns, {1, 0});
    view->setMarkedText(""_ns, {});
    EXPECT_EQ(view->string()->utf8(), "ab") << "given up";
    view->setMarkedText("y"_ns, {1, 0});
    view->unmarkText();
    EXPECT_EQ(view->string()->utf8(), "ayb") << "kept";
    EXPECT_TRUE(undo->undo());
    EXPECT_EQ(view->string()->utf8(), "ab");
}

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
