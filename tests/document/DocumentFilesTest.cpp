#include "document/DocumentFiles.h"

#include "DocumentHarness.h"
#include "ScratchFolder.h"
#include "messages/testing/ScriptedMessageService.h"
#include "support/ScopedFileSizeLimit.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define KORVEL_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVEL_ADDRESS_SANITIZER 1
#endif
#endif

namespace korvel {
namespace {

using testing::AsQBytes;
using testing::Bytes;
using testing::Hex;
using testing::RunningAsRoot;
using testing::Scratch;
using enum TextEncoding;

// Kanji, kana, half-width katakana, symbols and ASCII: every code set carries all of it, JIS
// when half-width katakana are kept.
constexpr std::u16string_view kJapaneseText =
    u"日本語のテキスト、“記号”と全角ＡＢＣ。\r\nｶﾀｶﾅ and ASCII 123\r\n\r\n末尾の行";

Bytes AsBytes(const QByteArray& bytes) {
    return Bytes(bytes.begin(), bytes.end());
}

Bytes Utf16Le(std::u16string_view text) {
    Bytes bytes;
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// The one box a failure shows.
void ExpectOneBox(const ScriptedMessageService& messages, int id, MessageIcon icon, bool topmost,
                  const QString& path = {}) {
    ASSERT_EQ(messages.shownIds(), QList<int>{id});
    const ShownMessage& box = messages.shown().front();
    EXPECT_EQ(box.icon, icon);
    EXPECT_EQ(box.topmost, topmost);
    if (!path.isEmpty()) {
        EXPECT_TRUE(box.text.endsWith(QStringLiteral("\n\n") + path)) << box.text.toStdString();
    }
}

// --- Saving, then loading back ---------------------------------------------------------

// The code sets themselves are the byte side's; here the file must get its mark and body, the
// line ending and the katakana mode must reach the byte side, and detection must see the file.

class SaveAndLoad : public ::testing::TestWithParam<std::tuple<TextEncoding, LineEnding>> {};

TEST_P(SaveAndLoad, FileHoldsTheByteSidesBytesAndReadsBackAsSaved) {
    const auto [encoding, lineEnding] = GetParam();
    Scratch scratch;
    ScriptedMessageService messages;
    const QString path = scratch.write(QStringLiteral("old.txt"), QByteArray("old text, longer"));

    ASSERT_TRUE(SaveDocumentFile(path, kJapaneseText, encoding, lineEnding, 1, nullptr));
    EXPECT_EQ(Hex(AsBytes(Scratch::Read(path))),
              Hex(testing::Save(kJapaneseText, encoding, lineEnding, 1)));

    const std::optional<LoadedDocument> loaded = LoadDocumentFile(path, AutoDetect, nullptr);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->encoding, encoding);
    EXPECT_EQ(loaded->lineEnding, lineEnding);
    EXPECT_TRUE(loaded->text == kJapaneseText) << Hex(loaded->text);
}

INSTANTIATE_TEST_SUITE_P(MarkAndKatakana, SaveAndLoad,
                         ::testing::Values(std::tuple(Utf8, LineEnding::Lf),
                                           std::tuple(Jis, LineEnding::Cr)),
                         [](const ::testing::TestParamInfo<SaveAndLoad::ParamType>& info) {
                             return std::get<0>(info.param) == Utf8 ? std::string("Utf8Lf")
                                                                    : std::string("JisCr");
                         });

// --- Loading a file and saving it back ---------------------------------------------------

struct FileCase {
    const char* name;
    Bytes bytes;
    TextEncoding encoding;
    LineEnding lineEnding;
    std::u16string text;
};

const FileCase kFileCases[] = {
    // Text that can stay in the file's own bytes, and text that had to be widened.
    {"UnicodeMarkCrLf", Concat({{0xFF, 0xFE}, Utf16Le(u"日本\r\nab")}), Unicode, LineEnding::CrLf,
     u"日本\r\nab"},
    {"UnicodeMarkLf", Concat({{0xFF, 0xFE}, Utf16Le(u"日本\nab\n")}), Unicode, LineEnding::Lf,
     u"日本\r\nab\r\n"},
};

void PrintTo(const FileCase& c, std::ostream* os) {
    *os << c.name;
}

class LoadFile : public ::testing::TestWithParam<FileCase> {};

TEST_P(LoadFile, ReadsWhatTheFileHoldsAndSavesItBackUnchanged) {
    const FileCase& c = GetParam();
    Scratch scratch;
    ScriptedMessageService messages;
    const QString path = scratch.write(QStringLiteral("in.txt"), c.bytes);

    std::optional<LoadedDocument> loaded = LoadDocumentFile(path, AutoDetect, nullptr);
    ASSERT_TRUE(loaded);
    // The text may point into the loaded bytes: it must survive the document being moved.
    const LoadedDocument document = std::move(*loaded);
    loaded.reset();
    EXPECT_EQ(document.encoding, c.encoding);
    EXPECT_EQ(document.lineEnding, c.lineEnding);
    EXPECT_TRUE(document.text == c.text) << Hex(document.text);

    const QString out = scratch.path(QStringLiteral("out.txt"));
    ASSERT_TRUE(
        SaveDocumentFile(out, document.text, document.encoding, document.lineEnding, 0, nullptr));
    EXPECT_EQ(Hex(AsBytes(Scratch::Read(out))), Hex(c.bytes));
}

INSTANTIATE_TEST_SUITE_P(Generated, LoadFile, ::testing::ValuesIn(kFileCases),
                         [](const ::testing::TestParamInfo<FileCase>& info) {
                             return std::string(info.param.name);
                         });

// A chosen code set is used whatever detection would say; the line ending is still detected.
TEST(LoadFileAs, TheChosenCodeSetOverridesDetection) {
    Scratch scratch;
    ScriptedMessageService messages;
    const QString marked = scratch.write(QStringLiteral("marked.txt"),
                                         Bytes{0xEF, 0xBB, 0xBF, 0xE6, 0x97, 0xA5, 0x0A});
    const std::optional<LoadedDocument> utf8n = LoadDocumentFile(marked, Utf8N, nullptr);
    ASSERT_TRUE(utf8n);
    EXPECT_EQ(utf8n->encoding, Utf8N);
    EXPECT_EQ(utf8n->lineEnding, LineEnding::Lf);
    EXPECT_TRUE(utf8n->text == u"\uFEFF日\r\n") << Hex(utf8n->text);
}

// --- What a path is, and loads that fail ------------------------------------------------

TEST(ExaminePath, FollowsLinksAndCallsWhatCannotBeFoundMissing) {
    Scratch scratch;
    const QString file = scratch.write(QStringLiteral("file.txt"), QByteArray("x"));
    const QString folder = scratch.path(QStringLiteral("folder"));
    ASSERT_TRUE(QDir().mkdir(folder));
    ASSERT_TRUE(QFile::link(file, scratch.path(QStringLiteral("to-file"))));
    ASSERT_TRUE(QFile::link(folder, scratch.path(QStringLiteral("to-folder"))));
    ASSERT_TRUE(QFile::link(scratch.path(QStringLiteral("gone")),
                            scratch.path(QStringLiteral("dangling"))));
    const struct {
        QString path;
        PathKind kind;
    } cases[] = {
        {file, PathKind::File},
        {folder, PathKind::Folder},
        {folder + u'/', PathKind::Folder},
        {scratch.path(QStringLiteral("to-file")), PathKind::File},
        {scratch.path(QStringLiteral("to-folder")), PathKind::Folder},
        {scratch.path(QStringLiteral("dangling")), PathKind::Missing},
        {scratch.path(QStringLiteral("none.txt")), PathKind::Missing},
        {file + QStringLiteral("/below"), PathKind::Missing},
        {QString(), PathKind::Missing},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ExaminePath(c.path), c.kind) << c.path.toStdString();
    }
}

struct LoadFailure {
    const char* name;
    QString (*make)(const Scratch&);
    int id;
    bool needsUnprivilegedUser;
};

const LoadFailure kLoadFailures[] = {
    {"Missing", [](const Scratch& s) { return s.path(QStringLiteral("none.txt")); }, 33000, false},
    {"Folder",
     [](const Scratch& s) {
         QDir().mkdir(s.path(QStringLiteral("folder")));
         return s.path(QStringLiteral("folder"));
     },
     33000, false},
    // Opening a pipe for reading would wait for a writer forever.
    {"Pipe",
     [](const Scratch& s) {
         ::mkfifo(QFile::encodeName(s.path(QStringLiteral("pipe"))).constData(), 0644);
         return s.path(QStringLiteral("pipe"));
     },
     33000, false},
    {"NoReadPermission",
     [](const Scratch& s) { return s.write(QStringLiteral("secret.txt"), QByteArray("x"), 0200); },
     33000, true},
    // Opens like a file, but reading from its start fails: nothing is mapped at address 0.
    {"ReadFails", [](const Scratch&) { return QStringLiteral("/proc/self/mem"); }, 33003, false},
};

void PrintTo(const LoadFailure& c, std::ostream* os) {
    *os << c.name;
}

class LoadFails : public ::testing::TestWithParam<LoadFailure> {};

TEST_P(LoadFails, ShowsItsTopmostStopBoxAndReturnsNothing) {
    if (GetParam().needsUnprivilegedUser && RunningAsRoot()) {
        GTEST_SKIP() << "root may read any file";
    }
    Scratch scratch;
    const QString path = GetParam().make(scratch);
    ScriptedMessageService messages{MessageAnswer::Ok};
    EXPECT_FALSE(LoadDocumentFile(path, AutoDetect, nullptr));
    ExpectOneBox(messages, GetParam().id, MessageIcon::Stop, true, path);
}

INSTANTIATE_TEST_SUITE_P(Rows, LoadFails, ::testing::ValuesIn(kLoadFailures),
                         [](const ::testing::TestParamInfo<LoadFailure>& info) {
                             return std::string(info.param.name);
                         });

// --- Saves that do not happen leave everything as it was ---------------------------------

struct SaveFailure {
    const char* name;
    QString (*make)(const Scratch&);
    MessageAnswer answer;
    int id;
    MessageIcon icon;
    bool needsUnprivilegedUser = false;
    bool diskFull = false;
};

const SaveFailure kSaveFailures[] = {
    {"Folder",
     [](const Scratch& s) {
         QDir().mkdir(s.path(QStringLiteral("folder")));
         return s.path(QStringLiteral("folder"));
     },
     MessageAnswer::Ok, 33001, MessageIcon::Stop},
    {"ReadOnlyKept",
     [](const Scratch& s) { return s.write(QStringLiteral("ro.txt"), QByteArray("old"), 0444); },
     MessageAnswer::No, 33002, MessageIcon::Question},
    {"DiskFull",
     [](const Scratch& s) { return s.write(QStringLiteral("old.txt"), QByteArray("old bytes")); },
     MessageAnswer::Ok, 33003, MessageIcon::Stop, false, true},
    {"Pipe",
     [](const Scratch& s) {
         ::mkfifo(QFile::encodeName(s.path(QStringLiteral("pipe"))).constData(), 0644);
         return s.path(QStringLiteral("pipe"));
     },
     MessageAnswer::Ok, 33003, MessageIcon::Stop},
    {"FolderGone", [](const Scratch& s) { return s.path(QStringLiteral("gone/new.txt")); },
     MessageAnswer::Ok, 33003, MessageIcon::Stop},
    {"FolderNotWritable",
     [](const Scratch& s) {
         QDir().mkdir(s.path(QStringLiteral("locked")));
         const QString path = s.write(QStringLiteral("locked/old.txt"), QByteArray("old"));
         ::chmod(QFile::encodeName(s.path(QStringLiteral("locked"))).constData(), 0555);
         return path;
     },
     MessageAnswer::Ok, 33003, MessageIcon::Stop, true},
};

void PrintTo(const SaveFailure& c, std::ostream* os) {
    *os << c.name;
}

class SaveFails : public ::testing::TestWithParam<SaveFailure> {};

TEST_P(SaveFails, ShowsItsBoxAndLeavesTheFolderAsItWas) {
    const SaveFailure& c = GetParam();
    if (c.needsUnprivilegedUser && RunningAsRoot()) {
        GTEST_SKIP() << "root may write in any folder";
    }
    Scratch scratch;
    const QString path = c.make(scratch);
    const std::string before = scratch.snapshot();
    ScriptedMessageService messages{c.answer};

    {
        std::optional<testing::ScopedFileSizeLimit> disk;
        if (c.diskFull) {
            disk.emplace(4);
        }
        EXPECT_FALSE(SaveDocumentFile(path, u"新しい\r\ntext", Utf8, LineEnding::CrLf, 0, nullptr));
    }
    ExpectOneBox(messages, c.id, c.icon, false, path);
    EXPECT_EQ(scratch.snapshot(), before);
}

INSTANTIATE_TEST_SUITE_P(Rows, SaveFails, ::testing::ValuesIn(kSaveFailures),
                         [](const ::testing::TestParamInfo<SaveFailure>& info) {
                             return std::string(info.param.name);
                         });

TEST(SaveReadOnly, AsksYesOrNoWithThePlatformsDefaultButton) {
    Scratch scratch;
    const QString path = scratch.write(QStringLiteral("ro.txt"), QByteArray("old"), 0444);
    ScriptedMessageService messages{MessageAnswer::No};
    EXPECT_FALSE(SaveDocumentFile(path, u"x", ShiftJis, LineEnding::CrLf, 0, nullptr));
    ASSERT_EQ(messages.shown().size(), 1);
    EXPECT_EQ(messages.shown().front().buttons, MessageButtons::YesNo);
    // Asked for with no default of its own, the box defaults to its first button, Yes.
    EXPECT_EQ(messages.shown().front().defaultButton, MessageAnswer::Yes);
}

// Yes adds the owner's write permission, keeps the other bits, and the file is written; through
// a link the target is, and the link stays a link.
TEST(SaveReadOnly, YesMakesTheFileWritableAndSavesIt) {
    Scratch scratch;
    const QString direct = scratch.write(QStringLiteral("ro.txt"), QByteArray("old"), 0454);
    const QString target = scratch.write(QStringLiteral("target.txt"), QByteArray("old"), 0440);
    const QString link = scratch.path(QStringLiteral("link.txt"));
    ASSERT_TRUE(QFile::link(target, link));
    const struct {
        QString path;
        QString file;
        mode_t mode;
    } cases[] = {{direct, direct, 0654}, {link, target, 0640}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        ScriptedMessageService messages{MessageAnswer::Yes};
        ASSERT_TRUE(SaveDocumentFile(c.path, u"new", ShiftJis, LineEnding::CrLf, 0, nullptr));
        EXPECT_EQ(messages.shownIds(), QList<int>{33002});
        EXPECT_EQ(Scratch::Read(c.file), QByteArray("new"));
        EXPECT_EQ(Scratch::ModeOf(c.file), c.mode);
    }
    EXPECT_TRUE(QFileInfo(link).isSymLink());
}

TEST(SaveReadOnly, ASaveThatFailsAfterYesLeavesTheFileReadOnly) {
    Scratch scratch;
    const QString path = scratch.write(QStringLiteral("ro.txt"), QByteArray("old bytes"), 0444);
    const std::string before = scratch.snapshot();
    ScriptedMessageService messages{MessageAnswer::Yes, MessageAnswer::Ok};
    {
        const testing::ScopedFileSizeLimit diskFull(4);
        EXPECT_FALSE(SaveDocumentFile(path, u"new text", ShiftJis, LineEnding::CrLf, 0, nullptr));
    }
    EXPECT_EQ(messages.shownIds(), (QList<int>{33002, 33003}));
    EXPECT_EQ(scratch.snapshot(), before);
}

// The files of /proc refuse every change of permissions, root's too.
TEST(SaveReadOnly, PermissionThatCannotBeAddedStopsTheSave) {
    const QString path = QStringLiteral("/proc/self/cmdline");
    if (!QFileInfo::exists(path) || (Scratch::ModeOf(path) & S_IWUSR) != 0) {
        GTEST_SKIP() << "no read-only " << path.toStdString();
    }
    const QByteArray before = Scratch::Read(path);
    ScriptedMessageService messages{MessageAnswer::Yes, MessageAnswer::Ok};
    EXPECT_FALSE(SaveDocumentFile(path, u"x", ShiftJis, LineEnding::CrLf, 0, nullptr));
    EXPECT_EQ(messages.shownIds(), (QList<int>{33002, 40001}));
    EXPECT_EQ(messages.shown().back().icon, MessageIcon::Stop);
    EXPECT_EQ(Scratch::Read(path), before);
    EXPECT_EQ(Scratch::ModeOf(path) & S_IWUSR, 0u);
}

// --- Running out of memory --------------------------------------------------------------

// Runs the body in a child process whose address space ends a little above what it already
// uses, and passes when the body shows exactly the out-of-memory box.
template <typename Body> void ExpectOutOfMemoryBox(Body body) {
#ifdef KORVEL_ADDRESS_SANITIZER
    (void)body;
    GTEST_SKIP() << "the sanitizer's allocator does not survive an address-space limit";
#else
    EXPECT_EXIT(
        {
            ScriptedMessageService messages{MessageAnswer::Ok};
            body();
            std::fprintf(stderr, "boxes:");
            for (const int id : messages.shownIds()) {
                std::fprintf(stderr, " %d", id);
            }
            std::fprintf(stderr, ".\n");
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "boxes: 40000\\.");
#endif
}

void LimitAddressSpace() {
    long pages = 0;
    if (std::FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld", &pages) != 1) {
            pages = 0;
        }
        std::fclose(statm);
    }
    const rlim_t limit = static_cast<rlim_t>(pages) * ::sysconf(_SC_PAGESIZE) + (64u << 20);
    const rlimit bound{limit, limit};
    ::setrlimit(RLIMIT_AS, &bound);
}

TEST(OutOfMemory, LoadOfAFileLargerThanMemoryShowsTheBox) {
    Scratch scratch;
    const QString path = scratch.path(QStringLiteral("huge.txt"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(qint64(512) << 20)); // sparse: no disk space taken
    file.close();
    ExpectOutOfMemoryBox([&] {
        LimitAddressSpace();
        if (LoadDocumentFile(path, AutoDetect, nullptr)) {
            std::fprintf(stderr, "loaded\n");
        }
    });
}

TEST(OutOfMemory, SaveWhoseConversionRunsOutLeavesTheFileAlone) {
    Scratch scratch;
    const QString path = scratch.write(QStringLiteral("old.txt"), QByteArray("old"));
    ExpectOutOfMemoryBox([&] {
        const std::u16string text(std::size_t(64) << 20, u'日');
        LimitAddressSpace();
        if (SaveDocumentFile(path, text, Utf8, LineEnding::CrLf, 0, nullptr)) {
            std::fprintf(stderr, "saved\n");
        }
    });
    EXPECT_EQ(Scratch::Read(path), QByteArray("old"));
}

} // namespace
} // namespace korvel
