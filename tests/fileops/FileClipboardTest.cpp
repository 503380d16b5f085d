#include "fileops/FileClipboard.h"

#include "support/ScratchFolder.h"

namespace korvel {
namespace {

using testing::ScratchFolder;
using testing::ShownTexts;
using testing::TextOf;
using Answer = MessageAnswer;
using Status = FileOpStatus;
namespace msg = fileops_message;

class FileClipboardTest : public ::testing::Test {
protected:
    void SetUp() override {
        scratch.makeFolder("src");
        scratch.makeFolder("dst");
    }
    Status paste(const QString& destination = "dst", bool interactive = true) {
        return clipboard.paste(scratch.path(destination), interactive, nullptr);
    }

    ScratchFolder scratch;
    FileClipboard clipboard;
};

TEST_F(FileClipboardTest, CopiesIntoTheSameFolderAreNumbered) {
    scratch.write("src/a.txt", "A");
    scratch.makeFolder("src/d/inner");
    clipboard.copy(scratch.folder("src"), {"..", "a.txt", "d"});
    EXPECT_EQ(clipboard.items(), QStringList({"a.txt", "d"}));

    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(paste("src"), Status::Done);
    }
    EXPECT_EQ(clipboard.pastedNames(), QStringList({"コピー(3) ～ a.txt", "コピー(3) ～ d"}));
    EXPECT_EQ(scratch.read("src/コピー ～ a.txt"), "A");
    EXPECT_EQ(scratch.read("src/コピー(2) ～ a.txt"), "A");
    EXPECT_TRUE(scratch.exists("src/コピー(3) ～ d/inner"));
}

TEST(FileClipboardLimitTest, CopyNamesStopAt4095) {
    const ScratchFolder scratch(testing::ManyEntriesBase());
    FileClipboard clipboard;
    const auto paste = [&](bool interactive) {
        return clipboard.paste(scratch.path("src"), interactive, nullptr);
    };
    scratch.write("src/a.txt");
    scratch.write("src/コピー ～ a.txt");
    for (int counter = 2; counter <= 4094; ++counter) {
        scratch.write(QStringLiteral("src/コピー(%1) ～ a.txt").arg(counter));
    }
    clipboard.copy(scratch.folder("src"), {"a.txt"});
    ASSERT_EQ(paste(true), Status::Done);
    EXPECT_EQ(clipboard.pastedNames(), QStringList("コピー(4095) ～ a.txt"));

    EXPECT_EQ(paste(false), Status::NameLimit);
    {
        ScriptedMessageService messages{Answer::Ok, Answer::Ok};
        EXPECT_EQ(paste(true), Status::Skipped);
        EXPECT_EQ(ShownTexts(messages),
                  QStringList({TextOf(msg::kCopyNameLimit, {scratch.path("src/a.txt")}),
                               TextOf(msg::kSomeSkipped)}));
    }
    EXPECT_FALSE(scratch.exists("src/コピー(4096) ～ a.txt"));
}

TEST_F(FileClipboardTest, CutIntoTheSameFolderDoesNothing) {
    scratch.write("src/a.txt", "A");
    clipboard.cut(scratch.folder("src"), {"a.txt"});
    EXPECT_EQ(paste("src"), Status::Done);
    EXPECT_EQ(scratch.names("src"), QStringList("a.txt"));
}

TEST_F(FileClipboardTest, FolderIntoItsOwnSubfolderIsRefused) {
    scratch.makeFolder("src/A/sub");
    scratch.makeFolder("src/AB");
    scratch.link("into-sub", scratch.path("src/A/sub"));
    clipboard.copy(scratch.folder("src"), {"A"});
    for (const QString destination : {"src/A/sub", "src/A", "into-sub"}) {
        ScriptedMessageService messages{Answer::Ok};
        EXPECT_EQ(paste(destination), Status::BadArgument) << destination.toStdString();
        EXPECT_EQ(ShownTexts(messages), QStringList(TextOf(msg::kSubfolderRefused)));
    }
    EXPECT_EQ(scratch.names("src/A/sub"), QStringList());
    // A name that merely begins like the folder is somewhere else.
    EXPECT_EQ(paste("src/AB"), Status::Done);
    EXPECT_TRUE(scratch.exists("src/AB/A/sub"));
}

TEST_F(FileClipboardTest, PasteMergesIntoAnExistingFolderAskingOnlyAboutFiles) {
    scratch.write("src/A/new.txt", "new");
    scratch.write("src/A/B/same.txt", "incoming");
    scratch.write("dst/A/old.txt", "old");
    scratch.write("dst/A/B/same.txt", "kept");
    clipboard.copy(scratch.folder("src"), {"A"});
    ScriptedMessageService messages{Answer::No, Answer::Ok};

    EXPECT_EQ(paste(), Status::Skipped);
    const QString conflict = scratch.path("dst/A/B/same.txt");
    EXPECT_EQ(ShownTexts(messages),
              QStringList({TextOf(msg::kFileOverwrite, {conflict}), TextOf(msg::kSomeSkipped)}));
    EXPECT_EQ(scratch.names("dst/A"), QStringList({"B", "new.txt", "old.txt"}));
    EXPECT_EQ(scratch.read("dst/A/B/same.txt"), "kept");
    EXPECT_EQ(clipboard.pastedNames(), QStringList("A"));
}

TEST_F(FileClipboardTest, AnswersToAnExistingFileSteerTheRun) {
    scratch.write("src/a.txt", "new");
    scratch.write("src/b.txt", "new");
    scratch.write("dst/a.txt", "old");
    clipboard.copy(scratch.folder("src"), {"a.txt", "b.txt"});

    EXPECT_EQ(paste("dst", false), Status::TargetExists);
    EXPECT_FALSE(scratch.exists("dst/b.txt"));
    {
        ScriptedMessageService messages{Answer::Cancel};
        EXPECT_EQ(paste(), Status::Cancelled);
        ASSERT_EQ(messages.shown().size(), 1);
        const ShownMessage& question = messages.shown().at(0);
        EXPECT_EQ(question.buttons, MessageButtons::YesNoCancel);
        EXPECT_EQ(question.icon, MessageIcon::Question);
        EXPECT_EQ(question.defaultButton, Answer::No);
        EXPECT_FALSE(scratch.exists("dst/b.txt"));
    }
    {
        ScriptedMessageService messages{Answer::Yes};
        EXPECT_EQ(paste(), Status::Done);
    }
    EXPECT_EQ(scratch.read("dst/a.txt"), "new");
    EXPECT_EQ(clipboard.pastedNames(), QStringList({"a.txt", "b.txt"}));
}

TEST_F(FileClipboardTest, ReadOnlyTargetsAreClearedOnlyWhenTheUserAgrees) {
    scratch.write("src/a.txt", "new");
    scratch.write("src/F/x.txt", "new");
    scratch.write("dst/a.txt", "old");
    scratch.makeFolder("dst/F");
    scratch.setReadOnly("dst/a.txt");
    scratch.setReadOnly("dst/F");
    clipboard.copy(scratch.folder("src"), {"a.txt", "F"});

    EXPECT_EQ(paste("dst", false), Status::ReadOnly);
    {
        ScriptedMessageService messages{Answer::No, Answer::Yes, Answer::Ok};
        EXPECT_EQ(paste(), Status::Skipped);
        EXPECT_EQ(ShownTexts(messages),
                  QStringList({TextOf(msg::kReadOnlyFileOverwrite, {scratch.path("dst/a.txt")}),
                               TextOf(msg::kReadOnlyFolderOverwrite, {scratch.path("dst/F")}),
                               TextOf(msg::kSomeSkipped)}));
    }
    EXPECT_EQ(scratch.read("dst/a.txt"), "old");
    EXPECT_EQ(scratch.read("dst/F/x.txt"), "new");
}

TEST_F(FileClipboardTest, AFileAndAFolderOfTheSameNameDoNotReplaceEachOther) {
    scratch.write("src/a");
    scratch.makeFolder("src/b");
    scratch.makeFolder("dst/a");
    scratch.write("dst/b", "file");
    clipboard.copy(scratch.folder("src"), {"a", "b"});

    EXPECT_EQ(paste("dst", false), Status::FolderInTheWay);
    ScriptedMessageService messages{Answer::Ok, Answer::Ok, Answer::Ok};
    EXPECT_EQ(paste(), Status::Skipped);
    EXPECT_EQ(ShownTexts(messages),
              QStringList({TextOf(msg::kFolderBlocksFile, {scratch.path("dst/a")}),
                           TextOf(msg::kFileBlocksFolder, {scratch.path("dst/b")}),
                           TextOf(msg::kSomeSkipped)}));
    EXPECT_TRUE(scratch.names("dst/a").isEmpty());
    EXPECT_EQ(scratch.read("dst/b"), "file");
}

TEST_F(FileClipboardTest, AVanishedSourceIsSkippedWithAQuestion) {
    scratch.write("src/gone.txt");
    scratch.write("src/here.txt");
    clipboard.copy(scratch.folder("src"), {"gone.txt", "here.txt"});
    QFile::remove(scratch.path("src/gone.txt"));

    EXPECT_EQ(paste("dst", false), Status::NotFound);
    EXPECT_TRUE(scratch.names("dst").isEmpty());

    ScriptedMessageService messages{Answer::Ok, Answer::Ok};
    EXPECT_EQ(paste(), Status::Skipped);
    EXPECT_EQ(ShownTexts(messages),
              QStringList({TextOf(msg::kSourceVanished, {scratch.path("src/gone.txt")}),
                           TextOf(msg::kSomeSkipped)}));
    EXPECT_EQ(messages.shown()[0].icon, MessageIcon::Question);
    EXPECT_EQ(clipboard.pastedNames(), QStringList("here.txt"));
}

TEST_F(FileClipboardTest, CutMovesFilesAndTreesAskingAboutReadOnlySources) {
    scratch.write("src/T/deep/x.txt", "x");
    scratch.write("src/locked.txt", "l");
    scratch.write("src/R/r.txt", "r");
    scratch.setReadOnly("src/locked.txt");
    scratch.setReadOnly("src/R");
    clipboard.cut(scratch.folder("src"), {"T", "locked.txt", "R"});
    ScriptedMessageService messages{Answer::No, Answer::Yes, Answer::Ok};

    EXPECT_EQ(paste(), Status::Skipped);
    EXPECT_EQ(ShownTexts(messages),
              QStringList({TextOf(msg::kReadOnlyFileMove, {scratch.path("src/locked.txt")}),
                           TextOf(msg::kReadOnlyFolderMove, {scratch.path("src/R")}),
                           TextOf(msg::kSomeSkipped)}));
    EXPECT_EQ(scratch.names("src"), QStringList("locked.txt"));
    EXPECT_EQ(scratch.read("dst/T/deep/x.txt"), "x");
    EXPECT_EQ(scratch.read("dst/R/r.txt"), "r");
    EXPECT_TRUE(scratch.isReadOnly("dst/R"));
    EXPECT_EQ(clipboard.pastedNames(), QStringList({"T", "R"}));
}

TEST_F(FileClipboardTest, CutMergeLeavesWhatWasNotMovedInTheSource) {
    scratch.write("src/A/moves.txt", "m");
    scratch.write("src/A/sub/stays.txt", "incoming");
    scratch.write("dst/A/sub/stays.txt", "kept");
    clipboard.cut(scratch.folder("src"), {"A"});
    ScriptedMessageService messages{Answer::No, Answer::Ok};

    EXPECT_EQ(paste(), Status::Skipped);
    EXPECT_EQ(scratch.names("src/A"), QStringList("sub"));
    EXPECT_EQ(scratch.read("src/A/sub/stays.txt"), "incoming");
    EXPECT_EQ(scratch.read("dst/A/moves.txt"), "m");
    EXPECT_EQ(scratch.read("dst/A/sub/stays.txt"), "kept");
}

TEST_F(FileClipboardTest, CopiedTreesKeepReadOnlyFoldersAndCopyLinksAsLinks) {
    scratch.write("outside/big.txt");
    scratch.write("src/R/r.txt", "r");
    scratch.link("src/R/shortcut", scratch.path("outside"));
    scratch.setReadOnly("src/R");
    clipboard.copy(scratch.folder("src"), {"R"});

    EXPECT_EQ(paste(), Status::Done);
    EXPECT_TRUE(scratch.isReadOnly("dst/R"));
    EXPECT_EQ(scratch.read("dst/R/r.txt"), "r");
    EXPECT_EQ(QFileInfo(scratch.path("dst/R/shortcut")).symLinkTarget(), scratch.path("outside"));
    EXPECT_TRUE(scratch.exists("src/R/r.txt"));
}

TEST_F(FileClipboardTest, PasteChecksItsArguments) {
    scratch.write("file");
    EXPECT_EQ(paste(), Status::BadArgument) << "nothing copied yet";
    clipboard.copy(scratch.folder("src"), {"x"});
    EXPECT_EQ(paste("missing"), Status::NotFound);
    EXPECT_EQ(paste("file"), Status::NotAFolder);
    EXPECT_EQ(clipboard.paste("dst", true, nullptr), Status::BadArgument);
}

} // namespace
} // namespace korvel
