#include "browser/FileListing.h"

#include "browser/Wildcard.h"
#include "support/ScratchFolder.h"

#include <fcntl.h>
#include <future>
#include <random>

namespace korvel {
namespace {

using testing::ScratchFolder;

QStringList Names(const FileListing& listing) {
    QStringList names;
    for (const FileRow& row : listing.rows())
        names.append(row.entry.name);
    return names;
}

TEST(SizeText, StepsFromBytesToKilobytesToMegabytesOnTheLow32Bits) {
    // clang-format off
    const std::pair<std::uint64_t, const char*> rows[] = {
        {0, "0 "}, {1024, "1024 "}, {1025, "2K"}, {2047, "2K"}, {2048, "3K"}, {1048576, "1025K"},
        {1048577, "1.00M"}, {5767168, "5.50M"}, {(std::uint64_t(1) << 32) + 10, "10 "}};
    // clang-format on
    for (const auto& [size, text] : rows) {
        FileEntry entry;
        entry.sizeHigh = std::uint32_t(size >> 32);
        entry.sizeLow = std::uint32_t(size);
        EXPECT_EQ(SizeText(entry), QString::fromUtf8(text)) << size;
    }
    EXPECT_EQ(SizeText(ParentEntry()), QString());
}

TEST(TimeText, ShowsTheHourTodayAndTheDateOtherwise) {
    FileEntry entry;
    entry.lastWrite = QDateTime(QDate(2024, 3, 14), QTime(9, 5)).toMSecsSinceEpoch() * 1'000'000;
    EXPECT_EQ(TimeText(entry, QDate(2024, 3, 14)), QStringLiteral("09:05"));
    for (const QDate& other : {QDate(2024, 3, 15), QDate(2024, 4, 14), QDate(2006, 3, 14)})
        EXPECT_EQ(TimeText(entry, other), QStringLiteral("24/03/14"));
}

TEST(IconExtensions, TrimsDotsAndBlanksAndTheFirstListWins) {
    IconExtensions icons;
    for (const auto& [group, extension] : {std::pair{IconGroup::Text, u" .txt "},
                                           {IconGroup::Image, u"TXT"},
                                           {IconGroup::Image, u"  "},
                                           {IconGroup::Audio, u"..mp3"}})
        icons.add(group, extension);
    EXPECT_EQ(
        QList<int>(
            {icons.iconOf(u"txt"), icons.iconOf(u"Mp3"), icons.iconOf(u"EXE"), icons.iconOf(u"")}),
        QList<int>({file_icon::Text, file_icon::Audio, file_icon::Program, file_icon::Generic}));
}

struct Listed {
    int rank; // "..", folders and shortcuts listed with them, files
    QString name;
    std::uint64_t size;
    qint64 time;
};

int Order(auto a, auto b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The rule of the list's order: "..", then folders, then files; within them the key's column in
// its direction, ties by name with letter case folded. Its quirks: a larger size high word sorts
// first even in ascending order, low words compare by their difference as a signed 32-bit number,
// and under the type column two files without an extension are equal.
int Rule(const Listed& a, const Listed& b, SortKey key) {
    const int s = IsDescending(key) ? -1 : 1;
    const int byName = Order(a.name.toLower(), b.name.toLower()) * s;
    const auto type = [](const QString& name) {
        return name.contains(u'.') ? name.sliced(name.lastIndexOf(u'.')).toLower() : QString();
    };
    const QString x = type(a.name), y = type(b.name);
    if (a.rank != b.rank || a.rank == 0)
        return Order(a.rank, b.rank);
    if (SortColumnOf(key) == sort_column::Size && a.size >> 32 != b.size >> 32)
        return Order(b.size >> 32, a.size >> 32) * s;
    if (SortColumnOf(key) == sort_column::Size && a.size != b.size)
        return Order(std::int32_t(a.size - b.size), 0) * s;
    if (SortColumnOf(key) == sort_column::Time && a.time != b.time)
        return Order(a.time, b.time) * s;
    if (SortColumnOf(key) == sort_column::Type && a.rank == 2 && x != y)
        return x.isEmpty() || y.isEmpty() ? Order(!x.isEmpty(), !y.isEmpty()) * s : Order(x, y) * s;
    if (SortColumnOf(key) == sort_column::Type && a.rank == 2 && x.isEmpty())
        return 0;
    return byName;
}

// Random folders, files and shortcuts to folders with random names, sizes (high words and low
// words past 2 GiB among them, in sparse files) and times: for every key, the listed order keeps
// the rule between every two rows, and rows it holds equal stay in the order they were.
TEST(FileListingOrder, KeepsTheRuleForEveryKeyOverRandomEntries) {
    std::mt19937 random(20241123);
    const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 20; ++round) {
        const ScratchFolder folder(testing::ManyEntriesBase());
        folder.makeFolder("target");
        for (int i = 0; i < 14; ++i) {
            const QString name = QStringLiteral("aAbB")[pick(4)] + QString::number(pick(3)) +
                                 QStringList{"", ".txt", ".TXT", ".c", ".lnk"}[pick(5)];
            if (folder.exists(name))
                continue;
            if (pick(5) == 0)
                folder.makeFolder(name);
            else if (pick(6) == 0)
                folder.link(name, folder.path("target"));
            else
                folder.writeSized(name, (std::uint64_t(pick(3)) << 32) + pick(2) * 0x90000000u +
                                            pick(3000));
            folder.setModified(name, QDateTime::fromMSecsSinceEpoch(pick(3) * 250));
        }
        FileListing listing;
        ASSERT_TRUE(listing.setFolder(folder.path()));
        listing.refresh();
        ASSERT_EQ(qsizetype(listing.rows().size()), folder.names().size() + 1);
        for (const SortKey key : {0x0, 0x1, 0x2, 0x3, 0x10000, 0x10001, 0x10002, 0x10003}) {
            const QStringList before = Names(listing);
            listing.sort(key);
            std::vector<Listed> rows;
            for (const FileRow& row : listing.rows()) {
                const QString path = folder.path(row.entry.name);
                struct stat status {};
                ::lstat(QFile::encodeName(path).constData(), &status);
                rows.push_back({row.entry.name == u".."   ? 0
                                : QFileInfo(path).isDir() ? 1
                                                          : 2,
                                row.entry.name, std::uint64_t(status.st_size),
                                status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec});
            }
            for (std::size_t i = 0; i < rows.size(); ++i) {
                for (std::size_t j = i + 1; j < rows.size(); ++j) {
                    // Rows the rule holds equal keep the order they had.
                    const int rule = Rule(rows[i], rows[j], key);
                    ASSERT_TRUE(rule < 0 || (rule == 0 && before.indexOf(rows[i].name) <
                                                              before.indexOf(rows[j].name)))
                        << "key " << key << ": " << Names(listing).join(u' ').toStdString();
                }
            }
        }
    }
    // A missing entry sorts first in the key's direction.
    const FileEntry file;
    for (const int s : {1, -1}) {
        const SortKey key = MakeSortKey(sort_column::Time, s < 0);
        EXPECT_EQ(CompareEntries(nullptr, nullptr, key), 0);
        EXPECT_EQ(CompareEntries(nullptr, &file, key), -s);
        EXPECT_EQ(CompareEntries(&file, nullptr, key), s);
    }
}

class FileListingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(listing_.setFolder(folder_.folder()));
        listing_.iconExtensions().add(IconGroup::Text, u"txt");
        listing_.iconExtensions().add(IconGroup::Image, u"png");
    }
    const FileRow& row(const QString& name) const {
        static const FileRow none;
        const FileRow* row = listing_.row(listing_.indexOf(name));
        EXPECT_NE(row, nullptr) << name.toStdString();
        return row != nullptr ? *row : none;
    }

