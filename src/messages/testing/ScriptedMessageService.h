#pragma once

#include "messages/MessageService.h"

#include <QList>
#include <QString>
#include <initializer_list>
#include <ostream>

namespace korvel {

// One box as a scripted service saw it: the text with its arguments filled in, the caption and
// the default button as the user would get them.
struct ShownMessage {
    int id = 0;
    QString text;
    MessageButtons buttons = MessageButtons::Ok;
    MessageIcon icon = MessageIcon::None;
    MessageAnswer defaultButton = MessageAnswer::Ok;
    bool topmost = false;
    QString caption;
};

// The message service of the tests, installed for its lifetime in place of the message boxes
// (the one it replaced comes back when it ends). It records every box and answers each from a
// script of answers, in order. The running test fails on a box with no answer left, on an
// answer the box does not offer, on an id the string table lacks, and on answers still unused
// when the service ends.
class ScriptedMessageService final : public MessageService {
public:
    ScriptedMessageService();
    explicit ScriptedMessageService(std::initializer_list<MessageAnswer> answers);
    ~ScriptedMessageService() override;

    ScriptedMessageService(const ScriptedMessageService&) = delete;
    ScriptedMessageService& operator=(const ScriptedMessageService&) = delete;

    // Adds answers for the boxes still to come.
    void script(std::initializer_list<MessageAnswer> answers);

    MessageAnswer show(const MessageRequest& request) override;

    const QList<ShownMessage>& shown() const { return shown_; }
    // The ids of the boxes shown so far, in order.
    QList<int> shownIds() const;
    qsizetype unusedAnswers() const { return answers_.size(); }

private:
    MessageService* replaced_;
    QList<MessageAnswer> answers_;
    QList<ShownMessage> shown_;
};

// Readable names in test failure output.
void PrintTo(MessageAnswer answer, std::ostream* out);
void PrintTo(MessageButtons buttons, std::ostream* out);
void PrintTo(MessageIcon icon, std::ostream* out);

} // namespace korvel
