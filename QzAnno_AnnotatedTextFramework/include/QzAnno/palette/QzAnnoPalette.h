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

// Notifications posted with the palette as object.

/// Posted after the contents have been replaced.
inline const Ref<NSString> QzAnnoPaletteLoaded = "QzAnnoPaletteLoaded"_ns;
/// Posted after an annotation has been replaced or removed; the user info holds its key under the notification's name.
inline const Ref<NSString> QzAnnoChanged = "QzAnnoChanged"_ns;
/// Posted after priorities have changed.
inline const Ref<NSString> QzAnnoPaletteOrderChanged = "QzAnnoPaletteOrderChanged"_ns;

/// The stack of annotations that annotated strings refer to: the global annotation at priority 0, which always applies,
/// and others at 1 to `maxPriority`, where the higher one wins.
///
/// A palette is locked, and refuses every edit, until it is given an undo manager. Edits record their inverse with the
/// undo manager, except while it undoes or redoes, so an undone edit cannot be redone. The palette's annotations are
/// read-only: to change one, make a mutable copy, change that, and pass it to `replaceAnno`. Names need not be unique.
/// Use a palette from one thread at a time; separate palettes may be used from separate threads.
class QzAnnoPalette final : public NSObject, public KeyPalette, public QzLogUsing, public QzTokenTable {
public:
    /// An empty, locked palette, whose global annotation "GLOBALS" has no attributes.
    static Ref<QzAnnoPalette> init();
    ~QzAnnoPalette() override;

    /// Replaces this palette's contents by the other's own keys and annotations; discard the other afterwards. This
    /// palette's lock, undo manager, log and fonts stay.
    void retainContentsOfAnnoPalette(const Ref<QzAnnoPalette>& other);

    /// Null while the palette is locked.
    const Ref<NSUndoManager>& undoManager() const { return undo_; }
    /// The first undo manager is kept and unlocks the palette; later ones, and null, are ignored.
    void setUndoManager(const Ref<NSUndoManager>& undoManager);
    /// Whether the palette is unlocked.
    bool editable() const { return !immutable_; }
    void setLog(const Ref<QzLog>& log) override { logger_ = log; }

    /// The library for looking up font names; null, the default, means the system's fonts. Palettes on different
    /// threads may share a library.
    ///@{
    const std::shared_ptr<FontLibrary>& fontLibrary() const { return fontLibrary_; }
    void setFontLibrary(std::shared_ptr<FontLibrary> library) { fontLibrary_ = std::move(library); }
    ///@}

    /// The key's annotation. Returns the global annotation for its key and for null, and null for a key that is not in
    /// the palette.
    Ref<const QzAnno> lookupAnno(const Ref<QzAnnoKey>& key) const;
    /// Whether the palette has an annotation with this key above the global one.
    bool contains(const Ref<QzAnnoKey>& key) const;
    /// Returns 0 for the global key, -1 for a key that is not in the palette.
    int32_t lookupPrio(const Ref<QzAnnoKey>& key) const;
    /// The number of annotations above the global one.
    int32_t maxPriority() const { return static_cast<int32_t>(priorities_->size()); }
    /// Returns null outside 0 to `maxPriority`.
    Ref<QzAnnoKey> annoKeyAtPriority(int32_t priority) const;
    /// The key of the first-added annotation with that name. Returns the global key for its own name and for null.
    Ref<QzAnnoKey> findAnnoKey(const Ref<NSString>& name) const;

    /// Adds an annotation without attributes on top. Refused if the name is null or the global annotation's, and if
    /// there are `Limits::kAnnotationsMax` already.
    Ref<const QzAnno> createAnno(const Ref<NSString>& name);
    /// Removes the annotation and unbinds the key. The global annotation cannot be removed.
    bool removeAnno(const Ref<QzAnnoKey>& key);
    /// Replaces the annotation with the same key by a copy; refused if the palette does not have the key.
    bool replaceAnno(const Ref<const QzAnno>& anno);
    /// Moves the key to a priority from 1 to `maxPriority`; those between shift by one.
    bool setAnnoKey(const Ref<QzAnnoKey>& key, int32_t toPriority);
    /// Swaps the key with its neighbour one priority higher (lower); refused if there is no neighbour.
    ///@{
    bool increasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key);
    bool decreasePriorityOfAnnoKey(const Ref<QzAnnoKey>& key);
    ///@}

    // Attribute dictionaries use, or are converted to, the vocabulary of AttributeNames.h; null counts as empty.

    /// The attributes of the global annotation and of the annotations in the set, merged in ascending priority, with
    /// the set itself under `QzAnnoAttributeName`. A null set counts as empty; keys that are not in the palette are
    /// ignored.
    Ref<NSDictionary> attributesForSet(const Ref<NSSet>& set) const;
    /// Adds the font and the paragraph style that the attributes describe. A missing font is reported to the log, a
    /// value of the wrong kind in a log line; either is replaced by the default.
    Ref<NSDictionary> assembleCompleteAttributes(const Ref<NSDictionary>& attributes) const;
    /// Converts the font and the paragraph style back into full name, size, leading and alignment.
    Ref<NSDictionary> disassembleFragments(const Ref<NSDictionary>& attributes) const;
    /// The run's attributes, disassembled, that differ from what its annotations give it.
    Ref<NSDictionary> findInlines(const Ref<NSDictionary>& attributes) const;

    /// The palette as an XML property list. If an attribute's value has no property-list form, returns null with a log
    /// line, and `errorDescription` names the annotation and the attribute.
    Ref<NSData> pListData(std::string* errorDescription = nullptr) const;
    /// A new, locked palette. Returns null, with the reason in `errorDescription`, if the data is not a palette of
    /// version 0. A list that cannot be read also logs a line.
    static Ref<QzAnnoPalette> paletteFromPListData(const NSData& data, std::string* errorDescription = nullptr);

    /// Suppresses the palette's notifications while it lives, for a host that makes many changes in a row. When the
    /// palette's last such scope ends and any notification was suppressed, posts `QzAnnoPaletteLoaded` once, so that
    /// views of the palette reload.
    class NoNotification {
    public:
        /// Keeps the palette alive; null suppresses nothing.
        explicit NoNotification(const Ref<QzAnnoPalette>& palette);
        ~NoNotification();
        NoNotification(const NoNotification&) = delete;
        NoNotification& operator=(const NoNotification&) = delete;

    private:
        const Ref<QzAnnoPalette> palette_;
    };
    /// The number of scopes that suppress notifications.
    int32_t noNotification() const { return noNotification_; }

    /// As a token table, the palette turns keys, even those of other palettes, into their names, and names into its own
    /// keys; a name that it does not have becomes the global key.
    ///@{
    Ref<NSString> tokenType() const override { return AnnoKeyTokenType; }
    Ref<NSString> nameForToken(const QzToken& token) const override;
    Ref<QzToken> tokenForName(const Ref<NSString>& name) const override;
    ///@}

    /// Reads the coded form: the global annotation, then an array of the others in ascending priority. Returns a new,
    /// locked palette; null if the class version is not 0; null with a failure of the unarchiver if an object is not an
    /// annotation.
    static Ref<QzAnnoPalette> initWithCoder(NSUnarchiver& unarchiver);
    /// Writes the coded form.
    void encodeWithCoder(NSArchiver& archiver) const;

    /// Identifies the palette object; counts from 1 in creation order.
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

    // Held by reference, since a palette that takes another's contents shares its row and table.
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
