#include "browser/FileBrowserDialog.h"

#include "browser/FileListCtrl.h"
#include "browser/FolderTree.h"
#include "fileops/FileClipboard.h"
#include "fileops/FileSystem.h"
#include "settings/SettingsStore.h"
#include "support/ScratchFolder.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>
#include <array>
#include <memory>

namespace korvel {
namespace {

namespace cmd = browser_command;
namespace flag = browse_flag;
namespace option = browse_option;
using testing::ScratchFolder;
using Answer = MessageAnswer;

constexpr int kText = 1, kSettings = 2, kAll = 3; // types of the filter below
constexpr std::uint32_t kFolders = list_option::ShowFolders;

class FileBrowserDialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"sub/inner.txt", "a.txt", "b.txt", "locked.txt", "setup.ini"})
            folder_.write(name);
        folder_.write("note.lnk", folder_.lnkTo("sub/inner.txt"));
        folder_.write("to-sub.lnk", folder_.lnkTo("sub"));
        request_.filter = QStringLiteral("テキスト|*.txt|設定|*.ini;*.inf|すべて|*.*||");
        request_.filterIndex = kAll;
        request_.folder = folder_.folder();
        request_.options = kFolders;
    }

    FileBrowserDialog& open() {
        dialog_ = std::make_unique<FileBrowserDialog>(request_, clipboard_);
        dialog_->show();
        return *dialog_;
    }
    QStringList listed() const {
        QStringList names;
        for (int row = 0; row < dialog_->fileList()->rowCount(); ++row)
            names.append(dialog_->fileList()->entryOf(row)->name);
        return names;
    }
    // Paths with the scratch folder as "~" and its parent as "^".
    QString shown(QString path) const {
        return path.replace(folder_.path(), "~")
            .replace(files::ParentFolderOf(folder_.path()), "^/");
    }
    // "chose" and the result, a read-only file marked "!"; or the folder the dialog stays in with
    // the name box, marked "*" while selected and focused.
    QString outcome() const {
        if (dialog_->result() == QDialog::Accepted)
            return "chose " + shown(request_.folder) + request_.names.join(" + ") +
                   (files::IsReadOnly(request_.path()) ? "!" : "");
        const QLineEdit* box = dialog_->nameBox();
        const bool selected = dialog_->focusWidget() == box && !box->text().isEmpty() &&
                              box->selectedText() == box->text();
        return "at " + shown(dialog_->folderTree()->currentFolder()) + " [" + box->text() + "]" +
               (selected ? "*" : "");
    }

    ScratchFolder folder_;
    FileClipboard clipboard_;
    BrowseRequest request_;
    std::unique_ptr<FileBrowserDialog> dialog_;
};

