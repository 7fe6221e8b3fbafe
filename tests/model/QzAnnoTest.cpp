#include <gmock/gmock.h>

#include "QzAnno/model/QzAnno.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"

namespace qz {
namespace {

TEST(QzAnnoKey, IsItsOwnIdentityWhateverTheName) {
    const auto a = QzAnnoKey::keyWithName("Title"_ns), b = QzAnnoKey::keyWithName("Title"_ns);
    EXPECT_FALSE(a->isEqual(*b));
    EXPECT_TRUE(a->isEqual(*a));
    EXPECT_EQ(a->description(), "Title (Palette 0)");
    EXPECT_EQ(QzAnnoKey::keyWithName({})->description(), " (Palette 0)");
}

/// Stands in for a palette, since the model does not need one.
struct Binding final : KeyPalette {
    Ref<QzAnnoPalette> palette() override { return {}; }
    bool isDefaultKey(const QzAnnoKey& key) const override { return &key == defaultKey; }
    int32_t serialNumber() const override { return 7; }
    const QzAnnoKey* defaultKey = nullptr;
};

TEST(QzAnnoKey, IsBoundToOnePaletteAtATime) {
    auto first = std::make_shared<Binding>();
    const auto second = std::make_shared<Binding>();
    const auto key = QzAnnoKey::keyWithName("Title"_ns);
    EXPECT_TRUE(MutableSupport::clearPalette(*key, {}));
    EXPECT_FALSE(MutableSupport::clearPalette(*key, first));
    EXPECT_TRUE(MutableSupport::setPalette(*key, first));
    EXPECT_FALSE(MutableSupport::setPalette(*key, second));
    EXPECT_FALSE(MutableSupport::clearPalette(*key, second));
    EXPECT_FALSE(key->isDefault());
    first->defaultKey = key.get();
    EXPECT_TRUE(key->isDefault());
    EXPECT_EQ(key->description(), "Title (Palette 7)");
    first.reset();
    EXPECT_FALSE(key->valid());  // the back reference neither owns nor dangles
    EXPECT_TRUE(MutableSupport::setPalette(*key, second));
    EXPECT_TRUE(MutableSupport::clearPalette(*key, second));
    EXPECT_FALSE(key->valid());
}

TEST(QzAnno, AttributesAreReplacedNeverChanged) {
    const auto key = QzAnnoKey::keyWithName("Title"_ns);
    EXPECT_FALSE(QzAnno::initWithKey({}));
    const Ref<QzAnno> plain = QzAnno::initWithKey(key);
    EXPECT_EQ(plain->attributeNames()->count(), 0u);

    const Ref<QzMutableAnno> anno = plain->mutableCopy();
    anno->setAttribute("Size"_ns, NSNumber::numberWithInt(12));
    anno->setAttribute("Slant"_ns, NSNumber::numberWithInt(1));
    EXPECT_EQ(anno->description(), "Annotation \"Title\" (Title (Palette 0))\tSize = 12\n\tSlant = 1\n");
    const Ref<NSDictionary> before = anno->allAttributes();
    anno->setAttribute("Size"_ns, {});
    anno->setAttribute("Absent"_ns, {});
    EXPECT_EQ(before->count(), 2u);
    EXPECT_FALSE(anno->attribute(*"Size"_ns));
    EXPECT_TRUE(anno->attributeNames()->isEqual(*NSSet::setWithObject("Slant"_ns)));
    EXPECT_EQ(plain->allAttributes()->count(), 0u);
}

TEST(QzAnno, CopiesShareTheKeyAndARenameReachesAll) {
    const Ref<QzAnno> anno = QzAnno::initWithKey(QzAnnoKey::keyWithName("Title"_ns));
    const Ref<QzMutableAnno> edited = anno->mutableCopy();
    const Ref<QzAnno> copy = edited->copy();
    EXPECT_EQ(copy->className(), "QzAnno");
    EXPECT_FALSE(std::dynamic_pointer_cast<QzMutableAnno>(copy));

    const Ref<QzMutableAnno> other = QzAnno::initWithKey(QzAnnoKey::keyWithName("Caption"_ns))->mutableCopy();
    other->setAttribute("Size"_ns, NSNumber::numberWithInt(12));
    edited->copyFromAnno(*other);
    EXPECT_EQ(anno->name()->utf8(), "Caption");
    EXPECT_EQ(edited->allAttributes(), other->allAttributes());
    EXPECT_NE(edited->annokey(), other->annokey());
}

TEST(QzAnno, KeyIsFixedOnceBound) {
    const Ref<QzAnno> anno = QzAnno::initWithKey(QzAnnoKey::keyWithName("Decoded"_ns));
    const auto key = QzAnnoKey::keyWithName("Filed"_ns);
    anno->setKey({});
    EXPECT_EQ(anno->name()->utf8(), "Decoded");
    anno->setKey(key);
    EXPECT_EQ(anno->annokey(), key);
    const auto palette = std::make_shared<Binding>();
    ASSERT_TRUE(MutableSupport::setPalette(*key, palette));
    anno->setKey(QzAnnoKey::keyWithName("Late"_ns));
    EXPECT_EQ(anno->annokey(), key);
}

}  // namespace
}  // namespace qz
