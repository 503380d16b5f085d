#include "shell/CMainFrame.h"

#include "browser/BrowseRequest.h"
#include "browser/FileBrowserDialog.h"
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "messages/MessageService.h"
#include "messages/StringTable.h"
#include "settings/SettingsSheet.h"
#include "settings/SettingsStore.h"
#include "shell/AboutBox.h"
#include "shell/Association.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/HelpPage.h"
#include "shell/MacroSession.h"
#include "shell/Menus.h"
#include "shell/RecentFileList.h"
#include "shell/SearchBars.h"
#include "widgets/ScreenFit.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QCursor>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QToolTip>
#include <QVBoxLayout>

namespace korvel {

namespace {

constexpr int kUntitledTitle = 35032;
constexpr int kMessageMacroPlaying = 40008;
constexpr int kStopRecordingText = 35001;
constexpr int kMessageCannotTakeFile = 40013;

// "マクロファイル選択": the browse dialog on macro files, starting beside the current choice,
// with the user's display and tap settings, which it keeps when a file was chosen.
std::optional<QString> ChooseMacroFile(SettingsStore& store, const QString& current,
                                       QWidget* parent) {
    BrowseRequest request;
    request.title = QStringLiteral("マクロファイル選択");
    request.filter = QStringLiteral("マクロファイル(*.mcr)|*.mcr||");
    request.filterIndex = 1;
    request.flags = browse_flag::FileMustExist | browse_flag::PathMustExist;
    const QFileInfo file(current);
    if (!current.isEmpty() && file.absoluteDir().exists()) {
        request.folder = file.absolutePath() + u'/';
        request.name = file.isDir() ? QString() : file.fileName();
    } else {
        request.folder = store.read(setting::MRU_FOLDER);
    }
    ApplyBrowseSettings(request, store);
    if (!RunBrowseDialog(request, parent))
        return std::nullopt;
    StoreBrowseSettings(request, store);
    return request.path();
}

SettingsSeams ShellSettingsSeams(SettingsStore& store) {
    SettingsSeams seams;
    seams.isAssociated = [](const QString& extension) {
        return IsExtensionAssociated(extension, QCoreApplication::applicationFilePath());
    };
    seams.setAssociated = [](const QString& extension, bool associated) {
        return SetExtensionAssociated(extension, associated,
                                      QCoreApplication::applicationFilePath());
    };
    seams.chooseMacroFile = [&store](const QString& current, QWidget* parent) {
        return ChooseMacroFile(store, current, parent);
    };
    return seams;
}

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
    searchBars_ = new SearchBars(*view_, *barArea_);
    macros_ = std::make_unique<MacroSession>(*view_, store, this);

    addCommands();
    // The sheet writes the store; the view reads it again at once. The browse dialog reads
    // the store each time it opens.
    commands_->add(command::Settings, MainMenuText(command::Settings), {[this, &store] {
                       if (RunSettingsSheet(store, ShellSettingsSeams(store), this))
                           view_->reapplySettings();
                   }});
    commands_->add(command::About, MainMenuText(command::About), {[this] { ShowAboutBox(this); }});
    AssignAccelerators(*commands_);
    mainMenu_ = menuBar()->addMenu(QStringLiteral("ﾒﾆｭｰ"));
    BuildMainMenu(*mainMenu_, *commands_, *recentFiles_);
    for (QMenu* menu : mainMenu_->findChildren<QMenu*>())
        connect(menu, &QMenu::hovered, this, &CMainFrame::showMacroTooltip);
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
    // Copy, cut and paste serve a bar's edit box first when it has the focus.
    SearchBars* bars = searchBars_;
    const auto routed = [bars](std::function<void(QLineEdit*)> inBox,
                               std::function<void()> inView) {
        return [bars, inBox, inView] {
            if (QLineEdit* edit = bars->focusedEdit())
                inBox(edit);
            else
                inView();
        };
    };
    const auto selectionExists = [bars, view] {
        const QLineEdit* edit = bars->focusedEdit();
        return edit ? edit->hasSelectedText() : view->hasSelection();
    };
    table.add(command::EditCut, text(command::EditCut),
              {routed(&QLineEdit::cut, [view] { view->cut(); }), selectionExists});
    table.add(command::EditCopy, text(command::EditCopy),
              {routed(&QLineEdit::copy, [view] { view->copy(); }), selectionExists});
    table.add(command::EditPaste, text(command::EditPaste),
              {routed(&QLineEdit::paste, [view] { view->paste(); }), [view, bars] {
                   if (!bars->focusedEdit())
                       return view->canPaste();
                   const QMimeData* data = QApplication::clipboard()->mimeData();
                   return data != nullptr && data->hasText();
               }});
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

    table.add(command::Jump, text(command::Jump), {[view] { view->jump(); }});
    searchBars_->addCommands(table);

    table.add(command::FileProperties, text(command::FileProperties),
              {[view] { view->showFileInformation(); }});
    macros_->addCommands(table);
    connect(macros_.get(), &MacroSession::stateChanged, this, &CMainFrame::updateMacroLabels);
}

void CMainFrame::showMacroTooltip(QAction* hovered) {
    // The loaded macro says what it does beside the item that plays it; the other items keep
    // their menus free of tips.
    const QString& tooltip = macros_->tooltip();
    if (hovered == commands_->action(command::MacroPlay) && !tooltip.isEmpty())
        QToolTip::showText(QCursor::pos(), tooltip);
    else
        QToolTip::hideText();
}

bool CMainFrame::openPath(const QString& path) {
    if (!view_->openPath(path))
        return false;
    recentFiles_->add(path);
    return true;
}

void CMainFrame::receiveHandover(const QString& path) {
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
    if (path.isEmpty())
        return;
    // With a dialog open the text is not the active view: opening a file under it would pull
    // the document away from the dialog's feet.
    if (QApplication::activeModalWidget() != nullptr) {
        MessageRequest request;
        request.id = kMessageCannotTakeFile;
        request.icon = MessageIcon::Stop;
        request.topmost = true;
        request.parent = this;
        ShowMessage(request);
        return;
    }
    openPath(path);
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
    commands_->updateStates();
    QMenu* menu = BuildContextMenu(*commands_, view_->hasSelection(), macros_->isRecording(), this);
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

void CMainFrame::updateMacroLabels() {
    commands_->action(command::MacroRecord)
        ->setText(macros_->isRecording() ? LoadString(kStopRecordingText)
                                         : MainMenuText(command::MacroRecord));
    commands_->updateStates();
}

void CMainFrame::updateTitle() {
    const QString path = view_->path();
    const QString name = path.isEmpty() ? LoadString(kUntitledTitle) : QFileInfo(path).fileName();
    // The program's own modified mark, appended once.
    setWindowTitle(view_->isModified() ? name + QStringLiteral(" *") : name);
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    if (macros_->isPlaying()) {
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
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || checkingActivation_)
        return;
    // The check may ask a question, whose box takes and gives back the activation.
    checkingActivation_ = true;
    view_->checkExternalChange();
    checkingActivation_ = false;
}

} // namespace korvel
