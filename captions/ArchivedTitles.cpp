#include "captions/ArchivedTitles.h"

#include <algorithm>
#include <map>

#include "QzAnno_AnnotatedTextFramework/archive/QzAnnoArchiver.h"
#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "platform/foundation/NSArray.h"

namespace qz {
namespace {

void addOnce(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
}

/// The palette's keys, noting the names that it lacks; without a palette, keys made as their names come.
class NotingTable final : public QzTokenTable {
public:
    explicit NotingTable(const Ref<QzAnnoPalette>& palette) : palette_(palette) {}

    Ref<NSString> tokenType() const override { return AnnoKeyTokenType; }
    Ref<NSString> nameForToken(const QzToken& token) const override {
        return static_cast<const QzAnnoKey&>(token).name();
    }
    Ref<QzToken> tokenForName(const Ref<NSString>& name) const override {
        if (!name) return {};
        if (palette_) {
            if (!palette_->findAnnoKey(name)) addOnce(unknownNames, name->utf8());
            return palette_->tokenForName(name);
        }
        Ref<QzAnnoKey>& key = keys_[name->utf8()];
        if (!key) key = QzAnnoKey::initWithName(name);
        return key;
    }

    mutable std::vector<std::string> unknownNames;

private:
    const Ref<QzAnnoPalette> palette_;
    mutable std::map<std::string, Ref<QzAnnoKey>> keys_;
};

/// Whether the object is an annotated string or an array of nothing else.
bool collect(const Ref<NSObject>& object, std::vector<Ref<QzAnnoString>>& strings) {
    if (const auto* const array = dynamic_cast<const NSArray*>(object.get())) {
        for (const Ref<NSObject>& element : array->elements()) {
            strings.push_back(std::dynamic_pointer_cast<QzAnnoString>(element));
        }
    } else {
        strings.push_back(std::dynamic_pointer_cast<QzAnnoString>(object));
    }
    return std::ranges::all_of(strings, [](const Ref<QzAnnoString>& string) { return string != nullptr; });
}

}  // namespace

std::optional<ArchivedTitles> archivedTitles(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                             std::string* reason) {
    const auto table = std::make_shared<NotingTable>(palette);
    const Ref<QzTokeningUnarchiver> unarchiver = QzTokeningUnarchiver::initForReadingWithData(archive, {table});
    Ref<NSObject> object = unarchiver->decodeObject();
    *reason = unarchiver->error();
    ArchivedTitles titles;
    titles.lostCount = unarchiver->droppedCount();
    if (unarchiver->versionForClassName("QzAnnoKey") == 0) {
        const Ref<QzAnnoUnarchiver> older = QzAnnoUnarchiver::initForReadingWithData(archive, palette);
        object = older->decodeObject();
        *reason = older->error();
        titles.lostCount = older->droppedCount();
    }
    if (reason->empty() && !collect(object, titles.strings)) {
        *reason = object ? "holds an object of class " + object->className() + ", no annotated strings"
                         : "holds no object that can be read";
    }
    if (!reason->empty()) return {};
    titles.unknownNames = table->unknownNames;
    if (!palette) return titles;
    // The older form leaves keys that the palette lacks without one.
    for (const Ref<QzAnnoString>& string : titles.strings) {
        for (const auto& key : string->allKeys()->objects<QzAnnoKey>()) {
            if (!key->valid()) addOnce(titles.unknownNames, key->name()->utf8());
        }
    }
    return titles;
}

}  // namespace qz
