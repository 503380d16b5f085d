#include "browser/FileListing.h"

#include "browser/Wildcard.h"
#include "support/ScratchFolder.h"

#include <QDateTime>
#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <tuple>

namespace korvel {
namespace {

using testing::ScratchFolder;

FileEntry File(const QString& name, std::uint64_t size = 0, FileTime time = 0) {
    FileEntry entry;
    entry.name = name;
    entry.sizeHigh = std::uint32_t(size >> 32);
    entry.sizeLow = std::uint32_t(size);
    entry.lastWrite = time;
    return entry;
}

FileEntry Folder(const QString& name) {
    FileEntry entry = File(name);
    entry.attributes = kAttributeFolder;
    return entry;
}

QStringList Names(const FileListing& listing) {
    QStringList names;
    for (const FileRow& row : listing.rows())
        names.append(row.entry.name);
    return names;
}

const FileRow& RowNamed(const FileListing& listing, const QString& name) {
    const FileRow* row = listing.row(listing.indexOf(name));
    EXPECT_NE(row, nullptr) << name.toStdString();
    static const FileRow none;
    return row != nullptr ? *row : none;
}

TEST(SizeText, StepsFromBytesToKilobytesToMegabytesOnTheLow32Bits) {
    const std::pair<std::uint64_t, const char*> rows[] = {
        {0, "0 "},          {1024, "1024 "},    {1025, "2K"},
        {2047, "2K"},       {2048, "3K"},       {1048576, "1025K"},
        {1048577, "1.00M"}, {5767168, "5.50M"}, {(std::uint64_t(1) << 32) + 10, "10 "},
    };
    for (const auto& [size, text] : rows)
        EXPECT_EQ(SizeText(File("a", size)), QString::fromUtf8(text)) << size;
    EXPECT_EQ(SizeText(Folder("sub")), QString());
}

TEST(TimeText, ShowsTheHourTodayAndTheDateOtherwise) {
    const QDateTime morning(QDate(2024, 3, 14), QTime(9, 5, 30));
    FileEntry entry = File("a");
    entry.lastWrite = morning.toMSecsSinceEpoch() * 1'000'000;

    EXPECT_EQ(TimeText(entry, QDate(2024, 3, 14)), QStringLiteral("09:05"));
    EXPECT_EQ(TimeText(entry, QDate(2024, 3, 15)), QStringLiteral("24/03/14"));
    EXPECT_EQ(TimeText(entry, QDate(2023, 3, 14)), QStringLiteral("24/03/14"));

    const QDateTime early(QDate(2006, 3, 1), QTime(0, 0));
    entry.lastWrite = early.toMSecsSinceEpoch() * 1'000'000;
    EXPECT_EQ(TimeText(entry, QDate(2024, 3, 14)), QStringLiteral("06/03/01"));
}

int Order(auto a, auto b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The order the list promises, written plainly: ".." first, then folders, then files; within
// them the column in the key's direction with ties broken by name, letter case folded. Its two
// quirks: the size high word counts backwards (a larger one sorts first in ascending order), and
// under the type column two files without an extension are equal, whatever their names.
int ModelCompare(const FileEntry& a, const FileEntry& b, SortKey key) {
    if (a.isParent() != b.isParent())
        return a.isParent() ? -1 : 1;
    if (a.isFolder() != b.isFolder())
        return a.isFolder() ? -1 : 1;
    const int s = IsDescending(key) ? -1 : 1;
    const int byName = Order(a.name.toLower(), b.name.toLower()) * s;
    const auto extension = [](const QString& name) {
        return name.contains(u'.') ? name.sliced(name.lastIndexOf(u'.')).toLower() : QString();
    };
    switch (SortColumnOf(key)) {
    case sort_column::Size:
        if (a.sizeHigh != b.sizeHigh)
            return Order(b.sizeHigh, a.sizeHigh) * s;
        return a.sizeLow != b.sizeLow ? Order(a.sizeLow, b.sizeLow) * s : byName;
    case sort_column::Time:
        return a.lastWrite != b.lastWrite ? Order(a.lastWrite, b.lastWrite) * s : byName;
    case sort_column::Type:
        if (a.isFolder())
            return byName;
        if (extension(a.name).isEmpty() || extension(b.name).isEmpty())
            return Order(!extension(a.name).isEmpty(), !extension(b.name).isEmpty()) * s;
        return extension(a.name) != extension(b.name)
                   ? Order(extension(a.name), extension(b.name)) * s
                   : byName;
    default:
        return byName;
    }
}

// Random rows, a few of them alike in every column, sorted by the list's comparison and by the
// model: the same order for every column and direction. A missing entry goes first in the key's
// direction.
TEST(CompareEntries, SortsRandomEntriesAsTheModelDoes) {
    std::mt19937 random(20241123);
    const auto pick = [&random](int n) { return int(random() % unsigned(n)); };
    const QString letters = QStringLiteral("aAbB.");
    for (int round = 0; round < 400; ++round) {
        std::vector<FileEntry> entries;
        if (pick(2) == 0)
            entries.push_back(ParentEntry());
        for (int i = pick(14); i > 0; --i) {
            QString name = letters[pick(4)]; // a listed name never begins with "."
            for (int length = pick(4); length > 0; --length)
                name += letters[pick(int(letters.size()))];
            FileEntry entry = pick(4) == 0 ? Folder(name) : File(name);
            entry.sizeHigh = pick(4) == 0 ? std::uint32_t(1 + pick(2)) : 0;
            entry.sizeLow = std::uint32_t(pick(3)) << (pick(2) == 0 ? 0 : 29);
            entry.lastWrite = pick(3);
            entries.push_back(entry);
        }
        for (int column = 0; column < 4; ++column) {
            for (const bool descending : {false, true}) {
                const SortKey key = MakeSortKey(column, descending);
                std::vector<int> listed(entries.size());
                std::iota(listed.begin(), listed.end(), 0);
                std::vector<int> modelled = listed;
                std::stable_sort(listed.begin(), listed.end(), [&](int a, int b) {
                    return CompareEntries(&entries[a], &entries[b], key) < 0;
                });
                std::stable_sort(modelled.begin(), modelled.end(), [&](int a, int b) {
                    return ModelCompare(entries[a], entries[b], key) < 0;
                });
                ASSERT_EQ(listed, modelled) << "round " << round << ", key " << key;

                const int s = descending ? -1 : 1;
                const FileEntry file = File("a");
                EXPECT_EQ(CompareEntries(nullptr, nullptr, key), 0);
                EXPECT_EQ(CompareEntries(nullptr, &file, key), -s);
                EXPECT_EQ(CompareEntries(&file, nullptr, key), s);
            }
        }
    }
}

TEST(IconExtensions, TrimsDotsAndBlanksAndIgnoresRepeats) {
    IconExtensions icons;
    icons.add(IconGroup::Text, u" .txt ");
    icons.add(IconGroup::Text, u"..INI");
    icons.add(IconGroup::Image, u"TXT");
    icons.add(IconGroup::Image, u"  ");
    icons.add(IconGroup::Audio, u"mp3");

    EXPECT_EQ(icons.iconOf(u"txt"), file_icon::Text);
    EXPECT_EQ(icons.iconOf(u"ini"), file_icon::Text);
    EXPECT_EQ(icons.iconOf(u"Mp3"), file_icon::Audio);
    EXPECT_EQ(icons.iconOf(u"EXE"), file_icon::Program);
    EXPECT_EQ(icons.iconOf(u"doc"), file_icon::Generic);
    EXPECT_EQ(icons.iconOf(u""), file_icon::Generic);
}

TEST(FileListingSortKey, RefusesColumnsAbove4AndOtherDirections) {
    FileListing listing;
    EXPECT_TRUE(listing.setSortKey(MakeSortKey(4, true)));
    EXPECT_FALSE(listing.setSortKey(MakeSortKey(5, false)));
    EXPECT_FALSE(listing.setSortKey(0x20000));
    EXPECT_EQ(listing.sortKey(), MakeSortKey(4, true));
}

class FileListingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(listing_.setFolder(folder_.folder()));
        IconExtensions& icons = listing_.iconExtensions();
        for (const char16_t* extension : {u"txt", u"ini", u"inf"})
            icons.add(IconGroup::Text, extension);
        for (const char16_t* extension : {u"jpg", u"png"})
            icons.add(IconGroup::Image, extension);
        icons.add(IconGroup::Html, u"htm");
    }

