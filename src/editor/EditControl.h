#pragma once

#include <QPlainTextEdit>
#include <string_view>

namespace korvel {

// One of the view's two edit controls. The document is set from outside (made by
// CreateEditorDocument) and may be taken away at any time; the control keeps nothing of it.
//
// - Tab, with any modifier, inserts a tab character at the selection and never moves the focus.
// - The edit keys (copy, cut, paste, undo, select all, and Ctrl+Insert, Shift+Insert,
//   Shift+Delete, Alt+Backspace) are left to the window's commands when it has them; redo
//   keys do nothing.
// - Typed text, input method commits, paste and drop are held to the text limit (counted as
//   EditorTextLength counts): typing that would pass it is refused with a beep, a paste or a
//   drop is cut to what fits. Text put in with SetEditorText is not limited.
// - The clipboard gets the selection as plain text and, for pasting back here with the marks,
//   the exact text under a private type.
class EditControl : public QPlainTextEdit {
    Q_OBJECT
public:
    static constexpr qsizetype kDefaultTextLimit = 65536;
    // The private clipboard type: the exact text, UTF-16 in the machine's byte order.
    static constexpr char kTextMimeType[] = "application/x-korveledit-text";

    explicit EditControl(QWidget* parent = nullptr);

    qsizetype textLimit() const { return textLimit_; }
    void setTextLimit(qsizetype limit) { textLimit_ = limit; }

    // True when the clipboard holds text (the Paste command's enable rule).
    bool canPaste() const;
    // Puts text (CR LF between lines) in place of the selection as one undo step, as typing
    // does: refused with a beep when it would pass the text limit.
    void typeText(std::u16string_view text);

signals:
    // Input was refused or cut at the text limit.
    void textLimitReached();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    // How many characters may still be added when replacing `replaced` characters.
    qsizetype room(qsizetype replaced) const;
    // Whether added characters fit in place of the selection.
    bool fits(qsizetype added) const;
    void refuseInput();
    void insertAtSelection(std::u16string_view text);

    qsizetype textLimit_ = kDefaultTextLimit;
    // A drag moved within this control: its text was taken out before it is put back.
    bool movingWithin_ = false;
};

} // namespace korvel
