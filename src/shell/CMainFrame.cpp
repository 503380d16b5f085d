#include "shell/CMainFrame.h"

#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "messages/MessageService.h"
#include "messages/StringTable.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/HelpPage.h"
#include "shell/Menus.h"
#include "shell/RecentFileList.h"
#include "widgets/ScreenFit.h"

#include <QAction>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QVBoxLayout>

namespace korvel {

namespace {

constexpr int kUntitledTitle = 35032;
constexpr int kMessageMacroPlaying = 40008;

} // namespace

CMainFrame::CMainFrame(SettingsStore& store, QWidget* parent)
    : QMainWindow(parent), commands_(new CommandTable(this)),
      recentFiles_(std::make_unique<RecentFileList>(store)), barArea_(new QWidget(this)),
      mainMenu_(nullptr) {
    auto* centre = new QWidget(this);
    auto* layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    view_ = new CEditer(store, centre);
    barArea_->setParent(centre);
    barArea_->setLayout(new QVBoxLayout);
    barArea_->layout()->setContentsMargins(0, 0, 0, 0);
    barArea_->hide();
    layout->addWidget(barArea_);
    layout->addWidget(view_, 1);
    setCentralWidget(centre);

    addCommands();
    AssignAccelerators(*commands_);
    mainMenu_ = menuBar()->addMenu(QStringLiteral("ﾒﾆｭｰ"));
    BuildMainMenu(*mainMenu_, *commands_, *recentFiles_);
    // Keyboard-only commands need a home in the window for their keys to work.
    for (int id :
         {command::PopUpMainMenu, command::FindBackward, command::FindForward, command::ReplaceNext,
          command::HideBar, command::IgnoreCase, command::NextPane, command::PreviousPane})
        addAction(commands_->action(id));

    connect(view_, &CEditer::documentChanged, this, &CMainFrame::updateTitle);
    connect(view_, &CEditer::modificationChanged, this, &CMainFrame::updateTitle);
    connect(view_, &CEditer::fileUsed, this,
            [this](const QString& path) { recentFiles_->add(path); });
    connect(view_, &CEditer::commandStatesChanged, commands_, &CommandTable::updateStates);
    connect(view_, &CEditer::contextMenuRequested, this, &CMainFrame::showContextMenu);

    updateTitle();
    commands_->updateStates();
    // A comfortable size on a desktop; a small screen gets the whole of itself.
    FitToScreen(*this, QSize(800, 600));
    view_->setFocus();
}

CMainFrame::~CMainFrame() = default;

void CMainFrame::addCommands() {
    CommandTable& table = *commands_;
    CEditer* view = view_;
    auto text = [](int id) { return MainMenuText(id); };

    table.add(command::FileNew, text(command::FileNew), {[view] { view->newDocument(); }});
    table.add(command::FileOpen, text(command::FileOpen), {[view] { view->openWithDialog(); }});
    table.add(command::FileSave, text(command::FileSave), {[view] { view->save(); }});
    table.add(command::FileSaveAs, text(command::FileSaveAs), {[view] { view->saveAs(); }});
    table.add(command::AppExit, text(command::AppExit), {[this] { close(); }});

    table.add(command::EditUndo, text(command::EditUndo),
              {[view] { view->undo(); }, [view] { return view->canUndo(); }});
    table.add(command::EditCut, text(command::EditCut),
              {[view] { view->cut(); }, [view] { return view->hasSelection(); }});
    table.add(command::EditCopy, text(command::EditCopy),
              {[view] { view->copy(); }, [view] { return view->hasSelection(); }});
    table.add(command::EditPaste, text(command::EditPaste),
              {[view] { view->paste(); }, [view] { return view->canPaste(); }});
    table.add(command::EditSelectAll, text(command::EditSelectAll),
              {[view] { view->selectAll(); }});
    for (int slot = 0; slot < 4; ++slot) {
        const int id = command::FontSlot1 + slot;
        table.add(id, text(id),
                  {[view, slot] { view->setFontSlot(slot); },
                   {},
                   [view, slot] { return view->fontSlot() == slot; }});
    }
    table.add(command::WordWrap, text(command::WordWrap),
              {[view] { view->toggleWordWrap(); }, {}, [view] { return view->wordWrap(); }});
    table.add(command::PopUpMainMenu, QStringLiteral("ﾒﾆｭｰ"), {[this] { popUpMainMenu(); }});
    table.add(command::HelpTopics, text(command::HelpTopics), {[this] { showHelpPage(); }});

    table.add(command::RecentFile1, text(command::RecentFile1),
              {[this] { openRecentFile(0); }, [this] { return !recentFiles_->paths().isEmpty(); }});
    for (int index = 1; index < RecentFileList::kSize; ++index)
        table.add(command::RecentFile1 + index, QString(),
                  {[this, index] { openRecentFile(index); }});

    // Their behaviour comes with the find and replace bars, the jump dialog, the file
    // information dialog, the macros, the settings pages and the about box.
    for (int id : {command::Find, command::Replace, command::FileProperties, command::Jump,
                   command::MacroRecord, command::MacroPlay, command::MacroLoad, command::MacroSave,
                   command::Settings, command::About, command::FindBackward, command::FindForward,
                   command::ReplaceNext, command::HideBar, command::IgnoreCase})
        table.addUnavailable(id, text(id));
    // There is one pane until the bars arrive; F6 has nowhere to go.
    table.addUnavailable(command::NextPane, QString());
    table.addUnavailable(command::PreviousPane, QString());
}

bool CMainFrame::openPath(const QString& path) {
    if (!view_->openPath(path))
        return false;
    recentFiles_->add(path);
    return true;
}

void CMainFrame::openRecentFile(int index) {
    const QString path = recentFiles_->paths().value(index);
    if (path.isEmpty() || openPath(path))
        return;
    // A file that has gone has been reported by the open; it leaves the list.
    if (!QFileInfo::exists(path))
        recentFiles_->remove(path);
}

QMenu* CMainFrame::showContextMenu(QPoint position) {
    const bool recording = macroRecording_ && macroRecording_();
    commands_->updateStates();
    QMenu* menu = BuildContextMenu(*commands_, view_->hasSelection(), recording, this);
    // The position is taken from the window's top-left corner, not the control's, so the menu
    // stands off the pen by the control's distance from that corner.
    menu->popup(mapToGlobal(position));
    return menu;
}

void CMainFrame::showHelpPage() {
    const QUrl page = HelpPageUrl();
    if (page.isValid() && QDesktopServices::openUrl(page))
        return;
    // Without a browser, or without the page, the user still learns where help is to be had.
    MessageRequest request;
    request.text = page.isValid()
                       ? QStringLiteral("ヘルプを表示できるブラウザが見つかりません。\n"
                                        "ブラウザで下記ファイルを開いてください。\n\n%s")
                       : QStringLiteral("ヘルプファイル KORVEL100.htm が見つかりません。");
    request.arguments = {page.toLocalFile()};
    request.icon = MessageIcon::Stop;
    request.parent = this;
    ShowMessage(request);
}

void CMainFrame::popUpMainMenu() {
    commands_->updateStates();
    mainMenu_->popup(mapToGlobal(QPoint(0, view_->height())));
}

void CMainFrame::setMacroState(std::function<bool()> playing, std::function<bool()> recording) {
    macroPlaying_ = std::move(playing);
    macroRecording_ = std::move(recording);
}

void CMainFrame::updateTitle() {
    const QString path = view_->path();
    const QString name = path.isEmpty() ? LoadString(kUntitledTitle) : QFileInfo(path).fileName();
    // The program's own modified mark, appended once.
    setWindowTitle(view_->isModified() ? name + QStringLiteral(" *") : name);
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    if (macroPlaying_ && macroPlaying_()) {
        MessageRequest request;
        request.id = kMessageMacroPlaying;
        request.icon = MessageIcon::Stop;
        request.parent = this;
        ShowMessage(request);
        event->ignore();
        return;
    }
    if (!view_->maySetTextAside()) {
        event->ignore();
        return;
    }
    event->accept();
}

void CMainFrame::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || !activationCheck_ ||
        checkingActivation_)
        return;
    // The check may ask a question, whose box takes and gives back the activation.
    checkingActivation_ = true;
    activationCheck_();
    checkingActivation_ = false;
}

} // namespace korvel