// Every way OK can end: a choice, or the dialog kept open in some folder with what the name box
// then holds, after the boxes it showed.
TEST_F(FileBrowserDialogTest, OkEndsAsTheNameTheSelectionAndTheFlagsSay) {
    const std::uint32_t saving = kFolders | option::Saving;
    const std::uint32_t unlock = saving | option::UnlockReadOnly;
    const std::uint32_t append = saving | option::AppendTypeExtension;
    // What it must not do; options; flags; type; rows picked; name typed ("~" the scratch folder);
    // answers; boxes shown; outcome.
    // clang-format off
    const std::tuple<const char*, std::uint32_t, std::uint32_t, int, QStringList, const char*,
                     QList<Answer>, QList<int>, const char*> rows[] = {
        {"a forbidden character is taken", kFolders, 0, kAll, {}, "a|b.txt", {Answer::Ok}, {30503}, "at ~/ [a|b.txt]*"},
        {"a backslash is taken", kFolders, 0, kAll, {}, "a\\b", {Answer::Ok}, {30503}, "at ~/ [a\\b]*"},
        {"a typed folder is chosen", kFolders, 0, kAll, {}, "sub", {}, {}, "at ~/sub/ []"},
        {"a typed shortcut to a folder is chosen", kFolders, 0, kAll, {}, "to-sub.lnk", {}, {}, "at ~/sub/ []"},
        {"a picked folder is chosen", kFolders, 0, kAll, {"sub"}, "", {}, {}, "at ~/sub/ []"},
        {"a picked '..' is chosen", kFolders, 0, kAll, {".."}, "", {}, {}, "at ^/ []"},
        {"a picked shortcut to a folder is chosen", kFolders, 0, kAll, {"to-sub.lnk"}, "", {}, {}, "at ~/sub/ []"},
        {"a name without dot is chosen without the type's extension", append, 0, kText, {}, "memo", {}, {}, "at ~/ [memo.txt]*"},
        {"the completed name is not the disk's spelling", append, 0, kText, {}, "A", {}, {}, "at ~/ [a.txt]*"},
        {"a type without extension adds a dot", append, 0, kAll, {}, "plain", {}, {}, "chose ~/plain"},
        {"an empty name is accepted", kFolders, 0, kAll, {}, "", {Answer::Ok}, {30513}, "at ~/ []"},
        {"an empty name without a name box is accepted", kFolders | option::NoNameBox, 0, kAll, {}, "", {Answer::Ok}, {30511}, "at ~/ []"},
        {"a blank name without a list is accepted", option::NoFileList, 0, kAll, {}, "  ", {Answer::Ok}, {30512}, "at ~/ [  ]*"},
        {"a pick asks about saving over it", saving, flag::OverwritePrompt, kText, {"a.txt"}, "", {}, {}, "chose ~/a.txt"},
        {"a missing file is chosen", kFolders, flag::FileMustExist, kAll, {}, "missing.txt", {Answer::Ok}, {0}, "at ~/ [missing.txt]*"},
        {"a missing folder is chosen", kFolders, flag::PathMustExist, kAll, {}, "no/x.txt", {Answer::Ok}, {30023}, "at ~/ [no/x.txt]*"},
        {"a typed path is not split", kFolders, flag::PathMustExist, kAll, {}, "~/sub/../sub/new.txt", {}, {}, "chose ~/sub/new.txt"},
        {"a new file is made unasked", saving, flag::CreatePrompt, kText, {}, "new.txt", {Answer::No}, {30010}, "at ~/ [new.txt]*"},
        {"a file is overwritten unasked", saving, flag::OverwritePrompt, kText, {}, "a.txt", {Answer::No}, {30013}, "at ~/ [a.txt]*"},
        {"a read-only file is unlocked unasked", unlock, flag::OverwritePrompt, kText, {}, "locked.txt", {Answer::No}, {30028}, "at ~/ [locked.txt]*"},
        {"Yes does not unlock, or asks twice", unlock, flag::OverwritePrompt, kText, {}, "locked.txt", {Answer::Yes}, {30028}, "chose ~/locked.txt"},
        {"a read-only file is unlocked without the option", saving, flag::OverwritePrompt, kText, {}, "locked.txt", {Answer::Yes}, {30013}, "chose ~/locked.txt!"},
        {"names repeat, or '..' is one", kFolders, flag::AllowMultiSelect, kAll, {"..", "b.txt", "a.txt"}, "B.TXT", {}, {}, "chose ~/B.TXT + a.txt"},
        {"a multiple pick loses names", kFolders, flag::AllowMultiSelect, kAll, {"b.txt", "a.txt"}, "", {}, {}, "chose ~/a.txt + b.txt"},
        {"a picked shortcut is chosen, not its target", kFolders, 0, kAll, {"note.lnk"}, "", {}, {}, "chose ~/sub/inner.txt"},
        {"a typed shortcut is chosen, not its target", kFolders, 0, kAll, {}, "note.lnk", {}, {}, "chose ~/sub/inner.txt"},
        {"a picked shortcut is followed against the flag", kFolders, flag::NoDereferenceLinks, kAll, {"note.lnk"}, "", {}, {}, "chose ~/note.lnk"},
        {"a typed shortcut is followed against the flag", kFolders, flag::NoDereferenceLinks, kAll, {}, "note.lnk", {}, {}, "chose ~/note.lnk"},
    };
    // clang-format on
    for (const auto& [fault, options, flags, type, picked, typed, answers, shown, after] : rows) {
        SCOPED_TRACE(fault);
        folder_.setReadOnly("locked.txt");
        request_.options = options;
        request_.flags = flags;
        request_.filterIndex = type;
        request_.folder = folder_.folder();
        open();
        dialog_->fileList()->selectNames(picked);
        dialog_->nameBox()->setText(QString(typed).replace("~", folder_.path()));
        ScriptedMessageService messages;
        for (const Answer answer : answers)
            messages.script({answer});
        dialog_->ok();
        EXPECT_EQ(messages.shownIds(), shown);
        EXPECT_EQ(outcome(), after);
    }
}

