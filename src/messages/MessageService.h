#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QWidget;

namespace korvel {

enum class MessageButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MessageIcon { None, Information, Warning, Question, Stop };
enum class MessageAnswer { Ok, Cancel, Yes, No };

// One message box: the text comes from the string table by id, with "%s" and "%d" filled in
// from arguments in order.
struct MessageRequest {
    int id = 0;
    // Shown in place of a string when id is 0: the few texts of the program that have no number.
    QString text{};
    QStringList arguments{};
    MessageButtons buttons = MessageButtons::Ok;
    MessageIcon icon = MessageIcon::None;
    MessageAnswer defaultButton = MessageAnswer::Ok;
    bool topmost = false;
    QString caption{}; // empty: the program's title
    QWidget* parent = nullptr;
};

// Every message box of the program goes through the installed service, so that tests can
// script the answers and see exactly what was shown.
class MessageService {
public:
    virtual ~MessageService() = default;
    virtual MessageAnswer show(const MessageRequest& request) = 0;

    // The service in use: the QMessageBox one unless a test installed another.
    static MessageService& current();
    // Installs a service (not owned); nullptr restores the QMessageBox one.
    static void install(MessageService* service);
};

// Shorthand for MessageService::current().show(request).
MessageAnswer ShowMessage(const MessageRequest& request);

// What every service shows and answers, worked out the same way for all of them.

// The text of the box: the string (or the request's own text) with the arguments filled in.
QString MessageText(const MessageRequest& request);
// The caption of the box: the request's own, else the program's title.
QString MessageCaption(const MessageRequest& request);
// The answers the box offers, in the order of its buttons.
QList<MessageAnswer> AnswersOf(MessageButtons buttons);
// The button that Enter presses: the requested one when the box has it, else the first button
// (a Yes/No box asked for with the default OK defaults to Yes).
MessageAnswer DefaultAnswer(const MessageRequest& request);
// The answer given by Escape or by closing the box: Cancel, else No, else OK.
MessageAnswer EscapeAnswer(MessageButtons buttons);

} // namespace korvel
