#include <stdexcept>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"

namespace qz {
namespace {

// A number whose edits register their inverses, as a document does.
class NSUndoManagerTest : public testing::Test {
protected:
    void set(int value, const std::string& name = {}) {
        const int before = value_;
        // Through the same function, so that undoing registers the redo.
        manager_->prepareWithInvocationTarget(*document_).invoke([this, before, name] { set(before, name); });
        if (!name.empty()) manager_->setActionName(name);
        value_ = value;
    }

    const Ref<NSUndoManager> manager_ = NSUndoManager::init();
    const Ref<NSObject> document_ = "document"_ns;
    const Ref<NSObject> other_ = "other"_ns;
    int value_ = 0;
};

TEST_F(NSUndoManagerTest, OneGroupPerEvent) {
    set(1);
    set(2);
    manager_->endEvent();
    set(3);
    EXPECT_TRUE(manager_->canUndo());
    EXPECT_TRUE(manager_->undo()) << "ends the event's group by itself";
    EXPECT_EQ(value_, 2);
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(value_, 0) << "latest call first";
    EXPECT_FALSE(manager_->canUndo());
    EXPECT_FALSE(manager_->undo());
    EXPECT_TRUE(manager_->redo());
    EXPECT_EQ(value_, 2);
    EXPECT_TRUE(manager_->redo());
    EXPECT_EQ(value_, 3);
    EXPECT_FALSE(manager_->redo());
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(value_, 2);
    set(5);
    EXPECT_FALSE(manager_->canRedo()) << "a new edit forgets the redo";
}

TEST_F(NSUndoManagerTest, WithoutEventsEachInverseIsAGroup) {
    manager_->setGroupsByEvent(false);
    set(1, "Create Annotation");
    set(2, "Change Annotation");
    EXPECT_EQ(manager_->groupingLevel(), 0u);
    EXPECT_EQ(manager_->undoActionName(), "Change Annotation");
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(value_, 1);
    manager_->setActionName("Late");
    EXPECT_EQ(manager_->undoActionName(), "Create Annotation") << "each keeps the name that came with it";
}

TEST_F(NSUndoManagerTest, GroupsNest) {
    manager_->beginUndoGrouping();
    set(1, "Outer");
    manager_->beginUndoGrouping();
    set(2, "Inner");
    EXPECT_EQ(manager_->groupingLevel(), 2u);
    EXPECT_TRUE(manager_->endUndoGrouping());
    EXPECT_FALSE(manager_->canUndo());
    EXPECT_FALSE(manager_->undo()) << "a group is still open";
    manager_->beginUndoGrouping();
    manager_->setActionName("Nothing");
    EXPECT_TRUE(manager_->endUndoGrouping());
    EXPECT_TRUE(manager_->endUndoGrouping());
    EXPECT_FALSE(manager_->endUndoGrouping());
    EXPECT_EQ(manager_->undoActionName(), "Inner") << "the later name wins; that of an empty group is dropped with it";
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(value_, 0);
    EXPECT_FALSE(manager_->canUndo());

    manager_->beginUndoGrouping();
    EXPECT_TRUE(manager_->endUndoGrouping());
    EXPECT_FALSE(manager_->canUndo()) << "an empty group leaves nothing";
    EXPECT_TRUE(manager_->canRedo()) << "and forgets nothing";
}

TEST_F(NSUndoManagerTest, NamesGoWithTheirGroups) {
    manager_->setActionName("Lost");
    EXPECT_EQ(manager_->undoActionName(), "");
    set(1, "Create Annotation");
    EXPECT_EQ(manager_->undoActionName(), "Create Annotation") << "also while its event lasts";
    manager_->endEvent();
    set(2, "Change Annotation");
    manager_->undo();
    EXPECT_EQ(manager_->undoActionName(), "Create Annotation");
    EXPECT_EQ(manager_->redoActionName(), "Change Annotation");
    manager_->redo();
    EXPECT_EQ(manager_->undoActionName(), "Change Annotation");
    EXPECT_EQ(manager_->redoActionName(), "");
}

TEST_F(NSUndoManagerTest, NothingRegisteredWhileUndoingLeavesNoRedo) {
    bool wasUndoing = false;
    manager_->prepareWithInvocationTarget(*document_).invoke([&] {
        wasUndoing = manager_->isUndoing() && !manager_->isRedoing();
        EXPECT_FALSE(manager_->undo()) << "not while undoing";
        EXPECT_FALSE(manager_->endUndoGrouping()) << "no group of the caller's";
        EXPECT_FALSE(manager_->canUndo());
    });
    EXPECT_TRUE(manager_->undo());
    EXPECT_TRUE(wasUndoing);
    EXPECT_FALSE(manager_->isUndoing());
    EXPECT_FALSE(manager_->canRedo());
    NSUndoManager::InvocationTarget().invoke([] { FAIL() << "called without a target"; });
    manager_->prepareWithInvocationTarget(*document_).invoke({});
    EXPECT_FALSE(manager_->canUndo());
}

TEST_F(NSUndoManagerTest, WhatACallThrowsLeavesTheRestToBeUndoneLater) {
    bool fails = true;
    set(1);
    manager_->prepareWithInvocationTarget(*document_).invoke([&] {
        if (fails) throw std::runtime_error("no disk");
    });
    set(2);
    EXPECT_THROW(manager_->undo(), std::runtime_error);
    EXPECT_EQ(value_, 1) << "the call before it was made";
    EXPECT_FALSE(manager_->isUndoing());
    fails = false;
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(value_, 0);
    EXPECT_FALSE(manager_->canUndo());
}

TEST_F(NSUndoManagerTest, ForgetsTheCallsOfATarget) {
    std::string log;
    const auto record = [&](const NSObject& target, char letter) {
        manager_->prepareWithInvocationTarget(target).invoke([&log, letter] { log += letter; });
    };
    record(*document_, 'a');
    record(*other_, 'b');
    manager_->endEvent();
    record(*document_, 'c');
    manager_->endEvent();
    record(*document_, 'd');
    record(*other_, 'e');
    manager_->removeAllActionsWithTarget(*document_);
    while (manager_->undo()) log += '|';
    EXPECT_EQ(log, "e|b|") << "the group that became empty is gone, calls in the open group too";
}

TEST_F(NSUndoManagerTest, ACallMayForgetTheRestOfItsGroup) {
    std::string log;
    manager_->prepareWithInvocationTarget(*document_).invoke([&] { log += "dead"; });
    manager_->prepareWithInvocationTarget(*other_).invoke([&] { log += "b"; });
    manager_->prepareWithInvocationTarget(*other_).invoke([&] {
        manager_->removeAllActionsWithTarget(*document_);
        log += "a";
    });
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(log, "ab");
    manager_->prepareWithInvocationTarget(*document_).invoke([&] { log += "dead"; });
    manager_->prepareWithInvocationTarget(*document_).invoke([&] { manager_->removeAllActions(); });
    EXPECT_TRUE(manager_->undo());
    EXPECT_EQ(log, "ab");
    EXPECT_FALSE(manager_->canUndo());
}

TEST_F(NSUndoManagerTest, ObjectsThatCallBackWhenTheyAreForgotten) {
    // A call's captures may be the last owner of a target, which removes its calls when destroyed.
    struct Guest {
        const Ref<NSUndoManager>& manager;
        const Ref<NSObject>& target;
        ~Guest() { manager->removeAllActionsWithTarget(*target); }
    };
    const auto recordGuest = [&] {
        const auto guest = std::make_shared<Guest>(manager_, document_);
        manager_->prepareWithInvocationTarget(*other_).invoke([this, guest] { set(7); });
        manager_->prepareWithInvocationTarget(*document_).invoke([] {});
        manager_->endEvent();
    };
    recordGuest();
    recordGuest();
    manager_->removeAllActionsWithTarget(*other_);
    EXPECT_FALSE(manager_->canUndo());
    recordGuest();
    manager_->undo();
    set(3);
    EXPECT_FALSE(manager_->canRedo());
    recordGuest();
    manager_->removeAllActions();
    EXPECT_FALSE(manager_->canUndo());
}

}  // namespace
}  // namespace qz