    ScratchFolder folder_;
    FileListing listing_;
};

// "..", folders and shortcuts to folders (by their bare name, whatever the filter), then the files
// the filter or a pattern lets through; without folders shown, all are files.
TEST_F(FileListingTest, ListsParentFoldersAndShortcutsToThemFirstThenTheFilesAsked) {
    for (const char* name : {"b.TXT", "A.txt", "c.txt.bak", "txt", "d.ini", ".hidden"})
        folder_.write(name);
    folder_.makeFolder(".git");
    folder_.makeFolder("zeta");
    folder_.write("Docs.lnk", folder_.lnkTo("zeta"));
    folder_.link("link", folder_.path("zeta"));
    listing_.setExtensionFilter({QStringLiteral(".txt")});
    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "Docs.lnk", "link", "zeta", "A.txt", "b.TXT"}));
    EXPECT_EQ(row("Docs.lnk").displayName, QStringLiteral("Docs"));
    EXPECT_EQ(row("Docs.lnk").icon, file_icon::FolderShortcut);
    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("*.INI")), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "Docs.lnk", "link", "zeta", "d.ini"}));
    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("  ")), FileOpStatus::Failed);
    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"A.txt", "b.TXT"}));
    // A folder set and gone lists its parent row alone; the root has none.
    for (const QString& refused : {folder_.path("A.txt"), folder_.path("missing"), QString()})
        EXPECT_FALSE(listing_.setFolder(refused));
    EXPECT_TRUE(listing_.setFolder(folder_.path("zeta//")));
    EXPECT_EQ(listing_.folder(), folder_.path("zeta/"));
    listing_.setOptions(list_option::ShowFolders);
    QDir(folder_.folder()).rmdir(QStringLiteral("zeta"));
    listing_.refresh();
    EXPECT_EQ(Names(listing_), QStringList{".."});
    listing_.setFolder(QStringLiteral("/"));
    listing_.refresh();
    EXPECT_TRUE(listing_.isRoot() && !Names(listing_).isEmpty() && !Names(listing_).contains(".."));
}

