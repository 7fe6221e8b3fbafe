#include "bench/peers/OwnTitles.h"

#include <cstdio>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "captions/WebVTT.h"

namespace qz::peers {
namespace {

Ref<NSNumber> number(double value) {
    return NSNumber::numberWithFloat(static_cast<float>(value));
}

Ref<QzAnnoPalette> editablePalette() {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    return palette;
}

std::string timeOf(size_t second) {
    char text[32];
    std::snprintf(text, sizeof text, "%02zu:%02zu:%02zu.000", second / 3600, second / 60 % 60, second % 60);
    return text;
}

class OwnTitles final : public TitlePeer {
public:
    OwnTitles(int width, int height) : pipeline_(width, height) {}

    void draw(const Title& title, Frame& frame) override {
        frame.clear(drawn_);
        pipeline_.setTitle(title);
        pipeline_.drawInto(frame, drawn_);
    }

    std::function<void(Frame&)> captionFile(std::vector<Title> titles) override {
        std::string text = "WEBVTT\n\n";
        for (size_t i = 0; i < titles.size(); ++i) {
            text += timeOf(i) + " --> " + timeOf(i + 1) + "\n";
            for (const std::string& line : titles[i].lines) text += line + "\n";
            text += "\n";
        }
        const Ref<NSData> file = NSData::dataWithBytes(std::string_view(text));
        return [this, file, title = titles.front()](Frame& frame) {
            pipeline_.setStyle(title);
            readWebVTT(*file, pipeline_.palette(), [&](CaptionCue&& cue) {
                frame.clear(drawn_);
                pipeline_.setTitle(cue.text);
                pipeline_.drawInto(frame, drawn_);
            });
        };
    }

private:
    OwnPipeline pipeline_;
    PixelRect drawn_;
};

}  // namespace

OwnPipeline::OwnPipeline(int width, int height, int scale)
    : palette_(editablePalette()),
      screen_(QzAnnoStringToScreen::init()),
      key_(palette_->createAnno("Title"_ns)->annokey()) {
    const NSSize size = {static_cast<float>(width), static_cast<float>(height)};
    screen_->setPalette(palette_);
    const auto pixels = static_cast<float>(scale);
    screen_->setScreenSize(size, {size.width * pixels, size.height * pixels});
}

void OwnPipeline::setTitle(const Title& title) {
    if (title.size != size_) setStyle(title);
    std::string text;
    for (size_t i = 0; i < title.lines.size(); ++i) text += (i ? "\n" : "") + title.lines[i];
    setTitle(QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text)));
}

void OwnPipeline::setTitle(const Ref<QzMutableAnnoString>& title) {
    title->addFrameAnno(key_);
    screen_->setAnnoString(title);
}

void OwnPipeline::drawInto(Frame& frame, PixelRect& drawn) {
    const PixelBuffer buffer{.pixels = frame.bytes.data(), .width = frame.width, .height = frame.height};
    screen_->drawInFullScreen(true, buffer, nullptr, &drawn);
}

void OwnPipeline::setStyle(const Title& title) {
    size_ = title.size;
    const Ref<QzMutableAnno> style = palette_->lookupAnno(key_)->mutableCopy();
    const auto set = [&](const Ref<NSString>& name, const Ref<NSObject>& value) { style->setAttribute(name, value); };
    set(QzFontAttribute, "DejaVu Sans-Bold"_ns);
    set(QzFontSizeAttribute, number(title.size));
    set(QzTextColorAttribute, NSColor::colorWithCalibratedRed(1, 1, 1, 1));
    set(QzHorizontalAlignmentAttribute, NSNumber::numberWithInt(2));
    set(QzVerticalAlignmentAttribute, NSNumber::numberWithInt(2));
    set(QzBoundingMarginsAttribute, NSArray::arrayWithObjects({number(0), number(0), number(0), number(40)}));
    set(QzBackgroundColorAttribute, NSColor::colorWithCalibratedRed(0, 0, 0, 1));
    set(QzBackgroundWidthAttribute, number(title.outline));
    set(QzBackground2ColorAttribute, NSColor::colorWithCalibratedRed(0, 0, 0, 0.5f));
    set(QzBackground2WidthAttribute, number(title.outline));
    const float offset = static_cast<float>(title.offset);
    set(QzBackground2OffsetAttribute, NSStringFromPoint({offset, offset}));
    palette_->replaceAnno(style);
}

std::unique_ptr<TitlePeer> ownTitles(int width, int height) {
    return std::make_unique<OwnTitles>(width, height);
}

}  // namespace qz::peers
