#include "shell/Association.h"

#include "messages/testing/ScriptedMessageService.h"
#include "shell/XdgKeyFile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <ostream>

// Readable strings in failure output.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace korvel {
namespace {

constexpr char kMimeApps[] = "# the user's own comment\n[Added Associations]\n"
                             "text/plain=other.desktop;\n\n[Default Applications]\n"
                             "image/png=viewer.desktop\ntext/plain=other.desktop;vim.desktop;\n\n"
                             "[Removed Associations]\ntext/html=KorvelHtm.desktop;\n";

// Every test runs in a home of its own: the XDG variables point into a temporary folder before
// anything is looked up (each test is a process of its own, so nothing needs putting back).
class AssociationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        qputenv("XDG_DATA_HOME", path("data").toUtf8());
        qputenv("XDG_CONFIG_HOME", path("config").toUtf8());
        qputenv("XDG_DATA_DIRS", "/usr/share");
    }

    QString path(const QString& relative) const { return home_.filePath(relative); }
    QString write(const QString& relative, const QByteArray& text) const {
        QDir().mkpath(QFileInfo(path(relative)).absolutePath());
        QFile file(path(relative));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }
    QString makeProgram(const QString& relative) const {
        const QString program = write(relative, "#!/bin/sh\n");
        QFile::setPermissions(program, QFile::permissions(program) | QFile::ExeOwner);
        return program;
    }
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString value(const QString& relative, const QString& group, const QString& key) const {
        XdgKeyFile file;
        file.read(path(relative));
        return file.value(group, key).value_or(QStringLiteral("<none>"));
    }
    QString defaultOf(const QString& mimeType) const {
        return value("config/mimeapps.list", "Default Applications", mimeType);
    }
    QString entryValue(const QString& className, const QString& key) const {
        return value("data/applications/" + className + ".desktop", "Desktop Entry", key);
    }

    QTemporaryDir home_;
    const QString program_ = makeProgram("bin/korveledit");
};

TEST_F(AssociationTest, RoundTripGivesTheTypeBackAndLeavesEveryOtherLineAsItWas) {
    write("config/mimeapps.list", kMimeApps);
    ASSERT_TRUE(SetExtensionAssociated(".txt", true, program_));
    EXPECT_EQ(defaultOf("text/plain"), "KorvelText.desktop");
    EXPECT_EQ(entryValue("KorvelText", "X-Korvel-OldEntry"), "other.desktop;vim.desktop;");
    EXPECT_EQ(entryValue("KorvelText", "Name"), "テキストファイル");
    EXPECT_EQ(entryValue("KorvelText", "Exec"), program_ + " %f");
    EXPECT_TRUE(IsExtensionAssociated(".txt", program_));
    EXPECT_FALSE(IsExtensionAssociated(".txt", path("elsewhere/korveledit")));

    ASSERT_TRUE(SetExtensionAssociated(".txt", false, program_));
    EXPECT_EQ(read("config/mimeapps.list"), QByteArray(kMimeApps));
    EXPECT_FALSE(IsExtensionAssociated(".txt", program_));
}

TEST_F(AssociationTest, UnregisteringGivesTheTypeBackToItsOwnerBeforeUs) {
    write("config/mimeapps.list", "[Default Applications]\ntext/html=browser.desktop\n");
    for (const char* extension : {".htm", ".html", ".htm"})
        ASSERT_TRUE(SetExtensionAssociated(extension, true, program_)) << extension;
    EXPECT_EQ(entryValue("KorvelHtm", "X-Korvel-OldEntry"), "browser.desktop");
    EXPECT_EQ(entryValue("KorvelHtml", "X-Korvel-OldEntry"), "browser.desktop");

    ASSERT_TRUE(UnregisterExtension(".html")); // .htm holds the type: nothing to give back yet
    EXPECT_TRUE(IsExtensionAssociated(".html", program_));
    ASSERT_TRUE(UnregisterExtension(".htm"));
    EXPECT_EQ(defaultOf("text/html"), "browser.desktop");

    // Without an old entry the system's default comes back.
    for (const char* extension : {".txt", ".ini"}) {
        ASSERT_TRUE(SetExtensionAssociated(extension, true, program_));
        ASSERT_TRUE(UnregisterExtension(extension));
        EXPECT_EQ(defaultOf(MimeTypeOfExtension(extension)), "<none>") << extension;
    }

    // An earlier version's class, named with a blank, is given back the same way.
    QFile::remove(path("data/applications/KorvelText.desktop"));
    write("config/mimeapps.list", "[Default Applications]\ntext/plain=Korvel Text.desktop\n");
    write("data/applications/Korvel Text.desktop",
          "[Desktop Entry]\nExec=/old/korveledit %f\nX-Korvel-OldEntry=other.desktop\n");
    ASSERT_TRUE(UnregisterExtension(".txt"));
    EXPECT_EQ(defaultOf("text/plain"), "other.desktop");
}

