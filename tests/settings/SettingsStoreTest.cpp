#include "settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace korvel {
namespace {

// Every test of this program runs in a home and configuration folder of its own: QSettings
// fixes the user configuration path the first time it is used, so both are set before any
// test runs, and the user's real settings are never touched.
class TemporaryHome : public ::testing::Environment {
public:
    void SetUp() override {
        ASSERT_TRUE(root_.isValid());
        ASSERT_TRUE(QDir(root_.path()).mkpath(QStringLiteral("home")));
        ASSERT_TRUE(QDir(root_.path()).mkpath(QStringLiteral("config")));
        qputenv("HOME", QFile::encodeName(home()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(configHome()));
    }
    static QString home() { return root_.path() + QStringLiteral("/home"); }
    static QString configHome() { return root_.path() + QStringLiteral("/config"); }

private:
    static inline QTemporaryDir root_;
};

[[maybe_unused]] ::testing::Environment* const temporaryHome =
    ::testing::AddGlobalTestEnvironment(new TemporaryHome);

void WriteFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

// A store in a file of its own, for the tests that do not need the user's store.
class SettingsFileTest : public ::testing::Test {
protected:
    QString path() const { return dir_.filePath(QStringLiteral("settings.ini")); }
    SettingsStore store() const { return SettingsStore(path()); }

