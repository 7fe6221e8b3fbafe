#include "apps/qzanno/RenderCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "apps/qzanno/FontFolders.h"
#include "apps/qzanno/Manifest.h"
#include "apps/qzanno/OutputPlan.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/Progress.h"
#include "apps/qzanno/ReportLines.h"
#include "apps/qzanno/TitleReader.h"
#include "platform/foundation/Files.h"
#include "platform/graphics/PNG.h"

namespace qz::tool {
namespace {

NSSize sizeOf(PixelSize size) {
    return {static_cast<float>(size.width), static_cast<float>(size.height)};
}

Ref<NSBitmapImageRep> blankPicture(PixelSize size) {
    NSBitmapImageRep::Format format;
    format.pixelsWide = size.width;
    format.pixelsHigh = size.height;
    format.colorSpaceName = NSCalibratedRGBColorSpace;
    return NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
}

std::vector<uint8_t> rawBytes(const NSBitmapImageRep& picture) {
    const uint8_t* data = picture.bitmapData();
    return {data, data + static_cast<size_t>(picture.bytesPerRow()) * static_cast<size_t>(picture.pixelsHigh())};
}

/// "; there are "Noto Sans-Regular", "Noto Sans-Bold"", or nothing.
std::string namesLike(const std::string& font, const FontLibrary& fonts) {
    constexpr size_t kNamesMax = 6;
    std::string list;
    for (const std::string& name : fonts.namesLike(font, kNamesMax)) {
        list += (list.empty() ? "; there are " : ", ") + quoted(name);
    }
    return list;
}

/// Renders titles one after the other with one pipeline.
class Renderer {
public:
    Renderer(const RenderOptions& options, Diagnostics& diagnostics)
        : options_(options), diagnostics_(diagnostics), reportLines_(diagnostics, options.strict) {}

    bool prepare();
    bool renderAll();

private:
    bool loadFrame();
    bool readInput();
    bool annotateAll();
    bool checkSizes();
    bool renderTitle(const Title& title);
    bool reportMissingFonts(const Title& title);
    Ref<NSBitmapImageRep> pictureFor(const NSRect& place) const;
    bool write(const Title& title, const NSBitmapImageRep& picture, std::string& file);
    bool writeManifest();