TEST_F(AssociationTest, CheckExtensionBlamesOnlyEntriesThatAreOursAndPointElsewhere) {
    using enum AssociationCheck;
    const QString missing = path("moved/korveledit");
    const struct {
        const char* name;
        QString defaultApp, exec;
        AssociationCheck expected;
    } rows[] = {{"no default", "", missing + " %f", Fine},
                {"another program's type", "other.desktop", missing + " %f", Fine},
                {"this program", "KorvelText.desktop", program_ + " %f", Fine},
                {"a bare word", "KorvelText.desktop", missing, Fine},
                {"another copy, any case", "korveltext.desktop", "/bin/sh %f", OtherProgram},
                {"a moved program", "KorvelText.desktop", missing + " %f", MissingProgram}};
    for (const auto& row : rows) {
        write("config/mimeapps.list",
              row.defaultApp.isEmpty()
                  ? QByteArray()
                  : "[Default Applications]\ntext/plain=" + row.defaultApp.toUtf8() + '\n');
        write("data/applications/KorvelText.desktop",
              "[Desktop Entry]\nExec=" + row.exec.toUtf8() + '\n');
        EXPECT_EQ(CheckExtension(".txt", program_), row.expected) << row.name;
    }
}

TEST_F(AssociationTest, CommandLinesOfAwkwardPathsReadBackAsTheSameProgram) {
    for (const char* name : {"plain", "with blank", "dollar$ \"quote\" back\\slash", "100%"}) {
        const QString program = makeProgram(QStringLiteral("%1/korveledit").arg(name));
        ASSERT_TRUE(SetExtensionAssociated(".txt", true, program)) << name;
        EXPECT_EQ(CheckExtension(".txt", program), AssociationCheck::Fine) << name;
        EXPECT_EQ(CheckExtension(".txt", program_), AssociationCheck::OtherProgram) << name;
        const QString entry = path("data/applications/KorvelText.desktop");
        const QString validator = QStandardPaths::findExecutable("desktop-file-validate");
        if (!validator.isEmpty()) { // the desktop's own reading of the quoting
            EXPECT_EQ(QProcess::execute(validator, {entry}), 0) << name;
        }
    }
}

// Asked once at start-up when an entry of ours points elsewhere (another copy outweighs a moved
// program); Yes points every entry here again and keeps the owners they give the types back to.
TEST_F(AssociationTest, StartupAsksOnceAndRepairsOnYes) {
    using enum AssociationCheck;
    using enum MessageAnswer;
    const QString moved = path("moved/korveledit");
    const struct {
        const char* name;
        QString txtProgram, mcrProgram;
        bool unwritableIni;
        QList<MessageAnswer> answers;
        QList<int> shown;
        AssociationCheck after;
    } rows[] = {{"all well", program_, program_, false, {}, {}, Fine},
                {"moved, No", moved, moved, false, {No}, {40022}, MissingProgram},
                {"moved and another copy, Yes", moved, "/bin/sh", false, {Yes}, {40021}, Fine},
                {"repair fails", moved, moved, true, {Yes, Ok}, {40022, 40023}, Fine}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QDir(path("data")).removeRecursively();
        write("config/mimeapps.list", "[Default Applications]\ntext/plain=other.desktop\n");
        ASSERT_TRUE(SetExtensionAssociated(".txt", true, row.txtProgram));
        ASSERT_TRUE(SetExtensionAssociated(".mcr", true, row.mcrProgram));
        if (row.unwritableIni) { // readable, but on a read-only file system, even for root
            ASSERT_TRUE(QFile::link("/proc/version", path("data/applications/KorvelIni.desktop")));
        }
        ScriptedMessageService messages;
        for (MessageAnswer answer : row.answers)
            messages.script({answer});
        StartupAssociationCheck(nullptr, program_);
        EXPECT_EQ(messages.shownIds(), row.shown);
        for (const ShownMessage& box : messages.shown()) {
            EXPECT_TRUE(box.topmost);
            EXPECT_EQ(box.icon, box.id == 40023 ? MessageIcon::Stop : MessageIcon::Question);
        }
        EXPECT_EQ(CheckAssociation(program_), row.after);
        EXPECT_EQ(entryValue("KorvelText", "X-Korvel-OldEntry"), "other.desktop");
    }
}

