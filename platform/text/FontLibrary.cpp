#include "platform/text/FontLibrary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>

#include <unicode/unistr.h>

#include "platform/foundation/NSLog.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontconfigRef.h"

namespace qz {
namespace {

constexpr size_t kRecentFacesMax = 64;

// Tried in this order before Fontconfig's own choice for "sans", so that a title looks the same on most machines.
constexpr std::array kSystemFamilies = {"DejaVu Sans", "Noto Sans", "Liberation Sans"};

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

std::string folded(std::string_view name) {
    std::string key;
    icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())}).foldCase().toUTF8String(key);
    return key;
}

// "Family-Style" in every language of the names. A font that belongs to two families, "Sans" with the style "Condensed
// Bold" and "Sans Condensed" with the style "Bold", lists both kinds of names in the same order; mixing them would make
// it "Sans-Bold" too.
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

// HarfBuzz and FreeType read the same tables only from SFNT files as they are, not from packed ones or Type 1.
bool isUsable(const FcPattern* pattern) {
    const std::string format = stringOf(pattern, FC_FONTFORMAT);
    const std::string path = stringOf(pattern, FC_FILE);
    // A variable font is listed as a whole too, besides each of its named instances.
    return (format == "TrueType" || format == "CFF") && !path.ends_with(".woff") && !path.ends_with(".woff2") &&
           !flagOf(pattern, FC_VARIABLE) && flagOf(pattern, FC_SCALABLE) &&
           (flagOf(pattern, FC_OUTLINE) || flagOf(pattern, FC_COLOR));
}

struct ListedFont {
    InstalledFont font;
    std::vector<std::string> fullNames;
    std::vector<std::string> familyStyleNames;
    std::vector<std::string> familyNames;
};

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
    return listed;
}

// In an order that does not depend on Fontconfig's hashing: newer versions first.
std::vector<ListedFont> listFonts() {
    const FontconfigRef<FcPattern> everything(FcPatternCreate());
    const FontconfigRef<FcObjectSet> objects(
        FcObjectSetBuild(FC_FILE, FC_INDEX, FC_FAMILY, FC_FAMILYLANG, FC_STYLE, FC_STYLELANG, FC_FULLNAME,
                         FC_FULLNAMELANG, FC_POSTSCRIPT_NAME, FC_WEIGHT, FC_WIDTH, FC_SLANT, FC_FONTVERSION,
                         FC_FONTFORMAT, FC_VARIABLE, FC_SCALABLE, FC_OUTLINE, FC_COLOR, nullptr));
    const FontconfigRef<FcFontSet> set(FcFontList(nullptr, everything.get(), objects.get()));
    std::vector<ListedFont> listed;
    for (int i = 0; set && i < set->nfont; ++i) {
        if (isUsable(set->fonts[i])) listed.push_back(listedFont(set->fonts[i]));
    }
    std::sort(listed.begin(), listed.end(), [](const ListedFont& a, const ListedFont& b) {
        return std::tie(b.font.version, a.font.path, a.font.index) <
               std::tie(a.font.version, b.font.path, b.font.index);
    });
    return listed;
}

// The file and index of the font that Fontconfig has for a family name or alias.
std::pair<std::string, int> bestMatch(const char* family) {
    const FontconfigRef<FcPattern> wish(FcPatternCreate());
    FcPatternAddString(wish.get(), FC_FAMILY, fontconfigText(family));
    FcConfigSubstitute(nullptr, wish.get(), FcMatchPattern);
    FcDefaultSubstitute(wish.get());
    FcResult result = FcResultMatch;
    const FontconfigRef<FcPattern> match(FcFontMatch(nullptr, wish.get(), &result));
    if (!match) return {};
    return {stringOf(match.get(), FC_FILE), integerOf(match.get(), FC_INDEX, 0)};
}

// How far a font is from the regular one of a family; upright comes before width, and width before weight.
auto distanceFromRegular(const InstalledFont& font) {
    return std::tuple(font.slant != FC_SLANT_ROMAN, std::abs(font.width - FC_WIDTH_NORMAL),
                      std::abs(font.weight - FC_WEIGHT_REGULAR));
}

}  // namespace

class FontLibrary::Index {
public:
    Index() {
        std::vector<ListedFont> listed = listFonts();
        for (ListedFont& font : listed) fonts_.push_back(std::move(font.font));
        for (size_t i = 0; i < fonts_.size(); ++i) addNames(listed[i], i);
        for (InstalledFont& font : fonts_) font.fontName = distinguishingName(font);
    }

    const std::vector<InstalledFont>& fonts() const { return fonts_; }

    const InstalledFont* withName(std::string_view name) const {
        const std::string key = folded(name);
        for (const Names* names : {&postScriptNames_, &fullNames_, &familyStyleNames_, &familyNames_}) {
            if (const auto found = names->find(key); found != names->end()) return &fonts_[found->second];
        }
        return nullptr;
    }

