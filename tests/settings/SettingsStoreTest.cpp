#include "settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <optional>

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

// Another instance and the next start read the same file; a folder's default is the documents
// folder.
TEST(UserSettingsStore, LivesInTheIniFileUnderTheConfigurationHome) {
    SettingsStore store;
    store.write(setting::TAB_SIZE, 4);
    const QString expected =
        TemporaryHome::configHome() + QStringLiteral("/Harrow Apps/Korvelエディタ.ini");
    QFile file(expected);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << expected.toStdString();
    EXPECT_EQ(file.readAll(), "[SETTINGS]\nTAB_SIZE=4\n");
    EXPECT_EQ(SettingsStore(expected).read(setting::TAB_SIZE), 4);

    EXPECT_EQ(store.read(setting::LAST_OPEN_FOLDER), DocumentsFolder());
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

TEST_F(SettingsFileTest, ValuesRoundTripWhateverTheyHold) {
    SettingsStore settings = store();
    for (int value : {0, -1, 0x00FFFFFF, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        settings.writeInt("CUSTOM_COLOR3", value);
        EXPECT_EQ(store().readInt("CUSTOM_COLOR3", 0), value);
    }
    for (const char16_t* value : {u"ＭＳ 明朝", u"/home/user/マクロ, 集/", u"  blanks  ",
                                  u"a=b;c#d \"q\" \\b\\s", u"@at the start", u"two\nlines", u""}) {
        settings.write(setting::DEFAULT_MACRO_FILE_NAME, QString::fromUtf16(value));
        EXPECT_EQ(store().read(setting::DEFAULT_MACRO_FILE_NAME), QString::fromUtf16(value));
    }
    // A stored empty folder is the user's choice, not a missing value.
    settings.write(setting::LAST_OPEN_FOLDER, QString());
    EXPECT_EQ(store().read(setting::LAST_OPEN_FOLDER), QString());
}

TEST_F(SettingsFileTest, ReadingNeverWritesADefaultBack) {
    const SettingsStore settings = store();
    settings.read(setting::TAB_SIZE);
    settings.read(setting::LAST_OPEN_FOLDER);
    EXPECT_FALSE(QFileInfo::exists(path()));
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
        {setting::FONT2_SIZE, "12abc", kDefault},
        {setting::FONT4_SIZE, "1.5", kDefault},
        {setting::COLOR_BACKGROUND, "@Invalid()", kDefault},
        {setting::TAB_SIZE, "4294967300", kDefault}, // wraps round to 4
        {setting::FONT1_SIZE, "0", kDefault},
        {setting::FONT2_SIZE, "144", 144},
        {setting::FONT3_SIZE, "145", kDefault},
        {setting::FILTER_INDEX, "-2147483648", kDefault},
        {setting::FONT_SIZE, "3", 3},
        {setting::FONT_SIZE, "4", kDefault},
        {setting::COLOR_TEXT, "16777216", kDefault},
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

TEST_F(DocumentsFolderTest, IsTheUserDirectoryThenDocumentsThenHomeWithOneTrailingSlash) {
    EXPECT_EQ(DocumentsFolder(), Home() + u'/');
    ASSERT_TRUE(QDir(Home()).mkdir(QStringLiteral("Documents")));
    EXPECT_EQ(DocumentsFolder(), Home() + QStringLiteral("/Documents/"));
    ASSERT_TRUE(QDir(Home()).mkdir(QStringLiteral("文書")));
    PointUserDirsAt("$HOME/\xE6\x96\x87\xE6\x9B\xB8//");
    EXPECT_EQ(DocumentsFolder(), Home() + QStringLiteral("/文書/"));
    PointUserDirsAt("$HOME/missing");
    EXPECT_EQ(DocumentsFolder(), Home() + u'/');
}

} // namespace
} // namespace korvel
