#include "browser/FileListing.h"

#include "browser/Wildcard.h"
#include "support/ScratchFolder.h"

#include <QDateTime>
#include <gtest/gtest.h>

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

TEST(SizeText, StepsFromBytesToKilobytesToMegabytes) {
    EXPECT_EQ(SizeText(File("a", 0)), QStringLiteral("0 "));
    EXPECT_EQ(SizeText(File("a", 1024)), QStringLiteral("1024 "));
    EXPECT_EQ(SizeText(File("a", 1025)), QStringLiteral("2K"));
    EXPECT_EQ(SizeText(File("a", 2047)), QStringLiteral("2K"));
    EXPECT_EQ(SizeText(File("a", 2048)), QStringLiteral("3K"));
    EXPECT_EQ(SizeText(File("a", 1048576)), QStringLiteral("1025K"));
    EXPECT_EQ(SizeText(File("a", 1048577)), QStringLiteral("1.00M"));
    EXPECT_EQ(SizeText(File("a", 5 * 1048576 + 524288)), QStringLiteral("5.50M"));
}

TEST(SizeText, CountsOnlyTheLow32BitsAndNothingForFolders) {
    EXPECT_EQ(SizeText(File("a", (std::uint64_t(1) << 32) + 10)), QStringLiteral("10 "));
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

// The comparison is checked in both directions on every column.
class CompareEntriesTest : public ::testing::TestWithParam<SortKey> {};

TEST_P(CompareEntriesTest, KeepsParentThenFoldersFirstInEveryOrder) {
    const SortKey key = GetParam();
    const FileEntry parent = ParentEntry();
    const FileEntry folder = Folder("zzz");
    const FileEntry file = File("aaa", 1, 1);

    EXPECT_LT(CompareEntries(&parent, &folder, key), 0);
    EXPECT_GT(CompareEntries(&folder, &parent, key), 0);
    EXPECT_LT(CompareEntries(&parent, &file, key), 0);
    EXPECT_LT(CompareEntries(&folder, &file, key), 0);
    EXPECT_GT(CompareEntries(&file, &folder, key), 0);
}

TEST_P(CompareEntriesTest, PutsAMissingEntryFirstInTheKeysDirection) {
    const SortKey key = GetParam();
    const FileEntry file = File("a");
    const int s = IsDescending(key) ? -1 : 1;
    EXPECT_EQ(CompareEntries(nullptr, nullptr, key), 0);
    EXPECT_EQ(CompareEntries(nullptr, &file, key), -s);
    EXPECT_EQ(CompareEntries(&file, nullptr, key), s);
}

INSTANTIATE_TEST_SUITE_P(EveryColumnBothWays, CompareEntriesTest,
                         ::testing::Values(MakeSortKey(0, false), MakeSortKey(0, true),
                                           MakeSortKey(1, false), MakeSortKey(1, true),
                                           MakeSortKey(2, false), MakeSortKey(2, true),
                                           MakeSortKey(3, false), MakeSortKey(3, true),
                                           MakeSortKey(4, false), MakeSortKey(4, true)));

TEST(CompareEntries, ComparesNamesIgnoringCase) {
    const FileEntry lower = File("apple");
    const FileEntry upper = File("BANANA");
    const FileEntry same = File("APPLE");
    EXPECT_LT(CompareEntries(&lower, &upper, MakeSortKey(0, false)), 0);
    EXPECT_GT(CompareEntries(&lower, &upper, MakeSortKey(0, true)), 0);
    EXPECT_EQ(CompareEntries(&lower, &same, MakeSortKey(0, false)), 0);
}

TEST(CompareEntries, SortsALargerHighWordFirstEvenAscending) {
    const FileEntry huge = File("huge", std::uint64_t(5) << 32);
    const FileEntry small = File("small", 10);
    const FileEntry smaller = File("smaller", 9);
    const SortKey ascending = MakeSortKey(sort_column::Size, false);
    const SortKey descending = MakeSortKey(sort_column::Size, true);

    EXPECT_LT(CompareEntries(&huge, &small, ascending), 0);
    EXPECT_GT(CompareEntries(&huge, &small, descending), 0);
    EXPECT_LT(CompareEntries(&smaller, &small, ascending), 0);
    EXPECT_GT(CompareEntries(&smaller, &small, descending), 0);
}

TEST(CompareEntries, BreaksSizeAndTimeTiesByName) {
    const FileEntry a = File("a", 7, 100);
    const FileEntry b = File("B", 7, 100);
    EXPECT_LT(CompareEntries(&a, &b, MakeSortKey(sort_column::Size, false)), 0);
    EXPECT_GT(CompareEntries(&a, &b, MakeSortKey(sort_column::Size, true)), 0);
    EXPECT_LT(CompareEntries(&a, &b, MakeSortKey(sort_column::Time, false)), 0);

    const FileEntry older = File("z", 7, 99);
    EXPECT_LT(CompareEntries(&older, &a, MakeSortKey(sort_column::Time, false)), 0);
    EXPECT_GT(CompareEntries(&older, &a, MakeSortKey(sort_column::Time, true)), 0);
}

TEST(CompareEntries, TypeSortPutsNamesWithoutExtensionFirstAndEqual) {
    const SortKey type = MakeSortKey(sort_column::Type, false);
    const FileEntry readme = File("README");
    const FileEntry makefile = File("Makefile");
    const FileEntry text = File("a.txt");
    const FileEntry ini = File("z.INI");
    const FileEntry otherText = File("b.TXT");

    EXPECT_LT(CompareEntries(&readme, &text, type), 0);
    EXPECT_GT(CompareEntries(&text, &readme, type), 0);
    EXPECT_EQ(CompareEntries(&readme, &makefile, type), 0);
    EXPECT_EQ(CompareEntries(&makefile, &readme, type), 0);
    EXPECT_LT(CompareEntries(&ini, &text, type), 0);
    EXPECT_LT(CompareEntries(&text, &otherText, type), 0);
    EXPECT_GT(CompareEntries(&readme, &text, MakeSortKey(sort_column::Type, true)), 0);

    // Folders compare by name under the type column.
    const FileEntry alpha = Folder("alpha.z");
    const FileEntry beta = Folder("beta.a");
    EXPECT_LT(CompareEntries(&alpha, &beta, type), 0);
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

    QByteArray lnkTo(const QString& relative) const {
        return "1#\"" + folder_.path(relative).toUtf8() + "\"\r\n";
    }

    ScratchFolder folder_;
    FileListing listing_;
};

TEST_F(FileListingTest, SetFolderKeepsOneTrailingSlashAndRefusesFiles) {
    folder_.makeFolder(QStringLiteral("sub"));
    folder_.write(QStringLiteral("a.txt"));
    EXPECT_TRUE(listing_.setFolder(folder_.path(QStringLiteral("sub//"))));
    EXPECT_EQ(listing_.folder(), folder_.path(QStringLiteral("sub/")));
    EXPECT_FALSE(listing_.setFolder(folder_.path(QStringLiteral("a.txt"))));
    EXPECT_FALSE(listing_.setFolder(folder_.path(QStringLiteral("missing"))));
    EXPECT_FALSE(listing_.setFolder(QString()));
    EXPECT_EQ(listing_.folder(), folder_.path(QStringLiteral("sub/")));
    EXPECT_TRUE(listing_.setFolder(QStringLiteral("/")));
    EXPECT_TRUE(listing_.isRoot());
}

TEST_F(FileListingTest, ListsParentAndFoldersFirstThenFilesWithoutHiddenOnes) {
    folder_.write(QStringLiteral("b.txt"));
    folder_.write(QStringLiteral("A.txt"));
    folder_.write(QStringLiteral(".hidden"));
    folder_.makeFolder(QStringLiteral("zeta"));
    folder_.makeFolder(QStringLiteral(".git"));

    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "zeta", "A.txt", "b.txt"}));

    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"A.txt", "b.txt"}));
}

