#include "document/DocumentFiles.h"

#include "TestInputs.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/ScratchFolder.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace korvel {
namespace {

using testing::Hex;
using testing::ScratchFolder;
using enum TextEncoding;

// Kanji, kana, half-width katakana, symbols and ASCII: every code set carries all of it, JIS when
// half-width katakana are kept.
constexpr std::u16string_view kJapaneseText =
    u"日本語のテキスト、“記号”と全角ＡＢＣ。\r\nｶﾀｶﾅ and ASCII 123\r\n\r\n末尾の行";

// The code set with its mark, the line ending and the katakana mode reach the file, and detection
// sees them. A Unicode CR LF file's text views into the bytes read and must survive the document
// being moved. A chosen code set wins over detection. A read-only file is saved once the user says
// Yes (the default button, as the box asks with none of its own): the owner gets write permission
// and keeps the other bits; through a link the target gets it and the link stays a link.
TEST(DocumentFiles, SavedFileLoadsBackAsSaved) {
    ScratchFolder scratch;
    ASSERT_TRUE(scratch.shell("echo old >target && chmod 454 target && ln -s target f"));
    const QString path = scratch.path(QStringLiteral("f"));
    ScriptedMessageService messages{MessageAnswer::Yes};
    for (const auto& [encoding, lineEnding] :
         {std::pair{Unicode, LineEnding::CrLf}, {Jis, LineEnding::Cr}, {Utf8, LineEnding::Lf}}) {
        ASSERT_TRUE(SaveDocumentFile(path, kJapaneseText, encoding, lineEnding, 1, nullptr));
        std::optional<LoadedDocument> loaded = LoadDocumentFile(path, AutoDetect, nullptr);
        ASSERT_TRUE(loaded);
        const LoadedDocument document = std::move(*loaded);
        loaded.reset();
        EXPECT_EQ(document.encoding, encoding);
        EXPECT_EQ(document.lineEnding, lineEnding);
        EXPECT_TRUE(document.text == kJapaneseText) << Hex(document.text);
    }
    // The last file has a UTF-8 mark, which a chosen UTF-8N reads as a character.
    const std::optional<LoadedDocument> chosen = LoadDocumentFile(path, Utf8N, nullptr);
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->encoding, Utf8N);
    EXPECT_EQ(Hex(chosen->text.substr(0, 2)), Hex(u"\uFEFF日"));

    ASSERT_EQ(messages.shownIds(), QList<int>{33002});
    EXPECT_EQ(messages.shown().front().buttons, MessageButtons::YesNo);
    EXPECT_EQ(messages.shown().front().defaultButton, MessageAnswer::Yes);
    EXPECT_EQ(testing::StatusOf(scratch.path(QStringLiteral("target"))).st_mode & 07777, 0654u);
    EXPECT_TRUE(QFileInfo(path).isSymLink());
}

TEST(ExaminePath, FollowsLinksAndCallsWhatCannotBeFoundMissing) {
    ScratchFolder scratch;
    ASSERT_TRUE(scratch.shell("touch file.txt && mkdir folder && ln -s folder to-folder && "
                              "ln -s gone dangling"));
    const std::pair<const char*, PathKind> rows[] = {
        {"file.txt", PathKind::File},    {"folder/", PathKind::Folder},
        {"to-folder", PathKind::Folder}, {"dangling", PathKind::Missing},
        {"none.txt", PathKind::Missing}, {"file.txt/below", PathKind::Missing},
    };
    for (const auto& [name, kind] : rows) {
        EXPECT_EQ(ExaminePath(scratch.path(QString::fromLatin1(name))), kind) << name;
    }
}

// Each row's folder starts with f holding "old bytes", and a shell command makes the rest.
struct Failure {
    const char* name;
    bool save;
    const char* make;
    const char* path;
    QList<int> boxes;
    MessageAnswer readOnlyAnswer = MessageAnswer::Yes;
    bool diskFull = false;
};

