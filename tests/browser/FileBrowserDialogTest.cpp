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
#include <gtest/gtest.h>
#include <limits>
#include <memory>

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
        folder_.makeFolder(QStringLiteral("sub"));
        folder_.write(QStringLiteral("a.txt"), "a");
        folder_.write(QStringLiteral("b.txt"), "b");
        folder_.write(QStringLiteral("setup.ini"));
        folder_.write(QStringLiteral("sub/inner.txt"));
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
    QByteArray lnkTo(const QString& relative) const {
        return "1#\"" + folder_.path(relative).toUtf8() + "\"\r\n";
    }

    ScratchFolder folder_;
    FileClipboard clipboard_;
    BrowseRequest request_;
    std::unique_ptr<FileBrowserDialog> dialog_;
};

TEST_F(FileBrowserDialogTest, StartsInTheRequestedFolderWithItsTypes) {
    request_.name = QStringLiteral("draft.txt");
    request_.prompt = QStringLiteral("開くファイル");
    request_.filterIndex = kTextType;
    FileBrowserDialog& dialog = open();

    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("ファイル名を参照"));
    EXPECT_NE(dialog.findChild<QLabel*>(), nullptr);
    EXPECT_EQ(dialog.folderTree()->currentFolder(), folder_.folder());
    EXPECT_EQ(dialog.typeBox()->count(), 5);
    EXPECT_EQ(dialog.typeBox()->currentText(), QStringLiteral("テキスト (*.txt)"));
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "a.txt", "b.txt"}));
    EXPECT_TRUE(nameIsSelected());
    EXPECT_FALSE(dialog.optionBox()->isVisible());

    dialog.typeBox()->setCurrentIndex(kSettingsType - 1);
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "setup.ini"}));
}

// An index past the list may come from a settings file written by hand.
TEST_F(FileBrowserDialogTest, WithoutATypeEveryFileIsListed) {
    for (const int index : {0, 99, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(index);
        request_.filterIndex = index;
        request_.options = 0;
        open();
        EXPECT_EQ(dialog_->typeBox()->currentIndex(), -1);
        EXPECT_EQ(listed(), (QStringList{"a.txt", "b.txt", "setup.ini"}));
    }
}

TEST_F(FileBrowserDialogTest, AMissingFolderStartsAtTheDeepestExistingOne) {
    request_.folder = folder_.path(QStringLiteral("sub/gone/deeper"));
    open();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path(QStringLiteral("sub/")));
    request_.folder = QStringLiteral("relative");
    open();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), QStringLiteral("/"));
}

TEST_F(FileBrowserDialogTest, OptionRowPicksTheStoredIndex) {
    request_.options |= option::ShowOptionRow;
    request_.optionList = *FindString(35046);
    for (const auto& [stored, shown] : {std::pair{0, 0}, {2, 2}, {7, 7}, {8, 0}, {-1, 0}}) {
        request_.optionIndex = stored;
        open();
        EXPECT_TRUE(dialog_->optionBox()->isVisible());
        EXPECT_EQ(dialog_->optionBox()->count(), 8);
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

    EXPECT_FALSE(okWith(folder_.path(QStringLiteral("sub/inn*"))));
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path(QStringLiteral("sub/")));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("inn*"));
    EXPECT_EQ(listed(), (QStringList{"..", "inner.txt"}));
}

TEST_F(FileBrowserDialogTest, ForbiddenCharactersAreRefused) {
    open();
    for (const char* name : {"a|b.txt", "a:b.txt", "a<b", "a>b", "a\\b"}) {
        ScriptedMessageService messages{MessageAnswer::Ok};
        EXPECT_FALSE(okWith(QString::fromUtf8(name))) << name;
        EXPECT_EQ(messages.shownIds(), QList<int>{30503}) << name;
        EXPECT_TRUE(nameIsSelected()) << name;
    }
}

TEST_F(FileBrowserDialogTest, EnterInTheNameBoxRunsOkOnce) {
    open();
    ScriptedMessageService messages{MessageAnswer::Ok};
    dialog_->nameBox()->setText(QStringLiteral("a|b"));
    QTest::keyClick(dialog_->nameBox(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(messages.shownIds(), QList<int>{30503});
}

TEST_F(FileBrowserDialogTest, ATypedFolderOpensInsteadOfClosing) {
    folder_.write(QStringLiteral("to-sub.lnk"), lnkTo(QStringLiteral("sub")));
    open();
    EXPECT_FALSE(okWith(QStringLiteral("sub")));
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path(QStringLiteral("sub/")));
    EXPECT_TRUE(dialog_->nameBox()->text().isEmpty());

    EXPECT_FALSE(okWith(QStringLiteral("..")));
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.folder());
    EXPECT_FALSE(okWith(QStringLiteral("to-sub.lnk")));
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path(QStringLiteral("sub/")));
}

