#include "fileops/FileClipboard.h"
#include "fileops/FileOperations.h"
#include "fileops/FileSystem.h"
#include "support/ScratchFolder.h"

#include <random>

namespace korvel {
namespace {

using testing::ScratchFolder;
using Answer = MessageAnswer;
using Status = FileOpStatus;
namespace msg = fileops_message;
using Boxes = QList<std::pair<FileOpMessage, const char*>>; // each with the path it names

// Makes entries from lines: "a/b.txt=text" a file, "a/" a folder, "a->b" a link holding "b"; a
// trailing "!" makes the entry read-only once everything is in place.
void MakeTree(const ScratchFolder& scratch, const QStringList& lines) {
    QStringList locked;
    for (QString line : lines) {
        if (line.endsWith(u'!')) {
            line.chop(1);
            locked.prepend(line.section(u'=', 0, 0).section("->", 0, 0));
        }
        if (line.contains(u'>'))
            scratch.link(line.section("->", 0, 0), line.section("->", 1));
        else if (line.endsWith(u'/'))
            scratch.makeFolder(line);
        else
            scratch.write(line.section(u'=', 0, 0), line.section(u'=', 1).toUtf8());
    }
    for (const QString& entry : locked)
        scratch.setReadOnly(entry);
}

// The lines MakeTree takes for what is under a folder, sorted: a folder has one only when it is
// empty or read-only, and a file longer than 16 bytes shows its size and hash.
QStringList TreeOf(const ScratchFolder& scratch, const QString& relative = {}) {
    const QString base = scratch.path(relative);
    QStringList lines;
    QDirIterator it(base, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        QString line = info.filePath().mid(base.size() + 1);
        const bool locked = !info.isSymLink() && !(info.permissions() & QFile::WriteOwner);
        QFile file(info.filePath());
        if (info.isSymLink()) {
            char target[4096];
            const ssize_t length =
                ::readlink(QFile::encodeName(info.filePath()).constData(), target, sizeof target);
            line += "->" + QFile::decodeName(QByteArray(target, qMax<ssize_t>(length, 0)));
        } else if (info.isDir() && !locked && !QDir(info.filePath()).isEmpty()) {
            continue;
        } else if (info.isDir()) {
            line += u'/';
        } else if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            line += u'=' + (bytes.size() <= 16
                                ? QString(bytes)
                                : QStringLiteral("%1#%2").arg(bytes.size()).arg(qHash(bytes)));
        }
        lines.append(locked ? line + u'!' : line);
    }
    lines.sort();
    return lines;
}

// What a later snapshot took from an earlier one ("-"), then what it added ("+").
QStringList Changes(const QStringList& was, const QStringList& now) {
    QStringList changes;
    for (const QString& line : was)
        if (!now.contains(line))
            changes.append(u'-' + line);
    for (const QString& line : now)
        if (!was.contains(line))
            changes.append(u'+' + line);
    return changes;
}

// Runs an operation against scripted answers; the texts it showed must be those of the boxes.
void ExpectBoxes(const ScratchFolder& scratch, const QList<Answer>& answers, const Boxes& boxes,
                 const std::function<void()>& operation) {
    ScriptedMessageService messages;
    for (const Answer answer : answers)
        messages.script({answer});
    operation();
    // A question defaults to the answer that changes nothing.
    for (const ShownMessage& box : messages.shown())
        EXPECT_TRUE(box.buttons == MessageButtons::Ok || box.buttons == MessageButtons::OkCancel ||
                    box.defaultButton == Answer::No);
    QStringList texts;
    for (const auto& [message, path] : boxes)
        texts.append(
            testing::TextOf(message, path ? QStringList{scratch.path(path)} : QStringList{}));
    EXPECT_EQ(testing::ShownTexts(messages), texts);
}

// Each paste starts from the entries before and an empty "dst"; what it adds to them ("+") and
// takes from them ("-") must be exactly the changes.
TEST(FileClipboard, PastesChangeTheTreeAsTheAnswersSay) {
    // What it must not do; entries before; cut; items from "src"; destination; answers; status;
    // boxes; changes; names pasted.
    // clang-format off
    const std::tuple<const char*, QStringList, bool, QStringList, const char*, QList<Answer>, Status,
                     Boxes, QStringList, QStringList> rows[] = {
        {"copies beside the originals overwrite them or reuse a number; '..' is pasted", {"src/a.txt=A", "src/コピー ～ a.txt=1", "src/コピー(2) ～ a.txt=2", "src/d/in/"},
         false, {"..", "a.txt", "d"}, "src", {}, Status::Done, {}, {"+src/コピー ～ d/in/", "+src/コピー(3) ～ a.txt=A"}, {"コピー(3) ～ a.txt", "コピー ～ d"}},
        {"a cut into its own folder deletes or renames the originals", {"src/a.txt=A"}, true, {"a.txt"}, "src", {}, Status::Done, {}, {}, {}},
        {"a folder is pasted into itself without end", {"src/A/sub/", "in->src/A/sub"}, false, {"A"}, "in", {Answer::Ok}, Status::BadArgument,
         {{msg::kSubfolderRefused, nullptr}}, {}, {}},
        {"a merge asks about folders, or overwrites a file answered No", {"src/A/new.txt=n", "src/A/B/same.txt=in", "dst/A/old.txt=old", "dst/A/B/same.txt=kept"},
         false, {"A"}, "dst", {Answer::No, Answer::Ok}, Status::Skipped, {{msg::kFileOverwrite, "dst/A/B/same.txt"}, {msg::kSomeSkipped, nullptr}}, {"+dst/A/new.txt=n"}, {"A"}},
        {"Cancel does not end the run", {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, false, {"a.txt", "b.txt"}, "dst", {Answer::Cancel}, Status::Cancelled,
         {{msg::kFileOverwrite, "dst/a.txt"}}, {}, {}},
        {"Yes keeps the old file", {"src/a.txt=new", "src/b.txt=new", "dst/a.txt=old"}, false, {"a.txt", "b.txt"}, "dst", {Answer::Yes}, Status::Done,
         {{msg::kFileOverwrite, "dst/a.txt"}}, {"-dst/a.txt=old", "+dst/a.txt=new", "+dst/b.txt=new"}, {"a.txt", "b.txt"}},
        {"a read-only target is replaced against a No, or a folder kept locked after a Yes", {"src/a.txt=new", "src/F/x.txt=new", "dst/a.txt=old!", "dst/F/!"},
         false, {"a.txt", "F"}, "dst", {Answer::No, Answer::Yes, Answer::Ok}, Status::Skipped,
         {{msg::kReadOnlyFileOverwrite, "dst/a.txt"}, {msg::kReadOnlyFolderOverwrite, "dst/F"}, {msg::kSomeSkipped, nullptr}}, {"-dst/F/!", "+dst/F/x.txt=new"}, {"F"}},
        {"a file replaces a folder of its name, or a folder a file", {"src/a", "src/b/", "dst/a/", "dst/b=file"}, false, {"a", "b"}, "dst",
         {Answer::Ok, Answer::Ok, Answer::Ok}, Status::Skipped, {{msg::kFolderBlocksFile, "dst/a"}, {msg::kFileBlocksFolder, "dst/b"}, {msg::kSomeSkipped, nullptr}}, {}, {}},
        {"a source gone since the copy is pasted as nothing, or Cancel goes on", {"src/here.txt=h"}, false, {"gone.txt", "here.txt"}, "dst", {Answer::Cancel},
         Status::Cancelled, {{msg::kSourceVanished, "src/gone.txt"}}, {}, {}},
        {"a cut moves read-only sources unasked, or loses a read-only folder's mark", {"src/T/deep/x.txt=x", "src/locked.txt=l!", "src/R/r.txt=r", "src/R/!"},
         true, {"T", "locked.txt", "R"}, "dst", {Answer::No, Answer::Yes, Answer::Ok}, Status::Skipped,
         {{msg::kReadOnlyFileMove, "src/locked.txt"}, {msg::kReadOnlyFolderMove, "src/R"}, {msg::kSomeSkipped, nullptr}},
         {"-dst/", "-src/R/!", "-src/R/r.txt=r", "-src/T/deep/x.txt=x", "+dst/R/!", "+dst/R/r.txt=r", "+dst/T/deep/x.txt=x"}, {"T", "R"}},
        {"Cancel inside a folder does not end the run", {"src/A/x.txt=new", "src/b.txt=b", "dst/A/x.txt=old"}, false, {"A", "b.txt"}, "dst", {Answer::Cancel},
         Status::Cancelled, {{msg::kFileOverwrite, "dst/A/x.txt"}}, {}, {"A"}},
        {"a cut merge deletes what it could not move", {"src/A/moves.txt=m", "src/A/sub/stays.txt=in", "dst/A/sub/stays.txt=kept"}, true, {"A"}, "dst",
         {Answer::No, Answer::Ok}, Status::Skipped, {{msg::kFileOverwrite, "dst/A/sub/stays.txt"}, {msg::kSomeSkipped, nullptr}}, {"-src/A/moves.txt=m", "+dst/A/moves.txt=m"}, {"A"}},
    };
    // clang-format on
    for (auto [fault, before, cut, items, to, answers, status, boxes, changes, pasted] : rows) {
        SCOPED_TRACE(fault);
        ScratchFolder scratch;
        MakeTree(scratch, before + QStringList{"dst/"});
        const QStringList was = TreeOf(scratch);
        FileClipboard clipboard;
        cut ? clipboard.cut(scratch.folder("src"), items)
            : clipboard.copy(scratch.folder("src"), items);
        ExpectBoxes(scratch, answers, boxes,
                    [&] { EXPECT_EQ(clipboard.paste(scratch.path(to), true, nullptr), status); });
        EXPECT_EQ(Changes(was, TreeOf(scratch)), changes);
        EXPECT_EQ(clipboard.pastedNames(), pasted);
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

// Random read-only trees of folders, files of sizes around the copy buffer's, and a link:
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
        scratch.makeFolder("elsewhere");
        scratch.link(folders.back() + QStringLiteral("/link"), scratch.path("elsewhere"));
        scratch.setReadOnly("src/T");
        const QStringList source = TreeOf(scratch, "src");

        FileClipboard clipboard;
        clipboard.copy(scratch.folder("src"), {"T"});
        scratch.makeFolder("dst");
        ASSERT_EQ(clipboard.paste(scratch.path("dst"), false, nullptr), Status::Done);
        EXPECT_EQ(TreeOf(scratch, "dst"), source);
        clipboard.cut(scratch.folder("src"), {"T"});
        ScriptedMessageService messages{Answer::Yes}; // moving a read-only folder
        ASSERT_EQ(clipboard.paste(other.path(), true, nullptr), Status::Done);
        EXPECT_EQ(TreeOf(other), source);
        EXPECT_TRUE(scratch.names("src").isEmpty());
    }
}

enum class Call { Rows, Folder, Tree };

TEST(Delete, LeavesTheTreeAsTheAnswersSay) {
    // What it must not do; entries before; the call; its rows or its one path; answers; status;
    // boxes; entries after; rows deleted.
    // clang-format off
    const std::tuple<const char*, QStringList, Call, QStringList, QList<Answer>, Status, Boxes, QStringList, QStringList> rows[] = {
        {"a No deletes", {"a.txt", "keep.txt"}, Call::Rows, {"a.txt"}, {Answer::No}, Status::Skipped, {{msg::kDeleteSelection, nullptr}}, {"a.txt=", "keep.txt="}, {}},
        {"rows go first to last, or '..' with them", {"a.txt", "F/in/b.txt", "keep.txt"}, Call::Rows, {"..", "a.txt", "F"}, {Answer::Yes}, Status::Done,
         {{msg::kDeleteSelection, nullptr}}, {"keep.txt="}, {"F", "a.txt"}},
        {"a read-only file answered No goes, or takes its folder's other entries along", {"F/locked.txt!", "F/other.txt", "F/sub/more.txt"}, Call::Rows, {"F"},
         {Answer::Yes, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteSelection, nullptr}, {msg::kReadOnlyForceDelete, "F/locked.txt"}, {msg::kSomeSkipped, nullptr}}, {"F/locked.txt=!"}, {}},
        {"a read-only or vanished row ends the walk", {"1.txt", "2.txt!", "3.txt"}, Call::Rows, {"1.txt", "2.txt", "gone.txt", "3.txt"},
         {Answer::Yes, Answer::Ok, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteSelection, nullptr}, {msg::kVanishedEntry, "gone.txt"}, {msg::kReadOnlyEntryDelete, "2.txt"}, {msg::kSomeSkipped, nullptr}}, {"2.txt=!"}, {"3.txt", "1.txt"}},
        {"Cancel goes on", {"1.txt", "2.txt!"}, Call::Rows, {"1.txt", "2.txt"}, {Answer::Yes, Answer::Cancel}, Status::Cancelled,
         {{msg::kDeleteSelection, nullptr}, {msg::kReadOnlyEntryDelete, "2.txt"}}, {"1.txt=", "2.txt=!"}, {}},
        {"a link's target is deleted with the tree", {"out/keep=k", "F/", "F/link->../out"}, Call::Tree, {"F"}, {}, Status::Done, {}, {"out/keep=k"}, {}},
        {"a folder goes against a No", {"F/locked.txt!", "F/other.txt"}, Call::Folder, {"F/"}, {Answer::No}, Status::Skipped, {{msg::kDeleteFolder, "F"}},
         {"F/locked.txt=!", "F/other.txt="}, {}},
        {"what stays of a folder goes unreported", {"F/locked.txt!", "F/other.txt"}, Call::Folder, {"F/"}, {Answer::Yes, Answer::No, Answer::Ok}, Status::Skipped,
         {{msg::kDeleteFolder, "F"}, {msg::kReadOnlyForceDelete, "F/locked.txt"}, {msg::kSomeSkipped, nullptr}}, {"F/locked.txt=!"}, {}},
        {"a folder with a read-only file stays", {"F/locked.txt!"}, Call::Folder, {"F/"}, {Answer::Yes, Answer::Yes}, Status::Done,
         {{msg::kDeleteFolder, "F"}, {msg::kReadOnlyForceDelete, "F/locked.txt"}}, {}, {}},
        {"a folder gone meanwhile passes for deleted", {}, Call::Folder, {"F/"}, {Answer::Yes, Answer::Ok}, Status::NotFound,
         {{msg::kDeleteFolder, "F"}, {msg::kFolderDeleteFailed, nullptr}}, {}, {}},
    };
    // clang-format on
    for (const auto& [fault, before, call, names, answers, status, boxes, after, deleted] : rows) {
        SCOPED_TRACE(fault);
        ScratchFolder scratch;
        MakeTree(scratch, before);
        const QString path = scratch.path(names.front());
        DeleteOutcome outcome;
        ExpectBoxes(scratch, answers, boxes, [&] {
            if (call == Call::Rows)
                outcome = DeleteEntries(scratch.path(), names, nullptr);
            else
                outcome.status = call == Call::Folder ? DeleteFolder(path, nullptr)
                                                      : DeleteTree(path, true, nullptr);
        });
        EXPECT_EQ(std::tuple(outcome.status, outcome.deleted, TreeOf(scratch)),
                  std::tuple(status, deleted, after));
    }
    // The root is never deleted, and a path must be absolute.
    EXPECT_EQ(DeleteFolder("/", nullptr), Status::BadArgument);
    EXPECT_EQ(DeleteTree(QString(), true, nullptr), Status::BadArgument);
}

