#include "fileops/FileOperations.h"

#include "FileTree.h"

namespace korvel {
namespace {

using testing::ScratchFolder;
using testing::ShownTexts;
using testing::TextOf;
using Answer = MessageAnswer;
using Status = FileOpStatus;
namespace msg = fileops_message;

enum class Call { Rows, Folder, TreeAsking, TreeUnasked };

struct DeleteCase {
    const char* fault;
    QStringList before;
    Call call;
    QStringList names; // the rows, or the one path
    QList<Answer> answers;
    Status status;
    QList<std::pair<FileOpMessage, const char*>> shown;
    QStringList after;
    QStringList deleted = {};
};

TEST(Delete, LeavesTheTreeAsTheAnswersSay) {
    // clang-format off
    const DeleteCase rows[] = {
        {"a No deletes", {"a.txt", "keep.txt"}, Call::Rows, {"a.txt"}, {Answer::No},
         Status::Skipped, {{msg::kDeleteSelection, nullptr}}, {"a.txt=", "keep.txt="}},
        {"rows go first to last, or '..' with them", {"a.txt", "F/in/b.txt", "keep.txt"},
         Call::Rows, {"..", "a.txt", "F"}, {Answer::Yes}, Status::Done,
         {{msg::kDeleteSelection, nullptr}}, {"keep.txt="}, {"F", "a.txt"}},
        {"a read-only file answered No goes, or takes its folder's other entries along",
         {"F/locked.txt!", "F/other.txt", "F/sub/more.txt"}, Call::Rows, {"F"},
         {Answer::Yes, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteSelection, nullptr}, {msg::kReadOnlyForceDelete, "F/locked.txt"},
          {msg::kSomeSkipped, nullptr}}, {"F/locked.txt=!"}},
        {"a read-only or vanished row ends the walk",
         {"1.txt", "2.txt!", "3.txt"}, Call::Rows, {"1.txt", "2.txt", "gone.txt", "3.txt"},
         {Answer::Yes, Answer::Ok, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteSelection, nullptr}, {msg::kVanishedEntry, "gone.txt"},
          {msg::kReadOnlyEntryDelete, "2.txt"}, {msg::kSomeSkipped, nullptr}},
         {"2.txt=!"}, {"3.txt", "1.txt"}},
        {"Cancel goes on", {"1.txt", "2.txt!"}, Call::Rows, {"1.txt", "2.txt"},
         {Answer::Yes, Answer::Cancel}, Status::Cancelled,
         {{msg::kDeleteSelection, nullptr}, {msg::kReadOnlyEntryDelete, "2.txt"}},
         {"1.txt=", "2.txt=!"}},
        {"a tree deleted unasked takes a read-only file", {"F/locked.txt!"}, Call::TreeUnasked,
         {"F/"}, {}, Status::ReadOnly, {}, {"F/locked.txt=!"}},
        {"a missing tree goes unreported", {}, Call::TreeUnasked, {"missing"}, {Answer::Ok},
         Status::NotFound, {{msg::kEntryNotFound, "missing"}}, {}},
        {"a link's target is deleted with the tree", {"out/keep=k", "F/", "F/link->../out"},
         Call::TreeAsking, {"F"}, {}, Status::Done, {}, {"out/keep=k"}},
        {"a folder goes against a No", {"F/locked.txt!", "F/other.txt"}, Call::Folder, {"F/"},
         {Answer::No}, Status::Skipped, {{msg::kDeleteFolder, "F"}},
         {"F/locked.txt=!", "F/other.txt="}},
        {"what stays of a folder goes unreported", {"F/locked.txt!", "F/other.txt"},
         Call::Folder, {"F/"}, {Answer::Yes, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteFolder, "F"}, {msg::kReadOnlyForceDelete, "F/locked.txt"},
          {msg::kSomeSkipped, nullptr}}, {"F/locked.txt=!"}},
        {"a folder with a read-only file stays", {"F/locked.txt!"}, Call::Folder, {"F/"},
         {Answer::Yes, Answer::Yes}, Status::Done,
         {{msg::kDeleteFolder, "F"}, {msg::kReadOnlyForceDelete, "F/locked.txt"}}, {}},
        {"a folder gone meanwhile passes for deleted", {}, Call::Folder, {"F/"},
         {Answer::Yes, Answer::Ok}, Status::NotFound,
         {{msg::kDeleteFolder, "F"}, {msg::kFolderDeleteFailed, nullptr}}, {}},
    };
    // clang-format on
    for (const DeleteCase& row : rows) {
        SCOPED_TRACE(row.fault);
        ScratchFolder scratch;
        MakeTree(scratch, row.before);
        ScriptedMessageService messages;
        for (const Answer answer : row.answers)
            messages.script({answer});
        const QString path = scratch.path(row.names.front());
        DeleteOutcome outcome;
        switch (row.call) {
        case Call::Rows:
            outcome = DeleteEntries(scratch.path(), row.names, nullptr);
            break;
        case Call::Folder:
            outcome.status = DeleteFolder(path, nullptr);
            break;
        case Call::TreeAsking:
        case Call::TreeUnasked:
            outcome.status = DeleteTree(path, row.call == Call::TreeAsking, nullptr);
            break;
        }
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_EQ(outcome.deleted, row.deleted);
        QStringList texts;
        for (const auto& [message, shownPath] : row.shown)
            texts.append(shownPath != nullptr ? TextOf(message, {scratch.path(shownPath)})
                                              : TextOf(message));
        EXPECT_EQ(ShownTexts(messages), texts);
        EXPECT_EQ(TreeOf(scratch), row.after);
    }
    // The root is never deleted, and a path must be absolute.
    EXPECT_EQ(DeleteFolder("/", nullptr), Status::BadArgument);
    EXPECT_EQ(DeleteTree(QString(), false, nullptr), Status::BadArgument);
}

