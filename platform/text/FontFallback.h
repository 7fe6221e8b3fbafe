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

/// Finds fonts of a library for text that the font asked for lacks, in Fontconfig's order of preference.
///
/// Remembers what it found for a face, a text and a language. May be used from several threads: a lock guards that
/// memory, but is not held while fonts are opened, since a log hook may then ask for a font again.
class FontFallback {
public:
    /// `config` is the one that the library lists, null for Fontconfig's own. Both outlive this object.
    FontFallback(FontLibrary& library, FcConfig* config) : library_(library), config_(config) {}

    /// Null if the face itself serves best, or no font serves. `language` is a BCP 47 tag or empty.
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

/// A font at the size of `font` that covers the text (one or more clusters) in the sense of `NSFont::coversText`:
/// `font` itself if it does, else the font of its library that looks most like it. If no font covers the whole text,
/// the first that covers its first character, else `font`. `language` is a BCP 47 tag that decides among fonts for the
/// scripts in which the language is written; for other scripts the characters of the text suggest a language, and Han
/// without any hint counts as Japanese. May be used from several threads.
Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language = {});

}  // namespace qz