const Failure kFailures[] = {
    {"LoadMissing", false, ":", "none.txt", {33000}},
    // Opening a pipe for reading would wait for a writer forever.
    {"LoadPipe", false, "mkfifo pipe", "pipe", {33000}},
    // Opens like a file, but reading from its start fails: nothing is mapped at address 0.
    {"LoadReadFails", false, ":", "/proc/self/mem", {33003}},
    {"SaveFolder", true, "mkdir d", "d", {33001}},
    {"SavePipe", true, "mkfifo pipe", "pipe", {33003}},
    {"SaveDiskFull", true, ":", "f", {33003}, MessageAnswer::Yes, true},
    {"SaveReadOnlyRefused", true, "chmod 444 f", "f", {33002}, MessageAnswer::No},
    {"SaveReadOnlyDiskFull", true, "chmod 444 f", "f", {33002, 33003}, MessageAnswer::Yes, true},
    // The files of /proc refuse every change of permissions, root's too.
    {"SaveReadOnlyPermissionNotAdded", true, ":", "/proc/self/cmdline", {33002, 40001}},
};

// A load or save that does not happen shows its boxes (a load's on top, each naming the path) and
// leaves the folder as it was: a read-only file stays read-only whatever went wrong after the user
// agreed to write it.
TEST(DocumentFiles, FailedLoadOrSaveShowsItsBoxesAndChangesNothing) {
    for (const Failure& c : kFailures) {
        SCOPED_TRACE(c.name);
        ScratchFolder scratch;
        ASSERT_TRUE(
            scratch.shell(QStringLiteral("echo old bytes >f && ") + QString::fromLatin1(c.make)));
        const QString path = c.path[0] == '/' ? QString::fromLatin1(c.path)
                                              : scratch.path(QString::fromLatin1(c.path));
        const QStringList before = scratch.snapshot();
        ScriptedMessageService messages;
        for (const int id : c.boxes) {
            messages.script({id == 33002 ? c.readOnlyAnswer : MessageAnswer::Ok});
        }
        {
            std::optional<testing::ScopedFileSizeLimit> disk;
            if (c.diskFull) {
                disk.emplace(4);
            }
            EXPECT_FALSE(c.save ? SaveDocumentFile(path, u"新しい\r\ntext", Utf8, LineEnding::CrLf,
                                                   0, nullptr)
                                : LoadDocumentFile(path, AutoDetect, nullptr).has_value());
        }
        EXPECT_EQ(messages.shownIds(), c.boxes);
        for (const ShownMessage& box : messages.shown()) {
            EXPECT_EQ(box.icon, box.id == 33002 ? MessageIcon::Question : MessageIcon::Stop);
            EXPECT_EQ(box.topmost, !c.save) << box.id;
            EXPECT_TRUE(box.id >= 40000 || box.text.endsWith(QStringLiteral("\n\n") + path))
                << box.text.toStdString();
        }
        EXPECT_EQ(scratch.snapshot(), before);
    }
}

// In a child whose address space ends a little above what it uses, loading a file larger than
// memory (sparse: no disk space taken) and saving a text whose conversion runs out each show the
// out-of-memory box, and the old file stays.
TEST(OutOfMemory, LoadAndSaveShowTheBoxAndLeaveTheFileAlone) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator does not survive an address-space limit";
#endif
    ScratchFolder scratch;
    scratch.writeSized(QStringLiteral("huge.txt"), qint64(512) << 20);
    scratch.write(QStringLiteral("old.txt"), "old");
    const QString old = scratch.path(QStringLiteral("old.txt"));
    const std::u16string text(std::size_t(64) << 20, u'日');
    const auto outOfMemory = [&] {
        ScriptedMessageService messages{MessageAnswer::Ok, MessageAnswer::Ok};
        long pages = 0;
        std::FILE* statm = std::fopen("/proc/self/statm", "r");
        if (statm == nullptr || std::fscanf(statm, "%ld", &pages) != 1) {
            std::_Exit(1);
        }
        const rlim_t limit = rlim_t(pages) * ::sysconf(_SC_PAGESIZE) + (64u << 20);
        const rlimit bound{limit, limit};
        ::setrlimit(RLIMIT_AS, &bound);
        LoadDocumentFile(scratch.path(QStringLiteral("huge.txt")), AutoDetect, nullptr);
        SaveDocumentFile(old, text, Utf8, LineEnding::CrLf, 0, nullptr);
        // Exits with 0, or with 10 and the number of boxes shown.
        const QList<int> boxes = messages.shownIds();
        std::_Exit(boxes == QList<int>{40000, 40000} ? 0 : 10 + int(boxes.size()));
    };
    EXPECT_EXIT(outOfMemory(), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(scratch.read(QStringLiteral("old.txt")), "old");
}

} // namespace
} // namespace korvel
