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

/// Premultiplied RGBA pixels in the host's memory, one byte each for R, G, B and A.
struct PixelBuffer {
    uint8_t* pixels = nullptr;  ///< rows from the top
    int32_t width = 0;          ///< in pixels
    int32_t height = 0;         ///< in pixels
    int32_t bytesPerRow = 0;    ///< from one row to the next; 0 means 4 * width
};

/// The pipeline from title to pixels: a text system for one screen that formats an annotated string with a palette,
/// lays it out, and draws it into images and bitmaps of the screen or of the area around the text.
///
/// Set a palette, the sizes and a string, then request images; it rebuilds when one of them has changed. Use it from
/// one thread at a time; pipelines with separate palettes may run on separate threads.
class QzAnnoStringToScreen final : public NSObject {
public:
    /// Has no palette, sizes or text.
    static Ref<QzAnnoStringToScreen> init();
    /// Passes the palette to the formatter again.
    void awakeFromNib();

    /// Not owned: the host must keep it alive. Titles use its annotations and fonts. A change to the palette takes
    /// effect at the next rebuild.
    void setPalette(const Ref<QzAnnoPalette>& palette);
    /// Sets the screen's size in points and the size in pixels of the frame that it represents; images are drawn at the
    /// scale data over screen. A new data size takes effect only together with a new screen size. Call this before
    /// requesting images.
    void setScreenSize(NSSize screenSize, NSSize dataSize);
    /// Owns the string; if you change it, set it again. Each setter replaces what the other has set.
    ///@{
    void setAnnoString(const Ref<QzAnnoString>& string);
    void setAttributedString(const Ref<NSAttributedString>& string);
    ///@}
    /// Null if an attributed string or nothing is set.
    Ref<QzAnnoString> annoString() const { return string_; }
    /// The direction of every paragraph, overriding its style; `natural`, the default, leaves it to the style, whose
    /// default is the first letter with a direction. Natural alignment follows it.
    ///@{
    void setBaseWritingDirection(NSWritingDirection direction);
    NSWritingDirection baseWritingDirection() const { return direction_; }
    ///@}

    /// Sets the language of the titles by a BCP 47 tag, such as "ja" or "zh-Hant"; empty, the default, means no
    /// language. It determines which font supplies characters shared between languages, and which letter forms a font
    /// uses. Returns false and changes nothing if the tag is malformed.
    bool setLanguage(std::string_view tag);

    /// The pipeline's layout manager. Its settings, such as quality or merged layers, apply to every title.
    ///@{
    const Ref<QzAnnoLayoutManager>& layoutManager() const { return layoutManager_; }
    const Ref<QzScreenTextContainer>& textContainer() const { return textContainer_; }
    ///@}

    /// Whether text and text box are up to date with string, sizes and mode.
    bool available() const { return available_; }
    /// Brings text and text box up to date.
    void build();
    /// An immutable copy of the text as laid out; builds first if necessary.
    Ref<NSAttributedString> attributedString();

    /// Draws an image of the whole screen, or of the text box grown by 10 points and cut to the screen. `bbox`, if
    /// given, receives the image's place on the screen, with its size rounded like the image's. Blank if there is no
    /// text. Returns null, with a log line, if the sizes are not set or allow no image.
    Ref<NSImage> imageInFullScreen(bool fullScreen, NSRect* bbox = nullptr);
    /// The same as a bitmap of premultiplied RGBA.
    Ref<NSBitmapImageRep> bitmapInFullScreen(bool fullScreen, NSRect* bbox = nullptr);
    /// Draws the title over the contents of the host's bitmap, an RGBA frame of the data size or a clear bitmap; `bbox`
    /// as above. In box mode the box's corner is at the bitmap's corner. `changed` receives the pixels that may have
    /// changed: all that a host has to clear before the next title, or to send on. Returns false and draws nothing if
    /// the bitmap has another format or the sizes are not set.
    bool drawInFullScreen(bool fullScreen, const Ref<NSBitmapImageRep>& intoBitmap, NSRect* bbox = nullptr,
                          PixelRect* changed = nullptr);
    /// The same over a frame in the host's memory. Also returns false if its rows are shorter than their pixels.
    bool drawInFullScreen(bool fullScreen, const PixelBuffer& intoBuffer, NSRect* bbox = nullptr,
                          PixelRect* changed = nullptr);
    /// The place of an image on the screen, with its size rounded like the image's; builds first if necessary.
    NSRect placeInFullScreen(bool fullScreen);
    /// Reports what is not shown as requested if the title is drawn over a whole frame, or into a bitmap of the text
    /// box's place; builds first if necessary.
    RenderReport reportInFullScreen(bool fullScreen);

    std::string className() const override { return "QzAnnoStringToScreen"; }

private:
    QzAnnoStringToScreen();

    /// Brings the text up to date for the mode. `offset` receives the container's origin relative to the place.
    NSRect placeInFullScreen(bool fullScreen, NSPoint& offset);
    /// Draws the glyphs at the scale data over screen into the current graphics context.
    void drawGlyphsAtPoint(NSPoint offset);
    /// The origin of a glyph, with the container's origin at `offset`.
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
