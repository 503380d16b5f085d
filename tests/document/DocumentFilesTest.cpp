#include "document/DocumentFiles.h"

#include "TestInputs.h"
#include "document/DocumentBytes.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/ScopedFileSizeLimit.h"
#include "support/ScratchFolder.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace korvel {
namespace {

using testing::Hex;
using testing::ScratchFolder;
using enum TextEncoding;

// Kanji, kana, half-width katakana, symbols and ASCII: every code set carries all of it, JIS
// when half-width katakana are kept.
constexpr std::u16string_view kJapaneseText =
    u"日本語のテキスト、“記号”と全角ＡＢＣ。\r\nｶﾀｶﾅ and ASCII 123\r\n\r\n末尾の行";

// The file gets the byte side's mark and body, the line ending and katakana mode reach it, and
// detection sees the file. A Unicode CR LF file's text views into the bytes read and must
// survive the document being moved; a chosen code set wins over detection.
TEST(DocumentFiles, SavedFileHoldsTheByteSidesBytesAndLoadsBackAsSaved) {
    ScratchFolder scratch;
    ScriptedMessageService messages;
    const QString path = scratch.writeFile(QStringLiteral("old.txt"), "old text, longer");
    for (const auto& [encoding, lineEnding] :
         {std::pair{Utf8, LineEnding::Lf}, {Jis, LineEnding::Cr}, {Unicode, LineEnding::CrLf}}) {
        ASSERT_TRUE(SaveDocumentFile(path, kJapaneseText, encoding, lineEnding, 1, nullptr));
        const EncodedDocument saved = EncodeDocumentText(kJapaneseText, encoding, lineEnding, 1);
        QByteArray bytes(reinterpret_cast<const char*>(saved.mark.data()), saved.mark.size());
        bytes.append(reinterpret_cast<const char*>(saved.body.data()), saved.body.size());
        EXPECT_EQ(scratch.read(QStringLiteral("old.txt")), bytes);

        std::optional<LoadedDocument> loaded = LoadDocumentFile(path, AutoDetect, nullptr);
        ASSERT_TRUE(loaded);
        const LoadedDocument document = std::move(*loaded);
        loaded.reset();
        EXPECT_EQ(document.encoding, encoding);
        EXPECT_EQ(document.lineEnding, lineEnding);
        EXPECT_TRUE(document.text == kJapaneseText) << Hex(document.text);
    }
    const QString marked = scratch.writeFile(QStringLiteral("m.txt"), "\xEF\xBB\xBF\xE6\x97\xA5\n");
    const std::optional<LoadedDocument> utf8n = LoadDocumentFile(marked, Utf8N, nullptr);
    ASSERT_TRUE(utf8n);
    EXPECT_EQ(utf8n->encoding, Utf8N);
    EXPECT_EQ(utf8n->lineEnding, LineEnding::Lf);
    EXPECT_TRUE(utf8n->text == u"\uFEFF日\r\n") << Hex(utf8n->text);
}

TEST(ExaminePath, FollowsLinksAndCallsWhatCannotBeFoundMissing) {
    ScratchFolder scratch;
    scratch.write(QStringLiteral("file.txt"), "x");
    scratch.makeFolder(QStringLiteral("folder"));
    scratch.link(QStringLiteral("to-folder"), QStringLiteral("folder"));
    scratch.link(QStringLiteral("dangling"), QStringLiteral("gone"));
    const std::pair<const char*, PathKind> rows[] = {
        {"file.txt", PathKind::File},    {"folder/", PathKind::Folder},
        {"to-folder", PathKind::Folder}, {"dangling", PathKind::Missing},
        {"none.txt", PathKind::Missing}, {"file.txt/below", PathKind::Missing},
    };
    for (const auto& [name, kind] : rows) {
        EXPECT_EQ(ExaminePath(scratch.path(QString::fromLatin1(name))), kind) << name;
    }
}

// What a row loads or saves: a file of "old bytes" with the given mode, a folder, a pipe or a
// file of /proc.
struct Failure {
    const char* name;
    bool save;
    const char* entry; // "f NAME MODE", "d NAME", "p NAME", or an absolute path
    QList<int> boxes;
    MessageAnswer readOnlyAnswer = MessageAnswer::Yes;
    bool diskFull = false;
};

const Failure kFailures[] = {
    {"LoadMissing", false, "none.txt", {33000}},
    // Opening a pipe for reading would wait for a writer forever.
    {"LoadPipe", false, "p pipe", {33000}},
    // Opens like a file, but reading from its start fails: nothing is mapped at address 0.
    {"LoadReadFails", false, "/proc/self/mem", {33003}},
    {"SaveFolder", true, "d folder", {33001}},
    {"SavePipe", true, "p pipe", {33003}},
    {"SaveDiskFull", true, "f old.txt 644", {33003}, MessageAnswer::Yes, true},
    {"SaveReadOnlyRefused", true, "f ro.txt 444", {33002}, MessageAnswer::No},
    {"SaveReadOnlyDiskFull", true, "f ro.txt 444", {33002, 33003}, MessageAnswer::Yes, true},
    // The files of /proc refuse every change of permissions, root's too.
    {"SaveReadOnlyPermissionNotAdded", true, "/proc/self/cmdline", {33002, 40001}},
};

void PrintTo(const Failure& c, std::ostream* os) {
    *os << c.name;
}

class Failing : public ::testing::TestWithParam<Failure> {};

// A load or save that does not happen shows its boxes (a load's on top, each naming the path)
// and leaves the folder as it was: a read-only file stays read-only whatever went wrong after
// the user agreed to write it.
TEST_P(Failing, ShowsItsBoxesAndChangesNothing) {
    const Failure& c = GetParam();
    ScratchFolder scratch;
    const QStringList entry = QString::fromLatin1(c.entry).split(u' ');
    const QString name = entry.value(1, entry[0]);
    const QString path = name.startsWith(u'/') ? name : scratch.path(name);
    if (entry[0] == u'f') {
        scratch.writeFile(name, "old bytes", entry[2].toUInt(nullptr, 8));
    } else if (entry[0] == u'd') {
        scratch.makeFolder(name);
    } else if (entry[0] == u'p') {
        ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0644), 0);
    }
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
        EXPECT_FALSE(
            c.save ? SaveDocumentFile(path, u"新しい\r\ntext", Utf8, LineEnding::CrLf, 0, nullptr)
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

INSTANTIATE_TEST_SUITE_P(Rows, Failing, ::testing::ValuesIn(kFailures),
                         [](const ::testing::TestParamInfo<Failure>& info) {
                             return std::string(info.param.name);
                         });

// Asked with no default of its own, the box defaults to its first button, Yes. Yes adds the
// owner's write permission and keeps the other bits; through a link the target gets it and
// the link stays a link.
TEST(SaveReadOnly, YesMakesTheFileWritableAndSavesIt) {
    ScratchFolder scratch;
    scratch.writeFile(QStringLiteral("ro.txt"), "old", 0454);
    scratch.writeFile(QStringLiteral("target.txt"), "old", 0440);
    scratch.link(QStringLiteral("link.txt"), QStringLiteral("target.txt"));
    for (const auto& [name, file, mode] :
         {std::tuple{"ro.txt", "ro.txt", 0654u}, std::tuple{"link.txt", "target.txt", 0640u}}) {
        ScriptedMessageService messages{MessageAnswer::Yes};
        ASSERT_TRUE(SaveDocumentFile(scratch.path(QString::fromLatin1(name)), u"new", ShiftJis,
                                     LineEnding::CrLf, 0, nullptr));
        ASSERT_EQ(messages.shownIds(), QList<int>{33002});
        EXPECT_EQ(messages.shown().front().buttons, MessageButtons::YesNo);
        EXPECT_EQ(messages.shown().front().defaultButton, MessageAnswer::Yes);
        EXPECT_EQ(scratch.read(QString::fromLatin1(file)), "new");
        EXPECT_EQ(testing::StatusOf(scratch.path(QString::fromLatin1(file))).st_mode & 07777, mode);
    }
    EXPECT_TRUE(QFileInfo(scratch.path(QStringLiteral("link.txt"))).isSymLink());
}

// In a child whose address space ends a little above what it uses, loading a file larger than
// memory (sparse: no disk space taken) and saving a text whose conversion runs out each show
// the out-of-memory box, and the old file stays.
TEST(OutOfMemory, LoadAndSaveShowTheBoxAndLeaveTheFileAlone) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator does not survive an address-space limit";
#endif
    ScratchFolder scratch;
    scratch.writeSized(QStringLiteral("huge.txt"), qint64(512) << 20);
    const QString old = scratch.writeFile(QStringLiteral("old.txt"), "old");
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
        std::fprintf(stderr, "boxes:");
        for (const int id : messages.shownIds()) {
            std::fprintf(stderr, " %d", id);
        }
        std::fprintf(stderr, ".\n");
        std::_Exit(0);
    };
    EXPECT_EXIT(outOfMemory(), ::testing::ExitedWithCode(0), "boxes: 40000 40000\\.");
    EXPECT_EQ(scratch.read(QStringLiteral("old.txt")), "old");
}

} // namespace
} // namespace korvel
