#include <gmock/gmock.h>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "fuzz/UndoCheck.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RandomChoices.h"

namespace qz {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Objects returned by a palette or a string cannot change it.
template <class Anno>
concept CanBeRestyled = requires(Anno anno) {
    anno->setAttributes({});
};
template <class Row>
concept CanBeSet = requires(Row row) {
    row->setRange({});
};
static_assert(CanBeRestyled<Ref<QzMutableAnno>> && CanBeSet<Ref<QzAnnoBits>>);
static_assert(!CanBeRestyled<decltype(std::declval<QzAnnoPalette>().lookupAnno({}))>);
static_assert(!CanBeRestyled<decltype(std::declval<QzAnnoPalette>().createAnno({}))>);
static_assert(!CanBeSet<decltype(std::declval<QzAnnoString>().bitsFor({}))>);

/// Records a palette's notifications: "name", or "name key" where the user info holds a key.
class Notifications {
public:
    explicit Notifications(const QzAnnoPalette* palette) {
        NSNotificationCenter::defaultCenter().addObserver(
            this,
            [this](const NSNotification& notification) {
                std::string text = notification.name->utf8();
                if (notification.userInfo) {
                    text += " " + notification.userInfo->objectForKey<QzAnnoKey>(*QzAnnoChanged)->name()->utf8();
                }
                texts.push_back(text);
            },
            {}, palette);
    }
    ~Notifications() { NSNotificationCenter::defaultCenter().removeObserver(this); }
    Notifications(const Notifications&) = delete;

    std::vector<std::string> take() { return std::exchange(texts, {}); }

private:
    std::vector<std::string> texts;
};

class QzAnnoPaletteTest : public testing::Test {
protected:
    QzAnnoPaletteTest() { palette_->setUndoManager(undo_); }

    Ref<QzAnnoKey> create(const char* name) {
        const Ref<const QzAnno> anno = palette_->createAnno(NSString::stringWithUTF8String(name));
        undo_->endEvent();
        return anno->annokey();
    }

    std::vector<std::string> order() const {
        std::vector<std::string> names;
        for (int32_t priority = 1; priority <= palette_->maxPriority(); ++priority) {
            const Ref<QzAnnoKey> key = palette_->annoKeyAtPriority(priority);
            EXPECT_EQ(palette_->lookupPrio(key), priority);
            EXPECT_EQ(palette_->lookupAnno(key)->annokey(), key);
            EXPECT_EQ(key->palette(), palette_);
            names.push_back(key->name()->utf8());
        }
        return names;
    }

    Ref<QzAnno> withAttribute(const Ref<QzAnnoKey>& key, int32_t value) const {
        const Ref<QzMutableAnno> anno = palette_->lookupAnno(key)->mutableCopy();
        anno->setAttribute("Number"_ns, NSNumber::numberWithInt(value));
        return anno;
    }

    int32_t attributeOf(const Ref<QzAnnoKey>& key) const {
        const auto number = palette_->lookupAnno(key)->allAttributes()->objectForKey<NSNumber>(*"Number"_ns);
        return number ? number->intValue() : -1;
    }

