#pragma once

#include <algorithm>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"

namespace qz::fuzz {

/// Checks edits of a palette and their undoing against a plain model: the whole stack, saved before each edit. `Input`
/// as for `EditsCheck`.
template <class Input>
class UndoCheck {
public:
    explicit UndoCheck(Input& input) : input_(input) {
        undo_->setGroupsByEvent(false);
        palette_->setUndoManager(undo_);
        stack_ = {{palette_->annoKeyAtPriority(0), 0}};
    }

    /// Makes some edits as one group, or undoes one.
    void step() {
        if (input_.template ConsumeIntegralInRange<int>(0, 3) == 0) {
            input_.require(undo_->undo() == !before_.empty(), "as many edits are undone as were made");
            if (!before_.empty()) {
                stack_ = std::move(before_.back());
                before_.pop_back();
            }
        } else {
            const Stack former = stack_;
            bool changed = false;
            undo_->beginUndoGrouping();
            for (auto edits = input_.template ConsumeIntegralInRange<int>(1, 3); edits > 0; --edits)
                changed |= makeEdit();
            undo_->endUndoGrouping();
            if (changed) before_.push_back(former);
        }
        compareWith(stack_);
        input_.require(!undo_->canRedo(), "an undone edit cannot be redone");
    }

    void undoAll() {
        for (; !before_.empty(); before_.pop_back()) {
            input_.require(undo_->undo(), "every edit is undone");
            compareWith(before_.back());
        }
    }

private:
    const Ref<NSString> kMark = "mark"_ns;

    struct Entry {
        Ref<QzAnnoKey> key;
        int32_t mark = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    /// The global annotation, then the others in ascending priority.
    using Stack = std::vector<Entry>;

    int32_t markOf(const QzAnno& anno) const {
        const auto number = anno.allAttributes()->objectForKey<NSNumber>(*kMark);
        return number ? number->intValue() : 0;
    }

    void compareWith(const Stack& stack) {
        input_.require(palette_->maxPriority() + 1 == static_cast<int32_t>(stack.size()),
                       "the palette has the model's size");
        for (int32_t priority = 0; priority <= palette_->maxPriority(); ++priority) {
            const Entry& entry = stack[static_cast<size_t>(priority)];
            input_.require(palette_->annoKeyAtPriority(priority) == entry.key, "keys lie as in the model");
            input_.require(palette_->lookupPrio(entry.key) == priority, "a key knows its priority");
            const Ref<const QzAnno> anno = palette_->lookupAnno(entry.key);
            input_.require(anno && anno->annokey() == entry.key && markOf(*anno) == entry.mark,
                           "annotations are the model's");
        }
    }

    /// Makes one edit on both; returns false if it is refused.
    bool makeEdit() {
        const auto priority = input_.template ConsumeIntegralInRange<int32_t>(0, palette_->maxPriority());
        const Ref<QzAnnoKey> key = palette_->annoKeyAtPriority(priority);
        const auto at = stack_.begin() + priority;
        switch (input_.template ConsumeIntegralInRange<int>(0, 5)) {
            case 0: {
                const Ref<const QzAnno> made =
                    palette_->createAnno(input_.PickValueInArray({"x"_ns, "y"_ns, "GLOBALS"_ns}));
                if (made) stack_.push_back({made->annokey(), 0});
                return made != nullptr;
            }
            case 1:
                input_.require(palette_->removeAnno(key) == (priority > 0),
                               "all but the global annotation can be removed");
                if (priority > 0) stack_.erase(at);
                return priority > 0;
            case 2: {
                const Ref<QzMutableAnno> changed = palette_->lookupAnno(key)->mutableCopy();
                at->mark = input_.template ConsumeIntegral<int8_t>();
                changed->setAttribute(kMark, NSNumber::numberWithInt(at->mark));
                input_.require(palette_->replaceAnno(changed), "every annotation can be replaced");
                return true;
            }
            case 3: {
                const auto to = input_.template ConsumeIntegralInRange<int32_t>(-1, palette_->maxPriority() + 1);
                const bool fits = priority > 0 && to > 0 && to <= palette_->maxPriority();
                input_.require(palette_->setAnnoKey(key, to) == fits, "a key moves within the stack");
                if (!fits) return false;
                const Entry entry = *at;
                stack_.erase(at);
                stack_.insert(stack_.begin() + to, entry);
                return true;
            }
            case 4: {
                const bool fits = priority > 0 && priority < palette_->maxPriority();
                input_.require(palette_->increasePriorityOfAnnoKey(key) == fits, "a key moves up");
                if (fits) std::iter_swap(at, at + 1);
                return fits;
            }
            default: {
                const bool fits = priority > 1;
                input_.require(palette_->decreasePriorityOfAnnoKey(key) == fits, "a key moves down");
                if (fits) std::iter_swap(at, at - 1);
                return fits;
            }
        }
    }

    Input& input_;
    const Ref<QzAnnoPalette> palette_ = QzAnnoPalette::init();
    const Ref<NSUndoManager> undo_ = NSUndoManager::init();
    Stack stack_;
    std::vector<Stack> before_;
};

}  // namespace qz::fuzz
