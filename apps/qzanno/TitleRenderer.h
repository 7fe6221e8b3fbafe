#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/RenderCommand.h"
#include "apps/qzanno/Sha256.h"
#include "apps/qzanno/TitleContent.h"
#include "captions/MissingFonts.h"
#include "captions/PlacementAnnos.h"

namespace qz::tool {

/// The setup shared by the renderers of a run; read-only, for any number of threads.
struct RenderSetup {
    DrawingOptions options;
    /// Null for the built-in palette.
    Ref<NSData> paletteFile;
    PixelSize data;
    /// The picture that titles are composited over; null for clear pictures.
    Ref<const NSBitmapImageRep> frame;
    std::shared_ptr<FontLibrary> fonts;
};

/// Reads the files named by the options, and reports faults in the palette once for the run. Returns no value, with
/// errors reported, if something is missing or unusable.
std::optional<RenderSetup> prepareSetup(const DrawingOptions& options, Diagnostics& diagnostics);

/// A new palette object of the setup's palette.
Ref<QzAnnoPalette> newPalette(const RenderSetup& setup);

/// The looks of files with a new palette object of the setup's palette.
CaptionLooks newLooks(const RenderSetup& setup);

/// Adds everything in the setup that affects pictures, except the fonts.
void addSetup(Sha256& hash, const RenderSetup& setup);

/// A drawn title.
struct RenderedTitle {
    /// Null if nothing was drawn because of --strict or the reason in `error`.
    Ref<NSBitmapImageRep> picture;
    NSRect bbox;  ///< screen points
    std::vector<std::string> missingFonts;
    RenderReport report;
    std::string error;
};

/// Draws titles one after another with its own palette and pipeline. For one thread.
class TitleRenderer {
public:
    /// The setup must outlive this object.
    explicit TitleRenderer(const RenderSetup& setup);

    /// The result of layout, without a picture.
    RenderedTitle layOut(const TitleContent& content);
    /// The box around the title's lines, in screen points, without its layers.
    NSRect textBoxOf(const TitleContent& content);
    RenderedTitle draw(const TitleContent& content);
    /// Draws over a picture of the data size, in place; `changed` receives the pixels that may have changed. The result
    /// has no `picture` if that failed.
    RenderedTitle drawOver(const TitleContent& content, const Ref<NSBitmapImageRep>& picture, PixelRect* changed);

private:
    Ref<NSBitmapImageRep> pictureFor(const NSRect& place) const;

    const RenderSetup& setup_;
    CaptionLooks looks_;
    const Ref<QzAnnoPalette> palette_;
    PlacementAnnos placements_;
    const Ref<MissingFonts> missingFonts_ = std::make_shared<MissingFonts>();
    const Ref<QzAnnoStringToScreen> pipeline_;
};

Ref<NSBitmapImageRep> blankPicture(PixelSize size);

}  // namespace qz::tool
