#include "apps/qzanno/StreamCommand.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include <unistd.h>

#include "apps/qzanno/FilmTime.h"
#include "apps/qzanno/FreePlace.h"
#include "apps/qzanno/Progress.h"
#include "apps/qzanno/TitleLines.h"
#include "platform/graphics/PixelRect.h"
#include "platform/graphics/StraightAlpha.h"

namespace qz::tool {
namespace {

constexpr int64_t kForever = std::numeric_limits<int64_t>::max();

/// A caption and its frames, from the first up to but excluding the end.
struct ShownTitle {
    uint32_t index = 0;
    TitleContent content;
    int64_t firstFrame = 0;
    int64_t endFrame = kForever;
    bool isTold = false;
    /// Whether it has been shown alone, so that its place is fixed.
    bool wasAlone = false;
    /// The place of its lines once it is shown together with others, in screen points.
    std::optional<NSRect> box;
};

/// The frame to send: drawn premultiplied and converted to straight alpha if requested, only where it changes.
class Canvas {
public:
    Canvas(PixelSize size, bool isStraight) : drawn_(blankPicture(size)), isStraight_(isStraight) {
        if (drawn_) sent_.resize(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 4);
    }

    bool isUsable() const { return drawn_ != nullptr; }
    const Ref<NSBitmapImageRep>& picture() const { return drawn_; }
    const std::vector<uint8_t>& bytes() const { return sent_; }

    void clear() {
        forEachRow(touched_, [](uint8_t* drawn, uint8_t* sent, size_t bytes) {
            std::memset(drawn, 0, bytes);
            std::memset(sent, 0, bytes);
        });
        touched_ = {};
    }

    void touch(const PixelRect& box) { touched_ = unionOf(touched_, box); }

    void update() {
        forEachRow(touched_, [this](const uint8_t* drawn, uint8_t* sent, size_t bytes) {
            if (isStraight_)
                unpremultiply(drawn, bytes / 4, sent);
            else
                std::memcpy(sent, drawn, bytes);
        });
    }

private:
    template <class Work>
    void forEachRow(const PixelRect& box, Work work) {
        const size_t rowBytes = static_cast<size_t>(drawn_->pixelsWide()) * 4;
        const size_t offset = static_cast<size_t>(box.x) * 4;
        for (int32_t y = box.y; y < box.bottom(); ++y) {
            work(drawn_->rowWithin(y) + offset, sent_.data() + static_cast<size_t>(y) * rowBytes + offset,
                 static_cast<size_t>(box.width) * 4);
        }
    }

    const Ref<NSBitmapImageRep> drawn_;
    const bool isStraight_;
    std::vector<uint8_t> sent_;
    PixelRect touched_;
};

class StreamRun {
public:
    StreamRun(const StreamOptions& options, Diagnostics& diagnostics)
        : options_(options), diagnostics_(diagnostics), lines_(diagnostics, options.drawing) {}

    bool prepare();
    bool write();

private:
    bool readTitlesOfInput();
    bool planFrames();
    bool checkStrictly();
    void keepApart(const std::vector<size_t>& shown);
    bool draw(const std::vector<size_t>& shown);
    bool tell(ShownTitle& title, const RenderedTitle& drawn, bool isDone);
    bool send(int64_t frame, int64_t count);
    bool put(const void* bytes, size_t count);
    bool failToWrite();
    bool putLine(const std::string& line) { return put(line.data(), line.size()); }