    test::LogCapture capture_;
    const Ref<NSUndoManager> undo_ = NSUndoManager::init();
    const Ref<QzAnnoPalette> palette_ = QzAnnoPalette::init();
};

TEST_F(QzAnnoPaletteTest, IsLockedUntilItsFirstUndoManager) {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    EXPECT_THAT(capture_.errors(), ElementsAre("Annopalette made\n", "Annopalette made\n"));
    EXPECT_FALSE(palette->createAnno("Title"_ns));
    EXPECT_FALSE(palette->replaceAnno(palette->lookupAnno({})->copy()));
    palette->setUndoManager({});
    EXPECT_FALSE(palette->editable());
    palette->setUndoManager(undo_);
    palette->setUndoManager(NSUndoManager::init());
    EXPECT_TRUE(palette->editable());
    EXPECT_EQ(palette->undoManager(), undo_);
}

TEST_F(QzAnnoPaletteTest, QueriesTellGlobalOwnAndForeignKeysApart) {
    const Ref<QzAnnoKey> first = create("Title");
    const Ref<QzAnnoKey> second = create("Title");
    const Ref<QzAnnoKey> global = palette_->annoKeyAtPriority(0);
    const Ref<QzAnnoKey> foreign = QzAnnoPalette::init()->annoKeyAtPriority(0);
    const Ref<QzAnnoKey> unbound = QzAnnoKey::keyWithName("Title"_ns);

    EXPECT_FALSE(palette_->createAnno("GLOBALS"_ns));
    EXPECT_FALSE(palette_->createAnno({}));
    EXPECT_THAT(order(), ElementsAre("Title", "Title"));
    EXPECT_EQ(palette_->lookupPrio(second), 2);
    EXPECT_EQ(palette_->lookupPrio(foreign), -1);
    EXPECT_EQ(palette_->lookupPrio({}), -1);
    EXPECT_EQ(palette_->lookupAnno({}), palette_->lookupAnno(global));
    EXPECT_FALSE(palette_->lookupAnno(unbound));
    EXPECT_EQ(palette_->findAnnoKey({}), global);
    EXPECT_EQ(palette_->findAnnoKey("GLOBALS"_ns), global);
    EXPECT_EQ(palette_->findAnnoKey("Title"_ns), first);
    EXPECT_FALSE(palette_->findAnnoKey("title"_ns));
    EXPECT_EQ(first->palette(), palette_);
    EXPECT_FALSE(unbound->isDefault());
    EXPECT_FALSE(first->isDefault());
    EXPECT_FALSE(foreign->isDefault()) << "its palette is gone";

    const std::string number = std::to_string(palette_->serialNumber());
    EXPECT_EQ(first->description(), "Title (Palette " + number + ")");
    EXPECT_EQ(unbound->description(), "Title (Palette 0)");
    EXPECT_THAT(palette_->description(), testing::StartsWith("Palette #" + number + "\n 2 : Annotation \"Title\""));
}

// Edits inside the stack are covered by the random edits.
TEST_F(QzAnnoPaletteTest, EditsOfForeignKeysChangeAndTellNothing) {
    create("low");
    const Ref<QzAnnoKey> unbound = QzAnnoKey::keyWithName("low"_ns);
    undo_->removeAllActions();
    Notifications notifications(palette_.get());
    for (const Ref<QzAnnoKey>& key : {palette_->annoKeyAtPriority(0), unbound, Ref<QzAnnoKey>()}) {
        EXPECT_FALSE(palette_->removeAnno(key));
        EXPECT_FALSE(palette_->setAnnoKey(key, 1));
        EXPECT_FALSE(palette_->increasePriorityOfAnnoKey(key));
        EXPECT_FALSE(palette_->decreasePriorityOfAnnoKey(key));
    }
    EXPECT_FALSE(palette_->replaceAnno(QzAnno::initWithKey(unbound)));
    EXPECT_FALSE(palette_->replaceAnno({}));
    EXPECT_THAT(order(), ElementsAre("low"));
    EXPECT_THAT(notifications.take(), IsEmpty());
    EXPECT_FALSE(undo_->canUndo());
    EXPECT_THAT(capture_.lines(), IsEmpty());
}

TEST_F(QzAnnoPaletteTest, EditsNameTheirUndoAndNotifyInOrder) {
    Notifications notifications(palette_.get());
    create("a");
    EXPECT_EQ(undo_->undoActionName(), "Create Annotation");
    const Ref<QzAnnoKey> b = create("b");
    create("c");
    EXPECT_THAT(notifications.take(), IsEmpty()) << "creation posts nothing";

    struct Edit {
        const char* actionName;
        std::function<bool()> edit;
        std::vector<std::string> notifications;
        std::vector<std::string> order;
        std::vector<std::string> notificationsOfUndo;
    };
    const std::string reordered = "QzAnnoPaletteOrderChanged";
    const Edit edits[] = {
        {"Reorder Annotation Stack",
         [&] { return palette_->setAnnoKey(b, 3); },
         {reordered},
         {"a", "c", "b"},
         {reordered}},
        {"Reorder Annotation Stack",
         [&] { return palette_->increasePriorityOfAnnoKey(b); },
         {reordered},
         {"a", "c", "b"},
         {reordered}},
        {"Reorder Annotation Stack",
         [&] { return palette_->decreasePriorityOfAnnoKey(b); },
         {reordered},
         {"b", "a", "c"},
         {reordered}},
        {"Change Annotation",
         [&] { return palette_->replaceAnno(withAttribute(b, 5)); },
         {"QzAnnoChanged b"},
         {"a", "b", "c"},
         {"QzAnnoChanged b"}},
        {"Change Annotation",
         [&] { return palette_->replaceAnno(withAttribute({}, 5)); },
         {"QzAnnoChanged GLOBALS"},
         {"a", "b", "c"},
         {"QzAnnoChanged GLOBALS"}},
        {"Delete Annotation", [&] { return palette_->removeAnno(b); }, {reordered, "QzAnnoChanged b"}, {"a", "c"}, {}},
    };
    for (const Edit& edit : edits) {
        EXPECT_TRUE(edit.edit());
        undo_->endEvent();
        EXPECT_EQ(undo_->undoActionName(), edit.actionName);
        EXPECT_THAT(notifications.take(), testing::ElementsAreArray(edit.notifications));
        EXPECT_EQ(order(), edit.order);
        EXPECT_TRUE(undo_->undo());
        EXPECT_FALSE(undo_->canRedo()) << edit.actionName;
        EXPECT_THAT(notifications.take(), testing::ElementsAreArray(edit.notificationsOfUndo));
        EXPECT_THAT(order(), ElementsAre("a", "b", "c"));
        EXPECT_EQ(attributeOf(b), -1);
        EXPECT_EQ(attributeOf({}), -1);
    }
    undo_->undo();
    EXPECT_THAT(order(), ElementsAre("a", "b")) << "undoing a creation removes";
}

TEST_F(QzAnnoPaletteTest, AScopeOfChangesReloadsOnceAndAnEmptyOneNever) {
    Notifications notifications(palette_.get());
    {
        const QzAnnoPalette::NoNotification outer(palette_);
        const Ref<QzAnnoKey> key = create("a");
        {
            const QzAnnoPalette::NoNotification inner(palette_);
            palette_->replaceAnno(withAttribute(key, 5));
        }
        palette_->removeAnno(key);
        EXPECT_EQ(palette_->noNotification(), 1);
        EXPECT_THAT(notifications.take(), IsEmpty());
    }
    EXPECT_THAT(notifications.take(), ElementsAre("QzAnnoPaletteLoaded"));
    { const QzAnnoPalette::NoNotification idle(palette_); }
    EXPECT_THAT(notifications.take(), IsEmpty());
}

TEST_F(QzAnnoPaletteTest, ReplacementFilesACopyUnderTheSharedKey) {
    const Ref<QzAnnoKey> key = create("old name");
    const Ref<QzMutableAnno> edited = palette_->lookupAnno(key)->mutableCopy();
    edited->setName("new name"_ns);
    edited->setAttribute("Number"_ns, NSNumber::numberWithInt(1));
    EXPECT_TRUE(palette_->replaceAnno(edited));
    edited->setAttribute("Number"_ns, NSNumber::numberWithInt(2));
    EXPECT_EQ(attributeOf(key), 1) << "the palette's annotation is its own";
    EXPECT_EQ(palette_->findAnnoKey("new name"_ns), key);

    EXPECT_TRUE(palette_->removeAnno(key));
    EXPECT_FALSE(key->valid());
    const Ref<QzAnnoPalette> other = QzAnnoPalette::init();
    EXPECT_TRUE(MutableSupport::setPalette(*key, other));
    undo_->undo();
    EXPECT_TRUE(palette_->contains(key));
    EXPECT_EQ(key->palette(), other) << "the key was taken meanwhile";
    EXPECT_TRUE(palette_->removeAnno(key));
    EXPECT_THAT(capture_.lines(), ElementsAre(key->description() + " would not clear palette\n"));
}

TEST_F(QzAnnoPaletteTest, TakingOverContentsMovesTheVeryObjects) {
    create("former");
    const Ref<QzAnnoPalette> loaded = QzAnnoPalette::init();
    loaded->setUndoManager(NSUndoManager::init());
    const Ref<const QzAnno> title = loaded->createAnno("Title"_ns);
    const Ref<QzAnnoKey> global = loaded->annoKeyAtPriority(0);
    Notifications notifications(palette_.get());
    palette_->retainContentsOfAnnoPalette(loaded);
    EXPECT_THAT(notifications.take(), ElementsAre("QzAnnoPaletteLoaded"));
    EXPECT_THAT(order(), ElementsAre("Title"));
    EXPECT_EQ(palette_->lookupAnno(title->annokey()), title);
    EXPECT_EQ(palette_->annoKeyAtPriority(0), global);
    EXPECT_TRUE(global->isDefault());
    EXPECT_EQ(global->palette(), palette_);
    EXPECT_EQ(palette_->undoManager(), undo_);
    palette_->createAnno("shared"_ns);
    EXPECT_EQ(loaded->maxPriority(), 2) << "row and table are shared";
}

TEST_F(QzAnnoPaletteTest, UndoManagerOutlivesThePalette) {
    Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(undo_);
    const Ref<QzAnnoKey> key = palette->createAnno("Title"_ns)->annokey();
    palette->removeAnno(key);
    const WeakRef<QzAnnoPalette> observer = palette;
    palette.reset();
    EXPECT_TRUE(observer.expired()) << "recorded inverses keep the palette alive";
    undo_->undo();
    EXPECT_FALSE(key->valid());
}

TEST_F(QzAnnoPaletteTest, RandomEditsAndTheirUndoingAgreeWithAPlainStack) {
    for (uint32_t seed = 1; seed <= 40; ++seed) {
        test::RandomChoices choices(seed);
        fuzz::UndoCheck check(choices);
        for (int step = 0; step < 60; ++step) check.step();
        check.undoAll();
    }
}

}  // namespace
}  // namespace qz