TEST(CreateNewFolder, TakesTheFirstFreeNumberUpTo4095) {
    const ScratchFolder scratch(testing::ManyEntriesBase());
    const ScriptedMessageService unexpected; // fails the test on any box not scripted below
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    EXPECT_EQ(CreateNewFolder(scratch.folder(), nullptr).name, "新規フォルダ(2)");
    QDir().rmdir(scratch.path("新規フォルダ(1)"));
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(1)");
    for (int number = 3; number <= 4094; ++number)
        scratch.makeFolder(QStringLiteral("新規フォルダ(%1)").arg(number));
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).name, "新規フォルダ(4095)");
    ScriptedMessageService messages{Answer::Ok, Answer::Ok};
    EXPECT_EQ(CreateNewFolder(scratch.path(), nullptr).status, Status::NameLimit);
    EXPECT_EQ(CreateNewFolder(scratch.path("missing"), nullptr).status, Status::Failed);
    EXPECT_EQ(messages.shownIds(), QList<int>({30506, 30504}));
}

TEST(RenameFolder, RefusesBadAndTakenNamesAndMovesToTheTrimmedOne) {
    ScratchFolder scratch;
    const ScriptedMessageService unexpected; // fails the test on any box not scripted below
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

// A copy replaces the target in one step with the source's bytes, mode and time; a failed one
// leaves it as it was, and a pipe is never waited on.
TEST(FileSystem, CopyReplacesTheTargetWholeOrNotAtAll) {
    ScratchFolder scratch;
    MakeTree(scratch, {"source", "target=old", "folder/"});
    scratch.writeSized("source", 200000);
    const QDateTime past = QDateTime::fromString("2006-03-14T09:05:01.250", Qt::ISODateWithMs);
    scratch.setModified("source", past);
    scratch.setReadOnly("source");
    ASSERT_EQ(::mkfifo(QFile::encodeName(scratch.path("pipe")).constData(), 0600), 0);
    for (const char* source : {"missing", "folder", "pipe"})
        EXPECT_NE(files::CopyFile(scratch.path(source), scratch.path("target")), Status::Done);
    EXPECT_EQ(scratch.read("target"), "old");

    ASSERT_EQ(files::CopyFile(scratch.path("source"), scratch.path("target")), Status::Done);
    EXPECT_EQ(scratch.read("target"), QByteArray(200000, '\0'));
    EXPECT_TRUE(files::IsReadOnly(scratch.path("target")));
    EXPECT_EQ(QFileInfo(scratch.path("target")).lastModified(), past);
    EXPECT_EQ(scratch.names(), QStringList({"folder", "pipe", "source", "target"}));
}

// A rename never replaces an entry, not even an empty folder (whether folders are the same or one
// within another, by what their paths lead to, is the paste rows').
TEST(FileSystem, ARenameNeverReplaces) {
    ScratchFolder scratch;
    MakeTree(scratch, {"ab/", "one=1", "two/x=2"});
    EXPECT_EQ(files::RenameEntry(scratch.path("one"), scratch.path("ab")),
              files::RenameResult::Failed);
    EXPECT_EQ(files::RenameEntry(scratch.path("two"), scratch.path("ab")),
              files::RenameResult::Failed);
    EXPECT_EQ(TreeOf(scratch), QStringList({"ab/", "one=1", "two/x=2"}));
}

TEST(FileSystem, TheParentFolderEndsInOneSlashAndTheRootIsItsOwn) {
    const std::pair<QString, QString> cases[] = {
        {"/a/b/", "/a/"}, {"/a/b//", "/a/"}, {"/a/b", "/a/"}, {"/a", "/"}, {"/", "/"}};
    for (const auto& [path, parent] : cases)
        EXPECT_EQ(files::ParentFolderOf(path), parent) << path.toStdString();
}

} // namespace
} // namespace korvel
