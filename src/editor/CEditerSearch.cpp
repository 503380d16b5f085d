// The view's find, replace and jump: the search engine acting on the active control.
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "editor/EditorText.h"
#include "editor/JumpDialog.h"
#include "editor/ScreenRows.h"
#include "editor/SearchEngine.h"
#include "editor/WaitCursor.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>

namespace korvel {

namespace {

// A match that scrolled the text into view stands this many rows below the top, so that the
// lines before it are seen too.
constexpr int kMatchRowsFromTop = 5;
constexpr int kJumpRowsFromTop = 3;

// The search engine's view of the active control, in program positions.
class ActiveControlTarget : public SearchTarget {
public:
    explicit ActiveControlTarget(const CEditer& view)
        : control_(view.activeControl()), document_(*control_->document()), parent_(view.window()) {
    }

    std::u16string text() const override { return EditorText(document_); }
    std::size_t selectionStart() const override {
        return static_cast<std::size_t>(
            ProgramPosition(document_, control_->textCursor().selectionStart()));
    }
    std::size_t selectionEnd() const override {
        return static_cast<std::size_t>(
            ProgramPosition(document_, control_->textCursor().selectionEnd()));
    }

    void selectMatch(std::size_t start, std::size_t end) override {
        QScrollBar* bar = control_->verticalScrollBar();
        const int topBefore = bar->value();
        control_->setTextCursor(cursorFor(start, end));
        control_->ensureCursorVisible();
        if (bar->value() != topBefore)
            ScrollRowTo(control_, control_->textCursor().position(), kMatchRowsFromTop);
        control_->setFocus();
    }

    void setSelection(std::size_t start, std::size_t end) override {
        control_->setTextCursor(cursorFor(start, end));
    }

    void replaceSelection(std::u16string_view text) override {
        QTextCursor cursor = control_->textCursor();
        InsertEditorText(cursor, text);
        control_->setTextCursor(cursor);
    }

    void replaceRange(std::size_t start, std::size_t end, std::u16string_view text) override {
        const WaitCursor waitCursor;
        QTextCursor cursor = cursorFor(start, end);
        InsertEditorText(cursor, text);
        control_->setTextCursor(cursor);
        control_->ensureCursorVisible();
    }

    QWidget* messageParent() const override { return parent_; }

private:
    QTextCursor cursorFor(std::size_t start, std::size_t end) const {
        QTextCursor cursor(&document_);
        cursor.setPosition(static_cast<int>(DocumentPosition(document_, qsizetype(start))));
        cursor.setPosition(static_cast<int>(DocumentPosition(document_, qsizetype(end))),
                           QTextCursor::KeepAnchor);
        return cursor;
    }

    EditControl* control_;
    QTextDocument& document_;
    QWidget* parent_;
};

} // namespace

bool CEditer::find(const QString& text, bool towardsStart, bool ignoreCase, FindMode mode) {
    ActiveControlTarget target(*this);
    return SearchEngine(target).find(Utf16View(text), towardsStart, ignoreCase, mode);
}

bool CEditer::replaceAll(const QString& text, const QString& replacement, bool ignoreCase) {
    ActiveControlTarget target(*this);
    return SearchEngine(target).replaceAll(Utf16View(text), Utf16View(replacement), ignoreCase);
}

bool CEditer::replaceOne(const QString& text, const QString& replacement, bool ignoreCase) {
    ActiveControlTarget target(*this);
    return SearchEngine(target).replaceOne(Utf16View(text), Utf16View(replacement), ignoreCase);
}

QString CEditer::selectedText() const {
    const std::u16string text = EditorText(activeControl()->textCursor());
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

void CEditer::record(const RecordedCommand& command) {
    if (recorder_)
        recorder_(command);
}

int CEditer::caretLine() const {
    return document_->findBlock(activeControl()->textCursor().selectionStart()).blockNumber();
}

int CEditer::lineCount() const {
    return document_->blockCount();
}

void CEditer::goToLine(int line) {
    EditControl* control = activeControl();
    const QTextBlock block = document_->findBlockByNumber(line);
    if (!block.isValid())
        return;
    // Showing the line first lays out the lines around it, whose rows the scrolling counts.
    control->setTextCursor(QTextCursor(block));
    control->ensureCursorVisible();
    ScrollRowTo(control, block.position(), kJumpRowsFromTop);
}

void CEditer::jump() {
    const std::optional<int> line = RunJumpDialog(caretLine() + 1, lineCount(), window());
    if (!line)
        return;
    goToLine(*line - 1);
    record({RecordedAction::GoToLine, QString(), QString(), *line});
}

} // namespace korvel
