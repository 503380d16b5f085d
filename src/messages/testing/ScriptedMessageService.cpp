#include "messages/testing/ScriptedMessageService.h"

#include "messages/StringTable.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

const char* NameOf(MessageAnswer answer) {
    switch (answer) {
    case MessageAnswer::Ok:
        return "Ok";
    case MessageAnswer::Cancel:
        return "Cancel";
    case MessageAnswer::Yes:
        return "Yes";
    case MessageAnswer::No:
        return "No";
    }
    return "?";
}

const char* NameOf(MessageButtons buttons) {
    switch (buttons) {
    case MessageButtons::Ok:
        return "Ok";
    case MessageButtons::OkCancel:
        return "OkCancel";
    case MessageButtons::YesNo:
        return "YesNo";
    case MessageButtons::YesNoCancel:
        return "YesNoCancel";
    }
    return "?";
}

const char* NameOf(MessageIcon icon) {
    switch (icon) {
    case MessageIcon::None:
        return "None";
    case MessageIcon::Information:
        return "Information";
    case MessageIcon::Warning:
        return "Warning";
    case MessageIcon::Question:
        return "Question";
    case MessageIcon::Stop:
        return "Stop";
    }
    return "?";
}

std::string Describe(const ShownMessage& box) {
    return "message " + std::to_string(box.id) + " (" + NameOf(box.buttons) + ") \"" +
           box.text.toStdString() + "\"";
}

} // namespace

ScriptedMessageService::ScriptedMessageService() : replaced_(&MessageService::current()) {
    install(this);
}

ScriptedMessageService::ScriptedMessageService(std::initializer_list<MessageAnswer> answers)
    : ScriptedMessageService() {
    script(answers);
}

ScriptedMessageService::~ScriptedMessageService() {
    install(replaced_);
    if (!answers_.isEmpty())
        ADD_FAILURE() << answers_.size() << " scripted answer(s) unused, the next being "
                      << NameOf(answers_.first()) << "; boxes shown: " << shown_.size();
}

void ScriptedMessageService::script(std::initializer_list<MessageAnswer> answers) {
    answers_.append(QList<MessageAnswer>(answers));
}

MessageAnswer ScriptedMessageService::show(const MessageRequest& request) {
    const ShownMessage& box = shown_.emplace_back(ShownMessage{
        .id = request.id,
        .text = MessageText(request),
        .buttons = request.buttons,
        .icon = request.icon,
        .defaultButton = DefaultAnswer(request),
        .topmost = request.topmost,
        .caption = MessageCaption(request),
    });
    if (request.id != 0 && !FindString(request.id))
        ADD_FAILURE() << "the string table has no text for " << Describe(box);
    if (request.id == 0 && request.text.isEmpty())
        ADD_FAILURE() << "a box with neither a string id nor a text";

    const MessageAnswer escape = EscapeAnswer(request.buttons);
    if (answers_.isEmpty()) {
        ADD_FAILURE() << "unexpected " << Describe(box) << "; answered " << NameOf(escape);
        return escape;
    }
    const MessageAnswer answer = answers_.takeFirst();
    if (!AnswersOf(request.buttons).contains(answer)) {
        ADD_FAILURE() << "scripted answer " << NameOf(answer) << " is not a button of "
                      << Describe(box) << "; answered " << NameOf(escape);
        return escape;
    }
    return answer;
}

QList<int> ScriptedMessageService::shownIds() const {
    QList<int> ids;
    for (const ShownMessage& box : shown_)
        ids.append(box.id);
    return ids;
}

void PrintTo(MessageAnswer answer, std::ostream* out) {
    *out << NameOf(answer);
}

void PrintTo(MessageButtons buttons, std::ostream* out) {
    *out << NameOf(buttons);
}

void PrintTo(MessageIcon icon, std::ostream* out) {
    *out << NameOf(icon);
}

} // namespace korvel
