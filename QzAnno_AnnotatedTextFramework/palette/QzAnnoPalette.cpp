#include "QzAnno/palette/QzAnnoPalette.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

std::atomic<int32_t> lastSerialNumber = 0;

}  // namespace

QzAnnoPalette::QzAnnoPalette()
    : priorities_(std::make_shared<KeyRow>()),
      reverse_lookup_(std::make_shared<ObjectMap>()),
      serialNumber_(++lastSerialNumber) {}

Ref<QzAnnoPalette> QzAnnoPalette::empty() {
    Ref<QzAnnoPalette> palette(new QzAnnoPalette);
    palette->globals_ = QzAnno::initWithKey(QzAnnoKey::keyWithName("GLOBALS"_ns, palette));
    return palette;
}

Ref<QzAnnoPalette> QzAnnoPalette::init() {
    Ref<QzAnnoPalette> palette = empty();
    NSStandardError("Annopalette made\n");
    return palette;
}

QzAnnoPalette::~QzAnnoPalette() {
    // Recorded inverses call this object and do not keep it alive.
    if (undo_) undo_->removeAllActionsWithTarget(*this);
}

void QzAnnoPalette::retainContentsOfAnnoPalette(const Ref<QzAnnoPalette>& other) {
    if (!other) return;
    priorities_ = other->priorities_;
    reverse_lookup_ = other->reverse_lookup_;
    globals_ = other->globals_;
    const auto moveHere = [&](QzAnnoKey& key) {
        MutableSupport::clearPalette(key, other);
        MutableSupport::setPalette(key, refTo(*this));
    };
    moveHere(*globals_->annokey());
    for (const Ref<QzAnnoKey>& key : *priorities_) moveHere(*key);
    post(QzAnnoPaletteLoaded);
}

void QzAnnoPalette::setUndoManager(const Ref<NSUndoManager>& undoManager) {
    if (undo_ || !undoManager) return;
    undo_ = undoManager;
    immutable_ = false;
}

Ref<const QzAnno> QzAnnoPalette::lookupAnno(const Ref<QzAnnoKey>& key) const {
    return annoOf(key);
}

/// The palette's own annotation.
Ref<QzAnno> QzAnnoPalette::annoOf(const Ref<QzAnnoKey>& key) const {
    if (!key || isGlobal(key)) return globals_;
    return std::static_pointer_cast<QzAnno>(reverse_lookup_->find(*key));
}

bool QzAnnoPalette::contains(const Ref<QzAnnoKey>& key) const {
    return key && reverse_lookup_->contains(*key);
}

int32_t QzAnnoPalette::lookupPrio(const Ref<QzAnnoKey>& key) const {
    if (isGlobal(key)) return 0;
    if (!contains(key)) return -1;
    return static_cast<int32_t>(std::ranges::find(*priorities_, key) - priorities_->begin()) + 1;
}

Ref<QzAnnoKey> QzAnnoPalette::annoKeyAtPriority(int32_t priority) const {
    if (priority < 0 || priority > maxPriority()) return {};
    return priority == 0 ? globals_->annokey() : (*priorities_)[static_cast<size_t>(priority) - 1];
}

Ref<QzAnnoKey> QzAnnoPalette::findAnnoKey(const Ref<NSString>& name) const {
    if (!name || areEqual(name, globals_->name())) return globals_->annokey();
    for (const ObjectMap::Entry& entry : reverse_lookup_->entries()) {
        auto key = std::static_pointer_cast<QzAnnoKey>(entry.key);
        if (areEqual(name, key->name())) return key;
    }
    return {};
}

Ref<NSString> QzAnnoPalette::nameForToken(const QzToken& token) const {
    const auto* const key = dynamic_cast<const QzAnnoKey*>(&token);
    return key ? key->name() : nullptr;
}

Ref<QzToken> QzAnnoPalette::tokenForName(const Ref<NSString>& name) const {
    const Ref<QzAnnoKey> key = findAnnoKey(name);
    return key ? key : globals_->annokey();
}

Ref<const QzAnno> QzAnnoPalette::createAnno(const Ref<NSString>& name) {
    if (immutable_ || !name || areEqual(name, globals_->name())) return {};
    if (maxPriority() >= Limits::kAnnotationsMax) {
        NSLog("The palette is full: the limit is %i annotations\n", {Limits::kAnnotationsMax});
        return {};
    }
    return addNewAnno(name);
}

Ref<const QzAnno> QzAnnoPalette::addNewAnno(const Ref<NSString>& name) {
    auto anno = QzAnno::initWithKey(QzAnnoKey::keyWithName(name, refTo(*this)));
    addAnno(anno, maxPriority() + 1);
    return anno;
}

/// Adds the annotation itself under its key, at the priority or the nearest one that exists.
void QzAnnoPalette::addAnno(const Ref<QzAnno>& anno, int32_t atPrio) {
    const Ref<QzAnnoKey> key = anno->annokey();
    // The inverse of a removal that ran out of memory before removing anything.
    if (contains(key)) return;
    // Allocate first, and record the inverse before the edit: once the table has the key, the row must get it too.
    if (priorities_->size() == priorities_->capacity()) priorities_->reserve(2 * priorities_->size() + 8);
    invocationTarget().invoke([this, key] { removeAnno(key); });
    setUndoActionName("Create Annotation");
    reverse_lookup_->set(key, anno);
    if (reverse_lookup_->find(*key) != anno) NSStandardError("Created anno didn't get into the table\n");
    priorities_->insert(priorities_->begin() + (std::clamp(atPrio, 1, maxPriority() + 1) - 1), key);
    MutableSupport::setPalette(*key, refTo(*this));
}

