#include "platform/text/FontFallback.h"

#include <algorithm>
#include <array>
#include <functional>
#include <new>
#include <optional>
#include <vector>

#include <unicode/locid.h>
#include <unicode/uscript.h>

#include "QzAnno/platform/text/FontLibrary.h"
#include "platform/text/FontFace.h"
#include "platform/text/TextCoverage.h"

namespace qz {
namespace {

constexpr size_t kRankingsMax = 64;
constexpr size_t kAnswersMax = 8192;
// Longer texts are not cached.
constexpr size_t kRememberedUnitsMax = 64;

UScriptCode scriptOf(char32_t character) {
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(character), &error);
    return U_FAILURE(error) ? USCRIPT_UNKNOWN : script;
}

// The first language, as a BCP 47 tag, whose usual characters include all Han characters of the text.
const char* languageOfHan(std::u16string_view text) {
    constexpr struct {
        const char *tag, *fontconfigName;
    } kLanguages[] = {{"ja", "ja"}, {"zh-Hans", "zh-cn"}, {"zh-Hant", "zh-tw"}};
    for (const auto& [tag, name] : kLanguages) {
        const FcCharSet* const usual = FcLangGetCharSet(fontconfigText(name));
        bool areUsual = usual != nullptr;
        for (size_t i = 0; areUsual && i < text.size();) {
            const char32_t character = nextCharacter(text, i);
            areUsual = scriptOf(character) != USCRIPT_HAN || FcCharSetHasChar(usual, character);
        }
        if (areUsual) return tag;
    }
    return "ja";
}

// A language, as a BCP 47 tag, for the first script that suggests one. Han alone suggests little.
std::string languageOfText(std::u16string_view text) {
    bool hasHan = false;
    for (size_t i = 0; i < text.size();) {
        const UScriptCode script = scriptOf(nextCharacter(text, i));
        const bool isUsedWithHan = script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
                                   script == USCRIPT_HANGUL || script == USCRIPT_BOPOMOFO;
        if (script <= USCRIPT_INHERITED || script == USCRIPT_UNKNOWN || (hasHan && !isUsedWithHan)) continue;
        if (script != USCRIPT_HAN) return std::string("und-") + uscript_getShortName(script);
        hasHan = true;
    }
    return hasHan ? languageOfHan(text) : "en";
}

// Whether some character of the text belongs to a script of the language.
bool isWrittenIn(const icu::Locale& language, std::u16string_view text) {
    constexpr int kScriptsMax = 8;
    std::array<UScriptCode, kScriptsMax> scripts = {};
    UErrorCode error = U_ZERO_ERROR;
    const int32_t count = uscript_getCode(language.getName(), scripts.data(), kScriptsMax, &error);
    if (U_FAILURE(error)) return false;
    for (size_t i = 0; i < text.size();) {
        const auto character = static_cast<UChar32>(nextCharacter(text, i));
        for (int32_t k = 0; k < count; ++k) {
            const UScriptCode script = scripts[static_cast<size_t>(k)];
            // Characters do not distinguish between the forms of Han.
            const bool isHan = script == USCRIPT_SIMPLIFIED_HAN || script == USCRIPT_TRADITIONAL_HAN;
            const UScriptCode known = isHan ? USCRIPT_HAN : script;
            // Or one that several scripts share, such as the Japanese length mark.
            if (known > USCRIPT_INHERITED && uscript_hasScript(character, known)) return true;
        }
    }
    return false;
}

icu::Locale localeOf(const std::string& tag) {
    UErrorCode error = U_ZERO_ERROR;
    icu::Locale locale = icu::Locale::forLanguageTag(tag, error);
    locale.addLikelySubtags(error);
    if (U_FAILURE(error)) locale.setToBogus();
    return locale;
}

// Fontconfig uses language codes, and distinguishes the forms of Chinese by country.
std::string fontconfigLanguage(std::string_view language, std::u16string_view text) {
    icu::Locale locale = localeOf(std::string(language));
    // A language does not apply to text of another script, such as a foreign name in a title.
    if (language.empty() || locale.isBogus() || !isWrittenIn(locale, text)) locale = localeOf(languageOfText(text));
    if (locale.isBogus() || *locale.getLanguage() == '\0') return "en";
    const std::string code = locale.getLanguage();
    if (code == "und") return "en";
    return code == "zh" ? code + "-" + locale.getCountry() : code;
}

// How much of a text a font must cover, in descending order of preference.
enum class Demand { everyCharacterInItsForm, everyCharacter, firstCharacter };

bool meets(Demand demand, std::u16string_view text, bool hasColourGlyphs,
           const std::function<bool(char32_t)>& hasGlyph) {
    switch (demand) {
        case Demand::everyCharacterInItsForm:
            return isTextCovered(text, hasGlyph, hasColourGlyphs);
        case Demand::everyCharacter:
            return isTextCovered(text, hasGlyph, std::nullopt);
        case Demand::firstCharacter:
            break;
    }
    size_t index = 0;
    return hasGlyph(nextCharacter(text, index));
}

bool meets(Demand demand, std::u16string_view text, const FontFace& face) {
    const auto hasGlyph = [&face](char32_t character) { return face.canShow(character); };
    return meets(demand, text, face.hasColourGlyphs(), hasGlyph);
}

}  // namespace

