#include "platform/text/FontListing.h"

#include <algorithm>
#include <map>
#include <new>
#include <tuple>
#include <unordered_set>

#include "platform/text/NamedInstances.h"

namespace qz {
namespace {

struct LocalizedName {
    std::string text;
    std::string language;
};

std::vector<LocalizedName> namesOf(const FcPattern* pattern, const char* object, const char* languageObject) {
    std::vector<LocalizedName> names;
    FcChar8* text = nullptr;
    for (int i = 0; FcPatternGetString(pattern, object, i, &text) == FcResultMatch; ++i) {
        FcChar8* language = nullptr;
        const bool hasLanguage = FcPatternGetString(pattern, languageObject, i, &language) == FcResultMatch;
        names.push_back({textOf(text), hasLanguage ? textOf(language) : ""});
    }
    return names;
}

std::string stringOf(const FcPattern* pattern, const char* object) {
    FcChar8* text = nullptr;
    return FcPatternGetString(pattern, object, 0, &text) == FcResultMatch ? textOf(text) : "";
}

int integerOf(const FcPattern* pattern, const char* object, int otherwise) {
    int value = 0;
    return FcPatternGetInteger(pattern, object, 0, &value) == FcResultMatch ? value : otherwise;
}

double numberOf(const FcPattern* pattern, const char* object, double otherwise) {
    double value = 0;
    return FcPatternGetDouble(pattern, object, 0, &value) == FcResultMatch ? value : otherwise;
}

bool flagOf(const FcPattern* pattern, const char* object) {
    FcBool value = FcFalse;
    return FcPatternGetBool(pattern, object, 0, &value) == FcResultMatch && value == FcTrue;
}

std::string englishOrFirst(const std::vector<LocalizedName>& names) {
    const auto english =
        std::find_if(names.begin(), names.end(), [](const auto& name) { return name.language == "en"; });
    if (english != names.end()) return english->text;
    return names.empty() ? std::string() : names.front().text;
}

// "Family-Style" in every language of the names. A font that belongs to two families, "Sans" with the style "Condensed
// Bold" and "Sans Condensed" with the style "Bold", lists families and styles in the same order; mixing them would also
// make it "Sans-Bold".
std::vector<std::string> familyStyleNames(const std::vector<LocalizedName>& families,
                                          const std::vector<LocalizedName>& styles) {
    std::map<std::string, std::pair<std::vector<std::string>, std::vector<std::string>>> byLanguage;
    for (const LocalizedName& family : families) byLanguage[family.language].first.push_back(family.text);
    for (const LocalizedName& style : styles) byLanguage[style.language].second.push_back(style.text);

    std::vector<std::string> names;
    for (auto& [language, pair] : byLanguage) {
        auto& [familiesHere, stylesHere] = pair;
        if (familiesHere.empty() && !families.empty()) familiesHere.push_back(families.front().text);
        if (stylesHere.empty() && !styles.empty()) stylesHere.push_back(styles.front().text);
        if (familiesHere.empty() || stylesHere.empty()) continue;
        for (size_t i = 0; i < std::max(familiesHere.size(), stylesHere.size()); ++i) {
            names.push_back(familiesHere[std::min(i, familiesHere.size() - 1)] + "-" +
                            stylesHere[std::min(i, stylesHere.size() - 1)]);
        }
    }
    return names;
}

// HarfBuzz and FreeType read the same tables only from plain SFNT files, not from compressed ones or Type 1.
bool isUsable(const FcPattern* pattern) {
    const std::string format = stringOf(pattern, FC_FONTFORMAT);
    const std::string path = stringOf(pattern, FC_FILE);
    // A variable font is listed as a whole in addition to its named instances.
    return (format == "TrueType" || format == "CFF") && !path.ends_with(".woff") && !path.ends_with(".woff2") &&
           !flagOf(pattern, FC_VARIABLE) && flagOf(pattern, FC_SCALABLE) &&
           (flagOf(pattern, FC_OUTLINE) || flagOf(pattern, FC_COLOR));
}

ListedFont listedFont(const FcPattern* pattern) {
    const std::vector<LocalizedName> families = namesOf(pattern, FC_FAMILY, FC_FAMILYLANG);
    const std::vector<LocalizedName> styles = namesOf(pattern, FC_STYLE, FC_STYLELANG);
    const std::vector<LocalizedName> fullNames = namesOf(pattern, FC_FULLNAME, FC_FULLNAMELANG);

    ListedFont listed;
    InstalledFont& font = listed.font;
    font.path = stringOf(pattern, FC_FILE);
    font.index = integerOf(pattern, FC_INDEX, 0);
    font.postScriptName = stringOf(pattern, FC_POSTSCRIPT_NAME);
    font.fullName = englishOrFirst(fullNames);
    font.familyName = englishOrFirst(families);
    font.styleName = englishOrFirst(styles);
    font.weight = numberOf(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR);
    font.width = numberOf(pattern, FC_WIDTH, FC_WIDTH_NORMAL);
    font.slant = integerOf(pattern, FC_SLANT, FC_SLANT_ROMAN);
    font.version = integerOf(pattern, FC_FONTVERSION, 0);
    font.isColour = flagOf(pattern, FC_COLOR);
    for (const LocalizedName& name : fullNames) listed.fullNames.push_back(name.text);
    for (const LocalizedName& name : families) listed.familyNames.push_back(name.text);
    listed.familyStyleNames = familyStyleNames(families, styles);
    listed.postScriptNames = {font.postScriptName};
    return listed;
}

// Fontconfig invents names for the instances of a variable font, with the same full name for all; this uses the font's
// own names. The default instance is listed as the font itself.
class InstanceNaming {
public:
    void name(ListedFont& listed) {
        InstalledFont& font = listed.font;
        const NamedInstance* const instance = instanceOf(font);
        if (!instance) return;
        font.postScriptName = instance->postScriptName;
        font.fullName = font.familyName + " " + instance->styleName;
        listed.postScriptNames.insert(listed.postScriptNames.begin(), font.postScriptName);
        listed.fullNames.insert(listed.fullNames.begin(), font.fullName);
        listed.familyStyleNames.push_back(font.familyName + "-" + instance->styleName);
    }

private:
    const NamedInstance* instanceOf(const InstalledFont& font) {
        const int face = font.index & 0xFFFF;
        const int number = font.index >> 16;
        const auto [known, isNew] = instances_.try_emplace({font.path, face});
        if (isNew) known->second = namedInstances(font.path, face);
        for (const NamedInstance& instance : known->second) {
            if (number > 0 ? instance.number == number : instance.isDefault) return &instance;
        }
        return nullptr;
    }