    const RenderOptions& options_;
    Diagnostics& diagnostics_;
    ReportLines reportLines_;
    std::shared_ptr<FontLibrary> fonts_;
    Ref<QzAnnoPalette> palette_;
    Ref<MissingFonts> missingFonts_ = std::make_shared<MissingFonts>();
    std::vector<std::string> reportedFonts_;
    Ref<QzAnnoStringToScreen> pipeline_;
    Ref<NSBitmapImageRep> frame_;
    PixelSize data_;
    std::vector<Title> titles_;
    OutputPlan plan_;
    std::string manifest_;
};

bool Renderer::prepare() {
    palette_ = loadPalette(options_.palette, diagnostics_);
    if (!palette_) return false;
    // A missing font is reported when a title asks for it.
    reportFaults(options_.palette, Faults::allButMissingFonts, diagnostics_);
    if (!loadFrame() || !checkSizes() || !readInput() || !annotateAll()) return false;
    const auto plan = planOutput(options_.output, options_.input, titles_.size(), diagnostics_);
    if (!plan) return false;
    plan_ = *plan;
    const auto fonts = fontsWithFolders(options_.fontDirectories, options_.strict, diagnostics_);
    if (!fonts) return false;
    fonts_ = *fonts ? *fonts : FontLibrary::shared();
    palette_->setLog(missingFonts_);
    pipeline_ = QzAnnoStringToScreen::init();
    pipeline_->setPalette(palette_);
    pipeline_->setFontLibrary(fonts_);
    if (!pipeline_->setLanguage(options_.language)) {
        diagnostics_.error("--lang",
                           quoted(options_.language) + " is no language tag; write one such as ja or zh-Hant");
        return false;
    }
    pipeline_->setBaseWritingDirection(options_.direction);
    pipeline_->setScreenSize(sizeOf(options_.screen), sizeOf(data_));
    // Left alone, antialiasing goes by the context, which is on.
    if (!options_.antialias) pipeline_->layoutManager()->setAntialiasing(false);
    pipeline_->layoutManager()->setQualityFactor(options_.quality);
    pipeline_->layoutManager()->setMergesLayers(options_.mergeLayers);
    return true;
}

bool Renderer::loadFrame() {
    data_ = options_.data.value_or(options_.screen);
    if (options_.over.empty()) return true;
    std::string reason;
    const Ref<NSData> file = readFile(options_.over, &reason);
    if (file) frame_ = bitmapFromPNG(*file, &reason);
    if (!frame_) {
        diagnostics_.error(options_.over, reason);
        return false;
    }
    const PixelSize size = {frame_->pixelsWide(), frame_->pixelsHigh()};
    if (options_.data && (size.width != data_.width || size.height != data_.height)) {
        diagnostics_.error(options_.over, "the frame is " + std::to_string(size.width) + "x" +
                                              std::to_string(size.height) + " pixels, not " +
                                              std::to_string(data_.width) + "x" + std::to_string(data_.height) +
                                              "; leave --data out or give the frame's size");
        return false;
    }
    data_ = size;
    return true;
}

bool Renderer::checkSizes() {
    const uint64_t bytes = uint64_t{4} * static_cast<uint64_t>(data_.width) * static_cast<uint64_t>(data_.height);
    if (bytes <= NSBitmapImageRep::kBytesMax) return true;
    diagnostics_.error("", "a picture of " + std::to_string(data_.width) + "x" + std::to_string(data_.height) +
                               " needs " + std::to_string(bytes) + " bytes, more than the " +
                               std::to_string(NSBitmapImageRep::kBytesMax) +
                               " that a bitmap may have; use a smaller --screen or --data");
    return false;
}

bool Renderer::readInput() {
    if (options_.text) {
        titles_ = titleOfText(*options_.text);
        return true;
    }
    bool hasUnknownClass = false;
    auto titles = readTitles(options_.input, palette_, diagnostics_, hasUnknownClass);
    if (!titles) return false;
    if (hasUnknownClass && options_.strict) {
        diagnostics_.error(options_.input,
                           "names classes that the palette lacks, and --strict forbids that; nothing is rendered");
        return false;
    }
    titles_ = std::move(*titles);
    if (titles_.empty()) diagnostics_.warning(options_.input, "holds no captions; nothing is rendered");
    return true;
}

bool Renderer::annotateAll() {
    for (const std::string& name : options_.annotations) {
        const Ref<QzAnnoKey> key = palette_->findAnnoKey(NSString::stringWithUTF8String(name));
        if (!key) {
            std::string known;
            for (int32_t priority = palette_->maxPriority(); priority > 0; --priority) {
                known += (known.empty() ? "" : ", ") + palette_->annoKeyAtPriority(priority)->name()->utf8();
            }
            diagnostics_.error(paletteName(options_.palette),
                               "there is no annotation " + quoted(name) + "; there are: " + known);
            return false;
        }
        for (const Title& title : titles_) title.text->addFrameAnno(key);
    }
    return true;
}

bool Renderer::renderAll() {
    if (!plan_.directory.empty() && !makeDirectory(plan_.directory, diagnostics_)) return false;
    Progress progress(titles_.size(), diagnostics_.verbosity());
    bool allDone = true;
    for (const Title& title : titles_) {
        allDone &= renderTitle(title);
        progress.advance();
    }
    return writeManifest() && allDone;
}

bool Renderer::renderTitle(const Title& title) {
    missingFonts_->clear();
    pipeline_->setAnnoString(title.text);
    ManifestEntry entry;
    entry.bbox = pipeline_->placeInFullScreen(!options_.box);
    entry.report = pipeline_->reportInFullScreen(!options_.box);
    // Both are to be told.
    const bool hasFonts = reportMissingFonts(title);
    if (!reportLines_.tell(title, entry.report) || !hasFonts) return false;
    const Ref<NSBitmapImageRep> picture = pictureFor(entry.bbox);
    if (!picture || !pipeline_->drawInFullScreen(!options_.box, picture)) {
        diagnostics_.error("title " + std::to_string(title.index),
                           "no picture can be made of its text box " + NSStringFromRect(entry.bbox)->utf8());
        return false;
    }
    entry.width = picture->pixelsWide();
    entry.height = picture->pixelsHigh();
    entry.bytesPerRow = picture->bytesPerRow();
    entry.missingFonts = missingFonts_->names();
    if (!write(title, *picture, entry.file)) return false;
    manifest_ += manifestLine(title, entry);
    return true;
}

bool Renderer::reportMissingFonts(const Title& title) {
    for (const std::string& font : missingFonts_->names()) {
        if (options_.strict) {
            diagnostics_.error(
                "title " + std::to_string(title.index),
                "the font " + quoted(font) + " is not installed, and --strict forbids a stand-in; not rendered");
        } else if (std::ranges::find(reportedFonts_, font) == reportedFonts_.end()) {
            reportedFonts_.push_back(font);
            diagnostics_.warning(
                paletteName(options_.palette),
                "the font " + quoted(font) + " is not installed; the system font stands in" + namesLike(font, *fonts_));
        }
    }
    return missingFonts_->names().empty() || !options_.strict;
}

Ref<NSBitmapImageRep> Renderer::pictureFor(const NSRect& place) const {
    if (!options_.box) {
        const Ref<NSBitmapImageRep> picture = blankPicture(data_);
        if (picture && frame_) {
            std::memcpy(picture->bitmapData(), frame_->bitmapData(),
                        static_cast<size_t>(frame_->bytesPerRow()) * static_cast<size_t>(frame_->pixelsHigh()));
        }
        return picture;
    }
    const auto pixels = [](float points, int32_t data, int32_t screen) {
        return std::max(
            1, static_cast<int32_t>(std::lround(points * static_cast<float>(data) / static_cast<float>(screen))));
    };
    return blankPicture({pixels(place.size.width, data_.width, options_.screen.width),
                         pixels(place.size.height, data_.height, options_.screen.height)});
}

bool Renderer::write(const Title& title, const NSBitmapImageRep& picture, std::string& file) {
    file = plan_.fileFor(title.index);
    if (plan_.toStandardOutput) {
        const std::vector<uint8_t> bytes = rawBytes(picture);
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0) return true;
        diagnostics_.error("standard output", std::strerror(errno));
        return false;
    }
    std::string reason;
    const bool written = plan_.isRaw ? writeFileAtomically(file, rawBytes(picture), &reason)
                                     : writeFileAtomically(file, pngFromBitmap(picture)->bytes(), &reason);
    if (written)
        diagnostics_.note(file, "written");
    else
        diagnostics_.error(file, reason);
    return written;
}

bool Renderer::writeManifest() {
    if (options_.manifest.empty()) return true;
    std::string reason;
    const auto* bytes = reinterpret_cast<const uint8_t*>(manifest_.data());
    if (writeFileAtomically(options_.manifest, {bytes, manifest_.size()}, &reason)) return true;
    diagnostics_.error(options_.manifest, reason);
    return false;
}

}  // namespace

int render(const RenderOptions& options, Diagnostics& diagnostics) {
    Renderer renderer(options, diagnostics);
    return renderer.prepare() && renderer.renderAll() ? 0 : 1;
}

}  // namespace qz::tool
