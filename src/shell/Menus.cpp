#include "shell/Menus.h"

#include "messages/StringTable.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "shell/RecentFileList.h"

#include <QAction>
#include <QMenu>
#include <set>
#include <span>

namespace korvel {

namespace {

using namespace command;

constexpr int kSeparator = 0;
constexpr int kRecentFiles = RecentFile1;

struct MenuText {
    int id;
    const char16_t* text;
};

// clang-format off
constexpr MenuText kMainMenuTexts[] = {
    {Find, u"検索...(&S)"},
    {Replace, u"置換...(&R)"},
    {FileNew, u"新規作成(&N)\tCtrl+N"},
    {FileOpen, u"開く...(&O)\tCtrl+O"},
    {FileSave, u"上書き保存(&S)\tCtrl+S"},
    {FileSaveAs, u"名前を付けて保存...(&S)"},
    {FileProperties, u"プロパティ...(&P)"},
    {AppExit, u"終了(&X)"},
    {EditUndo, u"元に戻す(&U)\tCtrl+Z"},
    {EditCut, u"切り取り(&T)\tCtrl+X"},
    {EditCopy, u"コピー(&C)\tCtrl+C"},
    {EditPaste, u"貼り付け(&P)\tCtrl+V"},
    {Jump, u"ジャンプ...(&G)\tCtrl+G"},
    {EditSelectAll, u"全て選択(&A)\tCtrl+A"},
    {FontSlot1, u"フォント１(&1)\tCtrl+1"},
    {FontSlot1 + 1, u"フォント２(&2)\tCtrl+2"},
    {FontSlot1 + 2, u"フォント３(&3)\tCtrl+3"},
    {FontSlot1 + 3, u"フォント４(&4)\tCtrl+4"},
    {WordWrap, u"右で折り返す(&R)\tCtrl+W"},
    {MacroRecord, u"マクロの記録(&R)\tShift+Ctrl+R"},
    {MacroPlay, u"マクロの再生(&P)\tShift+Ctrl+P"},
    {MacroLoad, u"マクロのロード(&O)..."},
    {MacroSave, u"マクロを保存(&S)..."},
    {Settings, u"設定(&T)..."},
    {HelpTopics, u"ヘルプトピック(&H)"},
    {About, u"バージョン情報(&A)..."},
    {RecentFile1, u"最近使ったﾌｧｲﾙ"},
    // Keyboard-only commands: the texts that name them where the program lists commands.
    {FindBackward, u"後方検索"},
    {FindForward, u"前方検索"},
    {ReplaceNext, u"連続置換"},
    {HideBar, u"バンド非表示"},
    {IgnoreCase, u"大文字小文字を無視"},
};

// A popup of the main menu: its title and its command ids, with kSeparator between groups.
struct Popup {
    const char16_t* title;
    std::initializer_list<int> ids;
};

const Popup kFilePopup = {u"ファイル(&F)", {FileNew, kSeparator, FileOpen, FileSave, FileSaveAs,
                                            kSeparator, FileProperties, kSeparator, AppExit}};
const Popup kEditPopup = {u"編集(&E)", {EditUndo, kSeparator, EditCut, EditCopy, EditPaste, Jump,
                                        kSeparator, EditSelectAll}};
const Popup kViewPopup = {u"表示(&V)", {FontSlot1, FontSlot1 + 1, FontSlot1 + 2, FontSlot1 + 3,
                                        kSeparator, WordWrap}};
const Popup kToolsPopup = {u"ツール(&T)", {MacroRecord, MacroPlay, kSeparator, MacroLoad,
                                           MacroSave, kSeparator, Settings, kSeparator,
                                           HelpTopics, About}};

// One entry of the main menu: a command id, kSeparator, or a popup.
struct MenuEntry {
    int id;
    const Popup* popup = nullptr;
};

const MenuEntry kMainMenu[] = {
    {Find},           {Replace},        {kSeparator},      {0, &kFilePopup},
    {0, &kEditPopup}, {0, &kViewPopup}, {0, &kToolsPopup}, {kSeparator},
    {kRecentFiles},
};

constexpr MenuText kNoSelectionMenu[] = {
    {EditPaste, u"貼り付け(&P)\tCtrl+V"},
    {Jump, u"ジャンプ(&G)...\tCtrl+G"},
    {EditSelectAll, u"すべて選択(&A)\tCtrl+A"},
    {kSeparator, nullptr},
    {FileNew, u"新規作成(&N)\tCtrl+N"},
    {FileProperties, u"プロパティ(&O)..."},
    {kSeparator, nullptr},
    {MacroRecord, u"マクロの記録(&R)\tShift+Ctrl+R"},
    {kSeparator, nullptr},
    {HelpTopics, u"ヘルプ トピック(&H)..."},
};

constexpr MenuText kSelectionMenu[] = {
    {Find, u"検索(&S)...\tCtrl+F"},
    {Replace, u"置換(&R)...\tCtrl+R"},
    {kSeparator, nullptr},
    {EditCut, u"切り取り(&T)\tCtrl+X"},
    {EditCopy, u"コピー(&C)\tCtrl+C"},
    {EditPaste, u"貼り付け(&P)\tCtrl+V"},
    {kSeparator, nullptr},
    {MacroRecord, u"マクロの記録(&R)\tShift+Ctrl+R"},
    {kSeparator, nullptr},
    {HelpTopics, u"ヘルプ トピック(&H)..."},
};

constexpr int kStopRecordingText = 35001;

constexpr auto kCtrl = Qt::ControlModifier;
constexpr auto kShift = Qt::ShiftModifier;
constexpr auto kAlt = Qt::AltModifier;

const Accelerator kAccelerators[] = {
    {kCtrl | Qt::Key_1, FontSlot1},      {kCtrl | Qt::Key_2, FontSlot1 + 1},
    {kCtrl | Qt::Key_3, FontSlot1 + 2},  {kCtrl | Qt::Key_4, FontSlot1 + 3},
    {kCtrl | Qt::Key_A, EditSelectAll},  {kCtrl | Qt::Key_B, FindForward},
    {kCtrl | Qt::Key_C, EditCopy},       {kCtrl | Qt::Key_F, FindBackward},
    {kCtrl | Qt::Key_G, Jump},           {kCtrl | kShift | Qt::Key_I, IgnoreCase},
    {kCtrl | Qt::Key_M, PopUpMainMenu},  {kCtrl | Qt::Key_N, FileNew},
    {kCtrl | Qt::Key_O, FileOpen},       {kCtrl | kShift | Qt::Key_P, MacroPlay},
    {kCtrl | Qt::Key_Q, HideBar},        {kCtrl | Qt::Key_R, ReplaceNext},
    {kCtrl | kShift | Qt::Key_R, MacroRecord},
    {kCtrl | kShift | Qt::Key_R, MacroStopRecording},
    {kCtrl | Qt::Key_S, FileSave},       {kCtrl | Qt::Key_V, EditPaste},
    {kAlt | Qt::Key_Backspace, EditUndo}, {kShift | Qt::Key_Delete, EditCut},
    {QKeyCombination(Qt::Key_F1), HelpTopics},
    {QKeyCombination(Qt::Key_F6), NextPane}, {kShift | Qt::Key_F6, PreviousPane},
    {kCtrl | Qt::Key_Insert, EditCopy},  {kShift | Qt::Key_Insert, EditPaste},
    {kCtrl | Qt::Key_W, WordWrap},       {kCtrl | Qt::Key_X, EditCut},
    {kCtrl | Qt::Key_Z, EditUndo},
};
// clang-format on

void AddCommand(QMenu& menu, CommandTable& commands, int id) {
    if (id == kSeparator) {
        menu.addSeparator();
        return;
    }
    if (QAction* action = commands.action(id))
        menu.addAction(action);
}

// The recently-used entries close the menu: the place holder shows the newest, or its own grayed
// text when the list is empty, and the others follow it.
void FillRecentFiles(QMenu& menu, CommandTable& commands, const RecentFileList& recentFiles) {
    for (QAction* action : menu.actions()) {
        const int id = action->data().toInt();
        if (id > RecentFile1 && id < RecentFile1 + RecentFileList::kSize)
            menu.removeAction(action);
    }
    QAction* placeHolder = commands.action(RecentFile1);
    if (placeHolder == nullptr)
        return;
    if (recentFiles.paths().isEmpty()) {
        placeHolder->setText(MainMenuText(RecentFile1));
        return;
    }
    placeHolder->setText(recentFiles.menuText(0));
    for (int index = 1; index < recentFiles.paths().size(); ++index) {
        if (QAction* entry = commands.action(RecentFile1 + index)) {
            entry->setText(recentFiles.menuText(index));
            menu.addAction(entry);
        }
    }
}

} // namespace

void AssignAccelerators(CommandTable& commands) {
    std::set<int> taken;
    for (const Accelerator& accelerator : kAccelerators) {
        const int key = accelerator.key.toCombined();
        QAction* action = commands.action(accelerator.command);
        if (action == nullptr || !taken.insert(key).second)
            continue;
        QList<QKeySequence> keys = action->shortcuts();
        keys.append(QKeySequence(accelerator.key));
        action->setShortcuts(keys);
    }
}

QString MainMenuText(int id) {
    for (const MenuText& entry : kMainMenuTexts)
        if (entry.id == id)
            return QString::fromUtf16(entry.text);
    return {};
}

void BuildMainMenu(QMenu& menu, CommandTable& commands, const RecentFileList& recentFiles) {
    for (const MenuEntry& entry : kMainMenu) {
        if (entry.popup != nullptr) {
            QMenu* popup = menu.addMenu(QString::fromUtf16(entry.popup->title));
            for (int id : entry.popup->ids)
                AddCommand(*popup, commands, id);
            continue;
        }
        AddCommand(menu, commands, entry.id);
    }
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, &commands, &recentFiles] {
        FillRecentFiles(menu, commands, recentFiles);
        commands.updateStates();
    });
    FillRecentFiles(menu, commands, recentFiles);
}

QMenu* BuildContextMenu(CommandTable& commands, bool withSelection, bool recording,
                        QWidget* parent) {
    auto* menu =
        new QMenu(withSelection ? QStringLiteral("選択時") : QStringLiteral("非選択時"), parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const std::span<const MenuText> items =
        withSelection ? std::span<const MenuText>(kSelectionMenu) : kNoSelectionMenu;
    for (const MenuText& item : items) {
        if (item.id == kSeparator) {
            menu->addSeparator();
            continue;
        }
        QAction* action =
            menu->addAction(item.id == MacroRecord && recording ? LoadString(kStopRecordingText)
                                                                : QString::fromUtf16(item.text));
        action->setData(item.id);
        action->setEnabled(commands.isEnabled(item.id));
        const int id = item.id;
        QObject::connect(action, &QAction::triggered, &commands,
                         [&commands, id] { commands.run(id); });
    }
    return menu;
}

} // namespace korvel
