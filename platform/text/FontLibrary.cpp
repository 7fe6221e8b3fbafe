#include "QzAnno/platform/text/FontLibrary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <tuple>
#include <unordered_map>
#include <utility>

#include <unicode/unistr.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/text/FaceChoice.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/FontListing.h"

namespace qz {
namespace {

constexpr size_t kRecentFacesMax = 64;

// Tried in this order before Fontconfig's own choice for "sans", so that a title looks the same on most machines.
constexpr std::array kSystemFamilies = {"DejaVu Sans", "Noto Sans", "Liberation Sans"};

std::string folded(std::string_view name) {
    std::string key;
    icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())}).foldCase().toUTF8String(key);
    return key;
}

// The distance of a font from the regular one of a family; slant matters more than width, and width more than weight.
auto distanceFromRegular(const InstalledFont& font) {
    return std::tuple(font.slant != FC_SLANT_ROMAN, std::abs(font.width - FC_WIDTH_NORMAL),
                      std::abs(font.weight - FC_WEIGHT_REGULAR));
}

bool lookAlike(const InstalledFont& a, const InstalledFont& b) {
    return std::tie(a.familyName, a.weight, a.width, a.slant) == std::tie(b.familyName, b.weight, b.width, b.slant);
}

}  // namespace

class FontLibrary::Index {
public:
    explicit Index(std::vector<ListedFont> listed) {
        for (ListedFont& font : listed) fonts_.push_back(std::move(font.font));
        for (size_t i = 0; i < fonts_.size(); ++i) addNames(listed[i], i);
        for (Names* names : {&postScriptNames_, &fullNames_, &familyStyleNames_, &familyNames_}) sortByLook(*names);
        for (InstalledFont& font : fonts_) font.fontName = distinguishingName(font);
    }

    const std::vector<InstalledFont>& fonts() const { return fonts_; }

    /// The fonts with a name, the best first; empty if there are none.
    std::span<const size_t> withName(std::string_view name) const {
        const std::string key = folded(name);
        for (const Names* names : {&postScriptNames_, &fullNames_, &familyStyleNames_, &familyNames_}) {
            if (const auto found = names->find(key); found != names->end()) return found->second;
        }
        return {};
    }

    /// The fonts of a family, in the order of the list.
    std::vector<const InstalledFont*> ofFamily(std::string_view family) const {
        std::vector<const InstalledFont*> members;
        const auto found = familyNames_.find(folded(family));
        if (found == familyNames_.end()) return members;
        std::vector<size_t> owners = found->second;
        std::ranges::sort(owners);
        for (const size_t font : owners) members.push_back(&fonts_[font]);
        return members;
    }

    const InstalledFont* ofFile(std::string_view path, int index) const {
        const auto found = files_.find(fileKey(path, index));
        return found == files_.end() ? nullptr : &fonts_[found->second];
    }

private:
    using Names = std::unordered_map<std::string, std::vector<size_t>>;

    static std::string fileKey(std::string_view path, int index) {
        return std::string(path) + ':' + std::to_string(index);
    }

    static void claim(Names& names, const std::string& name, size_t font) {
        if (name.empty()) return;
        std::vector<size_t>& owners = names[folded(name)];
        if (owners.empty() || owners.back() != font) owners.push_back(font);
    }

    // A name shared by several fonts, such as a family name, refers to the most regular one; of equals, the first.
    void sortByLook(Names& names) const {
        for (auto& [name, owners] : names) {
            std::ranges::stable_sort(owners, {}, [this](size_t font) { return distanceFromRegular(fonts_[font]); });
        }
    }

    void addNames(const ListedFont& listed, size_t font) {
        files_.try_emplace(fileKey(fonts_[font].path, fonts_[font].index), font);
        for (const std::string& name : listed.postScriptNames) claim(postScriptNames_, name, font);
        for (const std::string& name : listed.fullNames) claim(fullNames_, name, font);
        for (const std::string& name : listed.familyStyleNames) claim(familyStyleNames_, name, font);
        for (const std::string& name : listed.familyNames) claim(familyNames_, name, font);
    }

    // Instances of a variable font may share every name except family-style. If a font is installed twice, the name
    // finds one that looks the same.
    std::string distinguishingName(const InstalledFont& font) const {
        const std::string names[] = {font.postScriptName, font.fullName, font.familyName + "-" + font.styleName};
        const auto foundBy = [this](const std::string& name) {
            const std::span<const size_t> found = withName(name);
            return found.empty() ? nullptr : &fonts_[found.front()];
        };
        for (const std::string& name : names) {
            if (foundBy(name) == &font) return name;
        }
        for (const std::string& name : names) {
            if (const InstalledFont* twin = foundBy(name); twin && lookAlike(*twin, font)) return name;
        }
        return names[0];
    }

    std::vector<InstalledFont> fonts_;
    std::unordered_map<std::string, size_t> files_;
    Names postScriptNames_;
    Names fullNames_;
    Names familyStyleNames_;
    Names familyNames_;
};

struct FontLibrary::Configuration {
    FontconfigRef<FcConfig> config;  // null means Fontconfig's own
};

struct FontLibrary::OpenedFace {
    std::array<std::weak_ptr<const FontFace>, 4> faces;  // by synthesis: bold 1, italic 2
    bool isRefused = false;
};

