#pragma once

#include "browser/BrowseRequest.h"
#include "macro/MacroCommand.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

namespace korvel {

struct CheckedMacro;
class CEditer;
class CommandTable;
class MacroPlayer;
class MacroRecorder;
class SettingsStore;
class ViewMacroTarget;

// The macro of the window: its command list and tooltip, the macro folder, and the four macro
// commands (record, play, load, save) with their enable rules.
class MacroSession : public QObject {
    Q_OBJECT
public:
    // The folder starts from MRU_FOLDER and is written back there when the session ends.
    MacroSession(CEditer& view, SettingsStore& store, QWidget* window);
    ~MacroSession() override;

    // Adds the record, play, load and save commands.
    void addCommands(CommandTable& table);

    bool isPlaying() const;
    bool isRecording() const;
    const std::vector<MacroCommand>& commands() const { return commands_; }
    const QString& folder() const { return folder_; }
    // The loaded macro's TOOLTIP, empty when it has none.
    const QString& tooltip() const { return tooltip_; }

    // "マクロのロード": loads path (or the file chosen in the browse dialog when there is none)
    // and shows the result. False when nothing was read: the dialog was cancelled or the file
    // could not be read (told to the user).
    bool load(const std::optional<QString>& path = std::nullopt);
    // The start-up macro of the settings, when one is switched on.
    void loadAtStartup();
    // "マクロの記録": starts recording, or ends it and keeps what was recorded.
    void toggleRecording();
    // "マクロの再生": plays the macro; asked again while playing, asks it to stop.
    void play();
    // "マクロを保存": the save dialog, then the file.
    bool save();

    // The dialog through which load and save choose a file; tests put their own here.
    using BrowseDialog = std::function<bool(BrowseRequest& request, QWidget* parent)>;
    void setBrowseDialog(BrowseDialog dialog) { browseDialog_ = std::move(dialog); }

signals:
    // Recording started or ended, a macro was loaded or played: the commands' states and
    // labels change.
    void stateChanged();

private:
    bool browse(BrowseRequest& request);
    void showLoadResult(const CheckedMacro& macro);

    CEditer& view_;
    SettingsStore& store_;
    QWidget* window_;
    std::vector<MacroCommand> commands_;
    QString tooltip_;
    QString folder_;
    std::unique_ptr<MacroPlayer> player_;
    std::unique_ptr<MacroRecorder> recorder_;
    std::unique_ptr<ViewMacroTarget> target_;
    BrowseDialog browseDialog_;
};

} // namespace korvel