    QTemporaryDir dir_;
};

TEST(UserSettingsStore, OnAnEmptyHomeEverySettingReadsItsDefault) {
    const SettingsStore store;
    const QString documents = QDir::cleanPath(TemporaryHome::home()) + u'/';

    EXPECT_EQ(store.read(setting::FONT_SIZE), 1); // font slot 2
    const int sizes[] = {7, 9, 12, 18};
    for (std::size_t slot = 0; slot < setting::kFontSlots.size(); ++slot) {
        SCOPED_TRACE(slot);
        const auto& font = setting::kFontSlots[slot];
        EXPECT_EQ(store.read(font.name), QStringLiteral("ＭＳ ゴシック"));
        EXPECT_EQ(store.read(font.size), sizes[slot]);
        EXPECT_EQ(store.read(font.bold), 0);
        EXPECT_EQ(store.read(font.italic), 0);
    }
    EXPECT_EQ(store.read(setting::COLOR_TEXT), 0x000000);
    EXPECT_EQ(store.read(setting::COLOR_BACKGROUND), 0xFFFFFF);
    for (const IntSetting& custom : setting::kCustomColors)
        EXPECT_EQ(store.read(custom), 0xFFFFFF) << custom.name;
    EXPECT_EQ(store.read(setting::TAB_SIZE), 8);
    EXPECT_EQ(store.read(setting::LAST_OPEN_FOLDER), documents);
    EXPECT_EQ(store.read(setting::MRU_FOLDER), documents);
    EXPECT_EQ(store.read(setting::LOAD_DAFAULT_MACRO), 0);
    EXPECT_EQ(store.read(setting::DEFAULT_MACRO_FILE_NAME), QString());
}

TEST(UserSettingsStore, LivesInTheIniFileUnderTheConfigurationHome) {
    SettingsStore store;
    store.write(setting::TAB_SIZE, 4);
    const QString expected =
        TemporaryHome::configHome() + QStringLiteral("/Harrow Apps/Korvelエディタ.ini");
    QFile file(expected);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << expected.toStdString();
    EXPECT_EQ(file.readAll(), "[SETTINGS]\nTAB_SIZE=4\n");
    EXPECT_EQ(SettingsStore(expected).read(setting::TAB_SIZE), 4);

    // Leave the user store empty for the test that reads its defaults.
    store.openGroup(kSettingsGroup)->remove(QLatin1StringView(setting::TAB_SIZE.name));
    EXPECT_EQ(store.read(setting::TAB_SIZE), 8);
}

TEST_F(SettingsFileTest, ReadsAFileWrittenInTheStoredFormat) {
    WriteFile(path(), "[SETTINGS]\n"
                      "FONT_SIZE=3\n"
                      "LOAD_DAFAULT_MACRO=1\n"
                      "DEFAULT_MACRO_FILE_NAME=/home/user/\xE8\xB5\xB7\xE5\x8B\x95.mcr\n"
                      "COLOR_BACKGROUND=13434879\n"
                      "[OpenDocs]\n"
                      "TAB_SIZE=2\n");
    const SettingsStore settings = store();
    EXPECT_EQ(settings.read(setting::FONT_SIZE), 3);
    EXPECT_EQ(settings.read(setting::LOAD_DAFAULT_MACRO), 1);
    EXPECT_EQ(settings.read(setting::DEFAULT_MACRO_FILE_NAME),
              QStringLiteral("/home/user/起動.mcr"));
    EXPECT_EQ(settings.read(setting::COLOR_BACKGROUND), 0xCCFFFF);
    EXPECT_EQ(settings.read(setting::TAB_SIZE), 8) << "a value of another group is not a setting";
}

TEST_F(SettingsFileTest, IntegersRoundTrip) {
    SettingsStore settings = store();
    for (int value : {0, 1, -1, 80, 0x00FFFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        settings.writeInt("CUSTOM_COLOR3", value);
        EXPECT_EQ(store().readInt("CUSTOM_COLOR3", 0), value);
    }
    settings.write(setting::CUSTOM_COLOR3, 0x123456);
    EXPECT_EQ(store().read(setting::CUSTOM_COLOR3), 0x123456);
}

TEST_F(SettingsFileTest, StringsRoundTripWhateverTheyHold) {
    SettingsStore settings = store();
    const QString values[] = {
        QStringLiteral("ＭＳ 明朝"),
        QStringLiteral("/home/user/My Documents/マクロ, 集/"),
        QStringLiteral("  leading and trailing blanks  "),
        QStringLiteral("a=b;c#d \"quoted\" \\back\\slash"),
        QStringLiteral("@at the start"),
        QStringLiteral("two\nlines"),
        QString(),
    };
    for (const QString& value : values) {
        settings.write(setting::DEFAULT_MACRO_FILE_NAME, value);
        EXPECT_EQ(store().read(setting::DEFAULT_MACRO_FILE_NAME), value) << value.toStdString();
    }
}

TEST_F(SettingsFileTest, AStoredEmptyFolderIsNotReplacedByTheDefault) {
    store().write(setting::LAST_OPEN_FOLDER, QString());
    EXPECT_EQ(store().read(setting::LAST_OPEN_FOLDER), QString());
}

TEST_F(SettingsFileTest, ReadingNeverWritesADefaultBack) {
    const SettingsStore settings = store();
    settings.read(setting::TAB_SIZE);
    settings.read(setting::LAST_OPEN_FOLDER);
    settings.readString("FONT1_NAME", QStringLiteral("x"));
    EXPECT_FALSE(QFileInfo::exists(path()));

    store().write(setting::FONT_SIZE, 2);
    settings.read(setting::TAB_SIZE);
    settings.read(setting::MRU_FOLDER);
    EXPECT_EQ(store().openGroup(kSettingsGroup)->childKeys(),
              QStringList{QLatin1StringView(setting::FONT_SIZE.name)});
}

// A hand-edited or damaged file must not reach the arithmetic of the fonts, the tab stops or
// the dialogs with a value the settings pages could never have written.
TEST_F(SettingsFileTest, ValuesOfTheWrongTypeOrOutsideTheirRangeReadAsTheDefault) {
    const struct {
        IntSetting setting;
        const char* stored;
        int read;
    } rows[] = {
        {setting::TAB_SIZE, "abc", 8},
        {setting::FONT_SIZE, "", 1},
        {setting::FONT2_SIZE, "12abc", 9},
        {setting::FONT3_SIZE, "4294967296", 12},
        {setting::FONT4_SIZE, "1.5", 18},
        {setting::COLOR_BACKGROUND, "@Invalid()", 0xFFFFFF},
        {setting::FONT1_SIZE, "2147483647", 7},
        {setting::FONT1_SIZE, "0", 7},
        {setting::FONT2_SIZE, "144", 144},
        {setting::FONT3_SIZE, "145", 12},
        {setting::FILTER_INDEX, "-2147483648", 1},
        {setting::TAB_SIZE, "80", 80},
        {setting::TAB_SIZE, "81", 8},
        {setting::FONT_SIZE, "3", 3},
        {setting::FONT_SIZE, "4", 1},
        {setting::COLOR_TEXT, "16777216", 0},
        {setting::COLOR_TEXT, "-1", 0},
        {setting::STR_ZOOM_METHOD, "3", 1},
        {setting::FILE_LIST_STYLE, "0", 1},
    };
    int fileNumber = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.setting.name) + "=" + row.stored);
        // A file for each row: QSettings trusts its cache while a file's time and size stay.
        const QString rowPath = dir_.filePath(QStringLiteral("row%1.ini").arg(++fileNumber));
        WriteFile(rowPath, QByteArray("[SETTINGS]\n") + row.setting.name + '=' + row.stored);
        EXPECT_EQ(SettingsStore(rowPath).read(row.setting), row.read);
    }
    WriteFile(path(), "[SETTINGS]\nFONT1_NAME=Gothic, Bold\n");
    EXPECT_EQ(store().read(setting::FONT1_NAME), QStringLiteral("ＭＳ ゴシック"));
}

