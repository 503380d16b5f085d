#pragma once

#include <QString>
#include <QtGlobal>
#include <string>
#include <string_view>

class QObject;
class QTextCursor;
class QTextDocument;

namespace korvel {

// A QString's UTF-16 as the text functions below take it, without a copy.
inline std::u16string_view Utf16View(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

// The editor keeps the file's text in a QTextDocument, which stores paragraphs and takes every
// CR, LF, U+2029, U+FDD0 and U+FDD1 for a paragraph break; U+2028 breaks the line on screen
// inside a paragraph, and a bare U+FFFC is drawn as nothing. So only CR LF pairs become line
// breaks, and each of the other characters is kept as a mark: a U+FFFC whose character format
// says it is a mark and carries the original character, drawn as a small grey label. These
// functions are the only way text goes in and out: QTextCursor::insertText(),
// QPlainTextEdit::insertPlainText() and toPlainText() would lose marks and line breaks.

// A document ready for an edit control: plain-text layout with the mark painter registered.
// The painter belongs to the document's layout; replacing the layout loses it.
QTextDocument* CreateEditorDocument(QObject* parent);

// Replaces the document's text (UTF-16, CR LF between lines). Undo history is cleared and the
// document is not modified afterwards. Cursors on the document, a control's caret among them,
// end up after the new text.
void SetEditorText(QTextDocument& document, std::u16string_view text);

// Replaces the cursor's selection with text, as one undo step, the same way SetEditorText
// reads it; the cursor ends after the inserted text.
void InsertEditorText(QTextCursor& cursor, std::u16string_view text);

// True when text holds a character that InsertEditorText keeps as a mark (a CR LF pair does
// not count): such text must not go through QTextCursor::insertText.
bool NeedsMarks(std::u16string_view text);

// The whole text back: CR LF between lines, every mark its original character.
std::u16string EditorText(const QTextDocument& document);
// The selection's text, the same way.
std::u16string EditorText(const QTextCursor& selection);

// The length as the program counts it: a line break counts as two characters, a mark as one.
qsizetype EditorTextLength(const QTextDocument& document);
qsizetype EditorTextLength(const QTextCursor& selection);

// Positions as the program counts them (a line break two characters) and as the document
// does (one). A program position between the CR and the LF of a break maps to the break.
qsizetype DocumentPosition(const QTextDocument& document, qsizetype programPosition);
qsizetype ProgramPosition(const QTextDocument& document, int documentPosition);

} // namespace korvel