TEST_F(FileBrowserDialogTest, ATypedNameWithoutDotGetsTheTypesExtensionFirst) {
    openForSaving(0, option::AppendTypeExtension);
    EXPECT_FALSE(okWith(QStringLiteral("memo")));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("memo.txt"));
    EXPECT_TRUE(nameIsSelected());
    dialog_->ok();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.names, QStringList{"memo.txt"});
    EXPECT_EQ(request_.folder, folder_.folder());
}

TEST_F(FileBrowserDialogTest, TheExtensionStepShowsAnExistingFileAsSpelt) {
    folder_.write(QStringLiteral("NOTES.TXT"));
    openForSaving(0, option::AppendTypeExtension);
    EXPECT_FALSE(okWith(QStringLiteral("notes")));
    EXPECT_EQ(dialog_->nameBox()->text(), QStringLiteral("NOTES.TXT"));

    // A type without an extension of its own adds nothing.
    dialog_->typeBox()->setCurrentIndex(kAllFilesType - 1);
    EXPECT_TRUE(okWith(QStringLiteral("plain")));
    EXPECT_EQ(request_.names, QStringList{"plain"});
}

TEST_F(FileBrowserDialogTest, AnEmptyNameNeedsASelection) {
    open();
    {
        ScriptedMessageService messages{MessageAnswer::Ok};
        EXPECT_FALSE(okWith(QString()));
        EXPECT_EQ(messages.shownIds(), QList<int>{30513});
    }
    request_.options |= option::NoNameBox;
    open();
    {
        ScriptedMessageService messages{MessageAnswer::Ok};
        dialog_->ok();
        EXPECT_EQ(messages.shownIds(), QList<int>{30511});
    }
    request_.options = option::NoFileList;
    open();
    ScriptedMessageService messages{MessageAnswer::Ok};
    EXPECT_FALSE(okWith(QStringLiteral("   ")));
    EXPECT_EQ(messages.shownIds(), QList<int>{30512});
}

TEST_F(FileBrowserDialogTest, AListPickInSaveModeClosesWithoutAQuestion) {
    openForSaving(flag::OverwritePrompt | flag::CreatePrompt);
    ScriptedMessageService messages;
    dialog_->fileList()->selectNames({QStringLiteral("a.txt")});
    dialog_->ok();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.folder, folder_.folder());
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

TEST_F(FileBrowserDialogTest, AFolderRowPickedWithOkOpensIt) {
    open();
    dialog_->fileList()->selectNames({QStringLiteral("sub")});
    dialog_->ok();
    EXPECT_NE(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.path(QStringLiteral("sub/")));
    dialog_->fileList()->selectNames({QStringLiteral("..")});
    dialog_->ok();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), folder_.folder());
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
                                {folder_.path(QStringLiteral("missing.txt"))}));
        EXPECT_TRUE(nameIsSelected());
    }
    request_.flags = flag::PathMustExist;
    open();
    ScriptedMessageService messages{MessageAnswer::Ok};
    EXPECT_FALSE(okWith(QStringLiteral("nowhere/x.txt")));
    ASSERT_EQ(messages.shown().size(), 1);
    EXPECT_EQ(messages.shown().front().id, 30023);
    EXPECT_TRUE(messages.shown().front().text.endsWith(folder_.path(QStringLiteral("nowhere"))));
    EXPECT_TRUE(okWith(QStringLiteral("new.txt")));
}

TEST_F(FileBrowserDialogTest, SaveAsksBeforeCreating) {
    openForSaving(flag::CreatePrompt);
    ScriptedMessageService messages{MessageAnswer::No, MessageAnswer::Yes};
    EXPECT_FALSE(okWith(QStringLiteral("new.txt")));
    EXPECT_TRUE(nameIsSelected());
    EXPECT_TRUE(okWith(QStringLiteral("new.txt")));
    EXPECT_EQ(messages.shownIds(), (QList<int>{30010, 30010}));
    EXPECT_EQ(messages.shown().front().defaultButton, MessageAnswer::No);
    EXPECT_EQ(messages.shown().front().icon, MessageIcon::Question);
}

TEST_F(FileBrowserDialogTest, SaveAsksBeforeOverwriting) {
    openForSaving(flag::OverwritePrompt);
    ScriptedMessageService messages{MessageAnswer::No, MessageAnswer::Yes};
    EXPECT_FALSE(okWith(QStringLiteral("a.txt")));
    EXPECT_TRUE(okWith(QStringLiteral("a.txt")));
    EXPECT_EQ(messages.shownIds(), (QList<int>{30013, 30013}));
    EXPECT_EQ(request_.names, QStringList{"a.txt"});
}

