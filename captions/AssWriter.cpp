#include "captions/AssWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "captions/KeyExchange.h"
#include "captions/MissingFonts.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

/// "0:01:02.50"
std::string writtenTime(double seconds) {
    const auto hundredths = static_cast<uint64_t>(std::llround(std::clamp(seconds, 0.0, 1e9) * 100));
    char text[40];
    std::snprintf(text, sizeof text, "%llu:%02llu:%02llu.%02llu", static_cast<unsigned long long>(hundredths / 360000),
                  static_cast<unsigned long long>(hundredths / 6000 % 60),
                  static_cast<unsigned long long>(hundredths / 100 % 60),
                  static_cast<unsigned long long>(hundredths % 100));
    return text;
}

/// Escapes line ends and text that would be read as an override.
std::string written(std::u16string_view text) {
    std::string result;
    const std::string utf8 = utf8FromUtf16(text);
    constexpr std::string_view kNoBreakSpace = "\u00A0";
    for (size_t i = 0; i < utf8.size(); ++i) {
        const char c = utf8[i];
        if (std::string_view(utf8).substr(i).starts_with(kNoBreakSpace)) {
            result += "\\h";
            ++i;
            continue;
        }
        if (c == '\n')
            result += "\\N";
        else if (c == '{' || c == '}')
            result += std::string("\\") + c;
        else if (c == '\\')
            // An invisible word joiner, so that the next letter does not make it an escape.
            result += "\\\u2060";
        else if (static_cast<unsigned char>(c) >= ' ' || c == '\t')
            result += c;
    }
    return result;
}

/// A palette with the same annotations, and the keys that stand in it for those of the other.
class PaletteCopy {
public:
    explicit PaletteCopy(const QzAnnoPalette& original) {
        palette_->setFontLibrary(original.fontLibrary());
        palette_->setUndoManager(NSUndoManager::init());
        const NSUndoManager::Pause pause(palette_->undoManager());
        copyAttributes(*original.lookupAnno({}), *palette_->lookupAnno({}));
        for (int32_t priority = 1; priority <= original.maxPriority(); ++priority) {
            const Ref<QzAnnoKey> key = original.annoKeyAtPriority(priority);
            const Ref<const QzAnno> made = palette_->createAnno(key->name());
            copyAttributes(*original.lookupAnno(key), *made);
            keys_.emplace(key, made->annokey());
        }
    }

    const Ref<QzAnnoPalette>& palette() const { return palette_; }
    /// Null for a key that the original does not have.
    Ref<QzAnnoKey> keyFor(const Ref<QzAnnoKey>& key) const {
        const auto found = keys_.find(key);
        return found == keys_.end() ? nullptr : found->second;
    }

private:
    void copyAttributes(const QzAnno& from, const QzAnno& to) {
        const Ref<QzMutableAnno> anno = to.mutableCopy();
        anno->setAttributes(from.allAttributes());
        palette_->replaceAnno(anno);
    }

    const Ref<QzAnnoPalette> palette_ = QzAnnoPalette::init();
    std::map<Ref<QzAnnoKey>, Ref<QzAnnoKey>> keys_;
};

/// Makes the name fit for a column.
std::string styleName(std::string name) {
    std::ranges::replace_if(
        name, [](char c) { return c == ',' || static_cast<unsigned char>(c) < ' '; }, ';');
    const size_t begin = name.find_first_not_of("* ");
    name.erase(0, begin);
    name.erase(name.find_last_not_of(' ') + 1);
    return name.empty() ? "Style" : name;
}

double verticalMargin(const AssLook& look) {
    return look.alignment >= 7 ? look.marginTop : look.marginBottom;
}

}  // namespace

AssWriter::AssWriter(Ref<QzAnnoPalette> palette, NSSize screen, NSWritingDirection direction,
                     const std::vector<Ref<QzAnnoKey>>& styles)
    : palette_(std::move(palette)), screen_(screen), placements_(palette_, screen, direction) {
    addStyle(NSSet::set(), "Default");
    for (const Ref<QzAnnoKey>& key : styles) addStyle(NSSet::setWithObject(key), key->name()->utf8());
}

AssLook AssWriter::lookOf(const Ref<NSSet>& keys, std::set<std::string>& losses) const {
    return assLookOf(*palette_->assembleCompleteAttributes(palette_->attributesForSet(keys)), screen_, losses);
}

const AssWriter::Style& AssWriter::addStyle(const Ref<NSSet>& keys, const std::string& wanted) {
    std::string name = styleName(wanted);
    for (int number = 2; !names_.insert(name).second; ++number) name = styleName(wanted) + " " + std::to_string(number);
    // Losses depend on the titles that use the style.
    std::set<std::string> unused;
    const AssLook look = lookOf(keys, unused);
    const AssStyle style = styleOfLook(name, look);
    styleLines_ += "Style: " + writtenStyle(style) + "\n";
    const auto all = keys->objects<QzAnnoKey>();
    return styles_[{all.begin(), all.end()}] = {name, lookOfStyle(style, look)};
}