const std::shared_ptr<FontLibrary>& FontLibrary::shared() {
    // Never destroyed: fonts may be requested while other statics are destroyed.
    static const auto& library =
        *new std::shared_ptr<FontLibrary>(new FontLibrary(std::make_unique<const Configuration>()));
    return library;
}

std::shared_ptr<FontLibrary> FontLibrary::withDirectories(const std::vector<std::string>& directories,
                                                          std::vector<FontProblem>* problems) {
    auto configuration = std::make_unique<Configuration>();
    // The current configuration is shared, so this library gets a copy. `shared()` initialises Fontconfig.
    shared();
    configuration->config.reset(FcInitLoadConfigAndFonts());
    if (!configuration->config) throw std::bad_alloc();
    std::vector<FontProblem> ignored;
    bool areRead = true;
    for (const std::string& directory : directories) {
        areRead &= addFontDirectory(configuration->config.get(), directory, problems ? *problems : ignored);
    }
    if (!areRead) return {};
    std::shared_ptr<FontLibrary> library(new FontLibrary(std::move(configuration)));
    for (const InstalledFont& font : library->fonts()) {
        const bool isInstance = font.index > 0xFFFF;
        if (!problems || !font.isAdded || isInstance || library->face(font)) continue;
        problems->push_back({font.path, "is damaged; \"" + font.fontName + "\" is left out"});
    }
    return library;
}

FontLibrary::FontLibrary(std::unique_ptr<const Configuration> configuration)
    : configuration_(std::move(configuration)),
      index_(std::make_unique<const Index>(listFonts(configuration_->config.get()))),
      fallback_(std::make_unique<FontFallback>(*this, configuration_->config.get())),
      faces_(index_->fonts().size()) {}

FontLibrary::~FontLibrary() = default;

const std::vector<InstalledFont>& FontLibrary::fonts() const {
    return index_->fonts();
}

const InstalledFont* FontLibrary::fontWithName(std::string_view name) const {
    const std::span<const size_t> found = index_->withName(name);
    return found.empty() ? nullptr : &fonts()[found.front()];
}

const InstalledFont* FontLibrary::fontOfFile(std::string_view path, int index) const {
    return index_->ofFile(path, index);
}

std::shared_ptr<const FontFace> FontLibrary::face(const InstalledFont& font) {
    return face(font, {});
}

std::shared_ptr<const FontFace> FontLibrary::face(const InstalledFont& font, FontSynthesis synthesis) {
    {
        const std::lock_guard lock(mutex_);
        OpenedFace& opened = faces_[static_cast<size_t>(&font - index_->fonts().data())];
        if (opened.isRefused) return {};
        auto& known = opened.faces[(synthesis.bold ? 1u : 0u) + (synthesis.italic ? 2u : 0u)];
        std::shared_ptr<const FontFace> face = known.lock();
        if (!face) known = face = FontFace::open(font, synthesis);
        if (face) {
            std::erase(recent_, face);
            if (recent_.size() == kRecentFacesMax) recent_.erase(recent_.begin());
            recent_.push_back(face);
            return face;
        }
        opened.isRefused = true;
    }
    // Outside the lock, since a log hook may request a font.
    NSLog("%@: cannot be read as a font; \"%@\" counts as not installed\n", {font.path, font.fontName});
    return {};
}

std::shared_ptr<const FontFace> FontLibrary::faceWithName(std::string_view name) {
    const std::span<const size_t> found = index_->withName(name);
    // A damaged font may be installed a second time; its bold sibling is not a substitute.
    for (const size_t font : found) {
        if (!lookAlike(fonts()[font], fonts()[found.front()])) continue;
        if (auto opened = face(fonts()[font])) return opened;
    }
    return {};
}

std::shared_ptr<const FontFace> FontLibrary::faceWithTraits(const InstalledFont& font, FontTraits traits,
                                                            std::u16string_view text) {
    if (font.isColour) return {};
    for (const auto& [candidate, synthesis] : facesWithTraits(font, traits, index_->ofFamily(font.familyName))) {
        auto opened = face(*candidate, synthesis);
        if (opened && opened->coversText(text)) return opened;
    }
    return {};
}

std::shared_ptr<const FontFace> FontLibrary::systemFace() {
    {
        const std::lock_guard lock(mutex_);
        if (systemFace_) return systemFace_;
    }
    // Outside the lock: damaged files are logged, and a log hook may request this face. Threads that choose
    // concurrently choose the same face.
    std::shared_ptr<const FontFace> chosen = chooseSystemFace();
    const bool hasGlyphs = chosen != nullptr;
    if (!hasGlyphs) chosen = FontFace::withoutGlyphs();
    {
        const std::lock_guard lock(mutex_);
        if (systemFace_) return systemFace_;
        systemFace_ = chosen;
    }
    if (!hasGlyphs) NSLog("No usable font is installed; text is laid out without glyphs\n");
    return chosen;
}

std::shared_ptr<const FontFace> FontLibrary::chooseSystemFace() {
    for (const char* family : kSystemFamilies) {
        if (auto named = faceWithName(family)) return named;
    }
    const auto [path, index] = bestMatch(configuration_->config.get(), "sans-serif");
    if (const InstalledFont* font = fontOfFile(path, index)) {
        if (auto matched = face(*font)) return matched;
    }
    for (const InstalledFont& font : fonts()) {
        if (font.isColour) continue;
        if (auto any = face(font)) return any;
    }
    return {};
}

}  // namespace qz
