#pragma once

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSSet.h"

namespace qz {

class QzMutableAnno;

/// What can be asked of an annotation.
class QzAnnoReading {
public:
    virtual ~QzAnnoReading() = default;
    /// Attribute name to value; never changed in place.
    virtual Ref<NSDictionary> allAttributes() const = 0;
    /// Never none.
    virtual Ref<QzAnnoKey> annokey() const = 0;
    /// The key's.
    virtual Ref<NSString> name() const = 0;
    /// The names, a set of `NSString`.
    virtual Ref<NSSet> attributeNames() const = 0;
    /// None when the annotation lacks it.
    virtual Ref<NSObject> attribute(const NSString& name) const = 0;
};

class QzAnno;

/// What can be done to a mutable annotation.
class QzAnnoWriting {
public:
    virtual ~QzAnnoWriting() = default;
    /// Takes over the other's name, which renames this annotation's key, and shares its attribute dictionary.
    virtual void copyFromAnno(const QzAnno& anno) = 0;
    /// Renames the shared key, so the palette and every string that uses the key see the new name.
    virtual void setName(const Ref<NSString>& name) = 0;
    /// Stores the value object itself under the name; none removes the attribute.
    virtual void setAttribute(const Ref<NSString>& name, const Ref<NSObject>& toObject) = 0;
};

/// A named style: a key and a dictionary of attributes. Equality and hash are identity.
///
/// The attribute dictionary is replaced, never changed in place, so annotations may share one.
class QzAnno : public NSObject, public QzAnnoReading {
public:
    /// None when the key is none. No dictionary: no attributes. Values are immutable, so the dictionary's are shared.
    static Ref<QzAnno> initWithKey(const Ref<QzAnnoKey>& key, const Ref<NSDictionary>& attributes = {});

    Ref<NSDictionary> allAttributes() const override { return attributes_; }
    Ref<QzAnnoKey> annokey() const override { return key_; }
    Ref<NSString> name() const override { return key_->name(); }
    Ref<NSSet> attributeNames() const override;
    Ref<NSObject> attribute(const NSString& name) const override { return attributes_->objectForKey(name); }

    /// Exchanges the key; does nothing once the current key is bound to a palette, nor when there is no new one.
    void setKey(const Ref<QzAnnoKey>& key);

    /// A new immutable annotation with the same key, also of a mutable one.
    Ref<QzAnno> copy() const;
    /// With the same key: a new name for the copy is one for this annotation too.
    Ref<QzMutableAnno> mutableCopy() const;

    std::string description() const override;
    std::string className() const override { return "QzAnno"; }

protected:
    /// Neither is none.
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
    /// The same key, the same attributes.
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