// The usable fonts in order of suitability for a font and a language. Computing it takes Fontconfig milliseconds.
class FontFallback::Ranking {
public:
    [[gnu::visibility("hidden")]] Ranking(FontLibrary& library, FcConfig* config, const InstalledFont& look,
                                          const std::string& language)
        : library_(library) {
        const FontconfigRef<FcPattern> wish(FcPatternCreate());
        const bool isAsked = wish &&
                             FcPatternAddString(wish.get(), FC_FAMILY, fontconfigText(look.familyName.c_str())) &&
                             FcPatternAddString(wish.get(), FC_LANG, fontconfigText(language.c_str())) &&
                             FcPatternAddDouble(wish.get(), FC_WEIGHT, look.weight) &&
                             FcPatternAddDouble(wish.get(), FC_WIDTH, look.width) &&
                             FcPatternAddInteger(wish.get(), FC_SLANT, look.slant) &&
                             FcConfigSubstitute(config, wish.get(), FcMatchPattern);
        if (!isAsked) throw std::bad_alloc();
        FcDefaultSubstitute(wish.get());
        FcResult result = FcResultMatch;
        set_.reset(FcFontSort(config, wish.get(), FcFalse, nullptr, &result));
        // Without any fonts it makes an empty set.
        if (!set_) throw std::bad_alloc();
        for (int i = 0; i < set_->nfont; ++i) addCandidate(set_->fonts[i], language);
        // "Noto Sans Arabic" matches "Noto Sans" better than the system's preference for Arabic.
        const std::string family = look.familyName + " ";
        std::stable_partition(candidates_.begin(), candidates_.end(),
                              [&](const Candidate& c) { return c.font->familyName.starts_with(family); });
        // Fonts in given folders should be used before any that happen to be installed, but Japanese must not get
        // Chinese letter forms.
        std::stable_partition(candidates_.begin(), candidates_.end(),
                              [](const Candidate& c) { return c.isAddedForLanguage; });
        // Some colour fonts have plain symbols too. Emoji still find them at the end, since no other font has emoji.
        std::stable_partition(candidates_.begin(), candidates_.end(),
                              [](const Candidate& c) { return !c.font->isColour; });
    }

    const InstalledFont* bestFont(Demand demand, std::u16string_view text) const {
        for (const Candidate& candidate : candidates_) {
            // Checking the character set avoids opening most files; the font itself decides.
            const auto listed = [&](char32_t c) { return FcCharSetHasChar(candidate.characters, c) == FcTrue; };
            if (!meets(demand, text, candidate.font->isColour, listed)) continue;
            const auto face = library_.face(*candidate.font);
            if (face && meets(demand, text, *face)) return candidate.font;
        }
        return nullptr;
    }

private:
    struct Candidate {
        const InstalledFont* font;
        FcCharSet* characters;  // lives as long as `set_`
        bool isAddedForLanguage;
    };

