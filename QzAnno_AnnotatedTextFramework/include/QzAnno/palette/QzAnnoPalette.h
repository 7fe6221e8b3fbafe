#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "QzAnno/model/QzAnno.h"
#include "QzAnno/palette/QzLog.h"
#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"

namespace qz {

class FontLibrary;
class NSArchiver;
class NSArray;
class NSUnarchiver;

// Notifications of a palette, with the palette as object.

/// It has taken over other contents.
inline const Ref<NSString> QzAnnoPaletteLoaded = "QzAnnoPaletteLoaded"_ns;
/// An annotation was replaced or removed; the user info holds its key under the notification's own name.
inline const Ref<NSString> QzAnnoChanged = "QzAnnoChanged"_ns;
/// Priorities have changed.
inline const Ref<NSString> QzAnnoPaletteOrderChanged = "QzAnnoPaletteOrderChanged"_ns;

/// The stack of annotations against which annotated strings are read: the global annotation at priority 0, which always
/// applies, and others at 1 to `maxPriority`, of which the higher wins.
///
/// A palette is locked until it is given an undo manager; while it is locked every edit is refused. Edits record their
/// inverse with the undo manager, but none while it undoes or redoes, so an undone edit cannot be redone. The
/// annotations that the palette gives out are to be looked at: to change one, make a mutable copy, change that, and
/// hand it to `replaceAnno`. Names need not be unique. Used from one thread at a time; different palettes may be used
/// from different threads.
class QzAnnoPalette final : public NSObject, public KeyPalette, public QzLogUsing, public QzTokenTable {
public:
    /// An empty, locked palette, whose global annotation "GLOBALS" has no attributes.
    static Ref<QzAnnoPalette> init();
    ~QzAnnoPalette() override;

    /// Takes over the contents of the other palette, keys and annotations themselves, for holders of this one to see;
    /// the other is to be discarded. This palette's lock, undo manager, log and fonts stay.
    void retainContentsOfAnnoPalette(const Ref<QzAnnoPalette>& other);

    /// None while the palette is locked.
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    /// The first undo manager is kept and unlocks the palette; later ones, and none, change nothing.
    void setUndoManager(const Ref<NSUndoManager>& undoManager);
    /// Whether the palette is unlocked.
    bool editable() const { return !immutable_; }
    void setLog(const Ref<QzLog>& log) override { logger_ = log; }

    /// Where the names of fonts are looked up; null stands for the fonts of this machine, which a new palette uses. A
    /// library may be shared by palettes on different threads.
    ///@{
    const std::shared_ptr<FontLibrary>& fontLibrary() const { return fontLibrary_; }
    void setFontLibrary(std::shared_ptr<FontLibrary> library) { fontLibrary_ = std::move(library); }
    ///@}

    /// The annotation of the key: the global one for its key and for none; none for a key that is not in the palette.
    Ref<const QzAnno> lookupAnno(const Ref<QzAnnoKey>& key) const;
    /// Whether the key is that of an annotation above the global one.
    bool contains(const Ref<QzAnnoKey>& key) const;
    /// 0 for the global key, -1 for one that is not in the palette.
    int32_t lookupPrio(const Ref<QzAnnoKey>& key) const;
    /// How many annotations there are above the global one.
    int32_t maxPriority() const { return static_cast<int32_t>(priorities_->size()); }
    /// None outside 0 to `maxPriority`.
    Ref<QzAnnoKey> annoKeyAtPriority(int32_t priority) const;
    /// The key of the annotation of that name that was filed first; the global key for its own name and for none.
    Ref<QzAnnoKey> findAnnoKey(const Ref<NSString>& name) const;

