#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/graphics/PixelRect.h"

namespace qz::peers {

/// Lines of white DejaVu Sans Bold above a black outline above a displaced half-transparent one, centred, the last line
/// 40 pixels above the frame's bottom. Lengths are in pixels; `outline` is the whole width of the stroke.
struct Title {
    std::vector<std::string> lines;
    double size, outline, offset;
};

/// A frame of premultiplied RGBA, rows without gaps.
struct Frame {
    int width, height;
    std::vector<uint8_t> bytes;

    Frame(int w, int h) : width(w), height(h), bytes(size_t(w) * size_t(h) * 4) {}
    void clear(const PixelRect& box) {
        for (int y = box.y; y < box.y + box.height; ++y)
            std::memset(bytes.data() + (size_t(y) * size_t(width) + size_t(box.x)) * 4, 0, size_t(box.width) * 4);
    }
};

/// One library that draws titles.
class TitlePeer {
public:
    virtual ~TitlePeer() = default;
    /// Draws from the text to the pixels of a frame that shows nothing else: first clears what the last call has drawn.
    /// The frame is that of the last call, or clear the first time.
    virtual void draw(const Title& title, Frame& frame) = 0;
    /// Returns a function that reads a caption file of these titles, one second each, and draws them one after another
    /// into a frame as above. They differ only in their lines. A library that does not read captions just draws them.
    virtual std::function<void(Frame&)> captionFile(std::vector<Title> titles) {
        return [this, titles = std::move(titles)](Frame& frame) {
            for (const Title& title : titles) draw(title, frame);
        };
    }
};

inline constexpr const char* kTitlePeers[] = {"QzAnno", "libass", "Pango + Cairo", "Qt raster"};

std::unique_ptr<TitlePeer> ownTitles(int width, int height);
std::unique_ptr<TitlePeer> libassTitles(int width, int height);
std::unique_ptr<TitlePeer> pangoTitles(int width, int height);
std::unique_ptr<TitlePeer> qtTitles(int width, int height);

/// The peer with that index in `kTitlePeers`.
std::unique_ptr<TitlePeer> titlePeer(size_t index, int width, int height);

/// Converts 32-bit ARGB words, as used by Cairo and others, to RGBA bytes.
void storeARGB(const uint32_t* pixels, Frame& frame);

}  // namespace qz::peers
