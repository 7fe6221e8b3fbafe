#include "apps/qzanno/TitleRenderer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "apps/qzanno/FontFolders.h"

namespace qz::tool {
namespace {

NSSize sizeOf(PixelSize size) {
    return {static_cast<float>(size.width), static_cast<float>(size.height)};
}

std::string text(PixelSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

size_t bytesOf(const NSBitmapImageRep& picture) {
    return static_cast<size_t>(picture.bytesPerRow()) * static_cast<size_t>(picture.pixelsHigh());
}

bool loadFrame(RenderSetup& setup, Diagnostics& diagnostics) {
    const std::string& path = setup.options.over;
    if (path.empty()) return true;
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (file) setup.frame = bitmapFromPNG(*file, &reason);
    if (!setup.frame) {
        diagnostics.error(path, reason);
        return false;
    }
    const PixelSize size = {setup.frame->pixelsWide(), setup.frame->pixelsHigh()};
    if (setup.options.data && (size.width != setup.data.width || size.height != setup.data.height)) {
        diagnostics.error(path, "the frame is " + text(size) + " pixels, not " + text(setup.data) +
                                    "; leave --data out or give the frame's size");
        return false;
    }
    setup.data = size;
    return true;
}

bool checkSize(PixelSize data, Diagnostics& diagnostics) {
    const uint64_t bytes = uint64_t{4} * static_cast<uint64_t>(data.width) * static_cast<uint64_t>(data.height);
    if (bytes <= NSBitmapImageRep::kBytesMax) return true;
    diagnostics.error("", "a picture of " + text(data) + " needs " + std::to_string(bytes) +
                              " bytes, more than the limit of " + std::to_string(NSBitmapImageRep::kBytesMax) +
                              "; use a smaller --screen or --data");
    return false;
}

bool checkAnnotations(const RenderSetup& setup, const QzAnnoPalette& palette, Diagnostics& diagnostics) {
    for (const std::string& name : setup.options.annotations) {
        if (palette.findAnnoKey(NSString::stringWithUTF8String(name))) continue;
        std::string known;
        for (int32_t priority = palette.maxPriority(); priority > 0; --priority) {
            known += (known.empty() ? "" : ", ") + palette.annoKeyAtPriority(priority)->name()->utf8();
        }
        diagnostics.error(paletteName(setup.options.palette),
                          "there is no annotation " + quoted(name) + "; there are: " + known);
        return false;
    }
    return true;
}

}  // namespace

std::optional<RenderSetup> prepareSetup(const DrawingOptions& options, Diagnostics& diagnostics) {
    RenderSetup setup{options, {}, options.data.value_or(options.screen), {}, {}};
    const Ref<QzAnnoPalette> palette = loadPalette(options.palette, {}, diagnostics, &setup.paletteFile);
    if (!palette) return {};
    // Missing fonts are reported when a title uses them.
    reportFaults(options.palette, nullptr, diagnostics);
    if (!loadFrame(setup, diagnostics) || !checkSize(setup.data, diagnostics) ||
        !checkAnnotations(setup, *palette, diagnostics))
        return {};
    if (!QzAnnoStringToScreen::init()->setLanguage(options.language)) {
        diagnostics.error("--lang",
                          quoted(options.language) + " is not a language tag; write one such as ja or zh-Hant");
        return {};
    }
    setup.fonts = fontsWithFolders(options.fontDirectories, options.strict, diagnostics);
    if (!setup.fonts) return {};
    return setup;
}

Ref<QzAnnoPalette> newPalette(const RenderSetup& setup) {
    if (setup.paletteFile) return paletteFromData(setup.paletteFile, nullptr, setup.fonts);
    const Ref<QzAnnoPalette> palette = builtInPalette();
    palette->setFontLibrary(setup.fonts);
    return palette;
}

CaptionLooks newLooks(const RenderSetup& setup) {
    return {newPalette(setup), sizeOf(setup.options.screen), setup.options.looks};
}

void addSetup(Sha256& hash, const RenderSetup& setup) {
    const DrawingOptions& options = setup.options;
    hash.addText(QZANNO_VERSION);
    hash.addText(setup.paletteFile ? setup.paletteFile->view() : std::string_view());
    hash.addNumber(options.annotations.size());
    for (const std::string& name : options.annotations) hash.addText(name);
    for (const PixelSize size : {options.screen, setup.data}) {
        hash.addNumber(static_cast<uint64_t>(size.width));
        hash.addNumber(static_cast<uint64_t>(size.height));
    }
    hash.addNumber(options.box);
    hash.addNumber(static_cast<uint64_t>(options.direction));
    hash.addNumber(setup.frame ? 1 : 0);
    if (setup.frame) hash.add({setup.frame->bitmapData(), bytesOf(*setup.frame)});
    hash.addNumber(options.fontDirectories.size());
    for (const std::string& folder : options.fontDirectories) hash.addText(folder);
    hash.addText(options.language);
    hash.addNumber(options.antialias);
    hash.addNumber(std::bit_cast<uint32_t>(options.quality));
    hash.addNumber(options.mergeLayers);
}

TitleRenderer::TitleRenderer(const RenderSetup& setup)
    : setup_(setup),
      looks_(newLooks(setup)),
      palette_(looks_.palette()),
      placements_(palette_, sizeOf(setup.options.screen), setup.options.direction),
      pipeline_(QzAnnoStringToScreen::init()) {
    const DrawingOptions& options = setup.options;
    palette_->setLog(missingFonts_);
    pipeline_->setPalette(palette_);
    pipeline_->setLanguage(options.language);
    pipeline_->setBaseWritingDirection(options.direction);
    pipeline_->setScreenSize(sizeOf(options.screen), sizeOf(setup.data));
    // By default antialiasing follows the context, where it is on.
    if (!options.antialias) pipeline_->layoutManager()->setAntialiasing(false);
    pipeline_->layoutManager()->setQualityFactor(options.quality);
    pipeline_->layoutManager()->setMergesLayers(options.mergeLayers);
}

RenderedTitle TitleRenderer::layOut(const TitleContent& content) {
    const Ref<QzMutableAnnoString> string = annotatedString(content, looks_);
    for (const std::string& name : setup_.options.annotations) {
        string->addFrameAnno(palette_->findAnnoKey(NSString::stringWithUTF8String(name)));
    }
    placements_.place(content.placement, *string);
    missingFonts_->clear();
    pipeline_->setAnnoString(string);
    RenderedTitle title;
    title.bbox = pipeline_->placeInFullScreen(!setup_.options.box);
    title.report = pipeline_->reportInFullScreen(!setup_.options.box);
    title.missingFonts = missingFonts_->names();
    return title;
}

NSRect TitleRenderer::textBoxOf(const TitleContent& content) {
    layOut(content);
    pipeline_->placeInFullScreen(false);
    return pipeline_->textContainer()->textBox();
}

RenderedTitle TitleRenderer::draw(const TitleContent& content) {
    RenderedTitle title = layOut(content);
    if (setup_.options.strict && (!title.missingFonts.empty() || !title.report.isEmpty())) return title;
    title.picture = pictureFor(title.bbox);
    if (title.picture && pipeline_->drawInFullScreen(!setup_.options.box, title.picture)) return title;
    title.picture = nullptr;
    title.error = "no picture can be made of its text box " + NSStringFromRect(title.bbox)->utf8();
    return title;
}

RenderedTitle TitleRenderer::drawOver(const TitleContent& content, const Ref<NSBitmapImageRep>& picture,
                                      PixelRect* changed) {
    RenderedTitle title = layOut(content);
    if (setup_.options.strict && (!title.missingFonts.empty() || !title.report.isEmpty())) return title;
    if (pipeline_->drawInFullScreen(true, picture, nullptr, changed))
        title.picture = picture;
    else
        title.error = "it cannot be drawn";
    return title;
}

Ref<NSBitmapImageRep> TitleRenderer::pictureFor(const NSRect& place) const {
    if (!setup_.options.box) {
        Ref<NSBitmapImageRep> picture = blankPicture(setup_.data);
        if (picture && setup_.frame)
            std::memcpy(picture->bitmapData(), setup_.frame->bitmapData(), bytesOf(*setup_.frame));
        return picture;
    }
    const auto pixels = [](float points, int32_t data, int32_t screen) {
        return std::max(
            1, static_cast<int32_t>(std::lround(points * static_cast<float>(data) / static_cast<float>(screen))));
    };
    const PixelSize screen = setup_.options.screen;
    return blankPicture({pixels(place.size.width, setup_.data.width, screen.width),
                         pixels(place.size.height, setup_.data.height, screen.height)});
}

Ref<NSBitmapImageRep> blankPicture(PixelSize size) {
    NSBitmapImageRep::Format format;
    format.pixelsWide = size.width;
    format.pixelsHigh = size.height;
    format.colorSpaceName = NSCalibratedRGBColorSpace;
    return NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
}

}  // namespace qz::tool