TEST_F(FileListingTest, ParentStaysFirstInBothDirections) {
    folder_.makeFolder(QStringLiteral("a"));
    folder_.makeFolder(QStringLiteral("b"));
    folder_.writeSized(QStringLiteral("x.txt"), 10);
    folder_.writeSized(QStringLiteral("y.txt"), 20);
    listing_.refresh();

    listing_.sort(MakeSortKey(sort_column::Size, true));
    EXPECT_EQ(Names(listing_), (QStringList{"..", "b", "a", "y.txt", "x.txt"}));
    listing_.sort(MakeSortKey(sort_column::Name, false));
    EXPECT_EQ(Names(listing_), (QStringList{"..", "a", "b", "x.txt", "y.txt"}));
}

TEST_F(FileListingTest, RootHasNoParentRow) {
    ASSERT_TRUE(listing_.setFolder(QStringLiteral("/")));
    listing_.refresh();
    ASSERT_FALSE(listing_.rows().empty());
    for (const FileRow& row : listing_.rows())
        EXPECT_NE(row.entry.name, u"..");
}

TEST_F(FileListingTest, UnreadableFolderStillShowsTheParentRow) {
    folder_.makeFolder(QStringLiteral("sub"));
    ASSERT_TRUE(listing_.setFolder(folder_.path(QStringLiteral("sub"))));
    QDir(folder_.folder()).rmdir(QStringLiteral("sub"));
    EXPECT_EQ(listing_.refresh(), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), QStringList{".."});
}

