// The view's caret and selection moves by the file's lines, however the lines wrap on screen.
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"

#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>

namespace korvel {

void CEditer::selectLinePart(LinePart part) {
    EditControl* control = activeControl();
    QTextCursor cursor = control->textCursor();
    const int caret = cursor.position();
    const QTextBlock line = cursor.block();
    const int lineStart = line.position();
    const int lineEnd = lineStart + line.length() - 1;
    switch (part) {
    case LinePart::Whole:
        cursor.setPosition(lineStart);
        cursor.setPosition(lineEnd, QTextCursor::KeepAnchor);
        break;
    case LinePart::BeforeCaret:
        cursor.setPosition(caret);
        cursor.setPosition(lineStart, QTextCursor::KeepAnchor);
        break;
    case LinePart::AfterCaret:
        cursor.setPosition(caret);
        cursor.setPosition(lineEnd, QTextCursor::KeepAnchor);
        break;
    }
    control->setTextCursor(cursor);
}

void CEditer::collapseSelection(bool atStart) {
    EditControl* control = activeControl();
    QTextCursor cursor = control->textCursor();
    cursor.setPosition(atStart ? cursor.selectionStart() : cursor.selectionEnd());
    control->setTextCursor(cursor);
}

void CEditer::goToTextStart() {
    EditControl* control = activeControl();
    control->moveCursor(QTextCursor::Start);
    control->ensureCursorVisible();
}

void CEditer::goToTextEnd() {
    EditControl* control = activeControl();
    control->moveCursor(QTextCursor::End);
    control->ensureCursorVisible();
}

void CEditer::goToFirstVisibleLine() {
    EditControl* control = activeControl();
    control->setTextCursor(control->cursorForPosition(QPoint(0, 0)));
}

void CEditer::goToLineRelative(int offset) {
    const qint64 target = std::clamp<qint64>(qint64(caretLine()) + offset, 0, lineCount() - 1);
    goToLine(static_cast<int>(target));
}

void CEditer::typeText(const QString& text) {
    activeControl()->typeText(Utf16View(text));
}

} // namespace korvel
