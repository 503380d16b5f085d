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

const FileRow& RowNamed(const FileListing& listing, const QString& name) {
    static const FileRow none;
    const FileRow* row = listing.row(listing.indexOf(name));
    EXPECT_NE(row, nullptr) << name.toStdString();
    return row != nullptr ? *row : none;
}

TEST(SizeText, StepsFromBytesToKilobytesToMegabytesOnTheLow32Bits) {
    const std::pair<std::uint64_t, const char*> rows[] = {
        {0, "0 "},          {1024, "1024 "},    {1025, "2K"},
        {2047, "2K"},       {2048, "3K"},       {1048576, "1025K"},
        {1048577, "1.00M"}, {5767168, "5.50M"}, {(std::uint64_t(1) << 32) + 10, "10 "},
    };
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
    icons.add(IconGroup::Text, u" .txt ");
    icons.add(IconGroup::Image, u"TXT");
    icons.add(IconGroup::Image, u"  ");
    icons.add(IconGroup::Audio, u"..mp3");
    const std::pair<const char16_t*, int> rows[] = {{u"txt", file_icon::Text},
                                                    {u"Mp3", file_icon::Audio},
                                                    {u"EXE", file_icon::Program},
                                                    {u"doc", file_icon::Generic},
                                                    {u"", file_icon::Generic}};
    for (const auto& [extension, icon] : rows)
        EXPECT_EQ(icons.iconOf(extension), icon);
}

struct Listed {
    bool parent = false;
    bool folder = false; // or a shortcut listed with the folders
    QString name;
    std::uint64_t size = 0;
    qint64 time = 0;
};

int Order(auto a, auto b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The rule of the list's order: "..", then folders, then files; within them the key's column in
// its direction, ties by name with letter case folded. Its quirks: a larger size high word sorts
// first even in ascending order, low words compare by their difference as a signed 32-bit number,
// and under the type column two files without an extension are equal.
int Rule(const Listed& a, const Listed& b, SortKey key) {
    if (a.parent != b.parent)
        return a.parent ? -1 : 1;
    if (a.folder != b.folder)
        return a.folder ? -1 : 1;
    const int s = IsDescending(key) ? -1 : 1;
    const int byName = Order(a.name.toLower(), b.name.toLower()) * s;
    const auto extension = [](const QString& name) {
        return name.contains(u'.') ? name.sliced(name.lastIndexOf(u'.')).toLower() : QString();
    };
    const QString x = extension(a.name);
    const QString y = extension(b.name);
    switch (SortColumnOf(key)) {
    case sort_column::Size:
        if (a.size >> 32 != b.size >> 32)
            return Order(b.size >> 32, a.size >> 32) * s;
        return a.size != b.size ? Order(std::int32_t(a.size - b.size), 0) * s : byName;
    case sort_column::Time:
        return a.time != b.time ? Order(a.time, b.time) * s : byName;
    case sort_column::Type:
        if (a.folder || (x.isEmpty() && y.isEmpty()))
            return a.folder ? byName : 0;
        return x.isEmpty() || y.isEmpty() ? Order(!x.isEmpty(), !y.isEmpty()) * s
                                          : (x != y ? Order(x, y) * s : byName);
    default:
        return byName;
    }
}

// Random folders, files and shortcuts to folders with random names, sizes (high words and low
// words past 2 GiB among them, in sparse files) and times: for every key, the listed order keeps
// the rule between every two rows.
TEST(FileListingOrder, KeepsTheRuleForEveryKeyOverRandomEntries) {
    std::mt19937 random(20241123);
    const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
    const qint64 epoch = QDateTime(QDate(2020, 1, 1), QTime(0, 0)).toMSecsSinceEpoch();
    for (int round = 0; round < 20; ++round) {
        const ScratchFolder folder(testing::ManyEntriesBase());
        folder.makeFolder("target");
        QStringList made;
        for (int i = 0; i < 14; ++i) {
            QString name = QStringLiteral("aAbB")[pick(4)] + QString::number(pick(3)) +
                           QStringList{"", ".txt", ".TXT", ".c", ".lnk"}[pick(5)];
            if (made.contains(name) || name == u"target")
                continue;
            made.append(name);
            if (pick(5) == 0) {
                folder.makeFolder(name);
            } else if (pick(6) == 0) {
                folder.link(name, folder.path("target"));
            } else {
                const std::uint64_t low = std::uint64_t(pick(2) * 0x90000000u + pick(3000));
                folder.writeSized(name, (std::uint64_t(pick(3)) << 32) + low);
            }
            folder.setModified(name, QDateTime::fromMSecsSinceEpoch(epoch + pick(3) * 250));
        }
        FileListing listing;
        ASSERT_TRUE(listing.setFolder(folder.path()));
        listing.refresh();
        ASSERT_EQ(listing.rows().size(), made.size() + 2); // with ".." and "target"
        for (int column = 0; column < 4; ++column) {
            for (const bool descending : {false, true}) {
                const SortKey key = MakeSortKey(column, descending);
                listing.sort(key);
                std::vector<Listed> rows;
                for (const FileRow& row : listing.rows()) {
                    const QString path = folder.path(row.entry.name);
                    struct stat status {};
                    const bool parent = row.entry.name == u"..";
                    ASSERT_TRUE(parent ||
                                ::lstat(QFile::encodeName(path).constData(), &status) == 0);
                    rows.push_back(
                        {parent, QFileInfo(path).isDir(), row.entry.name,
                         std::uint64_t(status.st_size),
                         qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec});
                }
                for (std::size_t i = 0; i < rows.size(); ++i) {
                    for (std::size_t j = i + 1; j < rows.size(); ++j)
                        ASSERT_LE(Rule(rows[i], rows[j], key), 0)
                            << "round " << round << ", key " << key << ": "
                            << Names(listing).join(u' ').toStdString();
                }
            }
        }
    }
    // A missing entry sorts first in the key's direction.
    const FileEntry file;
    for (const SortKey key : {MakeSortKey(0, false), MakeSortKey(2, true)}) {
        const int s = IsDescending(key) ? -1 : 1;
        EXPECT_EQ(CompareEntries(nullptr, nullptr, key), 0);
        EXPECT_EQ(CompareEntries(nullptr, &file, key), -s);
        EXPECT_EQ(CompareEntries(&file, nullptr, key), s);
    }
}

class FileListingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(listing_.setFolder(folder_.folder()));
        IconExtensions& icons = listing_.iconExtensions();
        icons.add(IconGroup::Text, u"txt");
        icons.add(IconGroup::Image, u"png");
        icons.add(IconGroup::Html, u"htm");
    }

    ScratchFolder folder_;
    FileListing listing_;
};

