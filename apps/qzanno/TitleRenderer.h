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

/// What the renderers of a run have in common; it is read only, by any number of threads.
struct RenderSetup {
    DrawingOptions options;
    /// None for the built-in palette.
    Ref<NSData> paletteFile;
    PixelSize data;
    /// What titles are composited over; none for clear pictures.
    Ref<const NSBitmapImageRep> frame;
    std::shared_ptr<FontLibrary> fonts;
};

/// Reads what the options name; reports faults of the palette, once for the run. None, with errors reported, when
/// something is not there or of no use.
std::optional<RenderSetup> prepareSetup(const DrawingOptions& options, Diagnostics& diagnostics);

/// A new palette object of the setup's palette.
Ref<QzAnnoPalette> newPalette(const RenderSetup& setup);

/// The looks of files with a new palette object of the setup's palette.
CaptionLooks newLooks(const RenderSetup& setup);

/// Adds all of a setup but the fonts that makes pictures different.
void addSetup(Sha256& hash, const RenderSetup& setup);

/// A title as it was drawn.
struct RenderedTitle {
    /// None when nothing was drawn: strictness forbids it, or `error` says why.
    Ref<NSBitmapImageRep> picture;
    NSRect bbox;  ///< screen points
    std::vector<std::string> missingFonts;
    RenderReport report;
    std::string error;
};

/// Draws titles one after the other, with a palette and a pipeline of its own. Used on one thread.
class TitleRenderer {
public:
    /// The setup outlives this object.
    explicit TitleRenderer(const RenderSetup& setup);

    /// What is known before anything is drawn; no picture.
    RenderedTitle layOut(const TitleContent& content);
    /// The box round the title's lines, in points of the screen, without what its layers add.
    NSRect textBoxOf(const TitleContent& content);
    RenderedTitle draw(const TitleContent& content);
    /// The same over a picture of the data's size, as it is; `changed` receives the pixels that may have changed. No
    /// `picture` in the result when that failed.
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
