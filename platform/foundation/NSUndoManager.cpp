#include "QzAnno/platform/foundation/NSUndoManager.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"

namespace qz {

Ref<NSUndoManager> NSUndoManager::init() {
    return Ref<NSUndoManager>(new NSUndoManager);
}

void NSUndoManager::InvocationTarget::invoke(Callback<void()> call) const {
    if (!manager_) return;
    if (!call) {
        NSLog("An empty call cannot be recorded for undo and is ignored\n");
        return;
    }
    manager_->registerAction({target_, std::move(call)});
}

NSUndoManager::InvocationTarget NSUndoManager::prepareWithInvocationTarget(const NSObject& target) {
    return pauses_ == 0 ? InvocationTarget(*this, target) : InvocationTarget();
}

void NSUndoManager::registerAction(Action action) {
    // Objects captured by a forgotten call may call back from their destructors, so destroy them last.
    std::vector<Group> forgotten;
    if (activity_ == Activity::recording) forgotten = std::exchange(redo_, {});
    lastGroupTakesName_ = open_.empty() && !groupsByEvent_;
    if (lastGroupTakesName_) {
        Group group;
        group.actions.push_back(std::move(action));
        undo_.push_back(std::move(group));
        return;
    }
    if (open_.empty()) {
        open_.emplace_back();
        eventGroupIsOpen_ = true;
    }
    open_.back().actions.push_back(std::move(action));
}

void NSUndoManager::removeAllActionsWithTarget(const NSObject& target) {
    lastGroupTakesName_ = false;
    // As above: destroy nothing until all groups are consistent again. Allocate nothing: targets call this from their
    // destructors.
    std::list<Action> removed;
    const auto removeFrom = [&](Group& group) {
        for (auto action = group.actions.begin(); action != group.actions.end();) {
            const auto next = std::next(action);
            if (action->target == &target) removed.splice(removed.end(), group.actions, action);
            action = next;
        }
    };
    for (std::vector<Group>* groups : {&undo_, &redo_, &open_}) std::ranges::for_each(*groups, removeFrom);
    removeFrom(playing_);
    for (std::vector<Group>* groups : {&undo_, &redo_}) {
        std::erase_if(*groups, [](const Group& group) { return group.actions.empty(); });
    }
}

void NSUndoManager::removeAllActions() {
    lastGroupTakesName_ = false;
    const std::vector<Group> removed[] = {std::exchange(undo_, {}), std::exchange(redo_, {}),
                                          std::exchange(open_, std::vector<Group>(open_.size()))};
    const Group unplayed = std::exchange(playing_, {});
}

void NSUndoManager::beginUndoGrouping() {
    lastGroupTakesName_ = false;
    open_.emplace_back();
}

void NSUndoManager::mergeInnermostIntoOuter() {
    Group inner = std::move(open_.back());
    open_.pop_back();
    if (inner.actions.empty()) return;
    Group& outer = open_.back();
    outer.actions.splice(outer.actions.end(), inner.actions);
    if (!inner.name.empty()) outer.name = std::move(inner.name);
}

bool NSUndoManager::endUndoGrouping() {
    if (open_.size() > 1) {
        mergeInnermostIntoOuter();
        return true;
    }
    // Only the end of the playback ends the group that collects inverses.
    if (open_.empty() || activity_ != Activity::recording) return false;
    if (!open_.front().actions.empty()) undo_.push_back(std::move(open_.front()));
    open_.clear();
    eventGroupIsOpen_ = false;
    return true;
}

uint32_t NSUndoManager::groupingLevel() const {
    return static_cast<uint32_t>(open_.size());
}

bool NSUndoManager::groupsByEvent() const {
    return groupsByEvent_;
}

void NSUndoManager::setGroupsByEvent(bool groupsByEvent) {
    groupsByEvent_ = groupsByEvent;
}

void NSUndoManager::endEvent() {
    if (eventGroupIsInnermost()) endUndoGrouping();
}

bool NSUndoManager::canUndo() const {
    if (activity_ != Activity::recording) return false;
    if (open_.empty()) return !undo_.empty();
    return eventGroupIsInnermost() && (!open_.front().actions.empty() || !undo_.empty());
}

bool NSUndoManager::canRedo() const {
    return activity_ == Activity::recording && (open_.empty() || eventGroupIsInnermost()) && !redo_.empty();
}

bool NSUndoManager::playBack(Activity activity, std::vector<Group>& from, std::vector<Group>& inverses) {
    if (activity_ != Activity::recording) return false;
    endEvent();
    if (!open_.empty() || from.empty()) return false;
    beginUndoGrouping();
    playing_ = std::move(from.back());
    from.pop_back();
    activity_ = activity;
    const auto stop = [&] {
        while (open_.size() > 1) mergeInnermostIntoOuter();
        activity_ = Activity::recording;
        Group inverse = std::move(open_.front());
        open_.clear();
        if (inverse.name.empty()) inverse.name = playing_.name;
        if (!inverse.actions.empty()) inverses.push_back(std::move(inverse));
    };
    std::list<Action> current;
    try {
        // A call may remove others of its group.
        while (!playing_.actions.empty()) {
            current.splice(current.end(), playing_.actions, std::prev(playing_.actions.end()));
            current.back().call();
            current.clear();
        }
    } catch (...) {
        // Keep the remaining calls, so that they can be played back later.
        playing_.actions.splice(playing_.actions.end(), current);
        stop();
        from.push_back(std::exchange(playing_, {}));
        throw;
    }
    stop();
    playing_ = {};
    NSNotificationCenter::defaultCenter().postNotificationName(
        activity == Activity::undoing ? NSUndoManagerDidUndoChangeNotification : NSUndoManagerDidRedoChangeNotification,
        refTo(*this));
    return true;
}

bool NSUndoManager::undo() {
    return playBack(Activity::undoing, undo_, redo_);
}

bool NSUndoManager::redo() {
    return playBack(Activity::redoing, redo_, undo_);
}

bool NSUndoManager::isUndoing() const {
    return activity_ == Activity::undoing;
}

bool NSUndoManager::isRedoing() const {
    return activity_ == Activity::redoing;
}

void NSUndoManager::setActionName(std::string name) {
    if (pauses_ > 0) return;
    if (!open_.empty())
        open_.back().name = std::move(name);
    else if (lastGroupTakesName_)
        undo_.back().name = std::move(name);
}

std::string NSUndoManager::undoActionName() const {
    if (eventGroupIsInnermost() && !open_.front().actions.empty()) return open_.front().name;
    return undo_.empty() ? std::string() : undo_.back().name;
}

std::string NSUndoManager::redoActionName() const {
    return redo_.empty() ? std::string() : redo_.back().name;
}

}  // namespace qz