TEST_F(SettingsFileTest, AFileThatIsNoIniFileYieldsTheDefaults) {
    QByteArray garbage;
    for (int i = 0; i < 4096; ++i)
        garbage.append(char((i * 7919) & 0xFF));
    WriteFile(path(), garbage);
    EXPECT_EQ(store().read(setting::TAB_SIZE), 8);
    EXPECT_EQ(store().read(setting::FONT1_NAME), QStringLiteral("ＭＳ ゴシック"));
}

TEST_F(SettingsFileTest, OtherGroupsShareTheFileButNotTheValues) {
    {
        auto recent = store().openGroup(kRecentFileListGroup);
        recent->setValue("File1", QStringLiteral("/home/user/メモ.txt"));
    }
    store().writeString("File1", QStringLiteral("not a recent file"));

    EXPECT_EQ(store().openGroup(kRecentFileListGroup)->value("File1").toString(),
              QStringLiteral("/home/user/メモ.txt"));
    EXPECT_EQ(store().readString("File1", QString()), QStringLiteral("not a recent file"));
    EXPECT_EQ(QSettings(path(), QSettings::IniFormat).childGroups(),
              (QStringList{QString::fromLatin1(kRecentFileListGroup),
                           QString::fromLatin1(kSettingsGroup)}));
}

// The documents folder comes from the XDG user directories, else ~/Documents, else home.
class DocumentsFolderTest : public ::testing::Test {
protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }

    static void Clean() {
        QFile::remove(TemporaryHome::configHome() + QStringLiteral("/user-dirs.dirs"));
        QDir(TemporaryHome::home() + QStringLiteral("/Documents")).removeRecursively();
        QDir(TemporaryHome::home() + QStringLiteral("/文書")).removeRecursively();
    }
    static void PointUserDirsAt(const QByteArray& value) {
        WriteFile(TemporaryHome::configHome() + QStringLiteral("/user-dirs.dirs"),
                  "XDG_DOCUMENTS_DIR=\"" + value + "\"\n");
    }
    static QString Home() { return QDir::cleanPath(TemporaryHome::home()); }
};

TEST_F(DocumentsFolderTest, IsTheHomeFolderWhenThereIsNoDocumentsFolder) {
    EXPECT_EQ(DocumentsFolder(), Home() + u'/');
}

TEST_F(DocumentsFolderTest, IsTheDocumentsFolderWhenItExists) {
    ASSERT_TRUE(QDir(Home()).mkdir(QStringLiteral("Documents")));
    EXPECT_EQ(DocumentsFolder(), Home() + QStringLiteral("/Documents/"));
}

TEST_F(DocumentsFolderTest, FollowsTheUserDirectoriesWithExactlyOneTrailingSlash) {
    ASSERT_TRUE(QDir(Home()).mkdir(QStringLiteral("文書")));
    PointUserDirsAt("$HOME/\xE6\x96\x87\xE6\x9B\xB8//");
    EXPECT_EQ(DocumentsFolder(), Home() + QStringLiteral("/文書/"));

    PointUserDirsAt("$HOME/missing");
    EXPECT_EQ(DocumentsFolder(), Home() + u'/');
}

} // namespace
} // namespace korvel
