#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>

#include "platform/ui/QtValues.h"
#include "platform/ui/TextWidget.h"

namespace qz {
namespace {

using Motion = TextCaret::Motion;

/// Turns other systems' line ends into line feeds and drops characters that a text cannot show.
QString plainText(QString text) {
    text.replace("\r\n", "\n").replace('\r', '\n');
    text.removeIf([](QChar c) { return c.unicode() < 0x20 && c != '\n' && c != '\t'; });
    return text;
}

bool typesText(const QKeyEvent& event) {
    const QString text = event.text();
    if (text.isEmpty() || (!text[0].isPrint() && text[0].category() != QChar::Other_Format)) return false;
    // Ctrl and Alt together are AltGr, which types characters.
    const Qt::KeyboardModifiers command =
        event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    return command == Qt::NoModifier || command == (Qt::ControlModifier | Qt::AltModifier);
}

}  // namespace

bool TextWidget::event(QEvent* event) {
    // Keys used here must not go to menu shortcuts first.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (isCommand(key) || typesText(key)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

bool TextWidget::isCommand(const QKeyEvent& event) const {
    static const QKeySequence::StandardKey commands[] = {
        QKeySequence::Copy, QKeySequence::Cut,  QKeySequence::Paste,           QKeySequence::SelectAll,
        QKeySequence::Undo, QKeySequence::Redo, QKeySequence::DeleteEndOfWord, QKeySequence::DeleteStartOfWord};
    return std::ranges::any_of(commands, [&](QKeySequence::StandardKey command) { return event.matches(command); });
}

void TextWidget::keyPressEvent(QKeyEvent* event) {
    if (!commandByKey(*event) && !moveByKey(*event) && !editByKey(*event)) QWidget::keyPressEvent(event);
}

bool TextWidget::commandByKey(const QKeyEvent& event) {
    if (event.matches(QKeySequence::Copy)) return copy(), true;
    if (event.matches(QKeySequence::Cut)) return cut(), true;
    if (event.matches(QKeySequence::Paste)) return paste(), true;
    if (event.matches(QKeySequence::SelectAll)) return selectAll(), true;
    if (event.matches(QKeySequence::Undo)) return undo(), true;
    if (event.matches(QKeySequence::Redo)) return redo(), true;
    return false;
}

bool TextWidget::moveByKey(const QKeyEvent& event) {
    const bool isWide = event.modifiers().testFlag(Qt::ControlModifier);
    if (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier)) return false;
    Motion motion;
    switch (event.key()) {
        case Qt::Key_Left:
            motion = isWide ? Motion::wordLeft : Motion::left;
            break;
        case Qt::Key_Right:
            motion = isWide ? Motion::wordRight : Motion::right;
            break;
        case Qt::Key_Up:
            motion = Motion::up;
            break;
        case Qt::Key_Down:
            motion = Motion::down;
            break;
        case Qt::Key_Home:
            motion = isWide ? Motion::textStart : Motion::lineStart;
            break;
        case Qt::Key_End:
            motion = isWide ? Motion::textEnd : Motion::lineEnd;
            break;
        default:
            return false;
    }
    endComposing();
    caret_.move(motion, event.modifiers().testFlag(Qt::ShiftModifier));
    return true;
}

bool TextWidget::editByKey(const QKeyEvent& event) {
    const bool isWide = event.modifiers().testFlag(Qt::ControlModifier);
    switch (event.key()) {
        case Qt::Key_Backspace:
            isWide ? caret_.deleteWord(true) : view_->deleteBackward();
            return true;
        case Qt::Key_Delete:
            isWide ? caret_.deleteWord(false) : view_->deleteForward();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) return false;
            // A new line in the same paragraph, as everywhere.
            view_->insertText(event.modifiers().testFlag(Qt::ShiftModifier) ? "\u2028"_ns : "\n"_ns);
            return true;
        default:
            break;
    }
    if (!typesText(event)) return false;
    view_->insertText(fromQt(event.text()));
    return true;
}

// Clipboard and undo

void TextWidget::copy() {
    const Range selection = view_->selectedRange();
    if (selection.length == 0) return;
    QApplication::clipboard()->setText(toQt(*view_->attributedSubstringFromRange(selection)->string()));
}

void TextWidget::cut() {
    copy();
    clear();
}

void TextWidget::paste() {
    const QString text = plainText(QApplication::clipboard()->text());
    if (!text.isEmpty()) view_->insertText(fromQt(text));
}

void TextWidget::clear() {
    if (view_->selectedRange().length > 0) view_->deleteBackward();
}

void TextWidget::selectAll() {
    caret_.selectAll();
}

void TextWidget::undo() {
    if (view_->undoManager()) view_->undoManager()->undo();
}

void TextWidget::redo() {
    if (view_->undoManager()) view_->undoManager()->redo();
}

// Input methods

void TextWidget::inputMethodEvent(QInputMethodEvent* event) {
    event->accept();
    if (event->replacementLength() > 0) {
        const int64_t start = int64_t{view_->selectedRange().location} + event->replacementStart();
        if (start >= 0) {
            view_->setSelectedRange({static_cast<uint32_t>(start), static_cast<uint32_t>(event->replacementLength())});
        }
    }
    if (!event->commitString().isEmpty()) view_->insertText(fromQt(plainText(event->commitString())));
    const QString composed = event->preeditString();
    Range selected = {static_cast<uint32_t>(composed.size()), 0};
    for (const QInputMethodEvent::Attribute& attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) selected.location = static_cast<uint32_t>(attribute.start);
    }
    if (!composed.isEmpty() || view_->markedRange().length > 0) view_->setMarkedText(fromQt(composed), selected);
    updateMicroFocus();
}

QVariant TextWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    // Getting the caret's place first makes it follow the selection.
    auto& self = const_cast<TextWidget&>(*this);
    auto& caret = self.caret_;
    const Range selection = view_->selectedRange();
    switch (query) {
        case Qt::ImEnabled:
            return view_->isEditable();
        case Qt::ImCursorRectangle:
            return toWidget(self.caretRect()).adjusted(0, 0, 1, 0);
        case Qt::ImCursorPosition:
        case Qt::ImAbsolutePosition:
            return caret.position();
        case Qt::ImAnchorPosition:
            return caret.position() == selection.location ? static_cast<uint32_t>(selection.end()) : selection.location;
        case Qt::ImSurroundingText:
            return toQt(*view_->string());
        case Qt::ImCurrentSelection:
            return toQt(*view_->attributedSubstringFromRange(selection)->string());
        case Qt::ImHints:
            return static_cast<int>(Qt::ImhMultiLine);
        default:
            return QWidget::inputMethodQuery(query);
    }
}

}  // namespace qz