    ScratchFolder folder_;
    FileListing listing_;
};

TEST_F(FileListingTest, SetFolderKeepsOneTrailingSlashAndRefusesFiles) {
    folder_.makeFolder("sub");
    folder_.write("a.txt");
    EXPECT_TRUE(listing_.setFolder(folder_.path("sub//")));
    EXPECT_EQ(listing_.folder(), folder_.path("sub/"));
    EXPECT_FALSE(listing_.setFolder(folder_.path("a.txt")));
    EXPECT_FALSE(listing_.setFolder(folder_.path("missing")));
    EXPECT_FALSE(listing_.setFolder(QString()));
    EXPECT_EQ(listing_.folder(), folder_.path("sub/"));
    EXPECT_TRUE(listing_.setFolder(QStringLiteral("/")));
    EXPECT_TRUE(listing_.isRoot());
}

TEST_F(FileListingTest, ListsParentAndFoldersFirstThenFilesWithoutHiddenOnes) {
    folder_.write("b.txt");
    folder_.write("A.txt");
    folder_.write(".hidden");
    folder_.makeFolder("zeta");
    folder_.makeFolder(".git");

    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "zeta", "A.txt", "b.txt"}));

    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"A.txt", "b.txt"}));
}

TEST_F(FileListingTest, RootHasNoParentRow) {
    ASSERT_TRUE(listing_.setFolder(QStringLiteral("/")));
    listing_.refresh();
    ASSERT_FALSE(listing_.rows().empty());
    for (const FileRow& row : listing_.rows())
        EXPECT_NE(row.entry.name, u"..");
}

