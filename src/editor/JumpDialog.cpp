#include "editor/JumpDialog.h"

#include "messages/MessageService.h"
#include "widgets/DialogButtons.h"

#include <QApplication>
#include <QFocusEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>

namespace korvel {

namespace {

constexpr int kMessageBadLine = 33006;

} // namespace

JumpDialog::JumpDialog(int caretLine, int lineCount, QWidget* parent)
    : QDialog(parent), lineCount_(lineCount), edit_(new QLineEdit(this)),
      slider_(new QSlider(Qt::Horizontal, this)) {
    setWindowTitle(QStringLiteral("ジャンプ"));
    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("文字入力カーソル："), this), 0, 0);
    layout->addWidget(new QLabel(QString::number(caretLine), this), 0, 1);
    layout->addWidget(new QLabel(QStringLiteral("テキストの最終行："), this), 1, 0);
    layout->addWidget(new QLabel(QString::number(lineCount), this), 1, 1);
    auto* editLabel = new QLabel(QStringLiteral("ジャンプ先(&G)："), this);
    editLabel->setBuddy(edit_);
    layout->addWidget(editLabel, 2, 0);
    layout->addWidget(edit_, 2, 1);
    layout->addWidget(slider_, 3, 0, 1, 2);

    layout->addLayout(OkCancelRow(*this), 4, 0, 1, 2);

    edit_->setText(QString::number(caretLine));
    edit_->selectAll();
    edit_->installEventFilter(this);
    slider_->setRange(1, std::max(1, lineCount));
    slider_->setValue(caretLine);
    slider_->setTickInterval(TickInterval(lineCount));
    slider_->setTickPosition(QSlider::TicksBelow);
    slider_->setPageStep(TickInterval(lineCount));
    connect(slider_, &QSlider::valueChanged, this, [this](int value) {
        const QString text = QString::number(value);
        if (edit_->text() != text)
            edit_->setText(text);
    });
}

int JumpDialog::TickInterval(int lineCount) {
    int interval = 1;
    for (int bound = 10; bound <= 10000 && lineCount >= bound; bound *= 10)
        interval = bound;
    return interval;
}

int JumpDialog::line() const {
    return typedLine().value_or(slider_->value());
}

std::optional<int> JumpDialog::typedLine() const {
    bool isNumber = false;
    const int line = edit_->text().trimmed().toInt(&isNumber);
    if (!isNumber || line < 1 || line > lineCount_)
        return std::nullopt;
    return line;
}

void JumpDialog::accept() {
    if (!typedLine()) {
        complain();
        return;
    }
    QDialog::accept();
}

bool JumpDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == edit_ && event->type() == QEvent::FocusOut && !complaining_) {
        // Leaving for a button is left to that button: OK checks the line itself, and Cancel
        // must not be held up by a line that does not matter any more.
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        const bool toButton = qobject_cast<QPushButton*>(QApplication::focusWidget()) != nullptr;
        if (!toButton && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            if (const std::optional<int> line = typedLine())
                slider_->setValue(*line);
            else // after the box has handled its focus-out, which drops the selection
                QMetaObject::invokeMethod(this, &JumpDialog::complain, Qt::QueuedConnection);
        }
    }
    return QDialog::eventFilter(watched, event);
}

void JumpDialog::complain() {
    complaining_ = true;
    MessageRequest request;
    request.id = kMessageBadLine;
    request.arguments = {QString::number(lineCount_)};
    request.icon = MessageIcon::Warning;
    request.parent = this;
    ShowMessage(request);
    edit_->setFocus();
    edit_->selectAll();
    complaining_ = false;
}

std::optional<int> RunJumpDialog(int caretLine, int lineCount, QWidget* parent) {
    JumpDialog dialog(caretLine, lineCount, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.line();
}

} // namespace korvel