TEST_F(FileBrowserDialogTest, SaveMayUnlockAReadOnlyFile) {
    folder_.setReadOnly(QStringLiteral("a.txt"), true);
    openForSaving(flag::OverwritePrompt, option::UnlockReadOnly);
    ScriptedMessageService messages{MessageAnswer::No, MessageAnswer::Yes};
    EXPECT_FALSE(okWith(QStringLiteral("a.txt")));
    EXPECT_FALSE(QFile::permissions(folder_.path(QStringLiteral("a.txt"))) & QFile::WriteOwner);
    EXPECT_TRUE(okWith(QStringLiteral("a.txt")));
    // Unlocking answers the overwrite question as well.
    EXPECT_EQ(messages.shownIds(), (QList<int>{30028, 30028}));
    EXPECT_TRUE(QFile::permissions(folder_.path(QStringLiteral("a.txt"))) & QFile::WriteOwner);
}

TEST_F(FileBrowserDialogTest, WithoutUnlockingAReadOnlyFileGetsTheOverwriteQuestion) {
    folder_.setReadOnly(QStringLiteral("a.txt"), true);
    openForSaving(flag::OverwritePrompt);
    ScriptedMessageService messages{MessageAnswer::Yes};
    EXPECT_TRUE(okWith(QStringLiteral("a.txt")));
    EXPECT_EQ(messages.shownIds(), QList<int>{30013});
}

TEST_F(FileBrowserDialogTest, ATypedPathSplitsIntoFolderAndName) {
    open();
    EXPECT_TRUE(okWith(folder_.path(QStringLiteral("sub/../sub/new.txt"))));
    EXPECT_EQ(request_.folder, folder_.path(QStringLiteral("sub/")));
    EXPECT_EQ(request_.names, QStringList{"new.txt"});
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
    EXPECT_EQ(request_.path(), folder_.path(QStringLiteral("x.ini")));
}

TEST_F(FileBrowserDialogTest, ShortcutsStandForTheirTargetsUnlessAskedOtherwise) {
    folder_.write(QStringLiteral("sub/target.txt"));
    folder_.write(QStringLiteral("note.lnk"), lnkTo(QStringLiteral("sub/target.txt")));
    open();
    dialog_->fileList()->selectNames({QStringLiteral("note.lnk")});
    dialog_->ok();
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.path(), folder_.path(QStringLiteral("sub/target.txt")));

    // The request carries the result's folder out; each round starts in the test folder again.
    request_.folder = folder_.folder();
    open();
    EXPECT_TRUE(okWith(QStringLiteral("note.lnk")));
    EXPECT_EQ(request_.path(), folder_.path(QStringLiteral("sub/target.txt")));

    // "選択した .lnk ファイル" takes the shortcut file itself.
    request_.folder = folder_.folder();
    open();
    dialog_->fileList()->selectNames({QStringLiteral("note.lnk")});
    dialog_->fileList()->runCommand(cmd::SelectLnk);
    ASSERT_EQ(dialog_->result(), QDialog::Accepted);
    EXPECT_EQ(request_.path(), folder_.path(QStringLiteral("note.lnk")));

    request_.flags = flag::NoDereferenceLinks;
    request_.folder = folder_.folder();
    open();
    EXPECT_TRUE(okWith(QStringLiteral("note.lnk")));
    EXPECT_EQ(request_.path(), folder_.path(QStringLiteral("note.lnk")));
}

TEST_F(FileBrowserDialogTest, OkWhileALabelIsEditedOnlyEndsTheEdit) {
    open();
    dialog_->folderTree()->openPath(folder_.path(QStringLiteral("sub")));
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
    SettingsStore store(folder.path(QStringLiteral("settings.ini")));
    BrowseRequest request;
    request.options = list_option::SingleTapOpensFolder | option::Saving;
    ApplyBrowseSettings(request, store);
    // The defaults: single tap, no folders, enlarging by single tap, details, the long hold.
    EXPECT_EQ(request.options,
              list_option::SingleTapOpensFolder | option::Saving | option::EnlargeBySingleTap);
    EXPECT_EQ(request.listStyle, list_style::Details);
    EXPECT_TRUE(request.longHoldDelay);

    store.write(setting::SELECT_BY_SINGLE_TAP, 0);
    store.write(setting::SHOW_FOLDER_ON_FILE_LIST, 1);
    store.write(setting::STR_ZOOM_METHOD, 2);
    store.write(setting::FILE_LIST_STYLE, 3);
    store.write(setting::LONG_DELAY, 0);
    ApplyBrowseSettings(request, store);
    EXPECT_EQ(request.options,
              list_option::ShowFolders | option::Saving | option::EnlargeByDoubleTap);
    EXPECT_EQ(request.listStyle, list_style::List);
    EXPECT_FALSE(request.longHoldDelay);

    store.write(setting::STR_ZOOM_METHOD, 0);
    store.write(setting::FILE_LIST_STYLE, 9);
    request.options |= option::ShowOptionRow;
    ApplyBrowseSettings(request, store);
    EXPECT_EQ(request.options & (option::EnlargeBySingleTap | option::EnlargeByDoubleTap), 0u);
    EXPECT_EQ(request.listStyle, list_style::Details);
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