TEST_F(FileListingTest, ExtensionFilterMatchesTheLastDotInAnyCase) {
    folder_.write(QStringLiteral("a.txt"));
    folder_.write(QStringLiteral("b.TXT"));
    folder_.write(QStringLiteral("c.txt.bak"));
    folder_.write(QStringLiteral("d.ini"));
    folder_.write(QStringLiteral("txt"));
    listing_.setOptions(0);

    listing_.setExtensionFilter({QStringLiteral(".txt")});
    listing_.refresh();
    EXPECT_EQ(Names(listing_), (QStringList{"a.txt", "b.TXT"}));

    listing_.setExtensionFilter({});
    listing_.refresh();
    EXPECT_EQ(Names(listing_).size(), 5);
}

TEST_F(FileListingTest, PatternListsMatchingFilesAndEveryFolder) {
    folder_.write(QStringLiteral("a.ini"));
    folder_.write(QStringLiteral("B.INI"));
    folder_.write(QStringLiteral("c.txt"));
    folder_.makeFolder(QStringLiteral("sub"));
    listing_.setExtensionFilter({QStringLiteral(".txt")});

    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("*.ini")), FileOpStatus::Done);
    EXPECT_EQ(Names(listing_), (QStringList{"..", "sub", "a.ini", "B.INI"}));
    EXPECT_EQ(listing_.refreshPattern(QStringLiteral("  ")), FileOpStatus::Failed);
}

