#include "messages/MessageService.h"

#include "messages/MessageFormat.h"
#include "messages/StringTable.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <optional>

namespace korvel {
namespace {

// String 57344: the program's title, the caption of every box that names no other.
constexpr int kProgramTitle = 57344;

QMessageBox::StandardButton StandardButtonOf(MessageAnswer answer) {
    switch (answer) {
    case MessageAnswer::Cancel:
        return QMessageBox::Cancel;
    case MessageAnswer::Yes:
        return QMessageBox::Yes;
    case MessageAnswer::No:
        return QMessageBox::No;
    case MessageAnswer::Ok:
        break;
    }
    return QMessageBox::Ok;
}

std::optional<MessageAnswer> AnswerOf(QMessageBox::StandardButton button) {
    switch (button) {
    case QMessageBox::Ok:
        return MessageAnswer::Ok;
    case QMessageBox::Cancel:
        return MessageAnswer::Cancel;
    case QMessageBox::Yes:
        return MessageAnswer::Yes;
    case QMessageBox::No:
        return MessageAnswer::No;
    default:
        return std::nullopt;
    }
}

QString ButtonText(MessageAnswer answer) {
    switch (answer) {
    case MessageAnswer::Cancel:
        return QStringLiteral("キャンセル");
    case MessageAnswer::Yes:
        return QStringLiteral("はい");
    case MessageAnswer::No:
        return QStringLiteral("いいえ");
    case MessageAnswer::Ok:
        break;
    }
    return QStringLiteral("OK");
}

QMessageBox::Icon IconOf(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::Information:
        return QMessageBox::Information;
    case MessageIcon::Warning:
        return QMessageBox::Warning;
    case MessageIcon::Question:
        return QMessageBox::Question;
    case MessageIcon::Stop:
        return QMessageBox::Critical;
    case MessageIcon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

// With KORVEL_MESSAGE_LOG naming a file, each box shown is also written there, one line per
// box: its number and its text, line breaks as "\n". Scripts that run the program, and users
// reporting a problem, can then see what it said.
void LogMessage(const MessageRequest& request) {
    const QString logPath = qEnvironmentVariable("KORVEL_MESSAGE_LOG");
    if (logPath.isEmpty())
        return;
    QFile log(logPath);
    if (!log.open(QIODevice::Append | QIODevice::Text))
        return;
    QString text = MessageText(request);
    text.replace(u'\n', QStringLiteral("\\n"));
    log.write(QStringLiteral("%1\t%2\n").arg(QString::number(request.id), text).toUtf8());
}

class MessageBoxService final : public MessageService {
public:
    MessageAnswer show(const MessageRequest& request) override {
        LogMessage(request);
        // Without a parent the box would sit unowned beside the main window.
        QWidget* parent = request.parent ? request.parent : QApplication::activeWindow();
        QMessageBox box(IconOf(request.icon), MessageCaption(request), MessageText(request),
                        QMessageBox::NoButton, parent);
        // Texts such as "* ? < > | \ : /" must never be taken for markup.
        box.setTextFormat(Qt::PlainText);
        for (MessageAnswer answer : AnswersOf(request.buttons))
            box.addButton(StandardButtonOf(answer))->setText(ButtonText(answer));
        box.setDefaultButton(StandardButtonOf(DefaultAnswer(request)));
        // Escape and the close button answer Cancel, else No, else OK: said outright rather
        // than left to Qt's guess from the button roles.
        const MessageAnswer escape = EscapeAnswer(request.buttons);
        box.setEscapeButton(box.button(StandardButtonOf(escape)));
        if (request.topmost)
            box.setWindowFlag(Qt::WindowStaysOnTopHint);
        box.exec();
        return AnswerOf(box.standardButton(box.clickedButton())).value_or(escape);
    }
};

MessageService* installedService = nullptr;

} // namespace

MessageService& MessageService::current() {
    static MessageBoxService messageBoxes;
    return installedService ? *installedService : messageBoxes;
}

void MessageService::install(MessageService* service) {
    installedService = service;
}

MessageAnswer ShowMessage(const MessageRequest& request) {
    return MessageService::current().show(request);
}

QString MessageText(const MessageRequest& request) {
    return FormatMessage(request.id != 0 ? LoadString(request.id) : request.text,
                         request.arguments);
}

QString MessageCaption(const MessageRequest& request) {
    return request.caption.isEmpty() ? LoadString(kProgramTitle) : request.caption;
}

QList<MessageAnswer> AnswersOf(MessageButtons buttons) {
    switch (buttons) {
    case MessageButtons::OkCancel:
        return {MessageAnswer::Ok, MessageAnswer::Cancel};
    case MessageButtons::YesNo:
        return {MessageAnswer::Yes, MessageAnswer::No};
    case MessageButtons::YesNoCancel:
        return {MessageAnswer::Yes, MessageAnswer::No, MessageAnswer::Cancel};
    case MessageButtons::Ok:
        break;
    }
    return {MessageAnswer::Ok};
}

MessageAnswer DefaultAnswer(const MessageRequest& request) {
    const QList<MessageAnswer> answers = AnswersOf(request.buttons);
    return answers.contains(request.defaultButton) ? request.defaultButton : answers.first();
}

MessageAnswer EscapeAnswer(MessageButtons buttons) {
    const QList<MessageAnswer> answers = AnswersOf(buttons);
    if (answers.contains(MessageAnswer::Cancel))
        return MessageAnswer::Cancel;
    if (answers.contains(MessageAnswer::No))
        return MessageAnswer::No;
    return MessageAnswer::Ok;
}

} // namespace korvel
