#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Posted by an undo manager, as object, after it has undone, or redone, a group; it then records again.
///@{
inline const Ref<NSString> NSUndoManagerDidUndoChangeNotification = "NSUndoManagerDidUndoChangeNotification"_ns;
inline const Ref<NSString> NSUndoManagerDidRedoChangeNotification = "NSUndoManagerDidRedoChangeNotification"_ns;
///@}

/// Records the inverses of edits in groups, and plays the last group back.
///
/// Inverses are registered between `beginUndoGrouping` and `endUndoGrouping`. With `groupsByEvent` (the start state)
/// the first inverse opens a group by itself, which ends with the event (`endEvent`, called by the event loop) or when
/// undo is asked for; without it, an inverse registered outside any group is a group of its own. What is registered
/// while undoing is the redo of that group, and the other way round; anything registered otherwise forgets what could
/// be redone.
class NSUndoManager final : public NSObject {
public:
    /// With nothing to undo.
    static Ref<NSUndoManager> init();

    /// Records calls on one target. Registered with `invoke`, the call is made when the group is played back.
    class InvocationTarget {
    public:
        /// Drops what it is given, as a call on none does nothing.
        InvocationTarget() = default;
        /// Records the call in the innermost open group, or in one of its own as the class says. An empty call is
        /// refused with a log line.
        void invoke(Callback<void()> call) const;

    private:
        friend class NSUndoManager;
        InvocationTarget(NSUndoManager& manager, const NSObject& target) : manager_(&manager), target_(&target) {}
        NSUndoManager* manager_ = nullptr;
        const NSObject* target_ = nullptr;
    };

    /// For use at once, as in `prepareWithInvocationTarget(palette).invoke(…)`. The target is not owned; whoever is a
    /// target calls `removeAllActionsWithTarget` before it dies. Objects held by a recorded call live as long as the
    /// record.
    InvocationTarget prepareWithInvocationTarget(const NSObject& target);
    /// Drops the calls on the target, also those of open groups and of the one that is being played back, and
    /// with them the closed groups that are empty then. Takes no memory, so destructors may call it.
    void removeAllActionsWithTarget(const NSObject& target);
    /// Drops every call; open groups stay open, without their names.
    void removeAllActions();

    /// As long as it lives, the manager records nothing and names no group. Pauses nest.
    class Pause {
    public:
        /// Keeps the manager alive meanwhile.
        explicit Pause(Ref<NSUndoManager> manager) : manager_(std::move(manager)) { ++manager_->pauses_; }
        ~Pause() { --manager_->pauses_; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        const Ref<NSUndoManager> manager_;
    };

    /// Opens a group inside the innermost open one, if there is one.
    void beginUndoGrouping();
    /// Ends the innermost group; an empty one leaves nothing behind, and one inside another becomes part of that, its
    /// name included. False when no group is open that `beginUndoGrouping` or an event has opened.
    bool endUndoGrouping();
    /// How many groups are open inside each other; the one that collects while undoing or redoing counts.
    uint32_t groupingLevel() const;
    /// True at the start. A change takes effect with the next inverse; a group that is open stays so.
    ///@{
    bool groupsByEvent() const;
    void setGroupsByEvent(bool groupsByEvent);
    ///@}
    /// Ends the group that an event opened by itself; does nothing when there is none.
    void endEvent();

    /// Whether `undo` (`redo`) would play something back now.
    ///@{
    bool canUndo() const;
    bool canRedo() const;
    ///@}
    /// Plays the last group back, latest call first. False, and nothing done, when there is none, when a group opened
    /// by `beginUndoGrouping` is still open, or when called while undoing or redoing. An exception of a call
    /// passes through; that call and those not yet made can be played back later.
    ///@{
    bool undo();
    bool redo();
    ///@}
    /// Whether calls are being made by `undo` (`redo`).
    ///@{
    bool isUndoing() const;
    bool isRedoing() const;
    ///@}

    /// Names the group that is open now, or the last inverse that became a group of its own; a name set later wins.
    /// Does nothing when there is neither.
    void setActionName(std::string name);
    /// The name of what undo (redo) would play back; empty when there is nothing or it has no name.
    ///@{
    std::string undoActionName() const;
    std::string redoActionName() const;
    ///@}

    std::string className() const override { return "NSUndoManager"; }

private:
    enum class Activity { recording, undoing, redoing };
    struct Action {
        const NSObject* target;
        Callback<void()> call;
    };
    struct Group {
        std::list<Action> actions;
        std::string name;
    };

    NSUndoManager() = default;
    void registerAction(Action action);
    bool eventGroupIsInnermost() const { return eventGroupIsOpen_ && open_.size() == 1; }
    void mergeInnermostIntoOuter();
    bool playBack(Activity activity, std::vector<Group>& from, std::vector<Group>& inverses);

    std::vector<Group> undo_;
    std::vector<Group> redo_;
    // Outermost first. While playing back, the first one collects what is registered.
    std::vector<Group> open_;
    // What is left of the group that is being played back.
    Group playing_;
    Activity activity_ = Activity::recording;
    bool groupsByEvent_ = true;
    uint32_t pauses_ = 0;
    bool eventGroupIsOpen_ = false;
    // Whether `undo_` ends with an inverse that is a group of its own, until something else begins.
    bool lastGroupTakesName_ = false;
};

}  // namespace qz
