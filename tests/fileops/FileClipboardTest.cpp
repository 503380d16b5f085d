#include "fileops/FileClipboard.h"

#include "FileTree.h"

#include <random>

namespace korvel {
namespace {

using testing::ScratchFolder;
using testing::ShownTexts;
using testing::TextOf;
using Answer = MessageAnswer;
using Status = FileOpStatus;
namespace msg = fileops_message;

// The prompt every file operation asks through (the service refuses an answer its box lacks):
// Yes goes on, No skips, Cancel stops, No is the default; a run that asks nothing reports nothing.
TEST(FileOpPrompt, AnswersMapToStatusesWithNoAsTheDefault) {
    const FileOpPrompt prompt(true, nullptr);
    ScriptedMessageService messages{Answer::Yes, Answer::No, Answer::Cancel,
                                    Answer::Yes, Answer::No, Answer::Cancel};
    for (const Status status : {Status::Done, Status::Skipped, Status::Cancelled})
        EXPECT_EQ(prompt.confirm(msg::kFileOverwrite, {"x"}), status);
    EXPECT_TRUE(prompt.agrees(msg::kDeleteSelection, {}));
    EXPECT_FALSE(prompt.agrees(msg::kDeleteSelection, {}));
    EXPECT_EQ(prompt.report(msg::kSomeSkipped, {}, Status::Failed), Status::Cancelled);
    for (const ShownMessage& box : messages.shown().first(5))
        EXPECT_EQ(box.defaultButton, Answer::No);
    EXPECT_EQ(FileOpPrompt(false, nullptr).report(msg::kSomeSkipped, {}, Status::Failed),
              Status::Failed);
}

struct PasteCase {
    const char* fault; // what a wrong paste would do
    QStringList before;
    bool cut;
    QStringList items; // from "src"
    const char* destination;
    bool asks;
    QList<Answer> answers;
    Status status;
    QList<std::pair<FileOpMessage, const char*>> shown; // with the path they name
    QStringList after;
    QStringList pasted;
};

// Each paste starts from the entries before, into an empty "dst", and must leave exactly the
// entries after.
TEST(FileClipboard, PastesLeaveTheTreeAsTheAnswersSay) {
    // clang-format off
    const PasteCase rows[] = {
        {"copies beside the originals overwrite them or reuse a number; '..' is pasted",
         {"src/a.txt=A", "src/コピー ～ a.txt=1", "src/コピー(2) ～ a.txt=2", "src/d/in/"},
         false, {"..", "a.txt", "d"}, "src", true, {}, Status::Done, {},
         {"dst/", "src/a.txt=A", "src/コピー ～ a.txt=1", "src/コピー(2) ～ a.txt=2",
          "src/コピー(3) ～ a.txt=A", "src/d/in/", "src/コピー ～ d/in/"},
         {"コピー(3) ～ a.txt", "コピー ～ d"}},
        {"a cut into its own folder deletes or renames the originals",
         {"src/a.txt=A"}, true, {"a.txt"}, "src", true, {}, Status::Done, {},
         {"dst/", "src/a.txt=A"}, {}},
        {"a folder is pasted into itself without end",
         {"src/A/sub/", "in->src/A/sub"}, false, {"A"}, "in", true, {Answer::Ok},
         Status::BadArgument, {{msg::kSubfolderRefused, nullptr}},
         {"dst/", "src/A/sub/", "in->src/A/sub"}, {}},
        {"a merge asks about folders, or overwrites a file answered No",
         {"src/A/new.txt=new", "src/A/B/same.txt=in", "dst/A/old.txt=old", "dst/A/B/same.txt=kept"},
         false, {"A"}, "dst", true, {Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kFileOverwrite, "dst/A/B/same.txt"}, {msg::kSomeSkipped, nullptr}},
         {"src/A/new.txt=new", "src/A/B/same.txt=in", "dst/A/old.txt=old",
          "dst/A/B/same.txt=kept", "dst/A/new.txt=new"}, {"A"}},
        {"a run that asks nothing overwrites, or goes on after a conflict",
         {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, false, {"a.txt", "b.txt"}, "dst",
         false, {}, Status::TargetExists, {}, {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, {}},
        {"Cancel does not end the run",
         {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, false, {"a.txt", "b.txt"}, "dst",
         true, {Answer::Cancel}, Status::Cancelled, {{msg::kFileOverwrite, "dst/a.txt"}},
         {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, {}},
        {"Yes keeps the old file",
         {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, false, {"a.txt", "b.txt"}, "dst",
         true, {Answer::Yes}, Status::Done, {{msg::kFileOverwrite, "dst/a.txt"}},
         {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=new", "dst/b.txt=new"}, {"a.txt", "b.txt"}},
        {"read-only targets are overwritten without asking",
         {"src/a.txt=new", "dst/a.txt=old!"}, false, {"a.txt"}, "dst", false, {}, Status::ReadOnly,
         {}, {"src/a.txt=new", "dst/a.txt=old!"}, {}},
        {"a read-only target is replaced against a No, or a folder kept locked after a Yes",
         {"src/a.txt=new", "src/F/x.txt=new", "dst/a.txt=old!", "dst/F/!"}, false, {"a.txt", "F"},
         "dst", true, {Answer::No, Answer::Yes, Answer::Ok}, Status::Skipped,
         {{msg::kReadOnlyFileOverwrite, "dst/a.txt"}, {msg::kReadOnlyFolderOverwrite, "dst/F"},
          {msg::kSomeSkipped, nullptr}},
         {"src/a.txt=new", "src/F/x.txt=new", "dst/a.txt=old!", "dst/F/x.txt=new"}, {"F"}},
        {"a file replaces a folder of its name, or a folder a file",
         {"src/a", "src/b/", "dst/a/", "dst/b=file"}, false, {"a", "b"}, "dst", true,
         {Answer::Ok, Answer::Ok, Answer::Ok}, Status::Skipped,
         {{msg::kFolderBlocksFile, "dst/a"}, {msg::kFileBlocksFolder, "dst/b"},
          {msg::kSomeSkipped, nullptr}},
         {"src/a=", "src/b/", "dst/a/", "dst/b=file"}, {}},
        {"the same without questions",
         {"src/a", "dst/a/"}, false, {"a"}, "dst", false, {}, Status::FolderInTheWay, {},
         {"src/a=", "dst/a/"}, {}},
        {"a source gone since the copy stops the run or is pasted as nothing",
         {"src/here.txt=h"}, false, {"gone.txt", "here.txt"}, "dst", true, {Answer::Ok, Answer::Ok},
         Status::Skipped, {{msg::kSourceVanished, "src/gone.txt"}, {msg::kSomeSkipped, nullptr}},
         {"src/here.txt=h", "dst/here.txt=h"}, {"here.txt"}},
        {"the same without questions goes on",
         {"src/here.txt=h"}, false, {"gone.txt", "here.txt"}, "dst", false, {}, Status::NotFound,
         {}, {"src/here.txt=h", "dst/"}, {}},
        {"a cut moves read-only sources unasked, or loses a read-only folder's mark",
         {"src/T/deep/x.txt=x", "src/locked.txt=l!", "src/R/r.txt=r", "src/R/!"}, true,
         {"T", "locked.txt", "R"}, "dst", true, {Answer::No, Answer::Yes, Answer::Ok},
         Status::Skipped, {{msg::kReadOnlyFileMove, "src/locked.txt"},
                           {msg::kReadOnlyFolderMove, "src/R"}, {msg::kSomeSkipped, nullptr}},
         {"src/locked.txt=l!", "dst/T/deep/x.txt=x", "dst/R/r.txt=r", "dst/R/!"}, {"T", "R"}},
        {"a cut merge deletes what it could not move",
         {"src/A/moves.txt=m", "src/A/sub/stays.txt=in", "dst/A/sub/stays.txt=kept"}, true, {"A"},
         "dst", true, {Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kFileOverwrite, "dst/A/sub/stays.txt"}, {msg::kSomeSkipped, nullptr}},
         {"src/A/sub/stays.txt=in", "dst/A/moves.txt=m", "dst/A/sub/stays.txt=kept"}, {"A"}},
    };
    // clang-format on
    for (const PasteCase& row : rows) {
        SCOPED_TRACE(row.fault);
        ScratchFolder scratch;
        MakeTree(scratch, row.before + QStringList{"dst/"});
        FileClipboard clipboard;
        if (row.cut)
            clipboard.cut(scratch.folder("src"), row.items);
        else
            clipboard.copy(scratch.folder("src"), row.items);
        ScriptedMessageService messages;
        for (const Answer answer : row.answers)
            messages.script({answer});
        EXPECT_EQ(clipboard.paste(scratch.path(row.destination), row.asks, nullptr), row.status);
        QStringList texts;
        for (const auto& [message, path] : row.shown)
            texts.append(path != nullptr ? TextOf(message, {scratch.path(path)}) : TextOf(message));
        EXPECT_EQ(ShownTexts(messages), texts);
        EXPECT_EQ(TreeOf(scratch), testing::Sorted(row.after));
        EXPECT_EQ(clipboard.pastedNames(), row.pasted);
    }
}

TEST(FileClipboard, CopyNumbersStopAt4095) {
    const ScratchFolder scratch(testing::ManyEntriesBase());
    scratch.write("a.txt");
    scratch.write("コピー ～ a.txt");
    for (int counter = 2; counter <= 4094; ++counter)
        scratch.write(QStringLiteral("コピー(%1) ～ a.txt").arg(counter));
    FileClipboard clipboard;
    clipboard.copy(scratch.folder(), {"a.txt"});
    ASSERT_EQ(clipboard.paste(scratch.path(), true, nullptr), Status::Done);
    EXPECT_EQ(clipboard.pastedNames(), QStringList("コピー(4095) ～ a.txt"));
    EXPECT_EQ(clipboard.paste(scratch.path(), false, nullptr), Status::NameLimit);
    ScriptedMessageService messages{Answer::Ok, Answer::Ok};
    EXPECT_EQ(clipboard.paste(scratch.path(), true, nullptr), Status::Skipped);
    EXPECT_EQ(messages.shownIds().size(), 2);
    EXPECT_FALSE(scratch.exists("コピー(4096) ～ a.txt"));
}

TEST(FileClipboard, PasteChecksItsArguments) {
    ScratchFolder scratch;
    scratch.write("file");
    FileClipboard clipboard;
    EXPECT_EQ(clipboard.paste(scratch.path(), false, nullptr), Status::BadArgument);
    clipboard.copy(scratch.folder(), {"x"});
    EXPECT_EQ(clipboard.paste(scratch.path("missing"), false, nullptr), Status::NotFound);
    EXPECT_EQ(clipboard.paste(scratch.path("file"), false, nullptr), Status::NotAFolder);
    EXPECT_EQ(clipboard.paste("relative", false, nullptr), Status::BadArgument);
}

// Random trees of folders (one read-only), files of sizes around the copy buffer's, and a link:
// a copy is equal to its source, and a cut, to another file system when there is one, leaves
// what the source was and no source.
TEST(FileClipboard, RandomTreesArriveWhole) {
    std::mt19937 random(20250611);
    const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        ScratchFolder scratch;
        const ScratchFolder other(testing::ManyEntriesBase());
        QStringList folders{"src/T"};
        for (int i = 0; i < 12; ++i) {
            const QString parent = folders[pick(int(folders.size()))];
            const QString name = parent + QStringLiteral("/e%1").arg(i);
            if (pick(3) == 0) {
                folders.append(name);
                scratch.makeFolder(name);
                continue;
            }
            QByteArray bytes(qsizetype(pick(4) == 0 ? 65536 + pick(3) - 1 : pick(70000)), '\0');
            for (char& byte : bytes)
                byte = char(random());
            scratch.write(name, bytes);
        }
        scratch.link(folders.back() + QStringLiteral("/link"), QStringLiteral("/dev/null"));
        scratch.setReadOnly(folders[pick(int(folders.size()))]);
        const QStringList source = TreeOf(scratch, "src/T");

        FileClipboard clipboard;
        clipboard.copy(scratch.folder("src"), {"T"});
        scratch.makeFolder("dst");
        ASSERT_EQ(clipboard.paste(scratch.path("dst"), false, nullptr), Status::Done);
        EXPECT_EQ(TreeOf(scratch, "dst/T"), source);
        clipboard.cut(scratch.folder("src"), {"T"});
        ScriptedMessageService messages{Answer::Yes}; // moving the read-only folder
        ASSERT_EQ(clipboard.paste(other.path(), true, nullptr), Status::Done);
        EXPECT_EQ(TreeOf(other, "T"), source);
        EXPECT_TRUE(scratch.names("src").isEmpty());
    }
}

} // namespace
} // namespace korvel
