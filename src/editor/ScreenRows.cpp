#include "editor/ScreenRows.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>

namespace korvel {

namespace {

int RowHeight(const QPlainTextEdit* control) {
    return std::max(1, control->cursorRect().height());
}

} // namespace

int RowOnScreen(const QPlainTextEdit* control, int position) {
    QTextCursor at(control->document());
    at.setPosition(position);
    const int top = control->cursorRect(at).top();
    const int height = RowHeight(control);
    return top >= 0 ? top / height : -1 - (-top - 1) / height;
}

int RowsOnScreen(const QPlainTextEdit* control) {
    return control->viewport()->height() / RowHeight(control);
}

void ScrollRowTo(QPlainTextEdit* control, int position, int rowFromTop) {
    // The scroll bar counts rows from the top of the text, by the same line counts of the
    // blocks that the control draws with.
    const QTextBlock block = control->document()->findBlock(position);
    if (!block.isValid())
        return;
    int row = 0;
    if (const QTextLayout* layout = block.layout(); layout != nullptr && layout->lineCount() > 0)
        row = std::max(0, layout->lineForTextPosition(position - block.position()).lineNumber());
    QScrollBar* bar = control->verticalScrollBar();
    bar->setValue(block.firstLineNumber() + row - rowFromTop);
    // Lines above the top that were never laid out count as one row each; now that the place is
    // on screen, its row there settles what is left.
    for (int step = 0; step < 3; ++step) {
        const int off = RowOnScreen(control, position) - rowFromTop;
        const int before = bar->value();
        bar->setValue(before + off);
        if (off == 0 || bar->value() == before)
            return;
    }
}

} // namespace korvel