    const InstalledFont* ofFile(std::string_view path, int index) const {
        const auto found = files_.find(fileKey(path, index));
        return found == files_.end() ? nullptr : &fonts_[found->second];
    }

private:
    using Names = std::unordered_map<std::string, size_t>;

    static std::string fileKey(std::string_view path, int index) {
        return std::string(path) + ':' + std::to_string(index);
    }

    // A name that several fonts bear, as all of a family do, is that of the most regular one; of equals, the first.
    void claim(Names& names, const std::string& name, size_t font) {
        if (name.empty()) return;
        size_t& owner = names.try_emplace(folded(name), font).first->second;
        if (distanceFromRegular(fonts_[font]) < distanceFromRegular(fonts_[owner])) owner = font;
    }

    void addNames(const ListedFont& listed, size_t font) {
        files_.try_emplace(fileKey(fonts_[font].path, fonts_[font].index), font);
        claim(postScriptNames_, fonts_[font].postScriptName, font);
        for (const std::string& name : listed.fullNames) claim(fullNames_, name, font);
        for (const std::string& name : listed.familyStyleNames) claim(familyStyleNames_, name, font);
        for (const std::string& name : listed.familyNames) claim(familyNames_, name, font);
    }

    // Instances of a variable font may share every name but family-style, and a font may be installed twice; then the
    // name leads to one that looks the same.
    std::string distinguishingName(const InstalledFont& font) const {
        const auto look = [](const InstalledFont& f) { return std::tie(f.familyName, f.weight, f.width, f.slant); };
        const std::string names[] = {font.postScriptName, font.fullName, font.familyName + "-" + font.styleName};
        for (const std::string& name : names) {
            if (withName(name) == &font) return name;
        }
        for (const std::string& name : names) {
            if (const InstalledFont* twin = withName(name); twin && look(*twin) == look(font)) return name;
        }
        return names[0];
    }

    std::vector<InstalledFont> fonts_;
    Names files_;
    Names postScriptNames_;
    Names fullNames_;
    Names familyStyleNames_;
    Names familyNames_;
};

struct FontLibrary::OpenedFace {
    std::weak_ptr<const FontFace> face;
    bool isRefused = false;
};

FontLibrary& FontLibrary::shared() {
    // Never destroyed: fonts may be asked for while other statics are torn down.
    static FontLibrary& library = *new FontLibrary;
    return library;
}

FontLibrary::FontLibrary() : index_(std::make_unique<const Index>()), faces_(index_->fonts().size()) {}

FontLibrary::~FontLibrary() = default;

const std::vector<InstalledFont>& FontLibrary::fonts() const {
    return index_->fonts();
}

const InstalledFont* FontLibrary::fontWithName(std::string_view name) const {
    return index_->withName(name);
}

const InstalledFont* FontLibrary::fontOfFile(std::string_view path, int index) const {
    return index_->ofFile(path, index);
}

std::shared_ptr<const FontFace> FontLibrary::face(const InstalledFont& font) {
    {
        const std::lock_guard lock(mutex_);
        OpenedFace& opened = faces_[static_cast<size_t>(&font - index_->fonts().data())];
        if (opened.isRefused) return {};
        std::shared_ptr<const FontFace> face = opened.face.lock();
        if (!face) opened.face = face = FontFace::open(font);
        if (face) {
            std::erase(recent_, face);
            if (recent_.size() == kRecentFacesMax) recent_.erase(recent_.begin());
            recent_.push_back(face);
            return face;
        }
        opened.isRefused = true;
    }
    // Outside the lock, since a log hook may well ask for a font.
    NSLog("%@: cannot be read as a font; \"%@\" counts as not installed\n", {font.path, font.fontName});
    return {};
}

std::shared_ptr<const FontFace> FontLibrary::faceWithName(std::string_view name) {
    const InstalledFont* font = fontWithName(name);
    return font ? face(*font) : nullptr;
}

std::shared_ptr<const FontFace> FontLibrary::systemFace() {
    std::call_once(systemFaceChosen_, [this] { systemFace_ = chooseSystemFace(); });
    return systemFace_;
}

std::shared_ptr<const FontFace> FontLibrary::chooseSystemFace() {
    for (const char* family : kSystemFamilies) {
        if (auto named = faceWithName(family)) return named;
    }
    const auto [path, index] = bestMatch("sans-serif");
    if (const InstalledFont* font = fontOfFile(path, index)) {
        if (auto matched = face(*font)) return matched;
    }
    for (const InstalledFont& font : fonts()) {
        if (font.isColour) continue;
        if (auto any = face(font)) return any;
    }
    NSLog("No usable font is installed; text is laid out without glyphs\n");
    return FontFace::withoutGlyphs();
}

}  // namespace qz