    [[gnu::visibility("hidden")]] void addCandidate(FcPattern* pattern, const std::string& language) {
        FcChar8* path = nullptr;
        int index = 0;
        FcCharSet* characters = nullptr;
        FcLangSet* languages = nullptr;
        if (FcPatternGetString(pattern, FC_FILE, 0, &path) != FcResultMatch) return;
        if (FcPatternGetInteger(pattern, FC_INDEX, 0, &index) != FcResultMatch) return;
        if (FcPatternGetCharSet(pattern, FC_CHARSET, 0, &characters) != FcResultMatch) return;
        const InstalledFont* const font = library_.fontOfFile(textOf(path), index);
        if (!font) return;
        const bool isAddedForLanguage =
            font->isAdded && FcPatternGetLangSet(pattern, FC_LANG, 0, &languages) == FcResultMatch &&
            FcLangSetHasLang(languages, fontconfigText(language.c_str())) != FcLangDifferentLang;
        candidates_.push_back({font, characters, isAddedForLanguage});
    }

    FontLibrary& library_;
    FontconfigRef<FcFontSet> set_;
    std::vector<Candidate> candidates_;
};

const InstalledFont* FontFallback::fontForText(const FontFace& face, std::u16string_view text,
                                               std::string_view language) {
    const std::string known = fontconfigLanguage(language, text);
    if (text.size() > kRememberedUnitsMax) return find(face, text, known);
    const InstalledFont& look = face.installedFont();
    std::string key = look.path + '\n' + std::to_string(look.index) + '\n' + known + '\n';
    key.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    {
        const std::lock_guard lock(mutex_);
        if (const auto answer = answers_.find(key); answer != answers_.end()) return answer->second;
    }
    const InstalledFont* const font = find(face, text, known);
    const std::lock_guard lock(mutex_);
    if (answers_.size() >= kAnswersMax) answers_.clear();
    answers_[key] = font;
    return font;
}

const InstalledFont* FontFallback::find(const FontFace& face, std::u16string_view text, const std::string& language) {
    const std::shared_ptr<const Ranking> ranking = rankingFor(face.installedFont(), language);
    for (const Demand demand : {Demand::everyCharacterInItsForm, Demand::everyCharacter, Demand::firstCharacter}) {
        if (meets(demand, text, face)) return nullptr;
        if (const InstalledFont* font = ranking->bestFont(demand, text)) return font;
    }
    return nullptr;
}

std::shared_ptr<const FontFallback::Ranking> FontFallback::rankingFor(const InstalledFont& look,
                                                                      const std::string& language) {
    const RankingKey key(look.familyName, look.weight, look.width, look.slant, language);
    {
        const std::lock_guard lock(mutex_);
        if (const auto known = rankings_.find(key); known != rankings_.end()) return known->second;
    }
    auto ranking = std::make_shared<const Ranking>(library_, config_, look, language);
    const std::lock_guard lock(mutex_);
    if (rankings_.size() >= kRankingsMax) rankings_.clear();
    return rankings_.try_emplace(key, std::move(ranking)).first->second;
}

Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language) {
    if (font->coversText(text)) return font;
    FontLibrary& library = *font->fontLibrary();
    const FontTraits traits = font->traits();
    const auto withTraits = [&](const InstalledFont& of) {
        return traits.isEmpty() ? nullptr : library.faceWithTraits(of, traits, text);
    };
    // The italic face of a family may have fewer characters than the regular one, which is then slanted.
    std::shared_ptr<const FontFace> face = withTraits(font->face().installedFont());
    const InstalledFont* const other = face ? nullptr : library.fallback().fontForText(font->face(), text, language);
    if (other) face = withTraits(*other);
    if (other && !face) face = library.face(*other);
    return face ? std::make_shared<NSFont>(font->fontLibrary(), std::move(face), font->pointSize(), traits) : font;
}

}  // namespace qz
