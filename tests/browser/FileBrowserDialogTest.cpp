#include "browser/FileBrowserDialog.h"

#include "browser/FileListCtrl.h"
#include "browser/FolderTree.h"
#include "fileops/FileClipboard.h"
#include "fileops/FileOpPrompt.h"
#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "messages/testing/ScriptedMessageService.h"
#include "settings/SettingsStore.h"
#include "support/ScratchFolder.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <tuple>

namespace korvel {
namespace {

namespace cmd = browser_command;
namespace flag = browse_flag;
namespace option = browse_option;
using testing::ScratchFolder;

constexpr int kTextType = 1;     // "テキスト (*.txt)"
constexpr int kSettingsType = 2; // "設定ファイル (*.ini;*.inf)"
constexpr int kAllFilesType = 5; // "すべてのファイル (*.*)"

// A double tap as the window system delivers it: press, release, double click, release.
void DoubleTap(QWidget* widget, QPoint position) {
    const QPointF global = widget->mapToGlobal(QPointF(position));
    for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                              QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
        const Qt::MouseButtons held =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(Qt::LeftButton);
        QMouseEvent event(type, QPointF(position), global, Qt::LeftButton, held, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
}

class FileBrowserDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("sub");
        folder_.write("a.txt", "a");
        folder_.write("b.txt", "b");
        folder_.write("setup.ini");
        folder_.write("sub/inner.txt");
        request_.filter = *FindString(35045);
        request_.filterIndex = kAllFilesType;
        request_.folder = folder_.folder();
        request_.options = list_option::ShowFolders;
    }

    FileBrowserDialog& open() {
        dialog_ = std::make_unique<FileBrowserDialog>(request_, clipboard_);
        dialog_->show();
        return *dialog_;
    }
    FileBrowserDialog& openForSaving(std::uint32_t flags, std::uint32_t options = 0) {
        request_.flags = flags;
        request_.options |= option::Saving | options;
        request_.filterIndex = kTextType;
        return open();
    }
    // Types a name and presses OK; true when the dialog closed with OK.
    bool okWith(const QString& name) {
        dialog_->nameBox()->setText(name);
        dialog_->ok();
        return dialog_->result() == QDialog::Accepted;
    }
    QStringList listed() const {
        QStringList names;
        const FileListCtrl* list = dialog_->fileList();
        for (int row = 0; row < list->rowCount(); ++row)
            names.append(list->entryOf(row)->name);
        return names;
    }
    bool nameIsSelected() const {
        const QLineEdit* box = dialog_->nameBox();
        return dialog_->focusWidget() == box && box->selectedText() == box->text();
    }

    ScratchFolder folder_;
    FileClipboard clipboard_;
    BrowseRequest request_;
    std::unique_ptr<FileBrowserDialog> dialog_;
};

TEST_F(FileBrowserDialogTest, StartsInTheRequestedFolderListingItsType) {
    request_.name = QStringLiteral("draft.txt");
    request_.filterIndex = kTextType;
    FileBrowserDialog& dialog = open();
    EXPECT_EQ(dialog.folderTree()->currentFolder(), folder_.folder());
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "a.txt", "b.txt"}));
    EXPECT_TRUE(nameIsSelected());
    EXPECT_FALSE(dialog.optionBox()->isVisible());
    dialog.typeBox()->setCurrentIndex(kSettingsType - 1);
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "setup.ini"}));

    // An index past the list may come from a settings file written by hand: no type, every file.
    for (const int index : {0, 99, std::numeric_limits<int>::min()}) {
        request_.filterIndex = index;
        request_.options = 0;
        open();
        EXPECT_EQ(dialog_->typeBox()->currentIndex(), -1) << index;
        EXPECT_EQ(listed(), (QStringList{"a.txt", "b.txt", "setup.ini"})) << index;
    }
}

TEST_F(FileBrowserDialogTest, AMissingFolderStartsAtTheDeepestExistingOne) {
    request_.folder = folder_.path("sub/gone/deeper");
    open();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path("sub/"));
    request_.folder = QStringLiteral("relative");
    open();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), QStringLiteral("/"));
}