// Icons come from the extension (a shortcut's from its target's, with the mark), unless plain
// icons are asked for; a resolved .lnk file (named so in any case, and only such a file) drops its
// extension, an unresolved one keeps its name.
TEST_F(FileListingTest, RowsTakeTheirIconAndNameFromTheOptions) {
    for (const char* name : {"memo.txt", "archive.tar.gz", "photo.png", "noext"})
        folder_.write(name);
    folder_.write("pic.lnk", folder_.lnkTo("photo.png"));
    folder_.write("bare.lnk", folder_.lnkTo("noext"));
    folder_.write("broken.lnk", folder_.lnkTo("gone.png"));
    folder_.link("link.htm", folder_.path("photo.png"));
    folder_.write("UP.LNK", folder_.lnkTo("photo.png"));
    const std::uint32_t plain = list_option::PlainIcons | list_option::HideExtensions;
    const int image = file_icon::Image + file_icon::ShortcutMark;
    const int generic = file_icon::Generic + file_icon::ShortcutMark;
    // clang-format off
    const std::tuple<std::uint32_t, bool, const char*, int, const char*, bool> rows[] = {
        {0, true, "pic.lnk", image, "pic", true},
        {0, true, "bare.lnk", file_icon::Generic, "bare", true},
        {0, true, "broken.lnk", file_icon::Generic, "broken.lnk", true},
        {0, true, "link.htm", image, "link.htm", true},
        {0, true, "UP.LNK", image, "UP", true},
        {plain, true, "memo.txt", file_icon::Generic, "memo", false},
        {plain, true, "archive.tar.gz", file_icon::Generic, "archive.tar", false},
        {plain, true, "pic.lnk", generic, "pic", true},
        {0, false, "pic.lnk", file_icon::Generic, "pic.lnk", false},
    };
    // clang-format on
    for (const auto& [options, resolve, name, icon, shown, shortcut] : rows) {
        listing_.setOptions(options);
        listing_.setResolveShortcuts(resolve);
        listing_.refresh();
        SCOPED_TRACE(::testing::Message() << name << " " << options << resolve);
        EXPECT_EQ(row(name).icon, icon);
        EXPECT_EQ(row(name).displayName, QString::fromUtf8(shown));
        EXPECT_EQ(row(name).shortcut, shortcut);
    }
}

TEST_F(FileListingTest, IndexOfPrefersTheExactCase) {
    folder_.write("Memo.txt");
    folder_.write("memo.txt");
    listing_.refresh();
    for (const QString name : {"memo.txt", "Memo.txt"})
        EXPECT_EQ(row(name).entry.name, name);
    EXPECT_GE(listing_.indexOf(u"MEMO.TXT"), 0);
    EXPECT_EQ(listing_.indexOf(u"other"), -1);
    EXPECT_TRUE(listing_.setSortKey(MakeSortKey(4, true)));
    EXPECT_FALSE(listing_.setSortKey(MakeSortKey(5, false)) || listing_.setSortKey(0x20000));
    EXPECT_EQ(listing_.sortKey(), MakeSortKey(4, true));
}

// Opening a named pipe for reading waits for a writer that never comes: one named like a
// shortcut must not hang the list.
TEST_F(FileListingTest, APipeNamedLikeAShortcutDoesNotHangTheList) {
    const QByteArray pipe = QFile::encodeName(folder_.path("x.lnk"));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    auto listed = std::async(std::launch::async, [this] { return listing_.refresh(); });
    if (listed.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
        ::close(::open(pipe.constData(), O_WRONLY | O_NONBLOCK)); // lets the reader go
        listed.wait();
        FAIL() << "the list opened the pipe";
    }
    EXPECT_EQ(row("x.lnk").icon, file_icon::Generic);
}

