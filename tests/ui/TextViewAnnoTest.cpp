#include <gmock/gmock.h>

#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/ui/AnnotationReporting.h"
#include "QzAnno/ui/QzTextViewAnnoCategory.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using test::addAnnotation;
using test::dictionaryOf;
using test::LogCapture;

/// A text view on a text whose stretches carry lists of keys, each written as a letter: "ab", with no list for "-".
class TextViewAnno : public testing::Test, public QzAnnoChanging {
protected:
    Ref<QzAnnoPalette> palette() const override { return palette_; }
    Ref<NSSet> selectedAnnoKeys() const override { return enabled_; }

    Ref<QzAnnoKey> key(char letter) {
        const Ref<NSString> name = NSString::stringWithUTF8String({&letter, 1});
        if (const auto found = palette_->findAnnoKey(name)) return found;
        return palette_->createAnno(name)->annokey();
    }
    Ref<NSSet> keys(std::string_view letters) {
        std::vector<Ref<QzAnnoKey>> members;
        for (char letter : letters) members.push_back(key(letter));
        return NSSet::setWithObjects(members);
    }
    /// The letters of a set, sorted.
    static std::string letters(const Ref<NSSet>& set) {
        if (!set) return "-";
        std::string letters;
        for (const auto& member : set->objects<QzAnnoKey>()) letters += member->name()->utf8();
        std::ranges::sort(letters);
        return letters;
    }

    /// Three characters for each list.
    void setText(const std::vector<std::string>& lists, const char* frame) {
        const auto text = NSMutableAttributedString::init();
        for (const std::string& list : lists) {
            text->appendString(u"xyz", dictionaryOf({{NSFontAttributeName, NSFont::systemFontOfSize(20)}}));
            const Range last = {text->length() - 3, 3};
            if (list != "-") text->addAttribute(QzAnnoAttributeName, keys(list), last);
        }
        if (frame) text->addAttribute(QzFrameAnnoAttributeName, keys(frame), {0, text->length()});
        view_->textStorage()->setAttributedString(*text);
    }
    std::vector<std::string> lists() const {
        std::vector<std::string> lists;
        for (uint32_t i = 0; i < view_->textStorage()->length(); i += 3) {
            lists.push_back(
                letters(view_->textStorage()->attributesAtIndex(i)->objectForKey<NSSet>(*QzAnnoAttributeName)));
        }
        return lists;
    }

    Ref<QzAnnoPalette> palette_ = test::paletteWithGlobals({});
    Ref<NSTextView> view_ = NSTextView::init();
    Ref<NSSet> enabled_ = NSSet::set();
};

TEST_F(TextViewAnno, switchesKeysOverTheSelection) {
    struct Case {
        std::vector<std::string> before;
        Range selection;
        const char* enabled;
        std::vector<std::string> after;
        const char* reason;
    };
    const Case cases[] = {
        {{"ac", "ab", "a"}, {0, 9}, "", {"c", "b", ""}, "what covered all is taken away, what covered a part stays"},
        {{"ac", "ab", "a"}, {0, 9}, "b", {"bc", "b", "b"}, "an enabled key is everywhere afterwards"},
        {{"ac", "ab", "a"}, {0, 6}, "a", {"ac", "ab", "a"}, "what is enabled already stays as it is"},
        {{"ac", "ab", "a"}, {3, 3}, "a", {"ac", "a", "a"}, "beyond the selection nothing changes"},
        {{"a", "a"}, {4, 0}, "b", {"b", "b"}, "without a selection the whole text"},
        {{"a", "-", "a"}, {0, 9}, "", {"a", "", "a"}, "no list is an empty list, so nothing covered all"},
        {{"-", "-"}, {0, 6}, "c", {"c", "c"}, "text without any list"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        setText(c.before, "");
        view_->setSelectedRange(c.selection);
        enabled_ = keys(c.enabled);
        changeAnno(*view_, *this);
        EXPECT_EQ(lists(), c.after);
        EXPECT_EQ(view_->selectedRange(), c.selection);
    }
}

TEST_F(TextViewAnno, tellsObserversOfAChangeOnce) {
    setText({"a", "b"}, "");
    int changes = 0;
    NSNotificationCenter::defaultCenter().addObserver(
        this, [&](const NSNotification&) { ++changes; }, NSTextDidChangeNotification, view_.get());
    const LogCapture log;
    changeAnno(*view_, *this);
    NSNotificationCenter::defaultCenter().removeObserver(this);
    EXPECT_EQ(changes, 1);
    view_->textStorage()->setAttributedString(*NSAttributedString::init());
    changeAnno(*view_, *this);
    EXPECT_EQ(view_->textStorage()->length(), 0u);
}

TEST_F(TextViewAnno, takesTheEditingFontOnlyWhereItIsInstalled) {
    setText({"a", "b"}, "");
    view_->setSelectedRange({0, 3});
    LogCapture log;
    changeAnno(*view_, *this);
    const auto fontAt = [&](uint32_t index) {
        return view_->textStorage()->attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName);
    };
    const Ref<NSFont> installed = NSFont::fontWithName(*"Hoefler Text Black"_ns, 12);
    EXPECT_TRUE(fontAt(0)->isEqual(installed ? *installed : *NSFont::systemFontOfSize(20)));
    EXPECT_TRUE(fontAt(3)->isEqual(*NSFont::systemFontOfSize(20)));
    EXPECT_EQ(std::ranges::count(log.lines(), "Missing Font: Hoefler Text Black\n"), installed ? 0 : 1);
}

TEST_F(TextViewAnno, reportsWhatTheSelectionCarries) {
    struct Case {
        std::vector<std::string> lists;
        const char* frame;
        Range selection;
        std::vector<std::string> report;  // immutable, selected, sparse; empty where the call is refused
        const char* reason;
    };
    const Case cases[] = {
        {{"fa", "fab"}, "f", {0, 6}, {"f", "af", "b"}, "wholly and partly"},
        {{"fa", "fab"}, "f", {4, 1}, {"f", "abf", ""}, "inside one run"},
        {{"fa", "fab"}, "f", {2, 0}, {"abf", "f", ""}, "an insertion point reports all keys and the frame"},
        {{"-", "ab"}, "f", {0, 6}, {"f", "ab", ""}, "a run without a list says nothing"},
        {{"ab", "-", "b"}, "f", {0, 9}, {"f", "b", "a"}, "nor does one in the middle"},
        {{"a"}, nullptr, {0, 3}, {}, "no list of frame keys"},
        {{}, nullptr, {0, 0}, {}, "an empty text"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reason);
        setText(c.lists, c.frame);
        view_->setSelectedRange(c.selection);
        Ref<NSSet> immutable = keys("z"), selected = keys("z"), sparse = keys("z");
        const bool isReported = getImmutableAnnotationKeys(*view_, immutable, selected, sparse);
        const std::vector<std::string> sets = {letters(immutable), letters(selected), letters(sparse)};
        EXPECT_EQ(isReported, !c.report.empty());
        EXPECT_EQ(sets, c.report.empty() ? std::vector<std::string>(3, "z") : c.report);
    }
}

}  // namespace
}  // namespace qz
