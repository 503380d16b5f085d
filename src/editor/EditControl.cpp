#include "editor/EditControl.h"

#include "editor/EditorText.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextCursor>
#include <cstring>
#include <string>

namespace korvel {

namespace {

const QString kPlainTextMimeType = QStringLiteral("text/plain");

// Text from other programs breaks lines with CR LF, CR or LF alike; here each is a line break.
std::u16string WithLineBreaks(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c != u'\r' && c != u'\n') {
            result.push_back(c);
            continue;
        }
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i;
        result.append(u"\r\n");
    }
    return result;
}

std::u16string TextFromMimeData(const QMimeData& source) {
    if (source.hasFormat(EditControl::kTextMimeType)) {
        const QByteArray bytes = source.data(EditControl::kTextMimeType);
        std::u16string text(static_cast<size_t>(bytes.size()) / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), bytes.constData(), text.size() * sizeof(char16_t));
        return text;
    }
    if (source.hasFormat(kPlainTextMimeType))
        return WithLineBreaks(Utf16View(source.text()));
    return {};
}

// The longest start of text that fits in room characters and ends neither inside a surrogate
// pair nor inside a line break.
size_t FittingLength(std::u16string_view text, qsizetype room) {
    if (room <= 0)
        return 0;
    size_t length = static_cast<size_t>(room);
    if (length >= text.size())
        return text.size();
    const char16_t last = text[length - 1];
    const char16_t next = text[length];
    if ((QChar::isHighSurrogate(last) && QChar::isLowSurrogate(next)) ||
        (last == u'\r' && next == u'\n'))
        --length;
    return length;
}

bool IsEditCommandKey(const QKeyEvent& key) {
    for (const QKeySequence::StandardKey standard :
         {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::Undo,
          QKeySequence::Redo, QKeySequence::SelectAll})
        if (key.matches(standard))
            return true;
    const QKeyCombination combination = key.keyCombination();
    for (const QKeyCombination edit : {Qt::CTRL | Qt::Key_Insert, Qt::SHIFT | Qt::Key_Insert,
                                       Qt::SHIFT | Qt::Key_Delete, Qt::ALT | Qt::Key_Backspace})
        if (combination == edit)
            return true;
    return false;
}

} // namespace

EditControl::EditControl(QWidget* parent) : QPlainTextEdit(parent) {}

bool EditControl::canPaste() const {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && canInsertFromMimeData(data);
}

void EditControl::typeText(std::u16string_view text) {
    if (isReadOnly())
        return;
    if (fits(static_cast<qsizetype>(text.size())))
        insertAtSelection(text);
    else
        refuseInput();
}

bool EditControl::event(QEvent* event) {
    // The edit keys are the window's: a control that claimed them would copy, paste or undo
    // past the commands, and past whatever records or routes them. Where no command has the
    // key, it comes back as an ordinary key press.
    if (event->type() == QEvent::ShortcutOverride &&
        IsEditCommandKey(*static_cast<QKeyEvent*>(event))) {
        event->ignore();
        return true;
    }
    // Caught before QWidget::event, which would otherwise offer Tab to focus navigation. With
    // any modifier (Shift+Tab arrives as Backtab) it is still a tab for the text.
    if (event->type() == QEvent::KeyPress && !isReadOnly()) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
            key->accept();
            if (fits(1))
                insertAtSelection(u"\t");
            else
                refuseInput();
            return true;
        }
    }
    return QPlainTextEdit::event(event);
}

