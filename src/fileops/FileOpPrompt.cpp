#include "fileops/FileOpPrompt.h"

namespace korvel {

FileOpStatus FileOpPrompt::report(FileOpMessage message, const QStringList& arguments,
                                  FileOpStatus onOk, MessageIcon icon) const {
    if (!interactive_) {
        return onOk;
    }
    const MessageAnswer answer =
        show(message, arguments, MessageButtons::OkCancel, icon, MessageAnswer::Ok);
    return answer == MessageAnswer::Cancel ? FileOpStatus::Cancelled : onOk;
}

FileOpStatus FileOpPrompt::confirm(FileOpMessage message, const QStringList& arguments) const {
    switch (show(message, arguments, MessageButtons::YesNoCancel, MessageIcon::Question,
                 MessageAnswer::No)) {
    case MessageAnswer::Yes:
        return FileOpStatus::Done;
    case MessageAnswer::Cancel:
        return FileOpStatus::Cancelled;
    default:
        return FileOpStatus::Skipped;
    }
}

bool FileOpPrompt::agrees(FileOpMessage message, const QStringList& arguments) const {
    return show(message, arguments, MessageButtons::YesNo, MessageIcon::Question,
                MessageAnswer::No) == MessageAnswer::Yes;
}

void FileOpPrompt::tell(FileOpMessage message, const QStringList& arguments,
                        MessageIcon icon) const {
    show(message, arguments, MessageButtons::Ok, icon, MessageAnswer::Ok);
}

MessageAnswer FileOpPrompt::show(FileOpMessage message, const QStringList& arguments,
                                 MessageButtons buttons, MessageIcon icon,
                                 MessageAnswer defaultButton) const {
    MessageRequest request;
    request.id = message.id;
    if (message.text != nullptr) {
        request.text = QString::fromUtf16(message.text);
    }
    request.arguments = arguments;
    request.buttons = buttons;
    request.icon = icon;
    request.defaultButton = defaultButton;
    request.parent = parent_;
    return ShowMessage(request);
}

} // namespace korvel