const AssWriter::Style& AssWriter::styleFor(const Ref<NSSet>& frame) {
    auto keys = frame->objects<QzAnnoKey>();
    const auto known = styles_.find({keys.begin(), keys.end()});
    if (known != styles_.end()) return known->second;
    std::ranges::sort(keys, {}, [this](const Ref<QzAnnoKey>& key) { return palette_->lookupPrio(key); });
    std::string name;
    for (const auto& key : keys) name += (name.empty() ? "" : " + ") + key->name()->utf8();
    return addStyle(frame, name);
}

std::string AssWriter::placeOverrides(const AssLook& look, const AssLook& styled) const {
    std::string text;
    if (look.alignment != styled.alignment) text += "\\an" + std::to_string(look.alignment);
    const bool isMiddle = look.alignment >= 4 && look.alignment <= 6;
    if (!isMiddle || std::abs(look.marginTop - look.marginBottom) < 1) return text;
    // The middle row is in the middle of the screen, regardless of margins.
    const double width = screen_.width;
    const double x = look.alignment == 4   ? look.marginLeft
                     : look.alignment == 6 ? width - look.marginRight
                                           : (look.marginLeft + width - look.marginRight) / 2;
    const double y = (look.marginTop + double{screen_.height} - look.marginBottom) / 2;
    return text + "\\pos(" + shortNumber(x) + "," + shortNumber(y) + ")";
}

void AssWriter::add(double start, double end, const CuePlacement& placement, QzMutableAnnoString& text) {
    const Style& style = styleFor(text.frame());
    placements_.place(placement, text);
    const AssLook look = lookOf(text.frame(), losses_);

    std::string line = "Dialogue: 0," + writtenTime(start) + "," + writtenTime(end) + "," + style.name + ",";
    const auto addMargin = [&](double margin, double styled) {
        // 0 means the style's.
        const bool isStyled = std::lround(margin) == std::lround(styled);
        line += "," + std::to_string(isStyled ? 0 : std::max(1L, std::lround(margin)));
    };
    addMargin(look.marginLeft, style.look.marginLeft);
    addMargin(look.marginRight, style.look.marginRight);
    addMargin(verticalMargin(look), verticalMargin(style.look));
    line += ",,";

    std::string place = placeOverrides(look, style.look);
    AssLook current = style.look;
    const std::u16string& characters = text.string()->characters();
    for (const QzAnnoString::Run& run : text.runs()) {
        const AssLook next = lookOf(run.keys, losses_);
        const std::string overrides = place + overridesBetween(current, next);
        place.clear();
        if (!overrides.empty()) line += "{" + overrides + "}";
        line += written(std::u16string_view(characters).substr(run.range.location, run.range.length));
        current = next;
    }
    eventLines_ += line + "\n";
}

std::string AssWriter::script() const {
    const auto points = [](float length) { return std::to_string(std::lround(length)); };
    // Lines are filled from the first one on; lengths are script pixels; colours are RGB.
    return "[Script Info]\nScriptType: v4.00+\nPlayResX: " + points(screen_.width) +
           "\nPlayResY: " + points(screen_.height) +
           "\nWrapStyle: 1\nScaledBorderAndShadow: yes\nYCbCr Matrix: None\n\n"
           "[V4+ Styles]\nFormat: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, "
           "Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, "
           "Alignment, MarginL, MarginR, MarginV, Encoding\n" +
           styleLines_ +
           "\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n" +
           eventLines_;
}

std::optional<WrittenCaptions> writeAss(const CaptionFile& captions, const CaptionStage& stage, std::string&) {
    const PaletteCopy copy(*stage.looks.palette());
    std::vector<Ref<QzAnnoKey>> styles;
    for (int32_t priority = 1; priority <= stage.looks.houseCount(); ++priority)
        styles.push_back(copy.keyFor(stage.looks.houseKeyAt(priority)));
    AssWriter writer(copy.palette(), stage.looks.screen(), stage.direction, styles);
    // Only the titles' fonts count, not those of unused styles.
    const auto missingFonts = std::make_shared<MissingFonts>();
    copy.palette()->setLog(missingFonts);
    std::set<std::string> unknown;
    for (const CaptionCue& cue : captions.cues) {
        const auto text = withKeys(*cue.text, [&](const Ref<QzAnnoKey>& key) {
            const Ref<QzAnnoKey> known = copy.keyFor(key);
            if (!known && !key->isDefault()) unknown.insert(key->name()->utf8());
            return known;
        });
        writer.add(cue.start, cue.end, cue.placement, *text->mutableCopy());
    }
    WrittenCaptions written{writer.script(), {}, missingFonts->names()};
    for (const std::string& name : unknown) {
        written.losses.push_back("the annotation " + quotedExcerpt(name) +
                                 " is left out, as the palette does not have it");
    }
    written.losses.insert(written.losses.end(), writer.losses().begin(), writer.losses().end());
    return written;
}

}  // namespace qz
