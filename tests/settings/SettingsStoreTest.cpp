#include "settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

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

// A missing value reads as its setting's default, which the settings pages could have written;
// a folder's default is the documents folder.
TEST(UserSettingsStore, OnAnEmptyHomeSettingsReadTheirDefaults) {
    const SettingsStore store;
    std::vector<IntSetting> settings = {setting::FONT_SIZE,      setting::TAB_SIZE,
                                        setting::COLOR_TEXT,     setting::COLOR_BACKGROUND,
                                        setting::FILTER_INDEX,   setting::STR_ZOOM_METHOD,
                                        setting::FILE_LIST_STYLE};
    for (const auto& font : setting::kFontSlots)
        settings.insert(settings.end(), {font.size, font.bold, font.italic});
    settings.insert(settings.end(), setting::kCustomColors.begin(), setting::kCustomColors.end());
    for (const IntSetting& setting : settings) {
        EXPECT_EQ(store.read(setting), setting.defaultValue) << setting.name;
        EXPECT_GE(setting.defaultValue, setting.minimum) << setting.name;
        EXPECT_LE(setting.defaultValue, setting.maximum) << setting.name;
    }
    EXPECT_EQ(store.read(setting::FONT1_NAME), DefaultValue(setting::FONT1_NAME));
    EXPECT_FALSE(DefaultValue(setting::FONT1_NAME).isEmpty());
    EXPECT_EQ(store.read(setting::LAST_OPEN_FOLDER), DocumentsFolder());
    EXPECT_EQ(store.read(setting::MRU_FOLDER), DocumentsFolder());
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
    EXPECT_EQ(store.read(setting::TAB_SIZE), setting::TAB_SIZE.defaultValue);
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
    EXPECT_EQ(settings.read(setting::TAB_SIZE), setting::TAB_SIZE.defaultValue)
        << "a value of another group is not a setting";
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
    constexpr std::optional<int> kDefault; // the setting's own default
    const struct {
        IntSetting setting;
        const char* stored;
        std::optional<int> read;
    } rows[] = {
        {setting::TAB_SIZE, "abc", kDefault},
        {setting::FONT_SIZE, "", kDefault},
        {setting::FONT2_SIZE, "12abc", kDefault},
        {setting::FONT3_SIZE, "4294967296", kDefault},
        {setting::FONT4_SIZE, "1.5", kDefault},
        {setting::COLOR_BACKGROUND, "@Invalid()", kDefault},
        {setting::FONT1_SIZE, "2147483647", kDefault},
        {setting::FONT1_SIZE, "0", kDefault},
        {setting::FONT2_SIZE, "144", 144},
        {setting::FONT3_SIZE, "145", kDefault},
        {setting::FILTER_INDEX, "-2147483648", kDefault},
        {setting::TAB_SIZE, "80", 80},
        {setting::TAB_SIZE, "81", kDefault},
        {setting::FONT_SIZE, "3", 3},
        {setting::FONT_SIZE, "4", kDefault},
        {setting::COLOR_TEXT, "16777216", kDefault},
        {setting::COLOR_TEXT, "-1", kDefault},
        {setting::STR_ZOOM_METHOD, "3", kDefault},
        {setting::FILE_LIST_STYLE, "0", kDefault},
    };
    int fileNumber = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.setting.name) + "=" + row.stored);
        // A file for each row: QSettings trusts its cache while a file's time and size stay.
        const QString rowPath = dir_.filePath(QStringLiteral("row%1.ini").arg(++fileNumber));
        WriteFile(rowPath, QByteArray("[SETTINGS]\n") + row.setting.name + '=' + row.stored);
        EXPECT_EQ(SettingsStore(rowPath).read(row.setting),
                  row.read.value_or(row.setting.defaultValue));
    }
    WriteFile(path(), "[SETTINGS]\nFONT1_NAME=Gothic, Bold\n");
    EXPECT_EQ(store().read(setting::FONT1_NAME), DefaultValue(setting::FONT1_NAME));
}

TEST_F(SettingsFileTest, AFileThatIsNoIniFileYieldsTheDefaults) {
    QByteArray garbage;
    for (int i = 0; i < 4096; ++i)
        garbage.append(char((i * 7919) & 0xFF));
    WriteFile(path(), garbage);
    EXPECT_EQ(store().read(setting::TAB_SIZE), setting::TAB_SIZE.defaultValue);
    EXPECT_EQ(store().read(setting::FONT1_NAME), DefaultValue(setting::FONT1_NAME));
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