TEST_F(FileListingTest, ShortcutToAFolderJoinsTheFoldersUnderItsBareName) {
    folder_.makeFolder(QStringLiteral("target"));
    folder_.write(QStringLiteral("Docs.lnk"), lnkTo(QStringLiteral("target")));
    folder_.link(QStringLiteral("zlink"), folder_.path(QStringLiteral("target")));
    folder_.write(QStringLiteral("a.txt"));
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

TEST_F(FileListingTest, ShortcutToAFileTakesTheTargetsIconWithTheMark) {
    folder_.write(QStringLiteral("photo.png"));
    folder_.write(QStringLiteral("noext"));
    folder_.write(QStringLiteral("pic.lnk"), lnkTo(QStringLiteral("photo.png")));
    folder_.write(QStringLiteral("bare.lnk"), lnkTo(QStringLiteral("noext")));
    folder_.write(QStringLiteral("broken.lnk"), lnkTo(QStringLiteral("gone.png")));
    folder_.link(QStringLiteral("page.htm"), folder_.path(QStringLiteral("photo.png")));
    listing_.refresh();

    EXPECT_EQ(RowNamed(listing_, "pic.lnk").icon, file_icon::Image + file_icon::ShortcutMark);
    EXPECT_EQ(RowNamed(listing_, "pic.lnk").displayName, QStringLiteral("pic"));
    EXPECT_EQ(RowNamed(listing_, "bare.lnk").icon, file_icon::Generic);
    // An unresolved shortcut is kept, under its own name, with the generic icon.
    EXPECT_EQ(RowNamed(listing_, "broken.lnk").icon, file_icon::Generic);
    EXPECT_EQ(RowNamed(listing_, "broken.lnk").displayName, QStringLiteral("broken.lnk"));
    EXPECT_TRUE(RowNamed(listing_, "broken.lnk").shortcut);
    // A link's icon comes from its target, not its own name.
    EXPECT_EQ(RowNamed(listing_, "page.htm").icon, file_icon::Image + file_icon::ShortcutMark);
    EXPECT_EQ(RowNamed(listing_, "page.htm").displayName, QStringLiteral("page.htm"));
}

TEST_F(FileListingTest, WithoutShortcutResolutionALnkIsAPlainFile) {
    folder_.makeFolder(QStringLiteral("target"));
    folder_.write(QStringLiteral("Docs.lnk"), lnkTo(QStringLiteral("target")));
    listing_.setResolveShortcuts(false);
    listing_.refresh();

    const FileRow& row = RowNamed(listing_, QStringLiteral("Docs.lnk"));
    EXPECT_FALSE(row.shortcut);
    EXPECT_FALSE(row.target);
    EXPECT_EQ(row.displayName, QStringLiteral("Docs.lnk"));
    EXPECT_EQ(row.icon, file_icon::Generic);
}

TEST_F(FileListingTest, IconAndNameOptions) {
    folder_.write(QStringLiteral("memo.txt"));
    folder_.write(QStringLiteral("page.HTM"));
    folder_.write(QStringLiteral("tool.exe"));
    folder_.write(QStringLiteral("archive.tar.gz"));
    folder_.write(QStringLiteral("Makefile"));
    listing_.setOptions(0);
    listing_.refresh();
    EXPECT_EQ(RowNamed(listing_, "memo.txt").icon, file_icon::Text);
    EXPECT_EQ(RowNamed(listing_, "page.HTM").icon, file_icon::Html);
    EXPECT_EQ(RowNamed(listing_, "tool.exe").icon, file_icon::Program);
    EXPECT_EQ(RowNamed(listing_, "archive.tar.gz").icon, file_icon::Generic);
    EXPECT_EQ(RowNamed(listing_, "Makefile").icon, file_icon::Generic);

    listing_.setOptions(list_option::PlainIcons | list_option::HideExtensions);
    listing_.refresh();
    EXPECT_EQ(RowNamed(listing_, "memo.txt").icon, file_icon::Generic);
    EXPECT_EQ(RowNamed(listing_, "memo.txt").displayName, QStringLiteral("memo"));
    EXPECT_EQ(RowNamed(listing_, "archive.tar.gz").displayName, QStringLiteral("archive.tar"));
    EXPECT_EQ(RowNamed(listing_, "Makefile").displayName, QStringLiteral("Makefile"));
}

TEST_F(FileListingTest, EntriesCarryReadOnlySizeAndTime) {
    folder_.writeSized(QStringLiteral("a.txt"), 5000);
    folder_.setReadOnly(QStringLiteral("a.txt"), true);
    const QDateTime when(QDate(2021, 7, 9), QTime(13, 45));
    folder_.setModified(QStringLiteral("a.txt"), when);
    listing_.refresh();

    const FileEntry& entry = RowNamed(listing_, "a.txt").entry;
    EXPECT_EQ(entry.attributes & kAttributeReadOnly, kAttributeReadOnly);
    EXPECT_EQ(entry.size(), 5000u);
    EXPECT_EQ(entry.lastWrite, when.toMSecsSinceEpoch() * 1'000'000);
    EXPECT_EQ(TimeText(entry, QDate(2021, 7, 9)), QStringLiteral("13:45"));
}

TEST_F(FileListingTest, IndexOfPrefersTheExactCase) {
    folder_.write(QStringLiteral("Memo.txt"));
    folder_.write(QStringLiteral("memo.txt"));
    listing_.refresh();
    EXPECT_EQ(listing_.row(listing_.indexOf(u"memo.txt"))->entry.name, QStringLiteral("memo.txt"));
    EXPECT_EQ(listing_.row(listing_.indexOf(u"Memo.txt"))->entry.name, QStringLiteral("Memo.txt"));
    EXPECT_EQ(listing_.row(listing_.indexOf(u"MEMO.TXT"))->entry.name.toLower(),
              QStringLiteral("memo.txt"));
    EXPECT_EQ(listing_.indexOf(u"other"), -1);
}

TEST(Wildcard, MatchesStarsAndQuestionMarksIgnoringCase) {
    EXPECT_TRUE(MatchesWildcard(u"Setup.INI", u"*.ini"));
    EXPECT_FALSE(MatchesWildcard(u"setup.ini.bak", u"*.ini"));
    EXPECT_TRUE(MatchesWildcard(u"a1.txt", u"a?.txt"));
    EXPECT_FALSE(MatchesWildcard(u"a.txt", u"a?.txt"));
    EXPECT_TRUE(MatchesWildcard(u"abcabcx", u"*abc*x"));
    EXPECT_TRUE(MatchesWildcard(u"x.htm", u"*.txt; *.htm"));
    EXPECT_TRUE(MatchesWildcard(u"README", u"*.*"));
    EXPECT_TRUE(MatchesWildcard(u"README", u"READ*.*"));
    EXPECT_FALSE(MatchesWildcard(u"README", u"*.txt"));
    EXPECT_FALSE(MatchesWildcard(u"a", u""));
}

TEST(Wildcard, TypePatternsGiveFilterAndDefaultExtension) {
    EXPECT_EQ(ExtensionFilterOf(u"*.ini;*.inf"), (QStringList{".ini", ".inf"}));
    EXPECT_EQ(ExtensionFilterOf(u"*.htm;*.html;*.HTM"), (QStringList{".htm", ".html"}));
    EXPECT_TRUE(ExtensionFilterOf(u"*.*").isEmpty());
    EXPECT_TRUE(ExtensionFilterOf(u"*.txt;*").isEmpty());

    EXPECT_EQ(DefaultExtensionOf(u"*.txt"), QStringLiteral(".txt"));
    EXPECT_EQ(DefaultExtensionOf(u" *.htm;*.html"), QStringLiteral(".htm"));
    EXPECT_EQ(DefaultExtensionOf(u"*.*"), QString());
    EXPECT_EQ(DefaultExtensionOf(u"*.t?t"), QString());
    EXPECT_EQ(DefaultExtensionOf(u""), QString());
}

} // namespace
} // namespace korvel
