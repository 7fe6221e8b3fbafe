// Edits of a palette and their undoing against a plain model: the whole stack, remembered before each edit.
#include <algorithm>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "fuzz/Fuzzing.h"
#include "platform/foundation/NSNumber.h"

namespace {

using namespace qz;
using fuzz::require;

const Ref<NSString> kMark = "mark"_ns;

struct Entry {
    Ref<QzAnnoKey> key;
    int32_t mark = 0;
    friend bool operator==(const Entry&, const Entry&) = default;
};
/// The global annotation, then the others in rising priority.
using Stack = std::vector<Entry>;

int32_t markOf(const QzAnno& anno) {
    const auto number = anno.allAttributes()->objectForKey<NSNumber>(*kMark);
    return number ? number->intValue() : 0;
}

void compare(const QzAnnoPalette& palette, const Stack& stack) {
    require(palette.maxPriority() + 1 == static_cast<int32_t>(stack.size()), "the palette has the model's size");
    for (int32_t priority = 0; priority <= palette.maxPriority(); ++priority) {
        const Entry& entry = stack[static_cast<size_t>(priority)];
        require(palette.annoKeyAtPriority(priority) == entry.key, "keys lie as in the model");
        require(palette.lookupPrio(entry.key) == priority, "a key knows its priority");
        const Ref<QzAnno> anno = palette.lookupAnno(entry.key);
        require(anno && anno->annokey() == entry.key && markOf(*anno) == entry.mark, "annotations are the model's");
    }
}

/// Makes one edit on both; false when it is refused.
bool edit(QzAnnoPalette& palette, Stack& stack, FuzzedDataProvider& input) {
    const auto priority = input.ConsumeIntegralInRange<int32_t>(0, palette.maxPriority());
    const Ref<QzAnnoKey> key = palette.annoKeyAtPriority(priority);
    const auto at = stack.begin() + priority;
    switch (input.ConsumeIntegralInRange<int>(0, 5)) {
        case 0: {
            const Ref<QzAnno> made = palette.createAnno(input.PickValueInArray({"x"_ns, "y"_ns, "GLOBALS"_ns}));
            if (made) stack.push_back({made->annokey(), 0});
            return made != nullptr;
        }
        case 1:
            require(palette.removeAnno(key) == (priority > 0), "all but the global annotation can be removed");
            if (priority > 0) stack.erase(at);
            return priority > 0;
        case 2: {
            const Ref<QzMutableAnno> changed = palette.lookupAnno(key)->mutableCopy();
            at->mark = input.ConsumeIntegral<int8_t>();
            changed->setAttribute(kMark, NSNumber::numberWithInt(at->mark));
            require(palette.replaceAnno(changed), "every annotation can be replaced");
            return true;
        }
        case 3: {
            const auto to = input.ConsumeIntegralInRange<int32_t>(-1, palette.maxPriority() + 1);
            const bool fits = priority > 0 && to > 0 && to <= palette.maxPriority();
            require(palette.setAnnoKey(key, to) == fits, "a key moves within the stack");
            if (!fits) return false;
            const Entry entry = *at;
            stack.erase(at);
            stack.insert(stack.begin() + to, entry);
            return true;
        }
        case 4: {
            const bool fits = priority > 0 && priority < palette.maxPriority();
            require(palette.increasePriorityOfAnnoKey(key) == fits, "a key moves up");
            if (fits) std::iter_swap(at, at + 1);
            return fits;
        }
        default: {
            const bool fits = priority > 1;
            require(palette.decreasePriorityOfAnnoKey(key) == fits, "a key moves down");
            if (fits) std::iter_swap(at, at - 1);
            return fits;
        }
    }
}

void check(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    const Ref<NSUndoManager> undo = NSUndoManager::init();
    undo->setGroupsByEvent(false);
    palette->setUndoManager(undo);
    Stack stack = {{palette->annoKeyAtPriority(0), 0}};
    std::vector<Stack> before;
    while (input.remaining_bytes() > 0) {
        if (input.ConsumeIntegralInRange<int>(0, 3) == 0) {
            require(undo->undo() == !before.empty(), "as many edits are undone as were made");
            if (!before.empty()) {
                stack = std::move(before.back());
                before.pop_back();
            }
        } else {
            const Stack former = stack;
            bool changed = false;
            undo->beginUndoGrouping();
            for (auto edits = input.ConsumeIntegralInRange<int>(1, 3); edits > 0; --edits)
                changed |= edit(*palette, stack, input);
            undo->endUndoGrouping();
            if (changed) before.push_back(former);
        }
        compare(*palette, stack);
        require(!undo->canRedo(), "an undone edit cannot be redone");
    }
    while (!before.empty()) {
        require(undo->undo(), "every edit is undone");
        compare(*palette, before.back());
        before.pop_back();
    }
}

}  // namespace

QZ_FUZZ(check)
