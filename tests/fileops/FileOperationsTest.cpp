#include "fileops/FileOperations.h"

#include "support/ScratchFolder.h"

namespace korvel {
namespace {

using testing::ScratchFolder;
using testing::ShownTexts;
using testing::TextOf;
using Answer = MessageAnswer;
using Status = FileOpStatus;
namespace msg = fileops_message;

TEST(DeleteEntriesTest, AsksOnceThenDeletesFromTheLastRow) {
    ScratchFolder scratch;
    scratch.write("a.txt");
    scratch.write("F/inner/b.txt");
    scratch.write("keep.txt");
    {
        ScriptedMessageService messages{Answer::No};
        EXPECT_EQ(DeleteEntries(scratch.path(), {"a.txt"}, nullptr).status, Status::Skipped);
        const ShownMessage& question = messages.shown().at(0);
        EXPECT_EQ(question.text, TextOf(msg::kDeleteSelection));
        EXPECT_EQ(question.buttons, MessageButtons::YesNo);
        EXPECT_EQ(question.icon, MessageIcon::Question);
        EXPECT_EQ(question.defaultButton, Answer::No);
    }
    ScriptedMessageService messages{Answer::Yes};
    const DeleteOutcome outcome = DeleteEntries(scratch.path(), {"..", "a.txt", "F"}, nullptr);
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_EQ(outcome.deleted, QStringList({"F", "a.txt"}));
    EXPECT_EQ(scratch.names(), QStringList("keep.txt"));
}

TEST(DeleteEntriesTest, AReadOnlyFileAnsweredNoKeepsItsFolder) {
    ScratchFolder scratch;
    scratch.write("F/locked.txt");
    scratch.write("F/other.txt");
    scratch.write("F/sub/more.txt");
    scratch.setReadOnly("F/locked.txt");
    ScriptedMessageService messages{Answer::Yes, Answer::No, Answer::Ok};

    const DeleteOutcome outcome = DeleteEntries(scratch.path(), {"F"}, nullptr);
    EXPECT_EQ(outcome.status, Status::Skipped);
    EXPECT_TRUE(outcome.deleted.isEmpty());
    EXPECT_EQ(ShownTexts(messages).mid(1),
              QStringList({TextOf(msg::kReadOnlyForceDelete, {scratch.path("F/locked.txt")}),
                           TextOf(msg::kSomeSkipped)}));
    EXPECT_EQ(scratch.names("F"), QStringList("locked.txt"));
}

TEST(DeleteEntriesTest, ReadOnlyAndVanishedRowsAreSkippedAndCancelEndsTheWalk) {
    ScratchFolder scratch;
    scratch.write("1.txt");
    scratch.write("2.txt");
    scratch.write("3.txt");
    scratch.setReadOnly("2.txt");
    {
        ScriptedMessageService messages{Answer::Yes, Answer::Ok, Answer::No, Answer::Ok};
        const DeleteOutcome outcome =
            DeleteEntries(scratch.path(), {"1.txt", "2.txt", "gone.txt", "3.txt"}, nullptr);
        EXPECT_EQ(outcome.status, Status::Skipped);
        EXPECT_EQ(outcome.deleted, QStringList({"3.txt", "1.txt"}));
        EXPECT_EQ(messages.shownIds(), QList<int>({30400, 30020, 30027, 30401}));
    }
    scratch.write("1.txt");
    ScriptedMessageService messages{Answer::Yes, Answer::Cancel};
    const DeleteOutcome outcome = DeleteEntries(scratch.path(), {"1.txt", "2.txt"}, nullptr);
    EXPECT_EQ(outcome.status, Status::Cancelled);
    EXPECT_EQ(scratch.names(), QStringList({"1.txt", "2.txt"}));
}

TEST(DeleteTreeTest, WithoutQuestionsReportsMissingPathsAndStopsAtReadOnlyFiles) {
    ScratchFolder scratch;
    scratch.write("F/locked.txt");
    scratch.setReadOnly("F/locked.txt");
    const QString missing = scratch.path("missing");

    EXPECT_EQ(DeleteTree(missing, true, nullptr), Status::NotFound);
    EXPECT_EQ(DeleteTree(QString(), false, nullptr), Status::BadArgument);
    EXPECT_EQ(DeleteTree(scratch.folder("F"), false, nullptr), Status::ReadOnly);
    EXPECT_TRUE(scratch.exists("F/locked.txt"));

    ScriptedMessageService messages{Answer::Ok};
    EXPECT_EQ(DeleteTree(missing, false, nullptr), Status::NotFound);
    EXPECT_EQ(ShownTexts(messages), QStringList(TextOf(msg::kEntryNotFound, {missing})));
    EXPECT_EQ(messages.shown().at(0).icon, MessageIcon::Stop);
}

TEST(DeleteTreeTest, RemovesLinksButNotWhatTheyLeadTo) {
    ScratchFolder scratch;
    scratch.write("outside/precious.txt");
    scratch.makeFolder("F");
    scratch.link("F/shortcut", scratch.path("outside"));

    EXPECT_EQ(DeleteTree(scratch.path("F"), true, nullptr), Status::Done);
    EXPECT_FALSE(scratch.exists("F"));
    EXPECT_TRUE(scratch.exists("outside/precious.txt"));
}

TEST(DeleteFolderTest, AsksFirstAndReportsWhatStayed) {
    ScratchFolder scratch;
    scratch.write("F/locked.txt");
    scratch.write("F/other.txt");
    scratch.setReadOnly("F/locked.txt");
    ScriptedMessageService messages{Answer::No,  Answer::Yes, Answer::No,  Answer::Ok,
                                    Answer::Yes, Answer::Yes, Answer::Yes, Answer::Ok};

    EXPECT_EQ(DeleteFolder("/", nullptr), Status::BadArgument);
    EXPECT_EQ(DeleteFolder(scratch.folder("F"), nullptr), Status::Skipped);
    EXPECT_EQ(scratch.names("F"), QStringList({"locked.txt", "other.txt"}));
    EXPECT_EQ(DeleteFolder(scratch.folder("F"), nullptr), Status::Skipped);
    EXPECT_EQ(scratch.names("F"), QStringList("locked.txt"));
    EXPECT_EQ(DeleteFolder(scratch.folder("F"), nullptr), Status::Done);
    EXPECT_FALSE(scratch.exists("F"));
    EXPECT_EQ(DeleteFolder(scratch.folder("F"), nullptr), Status::NotFound);
    const ShownMessage& question = messages.shown().at(0);
    EXPECT_EQ(question.text, TextOf(msg::kDeleteFolder, {scratch.path("F")}));
    EXPECT_EQ(question.icon, MessageIcon::Question);
    EXPECT_EQ(question.defaultButton, Answer::No);
    EXPECT_EQ(messages.shownIds(), QList<int>({30024, 30024, 0, 30401, 30024, 0, 30024, 30509}));
    EXPECT_EQ(messages.shown().back().icon, MessageIcon::None);
}

TEST(CreateNewFolderTest, TakesTheFirstFreeNumber) {
    ScratchFolder scratch;
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    EXPECT_EQ(CreateNewFolder(scratch.folder(), nullptr).name, "新規フォルダ(2)");
    QDir().rmdir(scratch.path("新規フォルダ(1)"));
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    EXPECT_EQ(scratch.names(), QStringList({"新規フォルダ(1)", "新規フォルダ(2)"}));

    ScriptedMessageService messages{Answer::Ok};
    EXPECT_EQ(CreateNewFolder(scratch.path("missing"), nullptr).status, Status::Failed);
    EXPECT_EQ(messages.shownIds(), QList<int>({30504}));
}

TEST(CreateNewFolderTest, StopsAfter4095) {
    const ScratchFolder scratch(testing::ManyEntriesBase());
    for (int number = 1; number <= 4095; ++number) {
        scratch.makeFolder(QStringLiteral("新規フォルダ(%1)").arg(number));
    }
    ScriptedMessageService messages{Answer::Ok};
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).status, Status::NameLimit);
    EXPECT_EQ(messages.shownIds(), QList<int>({30506}));
}