TEST_F(FileBrowserDialogTest, OptionRowPicksTheStoredIndexAndHidesWithoutAList) {
    request_.options |= option::ShowOptionRow;
    request_.optionList = *FindString(35046);
    for (const auto& [stored, shown] : {std::pair{0, 0}, {2, 2}, {7, 7}, {8, 0}, {-1, 0}}) {
        request_.optionIndex = stored;
        open();
        EXPECT_TRUE(dialog_->optionBox()->isVisible());
        EXPECT_EQ(dialog_->optionBox()->currentIndex(), shown) << stored;
    }
    request_.optionList.clear();
    open();
    EXPECT_FALSE(dialog_->optionBox()->isVisible());
    EXPECT_EQ(request_.options & option::ShowOptionRow, 0u);
}

TEST_F(FileBrowserDialogTest, APatternListsItsFilesAndLeavesTheDialogOpen) {
    request_.filterIndex = kTextType;
    open();
    EXPECT_FALSE(okWith(QStringLiteral("*.ini")));
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "setup.ini"}));

    EXPECT_FALSE(okWith(folder_.path("sub/inn*")));
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path("sub/"));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("inn*"));
    EXPECT_EQ(listed(), (QStringList{"..", "inner.txt"}));
}

TEST_F(FileBrowserDialogTest, ForbiddenCharactersAreRefusedAlsoOnEnter) {
    open();
    for (const char* name : {"a|b.txt", "a:b.txt", "a<b", "a>b", "a\\b"}) {
        ScriptedMessageService messages{MessageAnswer::Ok};
        EXPECT_FALSE(okWith(QString::fromUtf8(name))) << name;
        EXPECT_EQ(messages.shownIds(), QList<int>{30503}) << name;
        EXPECT_TRUE(nameIsSelected()) << name;
    }
    // Enter in the name box runs OK once.
    ScriptedMessageService messages{MessageAnswer::Ok};
    QTest::keyClick(dialog_->nameBox(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(messages.shownIds(), QList<int>{30503});
}

// A folder typed (by name, "..", or a shortcut to it) or picked in the list opens instead.
TEST_F(FileBrowserDialogTest, AFolderTypedOrPickedOpensInsteadOfClosing) {
    folder_.write("to-sub.lnk", folder_.lnkTo("sub"));
    open();
    for (const auto& [typed, opened] :
         {std::pair{"sub", "sub/"}, {"..", ""}, {"to-sub.lnk", "sub/"}, {"..", ""}}) {
        EXPECT_FALSE(okWith(QString::fromUtf8(typed)));
        EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.folder() + opened) << typed;
        EXPECT_TRUE(dialog_->nameBox()->text().isEmpty());
    }
    for (const auto& [picked, opened] : {std::pair{"sub", "sub/"}, {"..", ""}}) {
        dialog_->fileList()->selectNames({QString::fromUtf8(picked)});
        dialog_->ok();
        EXPECT_NE(dialog_->result(), QDialog::Accepted);
        EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.folder() + opened) << picked;
    }
}

TEST_F(FileBrowserDialogTest, ATypedNameWithoutDotGetsTheTypesExtensionFirst) {
    folder_.write("NOTES.TXT");
    openForSaving(0, option::AppendTypeExtension);
    EXPECT_FALSE(okWith(QStringLiteral("memo")));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("memo.txt"));
    EXPECT_TRUE(nameIsSelected());
    // An existing file is shown as spelt on the disk.
    EXPECT_FALSE(okWith(QStringLiteral("notes")));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("NOTES.TXT"));
    dialog_->ok();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.names, QStringList{"NOTES.TXT"});
    EXPECT_EQ(request_.folder, folder_.folder());

    // A type without an extension of its own adds nothing.
    openForSaving(0, option::AppendTypeExtension);
    dialog_->typeBox()->setCurrentIndex(kAllFilesType - 1);
    EXPECT_TRUE(okWith(QStringLiteral("plain")));
    EXPECT_EQ(request_.names, QStringList{"plain"});
}