bool QzAnnoPalette::removeAnno(const Ref<QzAnnoKey>& keyToRemove) {
    if (immutable_ || !contains(keyToRemove)) return false;
    // The argument may be an element of the row that is being erased.
    const Ref<QzAnnoKey> key = keyToRemove;
    const int32_t priority = lookupPrio(key);
    invocationTarget().invoke([this, anno = annoOf(key), priority] { addAnno(anno, priority); });
    setUndoActionName("Delete Annotation");
    priorities_->erase(priorities_->begin() + (priority - 1));
    reverse_lookup_->remove(*key);
    if (!MutableSupport::clearPalette(*key, refTo(*this))) NSLog("%@ would not clear palette\n", {key});
    post(QzAnnoPaletteOrderChanged);
    postAnnoChanged(key);
    return true;
}

bool QzAnnoPalette::replaceAnno(const Ref<const QzAnno>& anno) {
    if (immutable_ || !anno) return false;
    const Ref<QzAnnoKey> key = anno->annokey();
    if (!isGlobal(key) && !contains(key)) return false;
    invocationTarget().invoke([this, former = lookupAnno(key)] { replaceAnno(former); });
    setUndoActionName("Change Annotation");
    const Ref<QzAnno> copy = anno->copy();
    if (isGlobal(key))
        globals_ = copy;
    else
        reverse_lookup_->set(key, copy);
    postAnnoChanged(key);
    return true;
}

bool QzAnnoPalette::setAnnoKey(const Ref<QzAnnoKey>& keyToMove, int32_t toPriority) {
    if (immutable_ || !contains(keyToMove) || toPriority < 1 || toPriority > maxPriority()) return false;
    const Ref<QzAnnoKey> key = keyToMove;
    const int32_t priority = lookupPrio(key);
    recordReordering(key, priority);
    priorities_->erase(priorities_->begin() + (priority - 1));
    priorities_->insert(priorities_->begin() + (toPriority - 1), key);
    post(QzAnnoPaletteOrderChanged);
    return true;
}

bool QzAnnoPalette::increasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key) {
    return exchangeWithNeighbour(key, 1);
}

bool QzAnnoPalette::decreasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key) {
    return exchangeWithNeighbour(key, -1);
}

bool QzAnnoPalette::exchangeWithNeighbour(const Ref<QzAnnoKey>& key, int32_t step) {
    if (immutable_ || !contains(key)) return false;
    const int32_t priority = lookupPrio(key);
    const int32_t neighbour = priority + step;
    if (neighbour < 1 || neighbour > maxPriority()) return false;
    recordReordering(key, priority);
    std::iter_swap(priorities_->begin() + (priority - 1), priorities_->begin() + (neighbour - 1));
    post(QzAnnoPaletteOrderChanged);
    return true;
}

void QzAnnoPalette::recordReordering(const Ref<QzAnnoKey>& key, int32_t formerPriority) {
    invocationTarget().invoke([this, key, formerPriority] { setAnnoKey(key, formerPriority); });
    setUndoActionName("Reorder Annotation Stack");
}

bool QzAnnoPalette::recordsUndo() const {
    return undo_ && !undo_->isUndoing() && !undo_->isRedoing();
}

NSUndoManager::InvocationTarget QzAnnoPalette::invocationTarget() {
    return recordsUndo() ? undo_->prepareWithInvocationTarget(*this) : NSUndoManager::InvocationTarget();
}

void QzAnnoPalette::setUndoActionName(const char* name) {
    if (recordsUndo()) undo_->setActionName(name);
}

void QzAnnoPalette::postAnnoChanged(const Ref<QzAnnoKey>& key) {
    ObjectMap userInfo;
    userInfo.set(QzAnnoChanged, key);
    post(QzAnnoChanged, NSDictionary::dictionaryWithMap(std::move(userInfo)));
}

void QzAnnoPalette::post(const Ref<NSString>& name, const Ref<NSDictionary>& userInfo) {
    if (noNotification_ > 0)
        heldNotificationBack_ = true;
    else
        NSNotificationCenter::defaultCenter().postNotificationName(name, refTo(*this), userInfo);
}

QzAnnoPalette::NoNotification::NoNotification(const Ref<QzAnnoPalette>& palette) : palette_(palette) {
    if (palette_) ++palette_->noNotification_;
}

QzAnnoPalette::NoNotification::~NoNotification() {
    if (!palette_ || --palette_->noNotification_ > 0 || !std::exchange(palette_->heldNotificationBack_, false)) return;
    try {
        palette_->post(QzAnnoPaletteLoaded);
    } catch (...) {
        // The scope may be ending because of an exception, and the changes are valid even if an observer throws. Bypass
        // the hooks, which allocate.
        writeToStandardError("An observer of QzAnnoPaletteLoaded has thrown\n");
    }
}

std::string QzAnnoPalette::description() const {
    std::string text = stringWithFormat("Palette #%i\n", {serialNumber_});
    for (int32_t priority = maxPriority(); priority >= 0; --priority) {
        text += stringWithFormat("%2i : %@\n", {priority, lookupAnno(annoKeyAtPriority(priority))});
    }
    return text;
}

}  // namespace qz
