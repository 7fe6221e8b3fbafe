#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>

#include "QzAnno/platform/text/NSFont.h"
#include "platform/text/FontconfigRef.h"

namespace qz {

class FontLibrary;
struct InstalledFont;

/// Finds fonts of a library for text that the font asked for lacks, with Fontconfig's order of preference.
///
/// What was found is remembered for the same face, text and language. May be used from several threads: a lock guards
/// the memory, and none is held while fonts are opened, since what is logged then may ask for a font again.
class FontFallback {
public:
    /// `config` is the one that the library lists, none for Fontconfig's own. Both outlive this.
    FontFallback(FontLibrary& library, FcConfig* config) : library_(library), config_(config) {}

    /// None when the face itself serves best, or nothing does. `language` is a BCP 47 tag or empty.
    const InstalledFont* fontForText(const FontFace& face, std::u16string_view text, std::string_view language);

private:
    class Ranking;
    using RankingKey = std::tuple<std::string, double, double, int, std::string>;

    const InstalledFont* find(const FontFace& face, std::u16string_view text, const std::string& language);
    std::shared_ptr<const Ranking> rankingFor(const InstalledFont& look, const std::string& language);

    FontLibrary& library_;
    FcConfig* const config_;
    std::mutex mutex_;
    std::map<RankingKey, std::shared_ptr<const Ranking>> rankings_;
    std::unordered_map<std::string, const InstalledFont*> answers_;
};

/// A font at the size of `font` that covers the text, a cluster or a stretch of them, as `NSFont::coversText` has it:
/// `font` itself when it does, else one of the current library with the look of `font` in mind. Where no font covers
/// all of it, the first one that covers its first character, else `font`. `language` is a BCP 47 tag and decides among
/// the fonts of the scripts that it is written in; otherwise the characters of the text speak for one, and Han that
/// says nothing is taken for Japanese. May be used from several threads.
Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language = {});

}  // namespace qz
