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

/// A frame of premultiplied RGBA rows without gaps.
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
    /// From the text to the pixels of a frame that shows nothing else: clears first what the last call has drawn. The
    /// frame is the one of that call, or clear at the first.
    virtual void draw(const Title& title, Frame& frame) = 0;
    /// What reads a caption file of these titles, a second each, and draws them one after the other into a frame as
    /// above. They differ in their lines alone. A library that reads no captions just draws them.
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

/// The peer of that place in `kTitlePeers`.
std::unique_ptr<TitlePeer> titlePeer(size_t index, int width, int height);

/// Pixels of Cairo and others, 32-bit ARGB words, as RGBA bytes.
void storeARGB(const uint32_t* pixels, Frame& frame);

}  // namespace qz::peers
