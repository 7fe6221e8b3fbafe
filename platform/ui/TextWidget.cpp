#include "platform/ui/TextWidget.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSMenu.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/ui/ColorWell.h"
#include "platform/ui/QtValues.h"

namespace qz {
namespace {

constexpr int kCheckerboardSquare = 12;
constexpr float kSelectionOpacity = 0.55f;

}  // namespace

TextWidget::TextWidget(const Ref<NSTextView>& view, QWidget* parent) : QWidget(parent), view_(view), caret_(view) {
    installTextAccessibility();
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::IBeamCursor);
    setAccessibleName("Text");
    view_->setDisplayHook([this] { redisplay(); });
    NSNotificationCenter& notifications = NSNotificationCenter::defaultCenter();
    notifications.addObserver(
        this, [this](const NSNotification&) { redisplay(); }, NSTextDidChangeNotification, view_.get());
    notifications.addObserver(
        this, [this](const NSNotification&) { selectionChanged(); }, NSTextViewDidChangeSelectionNotification,
        view_.get());
    NSApplication::sharedApplication().groupUndoByEvent(view_->undoManager());
}

TextWidget::~TextWidget() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    view_->setDisplayHook({});
}

void TextWidget::setBackdrop(const Ref<NSBitmapImageRep>& picture) {
    backdrop_ = picture;
    update();
}

void TextWidget::redisplay() {
    isStale_ = true;
    update();
}

// Geometry

TextWidget::Placement TextWidget::placement() const {
    const NSSize size = view_->textContainer()->containerSize();
    if (!(size.width > 0) || !(size.height > 0)) return {QRectF(rect()), 1};
    const double scale = std::min(width() / double{size.width}, height() / double{size.height});
    const double w = size.width * scale;
    const double h = size.height * scale;
    // On whole points, so that the picture beneath is not blurred.
    return {QRectF(std::floor((width() - w) / 2), std::floor((height() - h) / 2), w, h), scale};
}

QPointF TextWidget::toWidget(NSPoint containerPoint) const {
    const auto [area, scale] = placement();
    return area.topLeft() + QPointF(containerPoint.x, containerPoint.y) * scale;
}

QRectF TextWidget::toWidget(const NSRect& containerRect) const {
    const double scale = placement().scale;
    return {toWidget(containerRect.origin), QSizeF(containerRect.size.width, containerRect.size.height) * scale};
}

NSPoint TextWidget::toContainer(QPointF point) const {
    const auto [area, scale] = placement();
    const QPointF inside = (point - area.topLeft()) / scale;
    return {static_cast<float>(inside.x()), static_cast<float>(inside.y())};
}

NSRect TextWidget::caretRect() {
    return view_->textStorage()->length() == 0 && placeInEmptyText_ ? placeInEmptyText_() : caret_.rect();
}

// Drawing

void TextWidget::drawText() {
    isStale_ = false;
    glyphs_.reset();
    canvas_ = newCanvas([](NSLayoutManager& manager, Range glyphs) {
        manager.drawGlyphsForGlyphRange(glyphs, {0, 0});
    });
}

/// A bitmap with the area's pixels, drawn in container points.
Ref<NSBitmapImageRep> TextWidget::newCanvas(const std::function<void(NSLayoutManager&, Range glyphs)>& draw) const {
    const auto [area, scale] = placement();
    const double pixels = devicePixelRatioF();
    NSBitmapImageRep::Format format;
    format.pixelsWide = static_cast<int32_t>(std::lround(area.width() * pixels));
    format.pixelsHigh = static_cast<int32_t>(std::lround(area.height() * pixels));
    const Ref<NSBitmapImageRep> canvas = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, format);
    const Ref<NSTextContainer> container = view_->textContainer();
    const Ref<NSLayoutManager> manager = container->layoutManager();
    if (!canvas || !manager) return canvas;
    const Ref<NSGraphicsContext> former = NSGraphicsContext::currentContext();
    NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithBitmapImageRep(canvas, true));
    NSAffineTransform toPixels;
    toPixels.scaleXBy(scale * pixels, scale * pixels);
    toPixels.concat();
    draw(*manager, manager->glyphRangeForTextContainer(*container));
    NSGraphicsContext::setCurrentContext(former);
    return canvas;
}

void TextWidget::paintEvent(QPaintEvent* /*event*/) {
    if (isStale_) drawText();
    QPainter painter(this);
    const QRectF area = placement().area;
    painter.fillRect(rect(), palette().color(QPalette::Window));
    if (backdrop_) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(area, imageOf(*backdrop_));
    } else {
        drawCheckerboard(painter, area.toAlignedRect(), kCheckerboardSquare);
    }
    painter.setClipRect(area);
    if (canvas_) painter.drawImage(area, imageOf(*canvas_));
    drawSelection(painter);
    drawMarks(painter);
}

