#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Posted with the undo manager as object after it has undone or redone a group, when it records again.
///@{
inline const Ref<NSString> NSUndoManagerDidUndoChangeNotification = "NSUndoManagerDidUndoChangeNotification"_ns;
inline const Ref<NSString> NSUndoManagerDidRedoChangeNotification = "NSUndoManagerDidRedoChangeNotification"_ns;
///@}

/// Records the inverses of edits in groups, and plays the last group back.
///
/// Inverses are registered between `beginUndoGrouping` and `endUndoGrouping`. With `groupsByEvent` (the default) the
/// first inverse opens a group, which ends with the event (`endEvent`, called by the event loop) or on the next undo;
/// without it, an inverse registered outside any group becomes a group of its own. Inverses registered while undoing
/// form the redo of that group, and vice versa; any other registration clears the redo groups.
class NSUndoManager final : public NSObject {
public:
    /// Starts with nothing to undo.
    static Ref<NSUndoManager> init();

    /// Records calls on one target with `invoke`; they are made when the group is played back.
    class InvocationTarget {
    public:
        /// Has no target and drops the calls it is given.
        InvocationTarget() = default;
        /// Records the call in the innermost open group, or in a group of its own as described for the class. An empty
        /// call is refused with a log line.
        void invoke(Callback<void()> call) const;

    private:
        friend class NSUndoManager;
        InvocationTarget(NSUndoManager& manager, const NSObject& target) : manager_(&manager), target_(&target) {}
        NSUndoManager* manager_ = nullptr;
        const NSObject* target_ = nullptr;
    };

    /// For immediate use, as in `prepareWithInvocationTarget(palette).invoke(…)`. The target is not owned: it must call
    /// `removeAllActionsWithTarget` before it is destroyed. Objects captured by a recorded call live as long as the
    /// record.
    InvocationTarget prepareWithInvocationTarget(const NSObject& target);
    /// Drops the calls on the target, including those in open groups and in the group being played back, and any closed
    /// group that becomes empty. Allocates nothing, so destructors may call it.
    void removeAllActionsWithTarget(const NSObject& target);
    /// Drops every call; open groups stay open, without their names.
    void removeAllActions();

    /// While a pause lives, the manager records nothing and names no group. Pauses nest.
    class Pause {
    public:
        /// Keeps the manager alive.
        explicit Pause(Ref<NSUndoManager> manager) : manager_(std::move(manager)) { ++manager_->pauses_; }
        ~Pause() { --manager_->pauses_; }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        const Ref<NSUndoManager> manager_;
    };

    /// Opens a group, inside the innermost open one if there is one.
    void beginUndoGrouping();
    /// Ends the innermost group. An empty group is discarded; a nested one is merged into the enclosing group,
    /// including its name. Returns false if no group opened by `beginUndoGrouping` or an event is open.
    bool endUndoGrouping();
    /// The number of open groups, including the one that collects inverses while undoing or redoing.
    uint32_t groupingLevel() const;
    /// True by default. A change takes effect with the next inverse; a group that is open stays open.
    ///@{
    bool groupsByEvent() const;
    void setGroupsByEvent(bool groupsByEvent);
    ///@}
    /// Ends the group that an event opened automatically, if there is one.
    void endEvent();

    /// Whether `undo` (`redo`) has something to play back now.
    ///@{
    bool canUndo() const;
    bool canRedo() const;
    ///@}
    /// Plays the last group back, latest call first. Returns false and does nothing if there is no group, if a group
    /// opened by `beginUndoGrouping` is still open, or while undoing or redoing. An exception thrown by a call passes
    /// through; that call and the remaining ones can be played back later.
    ///@{
    bool undo();
    bool redo();
    ///@}
    /// Whether calls are being made by `undo` (`redo`).
    ///@{
    bool isUndoing() const;
    bool isRedoing() const;
    ///@}

    /// Names the open group, or else the last inverse that became a group of its own; a later name replaces an earlier
    /// one. Does nothing if there is neither.
    void setActionName(std::string name);
    /// The name of the group that undo (redo) would play back; empty if there is no group or it has no name.
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
    // Outermost first. While playing back, the first one collects the inverses.
    std::vector<Group> open_;
    // The rest of the group being played back.
    Group playing_;
    Activity activity_ = Activity::recording;
    bool groupsByEvent_ = true;
    uint32_t pauses_ = 0;
    bool eventGroupIsOpen_ = false;
    // Whether `undo_` ends with an inverse that is a group of its own; until the next group begins.
    bool lastGroupTakesName_ = false;
};

}  // namespace qz
