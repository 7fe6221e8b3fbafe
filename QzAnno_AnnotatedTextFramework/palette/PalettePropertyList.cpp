#include <optional>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

constexpr char kReadingFailed[] = "Error reading palette plist: %@\n";
constexpr char kSerializingFailed[] = "Error occurred serializing palette: %@\n";

Ref<NSData> serialized(const Ref<NSObject>& plist, std::string* error) {
    return NSPropertyListSerialization::dataFromPropertyList(plist, NSPropertyListFormat::xml, error);
}

/// The annotation's attributes in their stored form; no value, with the reason, if one cannot be stored.
std::optional<ObjectMap> storedAttributes(const QzAnno& anno, std::string& error) {
    const Ref<NSDictionary> attributes = anno.allAttributes();
    ObjectMap stored;
    for (const ObjectMap::Entry& entry : attributes->map().entries()) {
        auto value = dehydrate(entry.value);
        // An attribute under the name's key would be read back as the annotation's name.
        if (!value || entry.key->isEqual(*QzAnnoPalette_AnnotationNameKey)) {
            const std::string attribute =
                quotedExcerpt(anno.name()->utf8()) + ": the attribute " + quotedExcerpt(entry.key->description());
            error = entry.value
                        ? attribute + ", of class " + entry.value->className() + ", has no form in a property list"
                        : attribute + " has no value; set one or remove it";
            return {};
        }
        stored.set(entry.key, std::move(value));
    }
    return stored;
}

/// The serialiser numbers annotations, but people know them by name, so find the first value that it refuses.
std::string describeRefusal(const NSArray& list, const std::string& reason) {
    for (size_t i = 0; i < list.count(); ++i) {
        const auto& element = static_cast<const NSDictionary&>(*list.elements()[i]);
        for (const ObjectMap::Entry& entry : element.map().entries()) {
            ObjectMap alone;
            alone.set(entry.key, entry.value);
            std::string reasonAlone;
            if (serialized(NSDictionary::dictionaryWithMap(std::move(alone)), &reasonAlone)) continue;
            const auto name = i == 0 ? "GLOBALS"_ns : element.objectForKey<NSString>(*QzAnnoPalette_AnnotationNameKey);
            return quotedExcerpt(name->utf8()) + ": " + reasonAlone;
        }
    }
    return reason;
}

/// Fills the annotation from one element of the list: its name, which goes to its key, and its attributes.
void loadAnno(QzMutableAnno& anno, const NSDictionary& element) {
    ObjectMap attributes = anno.allAttributes()->map();
    for (const ObjectMap::Entry& entry : element.map().entries()) {
        if (entry.key->isEqual(*QzAnnoPalette_AnnotationNameKey)) {
            if (const auto name = std::dynamic_pointer_cast<NSString>(entry.value))
                anno.setName(name);
            else
                NSLog("An annotation's name is of class %@, not a string, and is ignored\n",
                      {entry.value->className()});
        } else if (const auto dictionary = std::dynamic_pointer_cast<NSDictionary>(entry.value)) {
            attributes.set(entry.key, rehydrate(dictionary));
        } else {
            attributes.set(entry.key, entry.value);
        }
    }
    anno.setAttributes(NSDictionary::dictionaryWithMap(std::move(attributes)));
}

/// The array of annotations in a property list; null, with the reason, if it is not a palette of version 0. A list that
/// is not meant for this reader, with another version or top level, logs no line.
Ref<NSArray> annotationList(const Ref<NSObject>& plist, std::string& error) {
    if (auto list = std::dynamic_pointer_cast<NSArray>(plist)) return list;
    const auto top = std::dynamic_pointer_cast<NSDictionary>(plist);
    if (!top) {
        error = "a palette is a dictionary or an array, found " + plist->className();
        return {};
    }
    const Ref<NSObject> version = top->objectForKey(*"Version"_ns);
    const Ref<NSNumber> number = numberFrom(version);
    if (version && !(number && number->intValue() == 0)) {
        const std::string found = number ? number->description() : "of class " + version->className();
        error = "the palette's version needs to be 0, found one " + found;
        return {};
    }
    auto list = top->objectForKey<NSArray>(*"Palette"_ns);
    if (!list) {
        error = "there is no array under \"Palette\"";
        NSLog(kReadingFailed, {error});
    }
    return list;
}

}  // namespace

Ref<NSData> QzAnnoPalette::pListData(std::string* errorDescription) const {
    std::string error;
    const auto refuse = [&](const std::string& reason) {
        NSLog(kSerializingFailed, {reason});
        if (errorDescription) *errorDescription = reason;
        return Ref<NSData>();
    };
    std::vector<Ref<NSObject>> elements;
    for (int32_t priority = 0; priority <= maxPriority(); ++priority) {
        const Ref<const QzAnno> anno = lookupAnno(annoKeyAtPriority(priority));
        auto stored = storedAttributes(*anno, error);
        if (!stored) return refuse(error);
        ObjectMap element;
        if (priority > 0) element.set(QzAnnoPalette_AnnotationNameKey, anno->name());
        element.setAll(*stored);
        elements.push_back(NSDictionary::dictionaryWithMap(std::move(element)));
    }
    const Ref<NSArray> list = NSArray::arrayWithObjects(std::move(elements));
    ObjectMap top;
    top.set("Palette"_ns, list);
    top.set("Version"_ns, NSNumber::numberWithInt(0));
    Ref<NSData> data = serialized(NSDictionary::dictionaryWithMap(std::move(top)), &error);
    return data ? data : refuse(describeRefusal(*list, error));
}

Ref<QzAnnoPalette> QzAnnoPalette::paletteFromPListData(const NSData& data, std::string* errorDescription) {
    std::string error;
    const Ref<QzAnnoPalette> palette = init();
    const Ref<NSObject> plist = NSPropertyListSerialization::propertyListFromData(data, &error);
    if (!plist) NSLog(kReadingFailed, {error});
    const Ref<NSArray> list = plist ? annotationList(plist, error) : Ref<NSArray>();
    if (list && palette->loadList(*list, error)) return palette;
    if (errorDescription) *errorDescription = std::move(error);
    return {};
}

bool QzAnnoPalette::loadList(const NSArray& list, std::string& error) {
    if (list.count() > size_t{Limits::kAnnotationsMax} + 1) {
        error = "the palette has " + std::to_string(list.count() - 1) + " annotations; " +
                std::to_string(Limits::kAnnotationsMax) + " is the limit; split it";
        NSLog(kReadingFailed, {error});
        return false;
    }
    immutable_ = false;
    const auto fill = [this](const QzAnno& anno, const NSDictionary& element) {
        const Ref<QzMutableAnno> filled = anno.mutableCopy();
        loadAnno(*filled, element);
        replaceAnno(filled);
    };
    if (list.count() == 0) fill(*globals_, *NSDictionary::dictionary());
    for (size_t i = 0; i < list.count(); ++i) {
        const auto* element = dynamic_cast<const NSDictionary*>(list.elements()[i].get());
        if (!element) {
            error = stringWithFormat("element %i of the palette is not a dictionary but %@",
                                     {static_cast<int32_t>(i), list.elements()[i]->className()});
            NSLog(kReadingFailed, {error});
            return false;
        }
        // Bypasses `createAnno`, which would refuse the temporary name if the file gave it to the global annotation.
        fill(i == 0 ? *globals_ : *addNewAnno("Fark new"_ns), *element);
    }
    immutable_ = true;
    return true;
}

}  // namespace qz
