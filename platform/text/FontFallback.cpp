#include "platform/text/FontFallback.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include <unicode/locid.h>
#include <unicode/uscript.h>

#include "platform/text/FontFace.h"
#include "platform/text/FontLibrary.h"
#include "platform/text/FontconfigRef.h"
#include "platform/text/TextCoverage.h"

namespace qz {
namespace {

constexpr size_t kRankingsMax = 64;
constexpr size_t kAnswersMax = 8192;
// A longer text is looked up each time.
constexpr size_t kRememberedUnitsMax = 64;

UScriptCode scriptOf(char32_t character) {
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(character), &error);
    return U_FAILURE(error) ? USCRIPT_UNKNOWN : script;
}

// The first of the languages, as BCP 47 tags, whose usual characters include all Han ones of the text.
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

// A language of the first script that tells something, as a BCP 47 tag. Han alone tells little.
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

// Fontconfig knows a language by its code, and tells the forms of Chinese apart by country.
std::string fontconfigLanguage(std::string_view language, std::u16string_view text) {
    const std::string tag = language.empty() ? languageOfText(text) : std::string(language);
    UErrorCode error = U_ZERO_ERROR;
    icu::Locale locale = icu::Locale::forLanguageTag(tag, error);
    locale.addLikelySubtags(error);
    if (U_FAILURE(error) || locale.isBogus() || *locale.getLanguage() == '\0') return "en";
    const std::string code = locale.getLanguage();
    if (code == "und") return "en";
    return code == "zh" ? code + "-" + locale.getCountry() : code;
}

// How much of a text a font must serve, from the best on.
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
    const auto hasGlyph = [&face](char32_t character) { return face.glyphForCharacter(character) != 0; };
    return meets(demand, text, face.hasColourGlyphs(), hasGlyph);
}

// The usable fonts in the order in which they suit a font and a language. Finding it takes Fontconfig milliseconds.
class Ranking {
public:
    Ranking(const InstalledFont& look, const std::string& language) {
        const FontconfigRef<FcPattern> wish(FcPatternCreate());
        FcPatternAddString(wish.get(), FC_FAMILY, fontconfigText(look.familyName.c_str()));
        FcPatternAddString(wish.get(), FC_LANG, fontconfigText(language.c_str()));
        FcPatternAddDouble(wish.get(), FC_WEIGHT, look.weight);
        FcPatternAddDouble(wish.get(), FC_WIDTH, look.width);
        FcPatternAddInteger(wish.get(), FC_SLANT, look.slant);
        FcConfigSubstitute(nullptr, wish.get(), FcMatchPattern);
        FcDefaultSubstitute(wish.get());
        FcResult result = FcResultMatch;
        set_.reset(FcFontSort(nullptr, wish.get(), FcFalse, nullptr, &result));
        for (int i = 0; set_ && i < set_->nfont; ++i) addCandidate(set_->fonts[i]);
        // Some colour fonts have plain symbols too. Emoji find them at the end as well: no other font serves those.
        std::stable_partition(candidates_.begin(), candidates_.end(),
                              [](const Candidate& c) { return !c.font->isColour; });
    }

    const InstalledFont* bestFont(Demand demand, std::u16string_view text) const {
        for (const Candidate& candidate : candidates_) {
            // What the character set tells spares opening most files; the font itself has the last word.
            const auto listed = [&](char32_t c) { return FcCharSetHasChar(candidate.characters, c) == FcTrue; };
            if (!meets(demand, text, candidate.font->isColour, listed)) continue;
            const auto face = FontLibrary::shared().face(*candidate.font);
            if (face && meets(demand, text, *face)) return candidate.font;
        }
        return nullptr;
    }

private:
    struct Candidate {
        const InstalledFont* font;
        FcCharSet* characters;  // lives as long as `set_`
    };

    void addCandidate(FcPattern* pattern) {
        FcChar8* path = nullptr;
        int index = 0;
        FcCharSet* characters = nullptr;
        if (FcPatternGetString(pattern, FC_FILE, 0, &path) != FcResultMatch) return;
        if (FcPatternGetInteger(pattern, FC_INDEX, 0, &index) != FcResultMatch) return;
        if (FcPatternGetCharSet(pattern, FC_CHARSET, 0, &characters) != FcResultMatch) return;
        const InstalledFont* const font = FontLibrary::shared().fontOfFile(textOf(path), index);
        if (font) candidates_.push_back({font, characters});
    }

    FontconfigRef<FcFontSet> set_;
    std::vector<Candidate> candidates_;
};

// The rankings and answers so far, for all threads.
class Fallback {
public:
    static Fallback& shared() {
        static Fallback& fallback = *new Fallback;
        return fallback;
    }

    /// None when the face itself serves best.
    const InstalledFont* fontForText(const FontFace& face, std::u16string_view text, const std::string& language) {
        const InstalledFont& look = face.installedFont();
        std::string key = look.path + '\n' + std::to_string(look.index) + '\n' + language + '\n';
        const std::lock_guard lock(mutex_);
        if (text.size() > kRememberedUnitsMax) return find(face, text, language);
        key.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
        if (const auto known = answers_.find(key); known != answers_.end()) return known->second;
        if (answers_.size() == kAnswersMax) answers_.clear();
        return answers_[key] = find(face, text, language);
    }

private:
    const InstalledFont* find(const FontFace& face, std::u16string_view text, const std::string& language) {
        const Ranking& ranking = rankingFor(face.installedFont(), language);
        for (const Demand demand : {Demand::everyCharacterInItsForm, Demand::everyCharacter, Demand::firstCharacter}) {
            if (meets(demand, text, face)) return nullptr;
            if (const InstalledFont* font = ranking.bestFont(demand, text)) return font;
        }
        return nullptr;
    }

    const Ranking& rankingFor(const InstalledFont& look, const std::string& language) {
        const std::tuple key(look.familyName, look.weight, look.width, look.slant, language);
        if (const auto known = rankings_.find(key); known != rankings_.end()) return known->second;
        if (rankings_.size() == kRankingsMax) rankings_.clear();
        return rankings_.try_emplace(key, look, language).first->second;
    }

    std::mutex mutex_;
    std::map<std::tuple<std::string, double, double, int, std::string>, Ranking> rankings_;
    std::unordered_map<std::string, const InstalledFont*> answers_;
};

}  // namespace

Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language) {
    if (font->coversText(text)) return font;
    const InstalledFont* const other =
        Fallback::shared().fontForText(font->face(), text, fontconfigLanguage(language, text));
    std::shared_ptr<const FontFace> face = other ? FontLibrary::shared().face(*other) : nullptr;
    return face ? std::make_shared<NSFont>(std::move(face), font->pointSize()) : font;
}

}  // namespace qz