TEST_F(FileBrowserDialogTest, AnEmptyNameNeedsASelection) {
    const std::tuple<std::uint32_t, const char*, int> rows[] = {
        {list_option::ShowFolders, "", 30513},
        {list_option::ShowFolders | option::NoNameBox, "", 30511},
        {option::NoFileList, "   ", 30512},
    };
    for (const auto& [options, name, id] : rows) {
        request_.options = options;
        open();
        ScriptedMessageService messages{MessageAnswer::Ok};
        EXPECT_FALSE(okWith(QString::fromUtf8(name)));
        EXPECT_EQ(messages.shownIds(), QList<int>{id});
    }
}

TEST_F(FileBrowserDialogTest, AListPickInSaveModeClosesWithoutAQuestion) {
    openForSaving(flag::OverwritePrompt | flag::CreatePrompt);
    ScriptedMessageService messages;
    dialog_->fileList()->selectNames({"a.txt"});
    dialog_->ok();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.names, QStringList{"a.txt"});
}

TEST_F(FileBrowserDialogTest, ADoubleTapOnAFileOpensItButNeverSavesOverIt) {
    request_.name = QStringLiteral("typed.txt");
    open();
    FileListCtrl* list = dialog_->fileList();
    QAbstractItemView* view = list->view();
    const QPoint row = view->visualRect(view->model()->index(2, 0)).center();
    ASSERT_EQ(list->entryOf(2)->name, QStringLiteral("a.txt"));
    DoubleTap(view->viewport(), row);
    QApplication::processEvents();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.names, QStringList{"a.txt"});

    request_.folder = folder_.folder();
    openForSaving(flag::OverwritePrompt);
    view = dialog_->fileList()->view();
    DoubleTap(view->viewport(), row);
    QApplication::processEvents();
    EXPECT_NE(dialog_->result(), QDialog::Accepted);
}

TEST_F(FileBrowserDialogTest, ExistenceFlagsRefuseMissingFilesAndFolders) {
    request_.flags = flag::FileMustExist;
    open();
    {
        ScriptedMessageService messages{MessageAnswer::Ok};
        EXPECT_FALSE(okWith(QStringLiteral("missing.txt")));
        ASSERT_EQ(messages.shown().size(), 1);
        EXPECT_EQ(messages.shown().front().text,
                  FormatMessage(QString::fromUtf16(fileops_message::kEntryNotFound.text),
                                {folder_.path("missing.txt")}));
        EXPECT_TRUE(nameIsSelected());
    }
    request_.flags = flag::PathMustExist;
    open();
    ScriptedMessageService messages{MessageAnswer::Ok};
    EXPECT_FALSE(okWith(QStringLiteral("nowhere/x.txt")));
    ASSERT_EQ(messages.shown().size(), 1);
    EXPECT_EQ(messages.shown().front().id, 30023);
    EXPECT_TRUE(messages.shown().front().text.endsWith(folder_.path("nowhere")));
    // A typed path splits into folder and name.
    EXPECT_TRUE(okWith(folder_.path("sub/../sub/new.txt")));
    EXPECT_EQ(request_.folder, folder_.path("sub/"));
    EXPECT_EQ(request_.names, QStringList{"new.txt"});
}

// Each question of saving: No keeps the dialog open with the name selected, Yes closes it. The
// unlocking question answers the overwrite one as well, and unlocks the file.
TEST_F(FileBrowserDialogTest, SaveAsksBeforeCreatingOverwritingOrUnlocking) {
    const std::tuple<const char*, bool, std::uint32_t, std::uint32_t, int> rows[] = {
        {"new.txt", false, flag::CreatePrompt, 0, 30010},
        {"a.txt", false, flag::OverwritePrompt, 0, 30013},
        {"a.txt", true, flag::OverwritePrompt, 0, 30013},
        {"a.txt", true, flag::OverwritePrompt, option::UnlockReadOnly, 30028},
    };
    for (const auto& [name, readOnly, flags, options, question] : rows) {
        SCOPED_TRACE(question);
        folder_.setReadOnly("a.txt", readOnly);
        request_.folder = folder_.folder();
        openForSaving(flags, options);
        ScriptedMessageService messages{MessageAnswer::No, MessageAnswer::Yes};
        EXPECT_FALSE(okWith(QString::fromUtf8(name)));
        EXPECT_TRUE(nameIsSelected());
        EXPECT_EQ(folder_.isReadOnly("a.txt"), readOnly);
        EXPECT_TRUE(okWith(QString::fromUtf8(name)));
        ASSERT_EQ(messages.shownIds(), (QList<int>{question, question}));
        EXPECT_EQ(messages.shown().front().defaultButton, MessageAnswer::No);
        EXPECT_EQ(messages.shown().front().icon, MessageIcon::Question);
        EXPECT_EQ(request_.names, QStringList{QString::fromUtf8(name)});
        EXPECT_EQ(folder_.isReadOnly("a.txt"), readOnly && question != 30028);
    }
}

