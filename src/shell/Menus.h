#pragma once

#include <QKeyCombination>
#include <QString>

class QMenu;
class QWidget;

namespace korvel {

class CommandTable;
class RecentFileList;

// One key of the accelerator table and the command it runs.
struct Accelerator {
    QKeyCombination key;
    int command;
};

// Gives each command its keys from the accelerator table, in table order, skipping a key that
// an earlier entry took.
void AssignAccelerators(CommandTable& commands);

// The menu texts of the main menu's commands, by id.
QString MainMenuText(int id);
// Fills menu with the main menu "ﾒﾆｭｰ": its popups, items and separators in their order, and the
// recently-used files in place of the "最近使ったﾌｧｲﾙ" place holder (refreshed as it opens).
void BuildMainMenu(QMenu& menu, CommandTable& commands, const RecentFileList& recentFiles);

// The tap-and-hold menu: "選択時" when text is selected, else "非選択時". While a macro is
// recorded the recording item reads "記録終了". The items run the commands of the table.
QMenu* BuildContextMenu(CommandTable& commands, bool withSelection, bool recording,
                        QWidget* parent);

} // namespace korvel
