#pragma once

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSSet.h"

namespace qz {

class QzMutableAnno;

/// The queries of an annotation.
class QzAnnoReading {
public:
    virtual ~QzAnnoReading() = default;
    /// Attribute names to values; never changed in place.
    virtual Ref<NSDictionary> allAttributes() const = 0;
    /// Never null.
    virtual Ref<QzAnnoKey> annokey() const = 0;
    /// The key's name.
    virtual Ref<NSString> name() const = 0;
    /// The attribute names, a set of `NSString`.
    virtual Ref<NSSet> attributeNames() const = 0;
    /// Returns null if the annotation does not have the attribute.
    virtual Ref<NSObject> attribute(const NSString& name) const = 0;
};

class QzAnno;

/// The edits of a mutable annotation.
class QzAnnoWriting {
public:
    virtual ~QzAnnoWriting() = default;
    /// Takes the other's name, which renames this annotation's key, and shares its attribute dictionary.
    virtual void copyFromAnno(const QzAnno& anno) = 0;
    /// Renames the shared key, so the palette and every string that uses the key see the new name.
    virtual void setName(const Ref<NSString>& name) = 0;
    /// Stores the value object itself under the name; null removes the attribute.
    virtual void setAttribute(const Ref<NSString>& name, const Ref<NSObject>& toObject) = 0;
};

/// A named style: a key and a dictionary of attributes. Equality and hash are identity.
///
/// The attribute dictionary is replaced, never changed in place, so annotations may share one.
class QzAnno : public NSObject, public QzAnnoReading {
public:
    /// Returns null if the key is null. A null dictionary counts as empty. Shares the dictionary's values, which are
    /// immutable.
    static Ref<QzAnno> initWithKey(const Ref<QzAnnoKey>& key, const Ref<NSDictionary>& attributes = {});

    Ref<NSDictionary> allAttributes() const override { return attributes_; }
    Ref<QzAnnoKey> annokey() const override { return key_; }
    Ref<NSString> name() const override { return key_->name(); }
    Ref<NSSet> attributeNames() const override;
    Ref<NSObject> attribute(const NSString& name) const override { return attributes_->objectForKey(name); }

    /// Replaces the key. Does nothing if the current key is bound to a palette or the new one is null.
    void setKey(const Ref<QzAnnoKey>& key);

    /// A new immutable annotation with the same key, even if this one is mutable.
    Ref<QzAnno> copy() const;
    /// A mutable copy with the same key: renaming the copy renames this annotation too.
    Ref<QzMutableAnno> mutableCopy() const;

    std::string description() const override;
    std::string className() const override { return "QzAnno"; }

protected:
    /// Neither may be null.
    QzAnno(Ref<QzAnnoKey> key, Ref<NSDictionary> attributes)
        : key_(std::move(key)), attributes_(std::move(attributes)) {}
    /// Stores the given dictionary itself; null counts as empty.
    void setAttributes(Ref<NSDictionary> attributes);

private:
    Ref<QzAnnoKey> key_;
    Ref<NSDictionary> attributes_;
};

/// An annotation that is edited in place and then handed back to its palette.
class QzMutableAnno final : public QzAnno, public QzAnnoWriting {
public:
    /// With the same key and the same attributes.
    static Ref<QzMutableAnno> initWithAnno(const QzAnno& anno);

    void copyFromAnno(const QzAnno& anno) override;
    void setName(const Ref<NSString>& name) override { annokey()->setName(name); }
    void setAttribute(const Ref<NSString>& name, const Ref<NSObject>& toObject) override;
    using QzAnno::setAttributes;

    std::string className() const override { return "QzMutableAnno"; }

private:
    using QzAnno::QzAnno;
};

}  // namespace qz