TEST_F(FileBrowserDialogTest, MultipleSelectionCollectsNamesOnce) {
    request_.flags = flag::AllowMultiSelect;
    open();
    dialog_->fileList()->selectNames(
        {QStringLiteral(".."), QStringLiteral("b.txt"), QStringLiteral("a.txt")});
    EXPECT_TRUE(okWith(QStringLiteral("B.TXT")));
    EXPECT_EQ(request_.names, (QStringList{"B.TXT", "a.txt"}));

    open();
    dialog_->fileList()->selectNames({QStringLiteral("b.txt"), QStringLiteral("a.txt")});
    EXPECT_TRUE(okWith(QString()));
    EXPECT_EQ(request_.names, (QStringList{"a.txt", "b.txt"}));
}

TEST_F(FileBrowserDialogTest, ResultsCarryTypeOptionStyleAndFolders) {
    request_.options |= option::ShowOptionRow;
    request_.optionList = *FindString(35047);
    request_.optionIndex = 1;
    request_.listStyle = list_style::List;
    open();
    dialog_->typeBox()->setCurrentIndex(kSettingsType - 1);
    dialog_->optionBox()->setCurrentIndex(4);
    dialog_->fileList()->runCommand(cmd::ShowFolders);
    EXPECT_TRUE(okWith(QStringLiteral("x.ini")));
    EXPECT_EQ(request_.filterIndex, kSettingsType);
    EXPECT_EQ(request_.optionIndex, 4);
    EXPECT_EQ(request_.listStyle, list_style::List);
    EXPECT_FALSE(request_.showFolders);
    EXPECT_EQ(request_.path(), folder_.path("x.ini"));
}

TEST_F(FileBrowserDialogTest, ShortcutsStandForTheirTargetsUnlessAskedOtherwise) {
    folder_.write("sub/target.txt");
    folder_.write("note.lnk", folder_.lnkTo("sub/target.txt"));
    const QString target = folder_.path("sub/target.txt");
    const QString shortcut = folder_.path("note.lnk");
    // Picked in the list or typed; "選択した .lnk ファイル" or the flag take the file itself.
    const std::tuple<bool, std::uint32_t, int, QString> rows[] = {
        {true, 0, cmd::Ok, target},
        {false, 0, cmd::Ok, target},
        {true, 0, cmd::SelectLnk, shortcut},
        {false, flag::NoDereferenceLinks, cmd::Ok, shortcut},
    };
    for (const auto& [picked, flags, command, result] : rows) {
        request_.flags = flags;
        request_.folder = folder_.folder();
        open();
        if (picked)
            dialog_->fileList()->selectNames({"note.lnk"});
        else
            dialog_->nameBox()->setText(QStringLiteral("note.lnk"));
        dialog_->fileList()->runCommand(command);
        ASSERT_EQ(dialog_->result(), QDialog::Accepted) << picked << flags << command;
        EXPECT_EQ(request_.path(), result);
    }
}

TEST_F(FileBrowserDialogTest, OkWhileALabelIsEditedOnlyEndsTheEdit) {
    open();
    dialog_->folderTree()->openPath(folder_.path("sub"));
    dialog_->folderTree()->startRename();
    ASSERT_TRUE(dialog_->folderTree()->isEditing());
    dialog_->nameBox()->setText(QStringLiteral("a.txt"));
    dialog_->ok();
    EXPECT_NE(dialog_->result(), QDialog::Accepted);
    EXPECT_FALSE(dialog_->folderTree()->isEditing());
}