    const StreamOptions& options_;
    Diagnostics& diagnostics_;
    TitleLines lines_;
    std::optional<RenderSetup> setup_;
    std::optional<TitleRenderer> renderer_;
    std::optional<Canvas> canvas_;
    // Sorted by first frame, then by file order.
    std::vector<ShownTitle> titles_;
    int64_t frames_ = 0;
};

bool StreamRun::prepare() {
    if (isatty(STDOUT_FILENO)) {
        diagnostics_.error("standard output",
                           "frames cannot be written to a terminal; pipe them to ffmpeg or into a file");
        return false;
    }
    setup_ = prepareSetup(options_.drawing, diagnostics_);
    if (!setup_) return false;
    lines_.setFonts(setup_->fonts);
    renderer_.emplace(*setup_);
    canvas_.emplace(setup_->data, options_.isStraight);
    if (!canvas_->isUsable()) throw std::bad_alloc();
    return readTitlesOfInput() && planFrames() && checkStrictly();
}

bool StreamRun::readTitlesOfInput() {
    CaptionLooks looks = newLooks(*setup_);
    bool hasLosses = false;
    const TitleSink sink = [&](Title&& title) {
        ShownTitle shown;
        shown.index = title.index;
        shown.content = contentOf(title, looks);
        if (title.start) shown.firstFrame = options_.rate.firstFrameAt(*title.start + options_.offset);
        if (title.end) shown.endFrame = options_.rate.firstFrameAt(*title.end + options_.offset);
        if (shown.firstFrame < shown.endFrame)
            titles_.push_back(std::move(shown));
        else if (!title.end || *title.end + options_.offset > 0)
            diagnostics_.warning("title " + std::to_string(title.index), "falls between two frames and is not shown");
    };
    if (!readTitles(options_.input, looks, diagnostics_, sink, hasLosses)) return false;
    if (!hasLosses || !options_.drawing.strict) return true;
    diagnostics_.error(options_.input, "uses unsupported features; nothing is written, because of --strict");
    return false;
}

bool StreamRun::planFrames() {
    std::optional<double> end = options_.end;
    if (options_.duration) end = options_.start + *options_.duration;
    if (!options_.film.empty()) {
        std::string reason;
        end = lengthOfFilm(options_.film, reason);
        if (!end) {
            diagnostics_.error(options_.film, reason);
            return false;
        }
    }
    // Frames are numbered from the first one written.
    const int64_t first = options_.rate.firstFrameAt(options_.start);
    std::erase_if(titles_, [first](const ShownTitle& title) { return title.endFrame <= first; });
    for (ShownTitle& title : titles_) {
        title.firstFrame = std::max<int64_t>(0, title.firstFrame - first);
        if (title.endFrame != kForever) title.endFrame -= first;
        frames_ = std::max(frames_, title.endFrame);
    }
    if (end) frames_ = std::max<int64_t>(0, options_.rate.firstFrameAt(*end) - first);
    if (frames_ == kForever) {
        diagnostics_.error(options_.input, "has titles without times; give --duration or --end");
        return false;
    }
    std::ranges::stable_sort(titles_, {}, &ShownTitle::firstFrame);
    if (frames_ == 0) diagnostics_.warning(options_.input, "shows nothing; no frame is written");
    return true;
}

// A caption keeps its place while it is shown; later ones make room.
void StreamRun::keepApart(const std::vector<size_t>& shown) {
    if (shown.size() < 2) {
        for (const size_t index : shown) titles_[index].wasAlone = true;
        return;
    }
    const PixelSize size = options_.drawing.screen;
    const NSSize screen = {static_cast<float>(size.width), static_cast<float>(size.height)};
    std::vector<NSRect> boxes;
    for (const size_t index : shown) {
        ShownTitle& title = titles_[index];
        if (!title.box) {
            title.box = renderer_->textBoxOf(title.content);
            const std::optional<float> top = title.wasAlone ? title.box->origin.y : freeTop(*title.box, boxes, screen);
            if (!top) {
                diagnostics_.warning("title " + std::to_string(title.index),
                                     "has no room beside the captions shown with it and is drawn over them");
            } else if (*top != title.box->origin.y) {
                title.box->origin.y = *top;
                CuePlacement& placement = title.content.placement;
                placement.row.reset();
                placement.line =
                    CuePlacement::Line{100 * double{*top} / double{screen.height}, true, CuePlacement::Edge::start};
            }
        }
        boxes.push_back(*title.box);
    }
}

// A stream that breaks off would be mistaken for a shorter film.
bool StreamRun::checkStrictly() {
    bool isFine = true;
    for (size_t i = 0; options_.drawing.strict && i < titles_.size(); ++i) {
        isFine &= tell(titles_[i], renderer_->layOut(titles_[i].content), true);
    }
    return isFine;
}

bool StreamRun::tell(ShownTitle& title, const RenderedTitle& drawn, bool isDone) {
    if (title.isTold) return isDone;
    title.isTold = true;
    TitleJob job;
    job.title.index = title.index;
    job.content.text = title.content.text;
    job.picture.missingFonts = drawn.missingFonts;
    job.picture.report = drawn.report;
    job.isDone = isDone;
    job.error = drawn.error;
    return lines_.tell(job);
}

bool StreamRun::write() {
    // If the reader stops early, report it like any other write error.
    std::signal(SIGPIPE, SIG_IGN);
    const FrameRate rate = options_.rate;
    if (options_.onlyChanges &&
        !putLine("QZANNO-FRAMES 1 " + std::to_string(setup_->data.width) + " " + std::to_string(setup_->data.height) +
                 " " + std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator) + " " +
                 (options_.isStraight ? "straight" : "premultiplied") + "\n"))
        return false;
    Progress progress(static_cast<size_t>(frames_), diagnostics_.verbosity());
    std::vector<size_t> shown;
    size_t next = 0;
    for (int64_t frame = 0; frame < frames_;) {
        std::erase_if(shown, [&](size_t title) { return titles_[title].endFrame <= frame; });
        for (; next < titles_.size() && titles_[next].firstFrame <= frame; ++next) shown.push_back(next);
        int64_t change = next < titles_.size() ? std::min(frames_, titles_[next].firstFrame) : frames_;
        for (const size_t title : shown) change = std::min(change, titles_[title].endFrame);
        if (!draw(shown) || !send(frame, change - frame)) return false;
        progress.advance(static_cast<size_t>(change - frame));
        frame = change;
    }
    if (options_.onlyChanges && !putLine("END " + std::to_string(frames_) + "\n")) return false;
    return std::fflush(stdout) == 0 || failToWrite();
}

bool StreamRun::draw(const std::vector<size_t>& shown) {
    keepApart(shown);
    canvas_->clear();
    for (const size_t title : shown) {
        PixelRect changed;
        const RenderedTitle drawn = renderer_->drawOver(titles_[title].content, canvas_->picture(), &changed);
        if (!tell(titles_[title], drawn, drawn.picture != nullptr)) return false;
        canvas_->touch(changed);
    }
    canvas_->update();
    return true;
}

bool StreamRun::send(int64_t frame, int64_t count) {
    const std::vector<uint8_t>& bytes = canvas_->bytes();
    if (options_.onlyChanges) {
        return putLine("FRAME " + std::to_string(frame) + " " + std::to_string(options_.rate.microsecondsOf(frame)) +
                       " " + std::to_string(bytes.size()) + "\n") &&
               put(bytes.data(), bytes.size());
    }
    for (int64_t i = 0; i < count; ++i) {
        if (!put(bytes.data(), bytes.size())) return false;
    }
    return true;
}

bool StreamRun::put(const void* bytes, size_t count) {
    return std::fwrite(bytes, 1, count, stdout) == count || failToWrite();
}

bool StreamRun::failToWrite() {
    diagnostics_.error("standard output", std::string("cannot be written: ") + std::strerror(errno));
    return false;
}

}  // namespace

int stream(const StreamOptions& options, Diagnostics& diagnostics) {
    StreamRun run(options, diagnostics);
    return run.prepare() && run.write() ? 0 : 1;
}

}  // namespace qz::tool