TEST_F(FileListingTest, UnreadableFolderStillShowsTheParentRow) {
    folder_.makeFolder("sub");
    ASSERT_TRUE(listing_.setFolder(folder_.path("sub")));
    QDir(folder_.folder()).rmdir(QStringLiteral("sub"));
    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), QStringList{".."});
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
    listing_.setExtensionFilter({});
    listing_.refresh();
    EXPECT_EQ(Names(listing_).size(), 8);
}

TEST_F(FileListingTest, ShortcutToAFolderJoinsTheFoldersUnderItsBareName) {
    folder_.makeFolder("target");
    folder_.write("Docs.lnk", folder_.lnkTo("target"));
    folder_.link("zlink", folder_.path("target"));
    folder_.write("a.txt");
    listing_.setExtensionFilter({QStringLiteral(".txt")});
    listing_.refresh();

    const FileRow& row = RowNamed(listing_, QStringLiteral("Docs.lnk"));
    EXPECT_EQ(row.displayName, QStringLiteral("Docs"));
    EXPECT_EQ(row.icon, file_icon::FolderShortcut);
    EXPECT_TRUE(row.isShortcutToFolder());
    // A .lnk file and a symbolic link alike, by name among the folders in either direction.
    EXPECT_EQ(Names(listing_), (QStringList{"..", "Docs.lnk", "target", "zlink", "a.txt"}));
    listing_.sort(MakeSortKey(sort_column::Type, true));
    EXPECT_EQ(Names(listing_), (QStringList{"..", "zlink", "target", "Docs.lnk", "a.txt"}));

    // Without folders it is a file like any other, and the filter leaves it out.
    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(listing_.indexOf(u"Docs.lnk"), -1);
}