    std::map<std::pair<std::string, int>, std::vector<NamedInstance>> instances_;
};

std::unordered_set<std::string> pathsOf(const FcFontSet* set) {
    std::unordered_set<std::string> paths;
    for (int i = 0; set && i < set->nfont; ++i) paths.insert(stringOf(set->fonts[i], FC_FILE));
    return paths;
}

}  // namespace

std::vector<ListedFont> listFonts(FcConfig* config) {
    const FontconfigRef<FcPattern> everything(FcPatternCreate());
    const FontconfigRef<FcObjectSet> objects(
        FcObjectSetBuild(FC_FILE, FC_INDEX, FC_FAMILY, FC_FAMILYLANG, FC_STYLE, FC_STYLELANG, FC_FULLNAME,
                         FC_FULLNAMELANG, FC_POSTSCRIPT_NAME, FC_WEIGHT, FC_WIDTH, FC_SLANT, FC_FONTVERSION,
                         FC_FONTFORMAT, FC_VARIABLE, FC_SCALABLE, FC_OUTLINE, FC_COLOR, nullptr));
    if (!everything || !objects) throw std::bad_alloc();
    const FontconfigRef<FcFontSet> set(FcFontList(config, everything.get(), objects.get()));
    if (!set) throw std::bad_alloc();
    const std::unordered_set<std::string> added = pathsOf(FcConfigGetFonts(config, FcSetApplication));
    std::unordered_set<std::string> variable;
    for (int i = 0; i < set->nfont; ++i) {
        if (flagOf(set->fonts[i], FC_VARIABLE)) variable.insert(stringOf(set->fonts[i], FC_FILE));
    }

    InstanceNaming instances;
    std::vector<ListedFont> listed;
    for (int i = 0; i < set->nfont; ++i) {
        if (!isUsable(set->fonts[i])) continue;
        ListedFont font = listedFont(set->fonts[i]);
        font.font.isAdded = added.contains(font.font.path);
        if (variable.contains(font.font.path)) instances.name(font);
        listed.push_back(std::move(font));
    }
    std::ranges::sort(listed, [](const ListedFont& a, const ListedFont& b) {
        return std::tie(b.font.isAdded, b.font.version, a.font.path, a.font.index) <
               std::tie(a.font.isAdded, a.font.version, b.font.path, b.font.index);
    });
    return listed;
}

std::pair<std::string, int> bestMatch(FcConfig* config, const char* family) {
    const FontconfigRef<FcPattern> wish(FcPatternCreate());
    const bool isAsked = wish && FcPatternAddString(wish.get(), FC_FAMILY, fontconfigText(family)) &&
                         FcConfigSubstitute(config, wish.get(), FcMatchPattern);
    if (!isAsked) throw std::bad_alloc();
    FcDefaultSubstitute(wish.get());
    FcResult result = FcResultMatch;
    const FontconfigRef<FcPattern> match(FcFontMatch(config, wish.get(), &result));
    if (!match) return {};
    return {stringOf(match.get(), FC_FILE), integerOf(match.get(), FC_INDEX, 0)};
}

}  // namespace qz