TEST_F(FileListingTest, ListsParentAndFoldersFirstWithoutHiddenOnesAndNoParentAtTheRoot) {
    for (const char* name : {"b.txt", "A.txt", ".hidden", "zeta/", ".git/", "sub/"})
        QString(name).endsWith(u'/') ? folder_.makeFolder(name) : folder_.write(name);
    EXPECT_TRUE(listing_.setFolder(folder_.path("sub//")));
    EXPECT_EQ(listing_.folder(), folder_.path("sub/"));
    for (const QString& refused : {folder_.path("A.txt"), folder_.path("missing"), QString()})
        EXPECT_FALSE(listing_.setFolder(refused));
    // A folder that went since it was set lists its parent row alone.
    QDir(folder_.folder()).rmdir(QStringLiteral("sub"));
    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), QStringList{".."});

    listing_.setFolder(folder_.folder());
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"..", "zeta", "A.txt", "b.txt"}));
    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"A.txt", "b.txt"}));

    listing_.setFolder(QStringLiteral("/"));
    listing_.setOptions(list_option::ShowFolders);
    listing_.refresh();
    EXPECT_TRUE(listing_.isRoot());
    EXPECT_FALSE(Names(listing_).isEmpty());
    EXPECT_FALSE(Names(listing_).contains(".."));
}

// The type's filter matches the last extension in any case; a pattern replaces it for files and
// lists every folder.
TEST_F(FileListingTest, ExtensionFilterAndPatternChooseTheFiles) {
    for (const char* name : {"a.txt", "b.TXT", "c.txt.bak", "d.ini", "txt", "E.INI"})
        folder_.write(QString::fromUtf8(name));
    folder_.makeFolder("sub");
    listing_.setExtensionFilter({QStringLiteral(".txt")});
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"..", "sub", "a.txt", "b.TXT"}));
    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("*.ini")), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "sub", "d.ini", "E.INI"}));
    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("  ")), FileOpStatus::Failed);
}

// A shortcut to a folder (a .lnk file or a link) is listed with the folders under its bare name
// while they are shown, whatever the filter; without them it is a file the filter leaves out.
TEST_F(FileListingTest, ShortcutsToFoldersJoinTheFolders) {
    folder_.makeFolder("target");
    folder_.write("Docs.lnk", folder_.lnkTo("target"));
    folder_.link("zlink", folder_.path("target"));
    folder_.write("a.txt");
    listing_.setExtensionFilter({QStringLiteral(".txt")});
    listing_.refresh();
    const FileRow& row = RowNamed(listing_, QStringLiteral("Docs.lnk"));
    EXPECT_EQ(row.displayName, QStringLiteral("Docs"));
    EXPECT_EQ(row.icon, file_icon::FolderShortcut);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "Docs.lnk", "target", "zlink", "a.txt"}));
    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(Names(listing_), QStringList{"a.txt"});
}

