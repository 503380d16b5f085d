#pragma once

#include <QDialog>
#include <optional>

class QLabel;
class QLineEdit;
class QSlider;

namespace korvel {

// "ジャンプ": where the caret is, how many lines the text has, and the line to go to, typed or
// picked with the slider. Lines count from 1.
class JumpDialog : public QDialog {
    Q_OBJECT
public:
    JumpDialog(int caretLine, int lineCount, QWidget* parent = nullptr);

    // The line chosen; valid once the dialog was accepted.
    int line() const;
    QLineEdit* lineEdit() const { return edit_; }
    QSlider* slider() const { return slider_; }

    // The tick spacing for a text of lineCount lines: one tick per 1, 10, 100, 1,000 or 10,000
    // lines.
    static int TickInterval(int lineCount);

    void accept() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The typed line when it is a number from 1 to the line count.
    std::optional<int> typedLine() const;
    void complain();

    int lineCount_;
    QLineEdit* edit_;
    QSlider* slider_;
    bool complaining_ = false;
};

// Shows the dialog; the chosen line, or nothing when it was cancelled.
std::optional<int> RunJumpDialog(int caretLine, int lineCount, QWidget* parent);

} // namespace korvel