TEST(RenameFolderTest, RefusesBadAndTakenNames) {
    ScratchFolder scratch;
    scratch.makeFolder("Old");
    scratch.makeFolder("Other");
    scratch.write("file.txt");
    const QString old = scratch.folder("Old");
    struct Case {
        QString name;
        int message;
    };
    for (const Case& refused : {Case{"a:b", 30502}, Case{"Other", 30500}, Case{" file.txt ", 30501},
                                Case{"a\\b", 30502}}) {
        ScriptedMessageService messages{Answer::Ok};
        const RenameOutcome outcome = RenameFolder(old, refused.name, nullptr);
        EXPECT_EQ(messages.shownIds(), QList<int>({refused.message})) << refused.name.toStdString();
        EXPECT_EQ(messages.shown().at(0).icon, MessageIcon::Stop);
        EXPECT_TRUE(outcome.editAgain);
        EXPECT_EQ(outcome.folder, old);
    }
    EXPECT_TRUE(RenameFolder(old, "  ", nullptr).editAgain);
    {
        ScriptedMessageService messages{Answer::Ok};
        EXPECT_FALSE(RenameFolder("/", "x", nullptr).editAgain);
        EXPECT_EQ(messages.shownIds(), QList<int>({30510}));
    }
    // A change of letter case alone is accepted without touching the disk.
    const RenameOutcome sameName = RenameFolder(old, "OLD", nullptr);
    EXPECT_EQ(sameName.status, Status::Done);
    EXPECT_EQ(sameName.folder, old);
    EXPECT_EQ(scratch.names(), QStringList({"Old", "Other", "file.txt"}));
}

TEST(RenameFolderTest, MovesTheFolderToTheTrimmedName) {
    ScratchFolder scratch;
    scratch.write("Old/inside.txt", "in");
    const RenameOutcome outcome = RenameFolder(scratch.path("Old"), " New name ", nullptr);
    EXPECT_EQ(outcome.status, Status::Done);
    EXPECT_EQ(outcome.folder, scratch.folder("New name"));
    EXPECT_EQ(scratch.read("New name/inside.txt"), "in");
    EXPECT_FALSE(scratch.exists("Old"));
}

} // namespace
} // namespace korvel