// Icons come from the extension (a shortcut's from its target's, with the mark), unless plain
// icons are asked for; a resolved .lnk file drops its extension, an unresolved one keeps its name.
TEST_F(FileListingTest, RowsTakeTheirIconAndNameFromTheOptions) {
    for (const char* name : {"memo.txt", "archive.tar.gz", "photo.png", "noext"})
        folder_.write(QString::fromUtf8(name));
    folder_.write("pic.lnk", folder_.lnkTo("photo.png"));
    folder_.write("bare.lnk", folder_.lnkTo("noext"));
    folder_.write("broken.lnk", folder_.lnkTo("gone.png"));
    folder_.link("link.htm", folder_.path("photo.png"));
    const std::uint32_t plain = list_option::PlainIcons | list_option::HideExtensions;
    const int markedImage = file_icon::Image + file_icon::ShortcutMark;
    const std::tuple<std::uint32_t, bool, const char*, int, const char*, bool> rows[] = {
        {0, true, "pic.lnk", markedImage, "pic", true},
        {0, true, "bare.lnk", file_icon::Generic, "bare", true},
        {0, true, "broken.lnk", file_icon::Generic, "broken.lnk", true},
        {0, true, "link.htm", markedImage, "link.htm", true},
        {plain, true, "memo.txt", file_icon::Generic, "memo", false},
        {plain, true, "archive.tar.gz", file_icon::Generic, "archive.tar", false},
        {plain, true, "pic.lnk", file_icon::Generic + file_icon::ShortcutMark, "pic", true},
        {0, false, "pic.lnk", file_icon::Generic, "pic.lnk", false},
    };
    for (const auto& [options, resolve, name, icon, shown, shortcut] : rows) {
        listing_.setOptions(options);
        listing_.setResolveShortcuts(resolve);
        listing_.refresh();
        const FileRow& row = RowNamed(listing_, QString::fromUtf8(name));
        SCOPED_TRACE(::testing::Message() << name << " " << options << resolve);
        EXPECT_EQ(row.icon, icon);
        EXPECT_EQ(row.displayName, QString::fromUtf8(shown));
        EXPECT_EQ(row.shortcut, shortcut);
    }
}

TEST_F(FileListingTest, IndexOfPrefersTheExactCase) {
    folder_.write("Memo.txt");
    folder_.write("memo.txt");
    listing_.refresh();
    for (const char16_t* name : {u"memo.txt", u"Memo.txt"})
        EXPECT_EQ(listing_.row(listing_.indexOf(name))->entry.name, QString::fromUtf16(name));
    EXPECT_EQ(listing_.indexOf(u"MEMO.TXT") >= 0, true);
    EXPECT_EQ(listing_.indexOf(u"other"), -1);
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
    EXPECT_EQ(RowNamed(listing_, "x.lnk").icon, file_icon::Generic);
}

TEST(FileListingSortKey, RefusesColumnsAbove4AndOtherDirections) {
    FileListing listing;
    EXPECT_TRUE(listing.setSortKey(MakeSortKey(4, true)));
    EXPECT_FALSE(listing.setSortKey(MakeSortKey(5, false)));
    EXPECT_FALSE(listing.setSortKey(0x20000));
    EXPECT_EQ(listing.sortKey(), MakeSortKey(4, true));
}

TEST(Wildcard, MatchesStarsAndQuestionMarksIgnoringCase) {
    const std::tuple<const char16_t*, const char16_t*, bool> rows[] = {
        {u"Setup.INI", u"*.ini", true}, {u"setup.ini.bak", u"*.ini", false},
        {u"a1.txt", u"a?.txt", true},   {u"a.txt", u"a?.txt", false},
        {u"abcabcx", u"*abc*x", true},  {u"x.htm", u"*.txt; *.htm", true},
        {u"README", u"*.*", true},      {u"README", u"READ*.*", true},
        {u"README", u"*.txt", false},   {u"a", u"", false},
    };
    for (const auto& [name, pattern, matches] : rows)
        EXPECT_EQ(MatchesWildcard(name, pattern), matches)
            << QString::fromUtf16(name).toStdString() << " ~ "
            << QString::fromUtf16(pattern).toStdString();
}

TEST(Wildcard, TypePatternsGiveFilterAndDefaultExtension) {
    const std::tuple<const char16_t*, QStringList, const char*> rows[] = {
        {u"*.ini;*.inf", {".ini", ".inf"}, ".ini"},
        {u"*.htm;*.html;*.HTM", {".htm", ".html"}, ".htm"},
        {u" *.htm;*.html", {".htm", ".html"}, ".htm"},
        {u"*.*", {}, ""},
        {u"*.txt;*", {}, ".txt"},
        {u"*.t?t", {}, ""},
        {u"", {}, ""},
    };
    for (const auto& [pattern, filter, extension] : rows) {
        SCOPED_TRACE(QString::fromUtf16(pattern).toStdString());
        EXPECT_EQ(ExtensionFilterOf(pattern), filter);
        EXPECT_EQ(DefaultExtensionOf(pattern), QString::fromUtf8(extension));
    }
}

} // namespace
} // namespace korvel
