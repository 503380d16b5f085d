#pragma once

#include "fileops/FileOpStatus.h"
#include "messages/MessageService.h"

#include <QStringList>

class QWidget;

namespace korvel {

// A message box text: a string of the table by number, or one of the few texts that have no
// number, given as it stands.
struct FileOpMessage {
    int id = 0;
    const char16_t* text = nullptr;
};

namespace fileops_message {
// Paste, copy and move.
inline constexpr FileOpMessage kSubfolderRefused{
    0, u"フォルダをそのサブフォルダ内に移動・コピーすることはできません。"};
// "存在ません" is the wording users have always seen here; kept as it stands.
inline constexpr FileOpMessage kSourceVanished{
    0, u"下記ファイルは既に存在ません。処理をスキップします。\n\n%s"};
inline constexpr FileOpMessage kCopyNameLimit{
    0, u"ファイルの作成制限数に達したため、下記ファイルの処理をスキップしました。\n\n%s"};
inline constexpr FileOpMessage kReadOnlyFileMove{
    0, u"下記ファイルは読み取り専用です。強制的に移動を実行しますか？\n\n%s"};
inline constexpr FileOpMessage kProcessingError{
    0, u"下記ファイルの処理でエラーが発生しました。\n\n%s"};
inline constexpr FileOpMessage kFolderBlocksFile{
    0, u"同名のフォルダが既に存在するため、ファイルを作成できません。\n\n%s"};
inline constexpr FileOpMessage kFileBlocksFolder{
    0, u"同名のファイルが既に存在するため、フォルダを作成できません。\n\n%s"};
inline constexpr FileOpMessage kReadOnlyFileOverwrite{
    0, u"貼り付け先に同名の読み取り専用ファイルが存在します。読み取り専用属性を解除して強制的に上書"
       u"きしますか？\n\n%s"};
inline constexpr FileOpMessage kReadOnlyFolderOverwrite{
    0, u"貼り付け先に同名の読み取り専用フォルダが既に存在します。読み取り専用属性を解除して強制的に"
       u"上書きしますか？\n\n%s"};
inline constexpr FileOpMessage kAttributeErrorSkip{
    0, u"ファイル属性の変更でエラーが発生しました。このファイルの処理をスキップします。\n\n%s"};
inline constexpr FileOpMessage kFileOverwrite{
    0, u"貼り付け先に同名のファイルが既に存在します。\n上書きしますか？\n\n%s"};
inline constexpr FileOpMessage kFolderCreateError{
    0, u"下記フォルダの作成でエラーが発生しました。\n\n%s"};
inline constexpr FileOpMessage kFolderMoveError{
    0, u"下記フォルダの移動でエラーが発生しました。\n\n%s"};
inline constexpr FileOpMessage kReadOnlyFolderMove{
    0, u"下記フォルダは読み取り専用です。強制的に移動を実行しますか？\n\n%s"};
inline constexpr FileOpMessage kReadOnlyFolderMoveRefused{
    0, u"下記フォルダは読み取り専用のため移動できません。\n\n%s"};
// Delete.
inline constexpr FileOpMessage kVanishedEntry{30020};
inline constexpr FileOpMessage kFileDeleteError{30026};
inline constexpr FileOpMessage kReadOnlyEntryDelete{30027};
inline constexpr FileOpMessage kEntryNotFound{0, u"下記ファイル・フォルダが見つかりません。\n\n%s"};
inline constexpr FileOpMessage kReadOnlyForceDelete{
    0, u"下記ファイル・フォルダは読み取り専用です。読み取り専用属性を解除して強制的に削除を実行しま"
       u"すか？\n\n%s"};
inline constexpr FileOpMessage kFolderDeleteError{
    0, u"下記フォルダの削除でエラーが発生しました。\n\n%s"};
inline constexpr FileOpMessage kDeleteFolder{30024};
inline constexpr FileOpMessage kDeleteSelection{30400};
inline constexpr FileOpMessage kSomeSkipped{30401};
inline constexpr FileOpMessage kAttributeChangeError{30507};
inline constexpr FileOpMessage kFolderDeleteFailed{30509};
// New folder and rename.
inline constexpr FileOpMessage kRenameFolderExists{30500};
inline constexpr FileOpMessage kRenameFileExists{30501};
inline constexpr FileOpMessage kRenameBadCharacters{30502};
inline constexpr FileOpMessage kNewFolderFailed{30504};
inline constexpr FileOpMessage kNoMoreFolders{30506};
inline constexpr FileOpMessage kRenameFailed{30510};
} // namespace fileops_message

// The messages of one run of a file operation. A run that is not interactive asks nothing and
// skips the OK / Cancel reports, answering them as OK would; plain notices still show.
class FileOpPrompt {
public:
    FileOpPrompt(bool interactive, QWidget* parent) : interactive_(interactive), parent_(parent) {}

    bool interactive() const { return interactive_; }

    // An OK / Cancel box: Cancel stops the run, OK goes on with onOk.
    FileOpStatus report(FileOpMessage message, const QStringList& arguments, FileOpStatus onOk,
                        MessageIcon icon = MessageIcon::None) const;
    // A Yes / No / Cancel question with No as the default: Yes gives Done, No Skipped, Cancel
    // Cancelled. Only an interactive run asks.
    FileOpStatus confirm(FileOpMessage message, const QStringList& arguments) const;
    // A Yes / No question with No as the default.
    bool agrees(FileOpMessage message, const QStringList& arguments) const;
    // An OK box.
    void tell(FileOpMessage message, const QStringList& arguments = {},
              MessageIcon icon = MessageIcon::None) const;

private:
    MessageAnswer show(FileOpMessage message, const QStringList& arguments, MessageButtons buttons,
                       MessageIcon icon, MessageAnswer defaultButton) const;

    bool interactive_;
    QWidget* parent_;
};

} // namespace korvel