// Icons come from the extension (a shortcut's from its target's, with the mark), unless plain
// icons are asked for; a resolved .lnk file drops its extension, an unresolved one keeps its name.
TEST_F(FileListingTest, RowsTakeTheirIconAndNameFromTheOptions) {
    for (const char* name :
         {"memo.txt", "page.HTM", "tool.exe", "archive.tar.gz", "Makefile", "photo.png", "noext"})
        folder_.write(QString::fromUtf8(name));
    folder_.write("pic.lnk", folder_.lnkTo("photo.png"));
    folder_.write("bare.lnk", folder_.lnkTo("noext"));
    folder_.write("broken.lnk", folder_.lnkTo("gone.png"));
    folder_.link("link.htm", folder_.path("photo.png"));
    const std::uint32_t plain = list_option::PlainIcons | list_option::HideExtensions;
    const int markedImage = file_icon::Image + file_icon::ShortcutMark;
    const std::tuple<std::uint32_t, bool, const char*, int, const char*, bool> rows[] = {
        {0, true, "memo.txt", file_icon::Text, "memo.txt", false},
        {0, true, "page.HTM", file_icon::Html, "page.HTM", false},
        {0, true, "tool.exe", file_icon::Program, "tool.exe", false},
        {0, true, "archive.tar.gz", file_icon::Generic, "archive.tar.gz", false},
        {0, true, "Makefile", file_icon::Generic, "Makefile", false},
        {0, true, "pic.lnk", markedImage, "pic", true},
        {0, true, "bare.lnk", file_icon::Generic, "bare", true},
        {0, true, "broken.lnk", file_icon::Generic, "broken.lnk", true},
        {0, true, "link.htm", markedImage, "link.htm", true},
        {plain, true, "memo.txt", file_icon::Generic, "memo", false},
        {plain, true, "archive.tar.gz", file_icon::Generic, "archive.tar", false},
        {plain, true, "Makefile", file_icon::Generic, "Makefile", false},
        {0, false, "pic.lnk", file_icon::Generic, "pic.lnk", false},
    };
    for (const auto& [options, resolve, name, icon, shown, shortcut] : rows) {
        listing_.setOptions(options);
        listing_.setResolveShortcuts(resolve);
        listing_.refresh();
        const FileRow& row = RowNamed(listing_, QString::fromUtf8(name));
        EXPECT_EQ(row.icon, icon) << name << " " << options << resolve;
        EXPECT_EQ(row.displayName, QString::fromUtf8(shown)) << name << " " << options << resolve;
        EXPECT_EQ(row.shortcut, shortcut) << name << " " << options << resolve;
    }
}

TEST_F(FileListingTest, EntriesCarryReadOnlySizeAndTime) {
    folder_.writeSized("a.txt", 5000);
    folder_.setReadOnly("a.txt", true);
    const QDateTime when(QDate(2021, 7, 9), QTime(13, 45));
    folder_.setModified("a.txt", when);
    listing_.refresh();

    const FileEntry& entry = RowNamed(listing_, "a.txt").entry;
    EXPECT_EQ(entry.attributes & kAttributeReadOnly, kAttributeReadOnly);
    EXPECT_EQ(entry.size(), 5000u);
    EXPECT_EQ(entry.lastWrite, when.toMSecsSinceEpoch() * 1'000'000);
}

TEST_F(FileListingTest, IndexOfPrefersTheExactCase) {
    folder_.write("Memo.txt");
    folder_.write("memo.txt");
    listing_.refresh();
    EXPECT_EQ(listing_.row(listing_.indexOf(u"memo.txt"))->entry.name, QStringLiteral("memo.txt"));
    EXPECT_EQ(listing_.row(listing_.indexOf(u"Memo.txt"))->entry.name, QStringLiteral("Memo.txt"));
    EXPECT_EQ(listing_.row(listing_.indexOf(u"MEMO.TXT"))->entry.name.toLower(),
              QStringLiteral("memo.txt"));
    EXPECT_EQ(listing_.indexOf(u"other"), -1);
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
        {u"*.txt", {".txt"}, ".txt"},
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
