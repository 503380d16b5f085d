#pragma once

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
    QStringList arguments;
    MessageButtons buttons = MessageButtons::Ok;
    MessageIcon icon = MessageIcon::None;
    MessageAnswer defaultButton = MessageAnswer::Ok;
    bool topmost = false;
    QString caption; // empty: the program's title
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

} // namespace korvel