void EditControl::keyPressEvent(QKeyEvent* event) {
    // The text has one undo direction only.
    if (event->matches(QKeySequence::Redo)) {
        event->accept();
        return;
    }
    if (isReadOnly()) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    const bool lineSeparator = event->matches(QKeySequence::InsertLineSeparator);
    const bool lineBreak = lineSeparator || event->matches(QKeySequence::InsertParagraphSeparator);
    const QString text = event->text();
    // The base control inserts a key's text when it starts with a printable character or a tab.
    const bool typing =
        !lineBreak && !text.isEmpty() && (text.front().isPrint() || text.front() == u'\t');
    if (!lineBreak && !typing) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    event->accept();
    const qsizetype added = lineBreak ? 2 : text.size();
    if (!fits(added)) {
        refuseInput();
        return;
    }
    if (lineBreak && textCursor().hasSelection()) {
        // Over a selection that holds a line break, Qt takes the break apart into several undo
        // steps, and one undo then leaves a mark of the selection without its character.
        insertAtSelection(u"\r\n");
        return;
    }
    if (lineSeparator) {
        // Qt would put U+2028 in the text: a break on screen that is no line of the file.
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
        QPlainTextEdit::keyPressEvent(&enter);
        return;
    }
    if (typing && NeedsMarks(Utf16View(text))) {
        insertAtSelection(Utf16View(text));
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void EditControl::inputMethodEvent(QInputMethodEvent* event) {
    const QString commit = event->commitString();
    if (isReadOnly() || commit.isEmpty()) {
        QPlainTextEdit::inputMethodEvent(event);
        return;
    }
    const qsizetype replaced = EditorTextLength(textCursor()) + event->replacementLength();
    if (commit.size() > room(replaced)) {
        refuseInput();
        // Ends the composition without committing anything.
        QInputMethodEvent nothing;
        QPlainTextEdit::inputMethodEvent(&nothing);
        event->accept();
        return;
    }
    if (!NeedsMarks(Utf16View(commit))) {
        QPlainTextEdit::inputMethodEvent(event);
        return;
    }
    QInputMethodEvent withoutCommit;
    withoutCommit.setCommitString(QString(), event->replacementStart(), event->replacementLength());
    QPlainTextEdit::inputMethodEvent(&withoutCommit);
    event->accept();
    insertAtSelection(Utf16View(commit));
}

void EditControl::dropEvent(QDropEvent* event) {
    // Qt takes a moved selection out before it inserts the dropped copy, so that copy must go
    // back whole even when the text is past the limit already.
    const auto* source = qobject_cast<const QWidget*>(event->source());
    movingWithin_ =
        event->dropAction() == Qt::MoveAction && source && (source == this || isAncestorOf(source));
    QPlainTextEdit::dropEvent(event);
    movingWithin_ = false;
}

QMimeData* EditControl::createMimeDataFromSelection() const {
    const std::u16string text = EditorText(textCursor());
    auto* data = new QMimeData;
    data->setData(kTextMimeType,
                  QByteArray(reinterpret_cast<const char*>(text.data()),
                             static_cast<qsizetype>(text.size() * sizeof(char16_t))));
    QString plain = QString::fromStdU16String(text);
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    data->setText(plain);
    return data;
}

bool EditControl::canInsertFromMimeData(const QMimeData* source) const {
    // Not QMimeData::hasText(), which counts a list of files as text.
    return source->hasFormat(kTextMimeType) || source->hasFormat(kPlainTextMimeType);
}

void EditControl::insertFromMimeData(const QMimeData* source) {
    if (isReadOnly())
        return;
    std::u16string text = TextFromMimeData(*source);
    QTextCursor cursor = textCursor();
    if (!movingWithin_) {
        const qsizetype space = room(EditorTextLength(cursor));
        if (static_cast<qsizetype>(text.size()) > space) {
            refuseInput();
            text.resize(FittingLength(text, space));
        }
    }
    if (text.empty())
        return;
    InsertEditorText(cursor, text);
    setTextCursor(cursor);
    ensureCursorVisible();
}

qsizetype EditControl::room(qsizetype replaced) const {
    return textLimit_ - (EditorTextLength(*document()) - replaced);
}

void EditControl::refuseInput() {
    QApplication::beep();
    emit textLimitReached();
}

bool EditControl::fits(qsizetype added) const {
    return added <= room(EditorTextLength(textCursor()));
}

void EditControl::insertAtSelection(std::u16string_view text) {
    QTextCursor cursor = textCursor();
    InsertEditorText(cursor, text);
    setTextCursor(cursor);
    ensureCursorVisible();
}

} // namespace korvel