/// Draws the selection over everything beneath the glyphs, which may include a filled box, and then the glyphs again on
/// top.
void TextWidget::drawSelection(QPainter& painter) {
    QPainterPath selection, around;
    around.setFillRule(Qt::WindingFill);
    for (const NSRect& rect : caret_.selectionRects()) {
        selection.addRect(toWidget(rect));
        around.addRect(toWidget(rect).adjusted(-2, -2, 2, 2));
    }
    if (selection.isEmpty()) return;
    QColor color = palette().color(hasFocus() ? QPalette::Active : QPalette::Inactive, QPalette::Highlight);
    color.setAlphaF(kSelectionOpacity);
    painter.fillPath(selection, color);
    if (!glyphs_) {
        glyphs_ = newCanvas([](NSLayoutManager& manager, Range glyphs) {
            manager.NSLayoutManager::drawGlyphsForGlyphRange(glyphs, {0, 0});
        });
    }
    const QRectF area = placement().area;
    painter.save();
    painter.setClipPath(selection, Qt::IntersectClip);
    if (glyphs_) painter.drawImage(area, imageOf(*glyphs_));
    painter.restore();
    // The border is light on dark, to show where picture or box have the selection's colour.
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(around.simplified(), QPen(QColor(0, 0, 0, 150), 3));
    painter.strokePath(around.simplified(), QPen(QColor(255, 255, 255, 230), 1));
}

/// Draws what is above the text: the line under text being composed, and the insertion point.
void TextWidget::drawMarks(QPainter& painter) {
    const Range marked = view_->markedRange();
    if (marked.length > 0) {
        const Ref<NSTextContainer> container = view_->textContainer();
        for (const NSRect& each : selectionRects(caretLines(*container->layoutManager(), *container), marked)) {
            const QRectF under = toWidget(each);
            painter.fillRect(QRectF(under.left(), under.bottom() - 2, under.width(), 2),
                             palette().color(QPalette::Highlight));
        }
    }
    if (!caretIsShown_ || !hasFocus() || view_->selectedRange().length > 0) return;
    // Light inside dark, to show on any picture.
    const QRectF place = toWidget(caretRect());
    painter.fillRect(QRectF(place.left() - 1.5, place.top(), 3, place.height()), Qt::black);
    painter.fillRect(QRectF(place.left() - 0.5, place.top() + 1, 1, place.height() - 2), Qt::white);
}

void TextWidget::resizeEvent(QResizeEvent* event) {
    redisplay();
    QWidget::resizeEvent(event);
}

void TextWidget::selectionChanged() {
    blink(hasFocus());
    update();
    updateMicroFocus();
    QAccessibleTextCursorEvent moved(this, static_cast<int>(caret_.position()));
    QAccessible::updateAccessibility(&moved);
}

void TextWidget::blink(bool isOn) {
    caretIsShown_ = isOn;
    const int period = QApplication::cursorFlashTime();
    if (isOn && period > 1)
        blinking_.start(period / 2, this);
    else
        blinking_.stop();
}

void TextWidget::timerEvent(QTimerEvent* event) {
    if (event->timerId() == afterDoubleClick_.timerId()) {
        afterDoubleClick_.stop();
    } else if (event->timerId() == blinking_.timerId()) {
        caretIsShown_ = !caretIsShown_;
        update();
    }
}

void TextWidget::focusInEvent(QFocusEvent* event) {
    blink(true);
    update();
    QWidget::focusInEvent(event);
    // Observers of the selection follow the view that the user turns to.
    NSNotificationCenter::defaultCenter().postNotificationName(NSTextViewDidChangeSelectionNotification, view_);
}

void TextWidget::focusOutEvent(QFocusEvent* event) {
    blink(false);
    update();
    QWidget::focusOutEvent(event);
}

// Pointer

void TextWidget::endComposing() {
    if (view_->markedRange().length == 0) return;
    view_->unmarkText();
    QGuiApplication::inputMethod()->reset();
}

void TextWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    endComposing();
    if (afterDoubleClick_.isActive()) {
        afterDoubleClick_.stop();
        caret_.selectParagraphAtPoint(toContainer(event->position()));
        return;
    }
    isDragging_ = true;
    caret_.moveToPoint(toContainer(event->position()), event->modifiers().testFlag(Qt::ShiftModifier));
}

void TextWidget::mouseMoveEvent(QMouseEvent* event) {
    if (isDragging_) caret_.moveToPoint(toContainer(event->position()), true);
}

void TextWidget::mouseReleaseEvent(QMouseEvent* /*event*/) {
    isDragging_ = false;
}

void TextWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    caret_.selectWordAtPoint(toContainer(event->position()));
    afterDoubleClick_.start(QApplication::doubleClickInterval(), this);
}

void TextWidget::contextMenuEvent(QContextMenuEvent* event) {
    const Ref<NSMenu> menu = NSMenu::initWithTitle("Edit"_ns);
    const std::pair<const char*, const char*> items[] = {
        {"Cut", "cut:"}, {"Copy", "copy:"}, {"Paste", "paste:"}, {"Delete", "delete:"}, {"Select All", "selectAll:"}};
    for (const auto& [title, action] : items) {
        menu->addItem(NSMenuItem::initWithTitle(NSString::stringWithUTF8String(title), action));
    }
    menu->popUp(this, event->pos().x(), event->pos().y());
    event->accept();
}

}  // namespace qz
