#include "platform/text/FontLibrary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <unordered_map>
#include <utility>

#include <unicode/unistr.h>

#include "platform/foundation/NSLog.h"
#include "platform/text/FontFace.h"
#include "platform/text/FontFallback.h"
#include "platform/text/FontListing.h"

namespace qz {
namespace {

constexpr size_t kRecentFacesMax = 64;

// Tried in this order before Fontconfig's own choice for "sans", so that a title looks the same on most machines.
constexpr std::array kSystemFamilies = {"DejaVu Sans", "Noto Sans", "Liberation Sans"};

thread_local FontLibrary* currentLibrary = nullptr;

std::string folded(std::string_view name) {
    std::string key;
    icu::UnicodeString::fromUTF8({name.data(), static_cast<int32_t>(name.size())}).foldCase().toUTF8String(key);
    return key;
}

// How far a font is from the regular one of a family; upright comes before width, and width before weight.
auto distanceFromRegular(const InstalledFont& font) {
    return std::tuple(font.slant != FC_SLANT_ROMAN, std::abs(font.width - FC_WIDTH_NORMAL),
                      std::abs(font.weight - FC_WEIGHT_REGULAR));
}

}  // namespace

class FontLibrary::Index {
public:
    explicit Index(std::vector<ListedFont> listed) {
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
        for (const std::string& name : listed.postScriptNames) claim(postScriptNames_, name, font);
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

struct FontLibrary::Configuration {
    FontconfigRef<FcConfig> config;  // none: Fontconfig's own
};

struct FontLibrary::OpenedFace {
    std::weak_ptr<const FontFace> face;
    bool isRefused = false;
};

const std::shared_ptr<FontLibrary>& FontLibrary::shared() {
    // Never destroyed: fonts may be asked for while other statics are torn down.
    static const auto& library =
        *new std::shared_ptr<FontLibrary>(new FontLibrary(std::make_unique<const Configuration>()));
    return library;
}

std::shared_ptr<FontLibrary> FontLibrary::withDirectories(const std::vector<std::string>& directories,
                                                          std::vector<FontProblem>* problems) {
    auto configuration = std::make_unique<Configuration>();
    // The current configuration is every library's, so this one gets a copy. Fontconfig is made ready by the shared
    // one.
    shared();
    configuration->config.reset(FcInitLoadConfigAndFonts());
    if (!configuration->config) throw std::bad_alloc();
    std::vector<FontProblem> ignored;
    bool areRead = true;
    for (const std::string& directory : directories) {
        areRead &= addFontDirectory(configuration->config.get(), directory, problems ? *problems : ignored);
    }
    if (!areRead) return {};
    return std::shared_ptr<FontLibrary>(new FontLibrary(std::move(configuration)));
}

FontLibrary& FontLibrary::current() {
    return currentLibrary ? *currentLibrary : *shared();
}

FontLibrary::Use::Use(std::shared_ptr<FontLibrary> library) : library_(std::move(library)), former_(currentLibrary) {
    if (library_) currentLibrary = library_.get();
}

FontLibrary::Use::~Use() {
    currentLibrary = former_;
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
    {
        const std::lock_guard lock(mutex_);
        if (systemFace_) return systemFace_;
    }
    // Outside the lock: damaged files that come to light are logged, and a log hook may well ask for this face. Threads
    // that choose at the same time choose the same.
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