TEST_F(FileBrowserDialogTest, TapsOnEmptySpaceEnlargeAPane) {
    request_.options |= option::EnlargeBySingleTap;
    open();
    dialog_->resize(400, 700);
    QApplication::processEvents();
    QWidget* listArea = dialog_->fileList()->view()->viewport();
    QTest::mouseClick(listArea, Qt::LeftButton, {}, QPoint(5, listArea->height() - 3));
    QApplication::processEvents();
    EXPECT_EQ(dialog_->layoutMode(), FileBrowserDialog::ListEnlarged);
    QTest::mouseClick(listArea, Qt::LeftButton, {}, QPoint(5, listArea->height() - 3));
    QApplication::processEvents();
    EXPECT_EQ(dialog_->layoutMode(), FileBrowserDialog::Normal);

    QWidget* treeArea = dialog_->folderTree()->viewport();
    QTest::mouseClick(treeArea, Qt::LeftButton, {},
                      QPoint(treeArea->width() - 3, treeArea->height() - 3));
    QApplication::processEvents();
    EXPECT_EQ(dialog_->layoutMode(), FileBrowserDialog::TreeEnlarged);
}

TEST_F(FileBrowserDialogTest, TheHookSeesEventsFirst) {
    int keys = 0;
    request_.flags = flag::EnableHook;
    request_.hook = [&keys](QObject*, QEvent* event) {
        if (event->type() != QEvent::KeyPress)
            return false;
        ++keys;
        return true;
    };
    open();
    dialog_->nameBox()->clear();
    QTest::keyClicks(dialog_->nameBox(), QStringLiteral("abc"));
    EXPECT_EQ(keys, 3);
    EXPECT_TRUE(dialog_->nameBox()->text().isEmpty());
}

TEST(BrowseSettings, TakeTheTapAndDisplaySettingsAndKeepTheChoices) {
    ScratchFolder folder;
    SettingsStore store(folder.path("settings.ini"));
    const IntSetting keys[] = {setting::SELECT_BY_SINGLE_TAP, setting::SHOW_FOLDER_ON_FILE_LIST,
                               setting::STR_ZOOM_METHOD, setting::FILE_LIST_STYLE,
                               setting::LONG_DELAY};
    // The values of those settings, and the options, style and delay the request takes.
    const std::tuple<std::array<int, 5>, std::uint32_t, int, bool> rows[] = {
        {{1, 0, 1, 1, 1},
         list_option::SingleTapOpensFolder | option::EnlargeBySingleTap,
         list_style::Details,
         true},
        {{0, 1, 2, 3, 0},
         list_option::ShowFolders | option::EnlargeByDoubleTap,
         list_style::List,
         false},
        {{0, 0, 0, 9, 0}, 0, list_style::Details, false},
    };
    for (const auto& [values, options, style, longHold] : rows) {
        for (std::size_t i = 0; i < values.size(); ++i)
            store.write(keys[i], values[i]);
        BrowseRequest request;
        request.options = list_option::SingleTapOpensFolder | list_option::ShowFolders |
                          option::EnlargeBySingleTap | option::EnlargeByDoubleTap | option::Saving;
        ApplyBrowseSettings(request, store);
        EXPECT_EQ(request.options, options | option::Saving) << values[0] << values[2];
        EXPECT_EQ(request.listStyle, style);
        EXPECT_EQ(request.longHoldDelay, longHold);
    }
    // The option row goes without a selectable code set.
    BrowseRequest request;
    request.options = option::ShowOptionRow;
    ApplyBrowseSettings(request, store);
    EXPECT_NE(request.options & option::ShowOptionRow, 0u);
    store.write(setting::SELECTABLE_CODE_SET, 0);
    ApplyBrowseSettings(request, store);
    EXPECT_EQ(request.options & option::ShowOptionRow, 0u);

    request.showFolders = false;
    request.listStyle = list_style::Icons;
    StoreBrowseSettings(request, store);
    EXPECT_EQ(store.read(setting::SHOW_FOLDER_ON_FILE_LIST), 0);
    EXPECT_EQ(store.read(setting::FILE_LIST_STYLE), list_style::Icons);
}

} // namespace
} // namespace korvel
