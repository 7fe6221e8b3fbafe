#include "captions/ArchivedTitles.h"

#include <algorithm>
#include <set>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/archive/QzAnnoArchiver.h"
#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "captions/KeyExchange.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

void addOnce(std::vector<std::string>& names, const std::string& name) {
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
}

/// The handle of an object that somebody holds.
template <class T>
Ref<T> handleOf(const T& object) {
    return std::const_pointer_cast<T>(std::static_pointer_cast<const T>(object.shared_from_this()));
}

/// Supplies the palette's keys and notes missing names; for those, and without a palette, supplies the keys of
/// `others`.
class NotingTable final : public QzTokenTable {
public:
    NotingTable(const Ref<QzAnnoPalette>& palette, LooseKeys* others) : palette_(palette), others_(others) {}

    Ref<NSString> tokenType() const override { return AnnoKeyTokenType; }
    Ref<NSString> nameForToken(const QzToken& token) const override {
        return static_cast<const QzAnnoKey&>(token).name();
    }
    Ref<QzToken> tokenForName(const Ref<NSString>& name) const override {
        if (!name) return {};
        const Ref<QzAnnoKey> known = palette_ ? palette_->findAnnoKey(name) : nullptr;
        if (known) return known;
        if (palette_) addOnce(unknownNames, name->utf8());
        return others_ ? others_->keyNamed(name->utf8()) : palette_->tokenForName(name);
    }

    mutable std::vector<std::string> unknownNames;

private:
    const Ref<QzAnnoPalette> palette_;
    LooseKeys* const others_;
};

/// Whether the object is an annotated string or an array of annotated strings only.
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
                                             std::string* reason, LooseKeys* others) {
    LooseKeys own;
    const auto table = std::make_shared<NotingTable>(palette, palette ? others : &own);
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
        *reason = object ? "holds an object of class " + object->className() + ", not annotated strings"
                         : "holds no readable object";
    }
    if (!reason->empty()) return {};
    titles.unknownNames = table->unknownNames;
    if (!palette) return titles;
    // In the older form, keys missing from the palette have no palette.
    for (Ref<QzAnnoString>& string : titles.strings) {
        bool hasUnbound = false;
        for (const auto& key : string->allKeys()->objects<QzAnnoKey>()) {
            if (!key->valid()) addOnce(titles.unknownNames, key->name()->utf8());
            hasUnbound |= !key->valid();
        }
        if (!hasUnbound || !others) continue;
        string = withKeys(*string, [&](const Ref<QzAnnoKey>& key) {
            return key->valid() ? key : others->keyNamed(key->name()->utf8());
        });
    }
    return titles;
}

std::optional<CaptionFile> readArchive(const NSData& file, const CueNames& names, const CueSink& sink,
                                       CaptionProblem* error) {
    std::string reason;
    const auto titles = archivedTitles(handleOf(file), handleOf(names.palette), &reason, names.others);
    if (!titles) {
        if (error) *error = {CaptionProblem::malformed, 0, reason};
        return {};
    }
    CaptionProblems problems;
    for (const std::string& name : titles->unknownNames) {
        problems.add(CaptionProblem::unknownClass, 0,
                     "there is no annotation \"" + oneLine(name) + "\" in the palette; " +
                         (names.others ? "its text keeps the name and the look of the rest" : "it shows nothing"));
    }
    if (titles->lostCount > 0) problems.add(CaptionProblem::notShown, 0, lostAnnotations(titles->lostCount));
    for (const Ref<QzAnnoString>& string : titles->strings) {
        CaptionCue cue;
        cue.hasTimes = false;
        cue.text = string->mutableCopy();
        sink(std::move(cue));
    }
    CaptionFile captions;
    captions.problems = problems.take();
    return captions;
}

std::optional<WrittenCaptions> writeArchive(const CaptionFile& captions, const CaptionStage& stage,
                                            std::string& reason) {
    const Ref<QzAnnoPalette>& palette = stage.looks.palette();
    std::vector<Ref<NSObject>> strings;
    std::set<std::string> mistaken;
    for (const CaptionCue& cue : captions.cues) {
        strings.push_back(cue.text->copy());
        for (const Ref<QzAnnoKey>& key : cue.text->allKeys()->objects<QzAnnoKey>()) {
            const Ref<QzAnnoKey> read = palette->findAnnoKey(key->name());
            if (read && read != key) mistaken.insert(key->name()->utf8());
        }
    }
    const Ref<NSObject> root = strings.size() == 1 ? strings.front() : NSArray::arrayWithObjects(std::move(strings));
    const Ref<NSData> archive = QzTokeningArchiver::archivedDataWithRootObject(root, {palette}, &reason);
    if (!archive) return {};
    WrittenCaptions written{std::string(archive->view()), {}, {}};
    for (const std::string& name : mistaken) {
        written.losses.push_back("The annotation " + quotedExcerpt(name) +
                                 " becomes another one of that name; rename one of them.");
    }
    return written;
}

bool beginsAsArchive(std::string_view bytes) {
    return isArchive(*NSData::dataWithBytes(bytes.substr(0, 64)));
}

std::string lostAnnotations(uint64_t count) {
    return std::to_string(count) +
           (count == 1 ? " annotation cannot be read and is lost" : " annotations cannot be read and are lost");
}

}  // namespace qz