TEST_F(FileBrowserDialogTest, StartsInTheRequestedFolderListingItsType) {
    request_.name = QStringLiteral("draft.txt");
    request_.filterIndex = kText;
    FileBrowserDialog& dialog = open();
    EXPECT_EQ(outcome(), "at ~/ [draft.txt]*");
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "to-sub.lnk", "a.txt", "b.txt", "locked.txt"}));
    dialog.typeBox()->setCurrentIndex(kSettings - 1);
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "to-sub.lnk", "setup.ini"}));
    // An index past the list may come from a settings file written by hand: every file.
    for (const int index : {0, kAll + 1}) {
        request_.filterIndex = index;
        request_.options = 0;
        open();
        EXPECT_EQ(dialog_->typeBox()->currentIndex(), -1) << index;
        EXPECT_EQ(listed().size(), 6) << index;
    }
    request_.options = option::NoFileList; // a hidden list reads no folder
    open();
    EXPECT_TRUE(listed().isEmpty());
    request_.folder = QStringLiteral("relative");
    open();
    EXPECT_EQ(dialog_->folderTree()->currentFolder(), QStringLiteral("/"));
}

TEST_F(FileBrowserDialogTest, APatternListsItsFilesInTheFolderItNames) {
    open();
    dialog_->nameBox()->setText(QStringLiteral("*.ini"));
    dialog_->ok();
    EXPECT_EQ(listed(), (QStringList{"..", "sub", "to-sub.lnk", "setup.ini"}));
    dialog_->nameBox()->setText(folder_.path("sub/inn*"));
    dialog_->ok();
    EXPECT_EQ(outcome(), "at ~/sub/ [inn*]");
    EXPECT_EQ(listed(), (QStringList{"..", "inner.txt"}));
    // Enter in the name box runs OK, and so does Enter in the list.
    dialog_->nameBox()->setText(QStringLiteral(".."));
    QTest::keyClick(dialog_->nameBox(), Qt::Key_Return);
    EXPECT_EQ(outcome(), "at ~/ []");
    dialog_->fileList()->selectNames({"sub"});
    QTest::keyClick(dialog_->fileList()->view(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(outcome(), "at ~/sub/ []");
    dialog_->fileList()->runCommand(cmd::Cancel);
    EXPECT_FALSE(dialog_->isVisible());
}

// The option row picks the stored index (the first one when it is out of range) and hides
// without a list; OK hands back the type, the option, the style and the folders choice.
TEST_F(FileBrowserDialogTest, OptionRowAndResultsCarryTypeOptionStyleAndFolders) {
    request_.options |= option::ShowOptionRow;
    request_.listStyle = list_style::List;
    for (const auto& [stored, shown] : {std::pair{0, 0}, {2, 2}, {3, 0}, {-1, 0}}) {
        request_.optionList = QStringLiteral("a|b|c||");
        request_.optionIndex = stored;
        open();
        EXPECT_EQ(
            std::pair(dialog_->optionBox()->isVisible(), dialog_->optionBox()->currentIndex()),
            std::pair(true, shown));
    }
    dialog_->typeBox()->setCurrentIndex(kSettings - 1);
    dialog_->optionBox()->setCurrentIndex(2);
    dialog_->fileList()->runCommand(cmd::ShowFolders);
    dialog_->nameBox()->setText("x.ini");
    dialog_->fileList()->runCommand(cmd::Ok); // the list's menu reaches the dialog's buttons
    EXPECT_EQ(outcome(), "chose ~/x.ini");
    EXPECT_EQ(std::tuple(request_.filterIndex, request_.optionIndex, request_.listStyle,
                         request_.showFolders),
              std::tuple(kSettings, 2, list_style::List, false));
    request_.optionList.clear();
    open();
    EXPECT_FALSE(dialog_->optionBox()->isVisible());
    EXPECT_EQ(request_.options & option::ShowOptionRow, 0u);
    // "選択した .lnk ファイル" takes the shortcut itself.
    request_.filterIndex = kAll;
    open();
    dialog_->fileList()->selectNames({"note.lnk"});
    dialog_->fileList()->runCommand(cmd::SelectLnk);
    EXPECT_EQ(outcome(), "chose ~/note.lnk");
}

// A double tap on a file opens it, but never saves over it.
TEST_F(FileBrowserDialogTest, ADoubleTapOnAFileOpensItButNeverSavesOverIt) {
    for (const std::uint32_t saving : {0u, option::Saving}) {
        request_.name = QStringLiteral("typed.txt");
        request_.options = kFolders | saving;
        request_.folder = folder_.folder();
        open();
        QAbstractItemView* view = dialog_->fileList()->view();
        const int row = int(listed().indexOf("a.txt"));
        const QPoint centre = view->visualRect(view->model()->index(row, 0)).center();
        // Press, release, double click, release: as the window system delivers a double tap.
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                        QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
            const bool up = type == QEvent::MouseButtonRelease;
            QMouseEvent event(type, centre, view->viewport()->mapToGlobal(centre), Qt::LeftButton,
                              up ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(view->viewport(), &event);
        }
        QApplication::processEvents();
        EXPECT_EQ(outcome(), saving ? "at ~/ [typed.txt]*" : "chose ~/a.txt");
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

TEST_F(FileBrowserDialogTest, TapsOnEmptySpaceEnlargeAPaneAndTheHookSeesKeysFirst) {
    request_.options |= option::EnlargeBySingleTap;
    // The dialog outlives the test body and calls its hook to the end, so the count does too.
    const auto keys = std::make_shared<int>(0);
    request_.flags = flag::EnableHook;
    request_.hook = [keys](QObject*, QEvent* event) {
        *keys += event->type() == QEvent::KeyPress;
        return event->type() == QEvent::KeyPress;
    };
    open();
    dialog_->resize(400, 700);
    QApplication::processEvents();
    QWidget* list = dialog_->fileList()->view()->viewport();
    QWidget* tree = dialog_->folderTree()->viewport();
    const std::pair<QWidget*, FileBrowserDialog::LayoutMode> taps[] = {
        {list, FileBrowserDialog::ListEnlarged},
        {list, FileBrowserDialog::Normal},
        {tree, FileBrowserDialog::TreeEnlarged}};
    for (const auto& [pane, mode] : taps) {
        QTest::mouseClick(pane, Qt::LeftButton, {}, QPoint(pane->width() - 3, pane->height() - 3));
        QApplication::processEvents();
        EXPECT_EQ(dialog_->layoutMode(), mode);
    }
    dialog_->nameBox()->clear();
    QTest::keyClicks(dialog_->nameBox(), QStringLiteral("abc"));
    EXPECT_EQ(*keys, 3);
    EXPECT_TRUE(dialog_->nameBox()->text().isEmpty());
}

// Each setting decides its option (or leaves the option row with a code set to pick), the style
// and the delay; OK keeps the style and the folders choice.
TEST(BrowseSettings, TakeTheTapAndDisplaySettingsAndKeepTheChoices) {
    ScratchFolder folder;
    SettingsStore store(folder.path("settings.ini"));
    const IntSetting keys[] = {setting::SELECT_BY_SINGLE_TAP, setting::SHOW_FOLDER_ON_FILE_LIST,
                               setting::STR_ZOOM_METHOD,      setting::SELECTABLE_CODE_SET,
                               setting::FILE_LIST_STYLE,      setting::LONG_DELAY};
    const std::uint32_t all = list_option::SingleTapOpensFolder | kFolders | option::ShowOptionRow |
                              option::EnlargeBySingleTap | option::EnlargeByDoubleTap;
    // clang-format off
    const std::tuple<std::array<int, 6>, std::uint32_t> rows[] = {
        {{1, 0, 1, 1, 1, 1}, list_option::SingleTapOpensFolder | option::EnlargeBySingleTap | option::ShowOptionRow},
        {{0, 1, 2, 0, 3, 0}, kFolders | option::EnlargeByDoubleTap}};
    // clang-format on
    for (const auto& [values, options] : rows) {
        for (std::size_t i = 0; i < values.size(); ++i)
            store.write(keys[i], values[i]);
        BrowseRequest request;
        request.options = all | option::Saving;
        ApplyBrowseSettings(request, store);
        EXPECT_EQ(request.options, options | option::Saving) << values[0];
        EXPECT_EQ(request.listStyle, values[4]);
        EXPECT_EQ(request.longHoldDelay, values[5] != 0);
        request.showFolders = !values[1];
        request.listStyle = list_style::Icons;
        StoreBrowseSettings(request, store);
        EXPECT_EQ(store.read(setting::SHOW_FOLDER_ON_FILE_LIST), int(!values[1]));
        EXPECT_EQ(store.read(setting::FILE_LIST_STYLE), list_style::Icons);
    }
}

} // namespace
} // namespace korvel
