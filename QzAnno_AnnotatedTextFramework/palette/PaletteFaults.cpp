#include "QzAnno_AnnotatedTextFramework/palette/PaletteFaults.h"

#include <unordered_set>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeChecks.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

/// Checks the annotations of one palette from the global one upward.
class FaultFinder {
public:
    explicit FaultFinder(FontLibrary* fonts) : fonts_(fonts) {}

    void beginAnnotation(std::string name) {
        annotationName_ = std::move(name);
        if (names_.insert(annotationName_).second) return;
        add("", "an annotation below has the same name; this one cannot be found by name");
    }

    void add(std::string attributeName, std::string message) {
        faults_.push_back({.annotationName = annotationName_,
                           .attributeName = std::move(attributeName),
                           .message = std::move(message)});
    }

    /// Checks the current annotation's attributes, in their property-list form.
    void checkAttributes(const ObjectMap& attributes) {
        for (const ObjectMap::Entry& entry : attributes.entries()) {
            const auto* attributeName = dynamic_cast<const NSString*>(entry.key.get());
            if (!attributeName) continue;
            std::vector<std::string> messages;
            checkAttribute(*attributeName, entry.value, messages);
            for (std::string& message : messages) add(attributeName->utf8(), std::move(message));
        }
        checkFont(attributes);
        if (isGlobal_) globalAttributes_ = attributes;
        isGlobal_ = false;
    }

    std::vector<PaletteFault> takeFaults() { return std::move(faults_); }

private:
    /// Looks for the font of a run with only this annotation, including what the global annotation provides.
    void checkFont(const ObjectMap& attributes) {
        ObjectMap merged = globalAttributes_;
        merged.setAll(attributes);
        const auto stringUnder = [&](const Ref<NSString>& name) {
            return std::dynamic_pointer_cast<NSString>(merged.find(*name));
        };
        const Ref<NSString> fullName = stringUnder(QzFontAttribute);
        const Ref<NSString> family = stringUnder(QzFontNameAttribute);
        // A font named further down has been reported there.
        const bool namesFont =
            fullName ? attributes.contains(*QzFontAttribute)
                     : attributes.contains(*QzFontNameAttribute) || attributes.contains(*QzFontStyleAttribute);
        if (!fonts_ || !namesFont || (!fullName && !family)) return;
        const Ref<NSString> name = fullName ? fullName : fontnameWithName(family, stringUnder(QzFontStyleAttribute));
        if (fonts_->faceWithName(name->utf8())) return;
        const Ref<NSString>& attribute = fullName ? QzFontAttribute : QzFontNameAttribute;
        add(attribute->utf8(), "there is no font " + quotedExcerpt(name->utf8()) + "; the title-bar font is used");
    }

    FontLibrary* const fonts_;  // null if fonts are not looked up
    std::vector<PaletteFault> faults_;
    std::string annotationName_;
    std::unordered_set<std::string> names_;
    ObjectMap globalAttributes_;
    bool isGlobal_ = true;
};

}  // namespace

std::vector<PaletteFault> faultsOfPropertyList(const NSObject& plist, FontLibrary* fonts) {
    const auto* list = dynamic_cast<const NSArray*>(&plist);
    Ref<NSArray> wrapped;
    if (const auto* top = dynamic_cast<const NSDictionary*>(&plist)) {
        wrapped = top->objectForKey<NSArray>(*"Palette"_ns);
        list = wrapped.get();
    }
    FaultFinder finder(fonts);
    for (size_t i = 0; list && i < list->count(); ++i) {
        const auto* element = dynamic_cast<const NSDictionary*>(list->elements()[i].get());
        if (!element) continue;
        const Ref<NSObject> nameValue = element->objectForKey(*QzAnnoPalette_AnnotationNameKey);
        const auto* name = dynamic_cast<const NSString*>(nameValue.get());
        const std::string usedName = name ? name->utf8() : i == 0 ? "GLOBALS" : "Fark new";
        finder.beginAnnotation(usedName);
        // Only the global annotation needs no name.
        if (nameValue ? !name : i > 0) {
            const std::string found = nameValue ? kindOfStoredValue(*nameValue) : "nothing";
            finder.add(QzAnnoPalette_AnnotationNameKey->utf8(),
                       "a name is needed, found " + found + "; \"" + usedName + "\" is used");
        }
        finder.checkAttributes(element->map());
    }
    return finder.takeFaults();
}

}  // namespace qz