TEST(CreateNewFolder, TakesTheFirstFreeNumberUpTo4095) {
    const ScratchFolder scratch(testing::ManyEntriesBase());
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    EXPECT_EQ(CreateNewFolder(scratch.folder(), nullptr).name, "新規フォルダ(2)");
    QDir().rmdir(scratch.path("新規フォルダ(1)"));
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    for (int number = 3; number <= 4095; ++number)
        scratch.makeFolder(QStringLiteral("新規フォルダ(%1)").arg(number));
    ScriptedMessageService messages{Answer::Ok, Answer::Ok};
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).status, Status::NameLimit);
    EXPECT_EQ(CreateNewFolder(scratch.path("missing"), nullptr).status, Status::Failed);
    EXPECT_EQ(messages.shownIds(), QList<int>({30506, 30504}));
}

TEST(RenameFolder, RefusesBadAndTakenNamesAndMovesToTheTrimmedOne) {
    ScratchFolder scratch;
    MakeTree(scratch, {"Old/in.txt=in", "Other/", "file.txt"});
    const QString old = scratch.folder("Old");
    const std::pair<const char*, int> refused[] = {
        {"a:b", 30502}, {"a\\b", 30502}, {"Other", 30500}, {" file.txt ", 30501}, {"  ", 0}};
    for (const auto& [name, message] : refused) {
        ScriptedMessageService messages;
        if (message != 0)
            messages.script({Answer::Ok});
        const RenameOutcome outcome = RenameFolder(old, name, nullptr);
        EXPECT_EQ(messages.shownIds(), message != 0 ? QList<int>{message} : QList<int>{}) << name;
        EXPECT_TRUE(outcome.editAgain) << name;
        EXPECT_EQ(outcome.folder, old);
    }
    {
        ScriptedMessageService messages{Answer::Ok};
        EXPECT_FALSE(RenameFolder("/", "x", nullptr).editAgain);
    }
    // A change of letter case alone touches nothing.
    EXPECT_EQ(RenameFolder(old, "OLD", nullptr).folder, old);
    EXPECT_TRUE(scratch.exists("Old"));
    const RenameOutcome moved = RenameFolder(old, " New name ", nullptr);
    EXPECT_EQ(moved.status, Status::Done);
    EXPECT_EQ(moved.folder, scratch.folder("New name"));
    EXPECT_EQ(TreeOf(scratch), QStringList({"New name/in.txt=in", "Other/", "file.txt="}));
}

} // namespace
} // namespace korvel
