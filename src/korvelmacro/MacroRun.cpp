#include "korvelmacro/MacroRun.h"

#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "macro/MacroPlayer.h"
#include "messages/MessageService.h"
#include "shell/CMainFrame.h"
#include "shell/ViewMacroTarget.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdio>
#include <utility>

namespace korvel {

namespace {

// Prints each box instead of showing it, takes its default answer, and notes the error boxes.
class PrintingMessageService final : public MessageService {
public:
    PrintingMessageService() { MessageService::install(this); }
    ~PrintingMessageService() override { MessageService::install(nullptr); }

    MessageAnswer show(const MessageRequest& request) override {
        const QString line = QStringLiteral("[%1] %2\n").arg(request.id).arg(MessageText(request));
        std::fputs(line.toUtf8().constData(), stderr);
        errorShown_ = errorShown_ || request.icon == MessageIcon::Stop;
        return DefaultAnswer(request);
    }

    // Whether an error box was shown since the last call.
    bool takeErrorShown() { return std::exchange(errorShown_, false); }

private:
    bool errorShown_ = false;
};

bool RunOverFile(CMainFrame& frame, ViewMacroTarget& target, MacroPlayer& player,
                 const std::vector<MacroCommand>& commands, const QString& file,
                 PrintingMessageService& messages) {
    CEditer& view = *frame.view();
    const QString path = QDir::cleanPath(QFileInfo(file).absoluteFilePath());
    messages.takeErrorShown();
    if (!view.openPath(path, false))
        return false;
    player.play(commands, target);
    target.enableUserInput();
    if (messages.takeErrorShown())
        return false;
    // A macro that went on to another file has taken care of this one.
    if (!view.isModified() || view.path() != path)
        return true;
    return view.saveAsPath(view.path(), view.encoding(), view.lineEnding()) &&
           !messages.takeErrorShown();
}

} // namespace

bool RunMacroOverFiles(const std::vector<MacroCommand>& commands, const QStringList& files,
                       SettingsStore& store) {
    PrintingMessageService messages;
    CMainFrame frame(store);
    frame.show();
    frame.activateWindow();
    frame.view()->activeControl()->setFocus();
    QApplication::processEvents();
    ViewMacroTarget target(*frame.view());
    MacroPlayer player;
    bool allRan = true;
    for (const QString& file : files) {
        if (RunOverFile(frame, target, player, commands, file, messages))
            continue;
        std::fprintf(stderr, "korvelmacro: %s: failed; the file was left as it was\n",
                     qPrintable(file));
        allRan = false;
        // Whatever the macro left in the text stays out of the next file.
        frame.view()->newDocument(false);
    }
    return allRan;
}

} // namespace korvel
