#include "settings/SettingsStore.h"
#include "shell/AppIcon.h"
#include "shell/CMainFrame.h"
#include "shell/HelpPage.h"
#include "shell/XdgKeyFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QMenu>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>
#include <ostream>

// Readable URLs in failure messages.
void PrintTo(const QUrl& url, std::ostream* out) {
    *out << url.toString().toStdString();
}

namespace korvel {
namespace {

QString SourceHelpPage() {
    return QStringLiteral(KORVEL_SOURCE_DATA_DIR "/help/KORVEL100.htm");
}

QUrl PageUrl(const QString& path) {
    QUrl url = QUrl::fromLocalFile(path);
    url.setFragment(QStringLiteral("MAIN_CONTENTS"));
    return url;
}

// One `cmake --install` of the desktop files into a temporary prefix, shared by the tests that
// look at the result.
class InstalledTree : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        prefix_ = new QTemporaryDir;
        QProcess install;
        install.setProcessChannelMode(QProcess::MergedChannels);
        install.start(QStringLiteral(KORVEL_CMAKE_COMMAND),
                      {QStringLiteral("--install"), QStringLiteral(KORVEL_BUILD_DIR),
                       QStringLiteral("--prefix"), prefix_->path(), QStringLiteral("--component"),
                       QStringLiteral("desktop")});
        installed_ = install.waitForFinished(60000) &&
                     install.exitStatus() == QProcess::NormalExit && install.exitCode() == 0;
        log_ = QString::fromLocal8Bit(install.readAll()).toStdString();
    }
    static void TearDownTestSuite() {
        delete prefix_;
        prefix_ = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(installed_) << log_; }

    // A path under the prefix; "share" is where the desktop looks ($XDG_DATA_DIRS).
    static QString installedPath(const QString& relative) {
        return QDir(prefix_->path()).filePath(relative);
    }

    static inline QTemporaryDir* prefix_ = nullptr;
    static inline bool installed_ = false;
    static inline std::string log_;
};

// The entry starts the program with a file and names an icon the theme folder holds; a theme
// serves a PNG only for the size its folder names; the help page is found beside the program.
TEST_F(InstalledTree, PutsEveryFileWhereTheDesktopAndTheProgramLookForIt) {
    XdgKeyFile entry;
    ASSERT_TRUE(entry.read(installedPath(QStringLiteral("share/applications/korveledit.desktop"))));
    EXPECT_EQ(entry.value(u"Desktop Entry", u"Exec"), QStringLiteral("korveledit %f"));
    const QString icon = entry.value(u"Desktop Entry", u"Icon").value_or(QString());
    EXPECT_TRUE(QFileInfo(installedPath(
                              QStringLiteral("share/icons/hicolor/scalable/apps/%1.svg").arg(icon)))
                    .isFile())
        << icon.toStdString();
    for (int size : {48, 256}) {
        const QImage png(installedPath(
            QStringLiteral("share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(icon)));
        EXPECT_EQ(png.size(), QSize(size, size));
    }
    ASSERT_TRUE(QDir(prefix_->path()).mkpath(QStringLiteral("bin")));
    EXPECT_EQ(HelpPageUrl(installedPath(QStringLiteral("bin"))),
              PageUrl(installedPath(QStringLiteral("share/korveledit/help/KORVEL100.htm"))));
}

TEST_F(InstalledTree, DesktopEntryValidates) {
    const QString validator =
        QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    if (validator.isEmpty())
        GTEST_SKIP() << "no desktop-file-validate (desktop-file-utils)";
    QProcess validate;
    validate.setProcessChannelMode(QProcess::MergedChannels);
    validate.start(validator,
                   {installedPath(QStringLiteral("share/applications/korveledit.desktop"))});
    ASSERT_TRUE(validate.waitForFinished(30000));
    EXPECT_EQ(validate.exitCode(), 0);
    // Warnings and hints do not fail the validator, but they name real mistakes.
    EXPECT_EQ(QString::fromLocal8Bit(validate.readAll()).toStdString(), "");
}

TEST(HelpPage, FallsBackToTheSourceTreeWhenNotInstalled) {
    const QTemporaryDir elsewhere;
    EXPECT_EQ(HelpPageUrl(elsewhere.filePath(QStringLiteral("bin"))), PageUrl(SourceHelpPage()));
}

// The page as an XML reader sees it: ids, in-page link targets, the text, the charset.
struct PageContents {
    QString error;
    QSet<QString> ids;
    QStringList localLinks;
    QString text;
    QString charset;
};

PageContents ReadPage(const QString& path) {
    PageContents page;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        page.error = file.errorString();
        return page;
    }
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            const QXmlStreamAttributes attributes = reader.attributes();
            if (attributes.hasAttribute(QStringLiteral("id")))
                page.ids.insert(attributes.value(QStringLiteral("id")).toString());
            const QString href = attributes.value(QStringLiteral("href")).toString();
            if (href.startsWith(u'#'))
                page.localLinks.append(href.mid(1));
            if (reader.name() == u"meta" && attributes.hasAttribute(QStringLiteral("charset")))
                page.charset = attributes.value(QStringLiteral("charset")).toString();
        } else if (reader.isCharacters()) {
            page.text += reader.text();
        }
    }
    if (reader.hasError())
        page.error =
            QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString());
    return page;
}

TEST(HelpPage, IsWellFormedAndEveryLinkLandsOnASection) {
    const PageContents page = ReadPage(SourceHelpPage());
    ASSERT_EQ(page.error.toStdString(), "");
    EXPECT_EQ(page.charset.toLower(), u"utf-8");
    EXPECT_TRUE(page.ids.contains(QStringLiteral("MAIN_CONTENTS")));
    EXPECT_FALSE(page.localLinks.isEmpty());
    for (const QString& target : page.localLinks)
        EXPECT_TRUE(page.ids.contains(target)) << "#" << target.toStdString();
}

// The page names each item as the main menu shows it, without the mnemonic and the key.
void ExpectPageNamesEveryItem(const QMenu& menu, const QString& pageText) {
    const QRegularExpression mnemonic(QStringLiteral("\\(&.\\)|\\t.*$"));
    for (const QAction* action : menu.actions()) {
        if (action->isSeparator())
            continue;
        const QString shown = action->text().remove(mnemonic);
        EXPECT_TRUE(pageText.contains(shown)) << shown.toStdString();
        if (action->menu() != nullptr)
            ExpectPageNamesEveryItem(*action->menu(), pageText);
    }
}

TEST(HelpPage, NamesEveryCommandOfTheMainMenu) {
    const QTemporaryDir dir;
    SettingsStore store(dir.filePath(QStringLiteral("settings.ini")));
    const CMainFrame frame(store);
    const PageContents page = ReadPage(SourceHelpPage());
    ASSERT_EQ(page.error.toStdString(), "");
    ASSERT_GT(frame.mainMenu()->actions().size(), 5);
    ExpectPageNamesEveryItem(*frame.mainMenu(), page.text);
}

TEST(ApplicationIcon, ComesFromTheProgramsOwnFilesWhenNoThemeHasIt) {
    const QTemporaryDir noThemes;
    const QStringList searchPaths = QIcon::themeSearchPaths();
    QIcon::setThemeSearchPaths({noThemes.path()});
    const QIcon icon = ApplicationIcon();
    QIcon::setThemeSearchPaths(searchPaths);
    const QList<QSize> sizes = icon.availableSizes();
    EXPECT_TRUE(sizes.contains(QSize(48, 48)));
    EXPECT_TRUE(sizes.contains(QSize(256, 256)));
}

} // namespace
} // namespace korvel