TEST(Wildcard, MatchesStarsAndQuestionMarksIgnoringCaseAndGivesFilterAndExtension) {
    // clang-format off
    const std::tuple<const char16_t*, const char16_t*, bool> matches[] = {
        {u"Setup.INI", u"*.ini", true}, {u"setup.ini.bak", u"*.ini", false}, {u"a1.txt", u"a?.txt", true},
        {u"a.txt", u"a?.txt", false}, {u"abcabcx", u"*abc*x", true}, {u"x.htm", u"*.txt; *.htm", true},
        {u"README", u"*.*", true}, {u"README", u"READ*.*", true}, {u"README", u"*.txt", false}, {u"a", u"", false}};
    const std::tuple<const char16_t*, QStringList, const char*> types[] = {
        {u"*.ini;*.inf", {".ini", ".inf"}, ".ini"}, {u"*.htm;*.html;*.HTM", {".htm", ".html"}, ".htm"},
        {u" *.htm;*.html", {".htm", ".html"}, ".htm"}, {u"*.*", {}, ""}, {u"*.txt;*", {}, ".txt"},
        {u"*.t?t", {}, ""}, {u"", {}, ""}};
    // clang-format on
    for (const auto& [name, pattern, match] : matches)
        EXPECT_EQ(MatchesWildcard(name, pattern), match)
            << QString::fromUtf16(pattern).toStdString();
    for (const auto& [pattern, filter, extension] : types) {
        EXPECT_EQ(ExtensionFilterOf(pattern), filter) << QString::fromUtf16(pattern).toStdString();
        EXPECT_EQ(DefaultExtensionOf(pattern), QString::fromUtf8(extension));
    }
}

// The properties every text obeys run over the fuzz seeds; these are the rows they cannot state.
TEST(ShortcutText, TakesTheTextAfterTheFirstHashDroppingOnePairOfQuotes) {
    // clang-format off
    const std::pair<QByteArrayView, const char16_t*> rows[] = {
        {"13#\"\\My Documents\\a.txt\"\r\nrest", u"\\My Documents\\a.txt"},
        {"x#\\a#b.txt", u"\\a#b.txt"}, {"1#\\a\nb", u"\\a\nb"}, {"1#\"\\a.txt", u"\"\\a.txt"},
        {"1#\\a.txt\"", u"\\a.txt\""}, {"1#\"", u"\""}, {"1#\"\"", u""},
        {QByteArrayView("1\0#\\a.txt", 9), u""}, {"5#\\\x83\x65\x83\x58\x83\x67.txt\r\n", u"\\テスト.txt"}};
    const std::pair<const char16_t*, QStringList> candidates[] = {
        {u"\\My Documents\\a.txt", {"/My Documents/a.txt"}}, {u"\\WINDOWS\\notes.txt", {"/usr/bin/notes.txt"}},
        {u"tools\\Calc.EXE", {"/usr/bin/tools/Calc.EXE", "/tools/Calc.EXE"}}, {u"notes.txt", {}}};
    // clang-format on
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(ParseShortcutText(bytes), QString::fromUtf16(text))
            << bytes.toByteArray().toStdString();
    for (const auto& [text, paths] : candidates)
        EXPECT_EQ(ShortcutCandidates(QString::fromUtf16(text)), paths);
}

// The list reads less of a .lnk file than the dialog; a file named otherwise is never read.
TEST(ResolveShortcut, ReadsALnkFileUpToTheCallersLimit) {
    ScratchFolder folder;
    const QString far = folder.path(QString(200, u'd'));
    QDir().mkpath(far);
    for (const char* name : {"far.lnk", "far.txt"})
        folder.write(name, QByteArray(600 - far.size(), '0') + "#" + far.toUtf8() + "\r\n");
    const auto folderOf = [&](const char* name, qsizetype limit) {
        const auto target = ResolveShortcut(folder.path(name), limit);
        return target && target->isFolder ? target->path : QString(target ? "a file" : "");
    };
    EXPECT_EQ(QStringList({folderOf("far.lnk", kShortcutReadLimit),
                           folderOf("far.lnk", kListShortcutReadLimit),
                           folderOf("far.txt", kShortcutReadLimit)}),
              QStringList({far, {}, {}}));
}

} // namespace
} // namespace korvel