    /// A new annotation without attributes, on top. Refused for the global annotation's name and for none,
    /// and when there are `Limits::kAnnotationsMax`.
    Ref<const QzAnno> createAnno(const Ref<NSString>& name);
    /// Unbinds the key. The global annotation is not removed.
    bool removeAnno(const Ref<QzAnnoKey>& key);
    /// Files a copy of the annotation in place of the one with the same key; refused when the palette has none with it.
    bool replaceAnno(const Ref<const QzAnno>& anno);
    /// Moves the key to a priority from 1 to `maxPriority`; those between shift by one.
    bool setAnnoKey(const Ref<QzAnnoKey>& key, int32_t toPriority);
    /// Exchanges the key with its neighbour one priority higher, or lower; refused where there is none.
    ///@{
    bool increasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key);
    bool decreasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key);
    ///@}

    // Attribute dictionaries are in, or are turned into, the vocabulary of AttributeNames.h; none counts as an empty
    // one.

    /// The attributes of the global annotation and of the annotations in the set, merged in rising priority, with the
    /// set itself under `QzAnnoAttributeName`. No set counts as the empty one; keys that are not in the palette add
    /// nothing.
    Ref<NSDictionary> attributesForSet(const Ref<NSSet>& set) const;
    /// Adds the font and the paragraph style that the attributes describe. A font that is missing is reported to the
    /// log, and a value of the wrong kind in a log line; either is replaced by the default.
    Ref<NSDictionary> assembleCompleteAttributes(const Ref<NSDictionary>& attributes) const;
    /// Takes the font and the paragraph style apart again into full name, size, leading and alignment.
    Ref<NSDictionary> disassembleFragments(const Ref<NSDictionary>& attributes) const;
    /// What the attributes of a run hold, taken apart, beyond what its annotations give it.
    Ref<NSDictionary> findInlines(const Ref<NSDictionary>& attributes) const;

    /// The palette as an XML property list; none, with a log line, when an attribute's value has no property-list form;
    /// `errorDescription` then names the annotation and the attribute.
    Ref<NSData> pListData(std::string* errorDescription = nullptr) const;
    /// A new, locked palette; none when the data is no palette of version 0, with the reason in `errorDescription`. A
    /// list that cannot be read also gets a log line.
    static Ref<QzAnnoPalette> paletteFromPListData(const NSData& data, std::string* errorDescription = nullptr);

    /// Holds the palette's notifications back while it lives, for a host that makes many changes in a row. When the
    /// last such scope of a palette ends and a notification was held back, `QzAnnoPaletteLoaded` is posted once, so
    /// that whoever shows the palette reloads.
    class NoNotification {
    public:
        /// Keeps the palette alive; null holds nothing back.
        explicit NoNotification(const Ref<QzAnnoPalette>& palette);
        ~NoNotification();
        NoNotification(const NoNotification&) = delete;
        NoNotification& operator=(const NoNotification&) = delete;

    private:
        const Ref<QzAnnoPalette> palette_;
    };
    /// How many scopes hold notifications back.
    int32_t noNotification() const { return noNotification_; }

    /// As token table the palette turns keys, also those of other palettes, into their names, and names into its own
    /// keys; a name that it lacks stands for the global key.
    ///@{
    Ref<NSString> tokenType() const override { return AnnoKeyTokenType; }
    Ref<NSString> nameForToken(const QzToken& token) const override;
    Ref<QzToken> tokenForName(const Ref<NSString>& name) const override;
    ///@}

    /// Reads the coded form, which is the global annotation, then an array of the others in rising priority. A new,
    /// locked palette; none when the class version is not 0, and none, with a failure of the unarchiver, when another
    /// object stands where an annotation is due.
    static Ref<QzAnnoPalette> initWithCoder(NSUnarchiver& unarchiver);
    /// Writes that form.
    void encodeWithCoder(NSArchiver& archiver) const;

    /// Identifies the palette object: counts from 1 in the order of creation.
    int32_t serialNumber() const override { return serialNumber_; }
    /// One line for each annotation, highest priority first.
    std::string description() const override;
    std::string className() const override { return "QzAnnoPalette"; }

private:
    using KeyRow = std::vector<Ref<QzAnnoKey>>;

    QzAnnoPalette();

    Ref<QzAnnoPalette> palette() override { return refTo(*this); }
    bool isDefaultKey(const QzAnnoKey& key) const override { return globals_->annokey().get() == &key; }
    static Ref<QzAnnoPalette> empty();
    Ref<QzAnno> annoOf(const Ref<QzAnnoKey>& key) const;
    bool isGlobal(const Ref<QzAnnoKey>& key) const { return key == globals_->annokey(); }
    NSUndoManager::InvocationTarget invocationTarget();
    void setUndoActionName(const char* name);
    bool recordsUndo() const;
    Ref<const QzAnno> addNewAnno(const Ref<NSString>& name);
    void addAnno(const Ref<QzAnno>& anno, int32_t atPrio);
    bool exchangeWithNeighbour(const Ref<QzAnnoKey>& key, int32_t step);
    void recordReordering(const Ref<QzAnnoKey>& key, int32_t formerPriority);
    void postAnnoChanged(const Ref<QzAnnoKey>& key);
    void post(const Ref<NSString>& name, const Ref<NSDictionary>& userInfo = {});
    void reportMissingFont(const Ref<NSString>& fullName) const;
    bool loadList(const NSArray& list, std::string& error);
    bool takeDecoded(const NSArray& annotations, NSUnarchiver& unarchiver);

    // Behind references, since a palette that takes over another's contents shares the very row and table.
    Ref<KeyRow> priorities_;         // element i has priority i + 1
    Ref<ObjectMap> reverse_lookup_;  // key -> QzAnno, for exactly the keys of `priorities_`
    Ref<QzAnno> globals_;
    int32_t noNotification_ = 0;
    bool heldNotificationBack_ = false;
    bool immutable_ = true;
    Ref<NSUndoManager> undo_;
    WeakRef<QzLog> logger_;
    std::shared_ptr<FontLibrary> fontLibrary_;
    const int32_t serialNumber_;
};

}  // namespace qz
