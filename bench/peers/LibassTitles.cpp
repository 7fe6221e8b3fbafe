#include <cstdio>

#include <ass/ass.h>

#include "bench/peers/Titles.h"

namespace qz::peers {
namespace {

// A script's font size is ascent plus descent: this much per em of DejaVu Sans.
constexpr double kLineHeightOfEm = 1.164;

uint32_t by255(uint32_t product) {
    return (product + 128 + ((product + 128) >> 8)) >> 8;
}

void blend(const ASS_Image& image, Frame& frame) {
    const uint32_t red = image.color >> 24, green = image.color >> 16 & 255, blue = image.color >> 8 & 255;
    const uint32_t alpha = 255 - (image.color & 255);
    for (int y = 0; y < image.h; ++y) {
        const uint8_t* source = image.bitmap + y * image.stride;
        uint8_t* pixel = frame.bytes.data() + (size_t(image.dst_y + y) * size_t(frame.width) + size_t(image.dst_x)) * 4;
        for (int x = 0; x < image.w; ++x, pixel += 4) {
            if (source[x] == 0) continue;
            const uint32_t coverage = by255(source[x] * alpha), rest = 255 - coverage;
            pixel[0] = uint8_t(by255(red * coverage + pixel[0] * rest));
            pixel[1] = uint8_t(by255(green * coverage + pixel[1] * rest));
            pixel[2] = uint8_t(by255(blue * coverage + pixel[2] * rest));
            pixel[3] = uint8_t(by255(255 * coverage + pixel[3] * rest));
        }
    }
}

class LibassTitles final : public TitlePeer {
public:
    LibassTitles(int width, int height)
        : width_(width), height_(height), library_(quietLibrary()), renderer_(ass_renderer_init(library_)) {
        ass_set_frame_size(renderer_, width, height);
        ass_set_fonts(renderer_, QZ_PEERS_FONT_FILE, "DejaVu Sans", ASS_FONTPROVIDER_FONTCONFIG, nullptr, 1);
    }
    ~LibassTitles() override {
        ass_renderer_done(renderer_);
        ass_library_done(library_);
    }

    void draw(const Title& title, Frame& frame) override {
        const TrackRef track = trackOf(header(title, frame.width, frame.height) + event(title, 0));
        drawAt(500, *track, frame);
    }

    std::function<void(Frame&)> captionFile(std::vector<Title> titles) override {
        std::string script = header(titles.front(), width_, height_);
        for (size_t i = 0; i < titles.size(); ++i) script += event(titles[i], static_cast<int>(i));
        return [this, script, count = titles.size()](Frame& frame) {
            const TrackRef track = trackOf(script);
            for (size_t i = 0; i < count; ++i) drawAt(1000 * static_cast<long long>(i) + 500, *track, frame);
        };
    }

private:
    using TrackRef = std::unique_ptr<ASS_Track, decltype(&ass_free_track)>;

    static ASS_Library* quietLibrary() {
        ASS_Library* library = ass_library_init();
        ass_set_message_cb(
            library, [](int, const char*, va_list, void*) {}, nullptr);
        return library;
    }
    TrackRef trackOf(std::string script) const {
        return {ass_read_memory(library_, script.data(), script.size(), nullptr), ass_free_track};
    }
    void drawAt(long long milliseconds, ASS_Track& track, Frame& frame) {
        frame.clear(drawn_);
        drawn_ = {};
        for (const ASS_Image* image = ass_render_frame(renderer_, &track, milliseconds, nullptr); image;
             image = image->next) {
            blend(*image, frame);
            drawn_ = unionOf(drawn_, {image->dst_x, image->dst_y, image->w, image->h});
        }
    }
    /// An event that shows the title during that second.
    static std::string event(const Title& title, int second) {
        const auto time = [](int seconds) {
            char text[32];
            std::snprintf(text, sizeof text, "%d:%02d:%02d.00", seconds / 3600, seconds / 60 % 60, seconds % 60);
            return std::string(text);
        };
        std::string line = "Dialogue: 0," + time(second) + "," + time(second + 1) + ",D,,0,0,0,,";
        for (size_t i = 0; i < title.lines.size(); ++i) line += (i ? "\\N" : "") + title.lines[i];
        return line + "\n";
    }
    static std::string header(const Title& title, int width, int height) {
        char text[1024];
        std::snprintf(text, sizeof text,
                      "[Script Info]\nScriptType: v4.00+\nPlayResX: %d\nPlayResY: %d\nWrapStyle: 2\n\n[V4+ Styles]\n"
                      "Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, "
                      "Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, "
                      "Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\n"
                      "Style: D,DejaVu Sans,%g,&H00FFFFFF,&H0,&H00000000,&H80000000,-1,0,0,0,100,100,0,0,1,%g,%g,2,10,"
                      "10,40,1\n\n[Events]\n"
                      "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n",
                      width, height, title.size * kLineHeightOfEm, title.outline / 2, title.offset);
        return text;
    }

    const int width_, height_;
    ASS_Library* const library_;
    ASS_Renderer* const renderer_;
    PixelRect drawn_;
};

}  // namespace

std::unique_ptr<TitlePeer> libassTitles(int width, int height) {
    return std::make_unique<LibassTitles>(width, height);
}

}  // namespace qz::peers
