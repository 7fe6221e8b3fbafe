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

/// Finds fonts in a library for text missing from the requested font, in Fontconfig's order of preference.
///
/// Caches the result for a face, a text and a language. May be used from several threads: a lock guards the cache, but
/// is not held while fonts are opened, since a log hook may then request a font.
class FontFallback {
public:
    /// `config` is the configuration that the library lists, null for Fontconfig's own. Both must outlive this object.
    FontFallback(FontLibrary& library, FcConfig* config) : library_(library), config_(config) {}

    /// Returns null if the face itself is best or no font is suitable. `language` is a BCP 47 tag or empty.
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
/// `font` itself if it does, else the most similar font of its library. If no font covers the whole text, the first one
/// that covers its first character, else `font`. `language` is a BCP 47 tag that affects only the scripts of that
/// language; for other scripts the text's characters suggest a language, and Han without any hint counts as Japanese.
/// May be used from several threads.
Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language = {});

}  // namespace qz
