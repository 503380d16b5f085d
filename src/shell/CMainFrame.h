#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace korvel {

class CEditer;
class CommandTable;
class MacroSession;
class RecentFileList;
class SearchBars;
class SettingsStore;

// The main window: the single menu "ﾒﾆｭｰ", the accelerators, the area for the find and replace
// bars above the editor view, the tap-and-hold menus and the close logic.
class CMainFrame : public QMainWindow {
    Q_OBJECT
public:
    explicit CMainFrame(SettingsStore& store, QWidget* parent = nullptr);
    ~CMainFrame() override;

    CEditer* view() const { return view_; }
    CommandTable& commands() const { return *commands_; }
    RecentFileList& recentFiles() const { return *recentFiles_; }
    QMenu* mainMenu() const { return mainMenu_; }
    // Where the find and replace bars stand, above the view; hidden while no bar shows.
    QWidget* barArea() const { return barArea_; }
    SearchBars& searchBars() const { return *searchBars_; }
    MacroSession& macros() const { return *macros_; }

    // Opens a path given from outside (command line, another start) and lists it as recently
    // used.
    bool openPath(const QString& path);

    // A file handed over by a later start: the window comes to the front and opens it, unless
    // a dialog stands in front of the text (the user is told to open it from the menu). An
    // empty path only brings the window to the front.
    void receiveHandover(const QString& path);

    // The tap-and-hold menu for the view's current selection, at position (active control
    // coordinates). Returns the menu shown.
    QMenu* showContextMenu(QPoint position);
    // Ctrl+M: the main menu at the left edge, level with the bottom of the view.
    void popUpMainMenu();
    // F1: the help page in the desktop's browser, or a message that says where it is.
    void showHelpPage();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void addCommands();
    void openRecentFile(int index);
    void updateTitle();
    void updateMacroLabels();
    void showMacroTooltip(QAction* hovered);

    CommandTable* commands_;
    std::unique_ptr<RecentFileList> recentFiles_;
    CEditer* view_;
    QWidget* barArea_;
    SearchBars* searchBars_;
    QMenu* mainMenu_;
    // Ends before the view it records and plays on.
    std::unique_ptr<MacroSession> macros_;
    bool checkingActivation_ = false;
};

} // namespace korvel
