#pragma once

#include <QBasicTimer>
#include <QWidget>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "platform/text/TextCaret.h"

namespace qz {

/// The widget of a text view.
class TextWidget final : public QWidget {
public:
    TextWidget(const Ref<NSTextView>& view, QWidget* parent);
    ~TextWidget() override;

    void setBackdrop(const Ref<NSBitmapImageRep>& picture);
    void setInsertionPointOfEmptyText(std::function<NSRect()> place) { placeInEmptyText_ = std::move(place); }
    void redisplay();
    QPointF toWidget(NSPoint containerPoint) const;

    void cut();
    void copy();
    void paste();
    void clear();
    void selectAll();
    void undo();
    void redo();

    NSTextView& view() const { return *view_; }
    TextCaret& caret() { return caret_; }
    QRectF toWidget(const NSRect& containerRect) const;
    NSPoint toContainer(QPointF point) const;

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    QSize sizeHint() const override { return {960, 540}; }
    QSize minimumSizeHint() const override { return {160, 90}; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    /// The part of the widget that shows the container, and the number of widget points per container point.
    struct Placement {
        QRectF area;
        double scale = 1;
    };
    Placement placement() const;

    bool moveByKey(const QKeyEvent& event);
    bool editByKey(const QKeyEvent& event);
    bool commandByKey(const QKeyEvent& event);
    bool isCommand(const QKeyEvent& event) const;
    /// The rectangle of the insertion point, in container points.
    NSRect caretRect();
    void drawText();
    Ref<NSBitmapImageRep> newCanvas(const std::function<void(NSLayoutManager&, Range glyphs)>& draw) const;
    void drawSelection(QPainter& painter);
    void drawMarks(QPainter& painter);
    void selectionChanged();
    void endComposing();
    void blink(bool isOn);

    const Ref<NSTextView> view_;
    TextCaret caret_;
    Ref<NSBitmapImageRep> backdrop_;
    // The text in device pixels of the area, and its glyphs alone; drawn when needed.
    Ref<NSBitmapImageRep> canvas_;
    Ref<NSBitmapImageRep> glyphs_;
    bool isStale_ = true;
    std::function<NSRect()> placeInEmptyText_;
    bool isDragging_ = false;
    bool caretIsShown_ = false;
    QBasicTimer blinking_;
    // A click soon after a double click selects the paragraph.
    QBasicTimer afterDoubleClick_;
};

/// Presents text widgets to screen readers as editable text.
void installTextAccessibility();

}  // namespace qz
