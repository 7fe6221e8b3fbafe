#pragma once

#include "QzAnno/model/QzToken.h"

namespace qz {

class QzAnnoKey;
class QzAnnoPalette;

/// The attribute of attributed strings that holds the `NSSet` of `QzAnnoKey` of a run.
inline const Ref<NSString> QzAnnoAttributeName = "QzAnnoList"_ns;

/// What a key asks of the palette that it is bound to.
class KeyPalette {
public:
    /// The palette itself.
    virtual Ref<QzAnnoPalette> palette() = 0;
    /// Whether the key is that of the palette's global annotation.
    virtual bool isDefaultKey(const QzAnnoKey& key) const = 0;
    /// The number of the palette in descriptions, from 1.
    virtual int32_t serialNumber() const = 0;

protected:
    ~KeyPalette() = default;
};

/// The identity of one annotation style: a shared object with a name, bound to at most one palette.
///
/// Palette, annotations, annotated strings and text attributes hold the same key object, so renaming it renames the
/// annotation everywhere. Equality and hash are identity, and a copy of a key is the key itself. Archives hold keys as
/// tokens, so that reading gives the keys of the reader's own palette. A key does not own its palette; when the palette
/// dies, the key becomes unbound.
class QzAnnoKey final : public QzToken {
public:
    /// A new key; a null name counts as empty. Binds the key to the palette without adding it there: use
    /// `QzAnnoPalette::createAnno` for a key that the palette holds.
    ///@{
    static Ref<QzAnnoKey> keyWithName(const Ref<NSString>& name, const Ref<KeyPalette>& palette = {});
    static Ref<QzAnnoKey> initWithName(const Ref<NSString>& name, const Ref<KeyPalette>& palette = {});
    ///@}

    /// Never null.
    const Ref<NSString>& name() const { return annoname_; }
    /// A null name counts as empty. Posts no notification; a palette posts `QzAnnoChanged` when the annotation is
    /// replaced.
    void setName(const Ref<NSString>& name);

    /// Whether the key is bound to a palette.
    bool valid() const { return !palette_.expired(); }
    /// Null while the key is unbound.
    Ref<QzAnnoPalette> palette() const;
    /// Whether this is the key of its palette's global annotation; false while unbound.
    bool isDefault() const;

    /// Whether both are the same object.
    bool isEqualToAnnoKey(const QzAnnoKey& other) const { return this == &other; }
    Ref<NSString> tokenType() const override { return AnnoKeyTokenType; }
    /// "Title (Palette 3)": the name and the palette's serial number, which is 0 while unbound.
    std::string description() const override;
    std::string className() const override { return "QzAnnoKey"; }

private:
    friend class MutableSupport;

    QzAnnoKey(Ref<NSString> name, const Ref<KeyPalette>& palette) : palette_(palette), annoname_(std::move(name)) {}

    WeakRef<KeyPalette> palette_;
    Ref<NSString> annoname_;
};

}  // namespace qz
