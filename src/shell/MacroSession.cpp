#include "shell/MacroSession.h"

#include "browser/FileBrowserDialog.h"
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "macro/MacroChecker.h"
#include "macro/MacroFile.h"
#include "macro/MacroLoadDialog.h"
#include "macro/MacroPlayer.h"
#include "macro/MacroRecorder.h"
#include "macro/MacroWriter.h"
#include "messages/MessageService.h"
#include "messages/StringTable.h"
#include "settings/SettingsStore.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/Menus.h"
#include "shell/ViewMacroTarget.h"

#include <QDate>
#include <QFileInfo>

namespace korvel {

namespace {

constexpr int kMessageWriteFailed = 33007;
constexpr int kMessageReadFailed = 33008;
constexpr int kMessageStartupMacroFailed = 33037;
constexpr int kExplanationTitle = 35020;
constexpr char16_t kMacroFilter[] = u"マクロファイル (*.mcr)|*.mcr||";

void ShowPathError(int id, const QString& path, QWidget* parent) {
    MessageRequest request;
    request.id = id;
    request.arguments = {path};
    request.icon = MessageIcon::Stop;
    request.parent = parent;
    ShowMessage(request);
}

// The view's commands as the macro language writes them: a replace keeps both of its texts in
// one, split by CR LF.
MacroCommand MacroCommandOf(const RecordedCommand& recorded) {
    MacroCommand command{static_cast<MacroCommandCode>(recorded.action), recorded.text,
                         recorded.flag};
    if (recorded.action == RecordedAction::Replace || recorded.action == RecordedAction::ReplaceAll)
        command.text += QStringLiteral("\r\n") + recorded.replacement;
    return command;
}

} // namespace

MacroSession::MacroSession(CEditer& view, SettingsStore& store, QWidget* window)
    : view_(view), store_(store), window_(window), folder_(store.read(setting::MRU_FOLDER)),
      player_(std::make_unique<MacroPlayer>()),
      recorder_(std::make_unique<MacroRecorder>(
          [&view](const QObject* receiver) { return receiver == view.activeControl(); })),
      target_(std::make_unique<ViewMacroTarget>(view)) {
    view_.setRecorder(
        [this](const RecordedCommand& recorded) { recorder_->add(MacroCommandOf(recorded)); });
}

MacroSession::~MacroSession() {
    view_.setRecorder({});
    store_.write(setting::MRU_FOLDER, folder_);
}

bool MacroSession::isPlaying() const {
    return player_->isPlaying();
}

bool MacroSession::isRecording() const {
    return recorder_->isRecording();
}

void MacroSession::addCommands(CommandTable& table) {
    const auto idle = [this] { return !isPlaying() && !isRecording(); };
    const auto hasMacro = [this, idle] { return idle() && !commands_.empty(); };
    table.add(command::MacroRecord, MainMenuText(command::MacroRecord),
              {[this] { toggleRecording(); }, [this] { return !isPlaying(); }});
    // While playing, the play command is the way to ask the macro to stop.
    table.add(command::MacroPlay, MainMenuText(command::MacroPlay),
              {[this] { play(); },
               [this] { return isPlaying() || (!isRecording() && !commands_.empty()); }});
    table.add(command::MacroLoad, MainMenuText(command::MacroLoad), {[this] { load(); }, idle});
    table.add(command::MacroSave, MainMenuText(command::MacroSave), {[this] { save(); }, hasMacro});
}

bool MacroSession::browse(BrowseRequest& request) {
    request.folder = folder_;
    request.filter = QString::fromUtf16(kMacroFilter);
    request.filterIndex = 1;
    ApplyBrowseSettings(request, store_);
    const bool chosen =
        browseDialog_ ? browseDialog_(request, window_) : RunBrowseDialog(request, window_);
    if (!chosen)
        return false;
    StoreBrowseSettings(request, store_);
    folder_ = request.folder;
    return true;
}

bool MacroSession::load(const std::optional<QString>& path) {
    QString file;
    if (path) {
        file = *path;
    } else {
        // A cancelled choice keeps the macro there was.
        BrowseRequest request;
        request.title = QStringLiteral("マクロのロード");
        request.flags = browse_flag::FileMustExist | browse_flag::PathMustExist;
        if (!browse(request))
            return false;
        file = request.path();
    }
    commands_.clear();
    player_->releaseHeldKeys();
    tooltip_.clear();
    emit stateChanged();
    const std::optional<QString> text = ReadMacroFile(file);
    if (!text) {
        ShowPathError(kMessageReadFailed, file, window_);
        return false;
    }
    const CheckedMacro macro = CheckMacro(*text);
    commands_ = macro.commands;
    emit stateChanged();
    showLoadResult(macro);
    return true;
}

void MacroSession::showLoadResult(const CheckedMacro& macro) {
    const QString report = LoadReport(macro);
    if (!report.isEmpty())
        ShowMacroLoadReport(report, window_);
    if (macro.hasError)
        return;
    tooltip_ = macro.tooltip;
    if (macro.explanation.isEmpty())
        return;
    MessageRequest request;
    request.text = macro.explanation;
    request.text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    request.caption = LoadString(kExplanationTitle);
    request.icon = MessageIcon::Information;
    request.parent = window_;
    ShowMessage(request);
}

void MacroSession::loadAtStartup() {
    if (store_.read(setting::LOAD_DAFAULT_MACRO) == 0)
        return;
    const QString path = store_.read(setting::DEFAULT_MACRO_FILE_NAME);
    if (!load(path))
        ShowPathError(kMessageStartupMacroFailed, path, window_);
}

void MacroSession::toggleRecording() {
    if (isRecording()) {
        recorder_->stop();
        commands_ = recorder_->commands();
    } else {
        commands_.clear();
        tooltip_.clear();
        recorder_->start();
    }
    emit stateChanged();
}

void MacroSession::play() {
    if (isPlaying()) {
        player_->requestStop();
        return;
    }
    if (commands_.empty())
        return;
    // A dialog that the macro opens could load or record another macro: play a copy.
    const std::vector<MacroCommand> commands = commands_;
    // The keys are the text's, even when a bar's box had the focus when play was chosen.
    view_.activeControl()->setFocus();
    player_->play(commands, *target_);
    target_->enableUserInput();
    emit stateChanged();
}

bool MacroSession::save() {
    BrowseRequest request;
    request.title = QStringLiteral("マクロを保存");
    request.flags = browse_flag::OverwritePrompt | browse_flag::PathMustExist;
    request.options = browse_option::Saving | browse_option::AppendTypeExtension;
    request.name = ProposedMacroFileName(folder_);
    if (!browse(request))
        return false;
    const QString path = request.path();
    if (WriteMacroFile(path, commands_, QDate::currentDate()))
        return true;
    ShowPathError(kMessageWriteFailed, path, window_);
    return false;
}

} // namespace korvel