TEST_F(AssociationTest, OnlyTxtTakesPlainTextTheOthersWithoutATypeGetOneOfTheirOwn) {
    // A system that files .ini under plain text, as some do.
    write("system/mime/globs2", "50:text/plain:*.ini\n");
    qputenv("XDG_DATA_DIRS", (path("system") + ":/usr/share").toUtf8());
    const std::pair<const char*, const char*> rows[] = {
        {".txt", "text/plain"},       {".htm", "text/html"},         {".html", "text/html"},
        {".xml", "application/xml"},  {".inf", "text/x-korvel-inf"}, {".ini", "text/x-korvel-ini"},
        {".mcr", "text/x-korvel-mcr"}};
    for (const auto& [extension, type] : rows)
        EXPECT_EQ(MimeTypeOfExtension(extension), type) << extension;
    write("config/mimeapps.list", "[Default Applications]\ntext/plain=other.desktop\n");
    ASSERT_TRUE(SetExtensionAssociated(".ini", true, program_));
    EXPECT_EQ(defaultOf("text/plain"), "other.desktop");
    EXPECT_EQ(defaultOf("text/x-korvel-ini"), "KorvelIni.desktop");
    if (!QStandardPaths::findExecutable("update-mime-database").isEmpty()) { // compiled
        EXPECT_TRUE(read("data/mime/globs2").contains("text/x-korvel-ini:*.ini"));
    }
}

// What the desktop itself answers: xdg-mime, run in the same home and environment.
// The user's mimeinfo.cache goes first: xdg-mime falls back to its first entry for the type,
// which may be ours by chance; without it only mimeapps.list and a runnable entry can say "ours".
QString DesktopDefaultOf(const QString& mimeType) {
    QFile::remove(qEnvironmentVariable("XDG_DATA_HOME") + "/applications/mimeinfo.cache");
    QProcess query;
    query.start("xdg-mime", {"query", "default", mimeType});
    query.waitForFinished(30000);
    return QString::fromUtf8(query.readAllStandardOutput()).trimmed();
}

TEST_F(AssociationTest, TheDesktopOpensTheTypesWithUsAndThenWithTheOldOwnerAgain) {
    if (QStandardPaths::findExecutable("xdg-mime").isEmpty())
        GTEST_SKIP() << "xdg-mime (xdg-utils) is not installed";
    // xdg-mime in its desktop-neutral mode, blind to the system's own defaults.
    qputenv("XDG_CURRENT_DESKTOP", "X-Generic");
    qputenv("XDG_CONFIG_DIRS", "/nonexistent");
    write("data/applications/other.desktop",
          "[Desktop Entry]\nType=Application\nName=Other\nExec=" +
              makeProgram("bin/other").toUtf8() + " %f\nMimeType=text/plain;\n");
    write("config/mimeapps.list", "[Default Applications]\ntext/plain=other.desktop\n");
    ASSERT_EQ(DesktopDefaultOf("text/plain"), "other.desktop");

    ASSERT_TRUE(SetExtensionAssociated(".txt", true, program_));
    ASSERT_TRUE(SetExtensionAssociated(".mcr", true, program_));
    EXPECT_EQ(DesktopDefaultOf("text/plain"), "KorvelText.desktop");
    EXPECT_EQ(DesktopDefaultOf("text/x-korvel-mcr"), "KorvelMacro.desktop");

    ASSERT_TRUE(UnregisterExtension(".txt"));
    EXPECT_EQ(DesktopDefaultOf("text/plain"), "other.desktop");
}

} // namespace
} // namespace korvel
