#include "apps/qzanno/TitleJob.h"

#include <new>
#include <span>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "apps/qzanno/DoneTitles.h"

namespace qz::tool {
namespace {

std::span<const uint8_t> pixelsOf(const NSBitmapImageRep& picture) {
    return {picture.bitmapData(),
            static_cast<size_t>(picture.bytesPerRow()) * static_cast<size_t>(picture.pixelsHigh())};
}

void writeFile(TitleJob& job, std::span<const uint8_t> bytes) {
    job.picture.bytes = bytes.size();
    job.picture.sha256 = sha256Of(bytes);
    if (job.toStandardOutput) {
        job.bytes.assign(bytes.begin(), bytes.end());
        job.isDone = true;
    } else {
        job.isDone = writeFileAtomically(job.title.file, bytes, &job.error, Flush::later);
        job.isFilesError = !job.isDone;
    }
}

void drawTitle(TitleJob& job, TitleRenderer& renderer) {
    RenderedTitle drawn = renderer.draw(job.content);
    job.picture.bbox = drawn.bbox;
    job.picture.missingFonts = std::move(drawn.missingFonts);
    job.picture.report = std::move(drawn.report);
    job.error = std::move(drawn.error);
    if (!drawn.picture) return;
    job.picture.width = drawn.picture->pixelsWide();
    job.picture.height = drawn.picture->pixelsHigh();
    job.picture.bytesPerRow = drawn.picture->bytesPerRow();
    if (job.isRaw)
        writeFile(job, pixelsOf(*drawn.picture));
    else
        writeFile(job, pngFromBitmap(*drawn.picture)->bytes());
}

}  // namespace

OrderedJobs::Work titleWork(const RenderSetup& setup) {
    // Behind a pointer, since a thread's work function is copied.
    const auto renderer = std::make_shared<TitleRenderer>(setup);
    return [renderer](Job& anyJob) {
        auto& job = static_cast<TitleJob&>(anyJob);
        try {
            job.isKept = !job.formerLine.empty() && isFileWhole(job.formerLine);
            if (!job.isKept && !job.isTwin) drawTitle(job, *renderer);
        } catch (const std::bad_alloc&) {
            job.isDone = false;
            job.error = "not enough memory; render smaller pictures, or with fewer --jobs";
        }
    };
}

}  // namespace qz::tool
