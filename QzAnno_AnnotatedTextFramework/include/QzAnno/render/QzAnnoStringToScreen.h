#pragma once

#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/graphics/NSImage.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "QzAnno/render/QzScreenTextContainer.h"
#include "QzAnno/render/RenderReport.h"

namespace qz {

class NSAttributedString;
class NSTextStorage;
class QzAnnoStringFormatter;

/// Pixels of premultiplied RGBA that the host keeps, a byte for each of R, G, B and A.
struct PixelBuffer {
    uint8_t* pixels = nullptr;  ///< rows from the top
    int32_t width = 0;          ///< in pixels
    int32_t height = 0;         ///< in pixels
    int32_t bytesPerRow = 0;    ///< from one row to the next; 0 for as few as hold a row
};

/// From a title to pixels: a text system for one screen that formats an annotated string through a palette, lays it
/// out, and draws it into images and bitmaps of the screen or of the area round the text.
///
/// Give it a palette, the sizes and a string, then ask for images; it rebuilds when one of them has changed. Used from
/// one thread at a time; pipelines with palettes of their own may work on threads of their own.
class QzAnnoStringToScreen final : public NSObject {
public:
    /// Without palette, sizes and text.
    static Ref<QzAnnoStringToScreen> init();
    /// Passes the palette on to the formatter once more.
    void awakeFromNib();

    /// Not owned: the host keeps it alive. Titles get its annotations and its fonts. A change of palette shows the next
    /// time the pipeline rebuilds.
    void setPalette(const Ref<QzAnnoPalette>& palette);
    /// The screen in points, and the size in pixels of the frame that the screen stands for; images are drawn at the
    /// scale data over screen. Data of a new size count only together with a screen of a new size. Must be called
    /// before images are asked for.
    void setScreenSize(NSSize screenSize, NSSize dataSize);
    /// The string is owned and must not be changed afterwards without being set again. Either setter drops what the
    /// other has set.
    ///@{
    void setAnnoString(const Ref<QzAnnoString>& string);
    void setAttributedString(const Ref<NSAttributedString>& string);
    ///@}
    /// None while an attributed string, or nothing, is set.
    Ref<QzAnnoString> annoString() const { return string_; }
    /// The direction of every paragraph, whatever its style says; `natural`, as at the start, leaves it to the style,
    /// and by default to the first letter that has one. Natural alignment goes with it.
    ///@{
    void setBaseWritingDirection(NSWritingDirection direction);
    NSWritingDirection baseWritingDirection() const { return direction_; }
    ///@}

    /// The language of the titles as a BCP 47 tag, such as "ja" or "zh-Hant"; empty, as at the start, for none. It
    /// tells which font serves characters that languages share, and which forms a font gives its letters. False, and
    /// nothing changed, for what is no such tag.
    bool setLanguage(std::string_view tag);

    /// The pipeline's own. What is set there, such as quality or merged layers, holds for every title.
    ///@{
    const Ref<QzAnnoLayoutManager>& layoutManager() const { return layoutManager_; }
    const Ref<QzScreenTextContainer>& textContainer() const { return textContainer_; }
    ///@}

    /// Whether text and text box are up to date with string, sizes and mode.
    bool available() const { return available_; }
    /// Brings them up to date.
    void build();
    /// An immutable copy of the text as laid out, built first when that is due.
    Ref<NSAttributedString> attributedString();

    /// An image of the whole screen, or of the text box grown by 10 points and cut to the screen. `bbox`, when given,
    /// receives the image's place on the screen, its size rounded as the image's. None, with a log line, while the
    /// sizes are not set or allow no image; blank when there is no text.
    Ref<NSImage> imageInFullScreen(bool fullScreen, NSRect* bbox = nullptr);
    /// The same as a bitmap of premultiplied RGBA.
    Ref<NSBitmapImageRep> bitmapInFullScreen(bool fullScreen, NSRect* bbox = nullptr);
    /// Draws the title over what a bitmap of the host's holds, an RGBA frame of the data size or a clear one; `bbox` as
    /// above. In box mode the box's corner comes to the bitmap's corner. `changed` receives the pixels that may have
    /// changed: all that a host has to clear before the next title, or to send on. False, and nothing drawn, for a
    /// bitmap of another format or without sizes.
    bool drawInFullScreen(bool fullScreen, const Ref<NSBitmapImageRep>& intoBitmap, NSRect* bbox = nullptr,
                          PixelRect* changed = nullptr);
    /// The same over a frame in the host's own memory. False, too, when its rows do not hold their pixels.
    bool drawInFullScreen(bool fullScreen, const PixelBuffer& intoBuffer, NSRect* bbox = nullptr,
                          PixelRect* changed = nullptr);
    /// Where an image would sit on the screen, built first when that is due; its size rounded as the image's.
    NSRect placeInFullScreen(bool fullScreen);
    /// What of the title is not shown as it was asked for when it is drawn over a whole frame, or into a bitmap of the
    /// text box's place; built first when that is due.
    RenderReport reportInFullScreen(bool fullScreen);

    std::string className() const override { return "QzAnnoStringToScreen"; }

private:
    QzAnnoStringToScreen();

    /// Brings the text up to date for the mode. `offset` receives where the container's origin lies in the place.
    NSRect placeInFullScreen(bool fullScreen, NSPoint& offset);
    /// Draws the glyphs at the scale data over screen into the current graphics context.
    void drawGlyphsAtPoint(NSPoint offset);
    /// Where a glyph is drawn, with the container's origin at `offset`.
    NSPoint originOfGlyph(uint32_t glyph, NSPoint offset) const;

    const Ref<QzAnnoStringFormatter> textStorage_ts_;
    WeakRef<QzAnnoPalette> palette_;
    NSSize screensize_;
    NSSize datasize_;
    // At most one of the two is set.
    Ref<QzAnnoString> string_;
    Ref<NSAttributedString> realString_;
    NSWritingDirection direction_ = NSWritingDirection::natural;
    bool available_ = false;
    Ref<NSString> language_;
    const Ref<NSTextStorage> textStorage_;
    const Ref<QzScreenTextContainer> textContainer_;
    const Ref<QzAnnoLayoutManager> layoutManager_;
};

}  // namespace qz
