#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using namespace Qt::StringLiterals;

struct Outcome {
    int exitCode;
    QString out, err;
};

class Korvelmacro : public ::testing::Test {
protected:
    QString Write(const QString& name, const QByteArray& bytes) {
        QFile file(dir_.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    Outcome Start(const QStringList& arguments) {
        QProcess process;
        // The run command reads the user's settings: these are the test's own.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, dir_.path());
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(KORVELMACRO_PATH), arguments);
        EXPECT_TRUE(process.waitForFinished(30000));
        const QByteArray out = process.readAllStandardOutput();
        EXPECT_FALSE(out.contains('\r'));
        return {process.exitCode(), QString::fromUtf8(out),
                QString::fromUtf8(process.readAllStandardError())};
    }
    QByteArray Read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir dir_;
};

TEST_F(Korvelmacro, CheckReportsEachFileAndTheWorstStatus) {
    const QString clean = Write(u"clean.mcr"_s, "# only a comment\nCOPY\n");
    const QString warned = Write(u"warned.mcr"_s, "COPYX\r\n");
    const QString failed = Write(u"failed.mcr"_s, "TYPE \x93\xfa\n");
    EXPECT_EQ(Start({u"check"_s, clean}).exitCode, 0);
    EXPECT_EQ(Start({u"check"_s, clean}).out, QString());

    const Outcome run = Start({u"check"_s, clean, warned, failed});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(run.out.contains(clean));
    EXPECT_TRUE(run.out.startsWith(u"==> "_s + warned + u" <==\n    Worning (1): "_s))
        << run.out.toStdString();
    EXPECT_TRUE(run.out.contains(u"\n==> "_s + failed + u" <==\n    Worning (1): "_s));
    EXPECT_TRUE(run.out.contains(u"未知のキーワード \"日\""_s));
    EXPECT_TRUE(run.out.endsWith(
        u"\n ----------------------------\n　　エラーが発生したため、マクロのロードを中止しました。\n"_s));

    const Outcome missing = Start({u"check"_s, dir_.filePath(u"none.mcr"_s), failed});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(missing.err.contains(dir_.filePath(u"none.mcr"_s)));
}

TEST_F(Korvelmacro, ListWritesTheCommandsBack) {
    const QString path = Write(u"m.mcr"_s, "type ctrl+right\ngoto + 3\nCOPYX\n");
    const Outcome run = Start({u"list"_s, path});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, u"TYPE CTRL RIGHT\nGOTO +3\nCOPY\n"_s);
    EXPECT_TRUE(run.err.contains(u"Worning (3)"_s));
    EXPECT_EQ(Start({u"list"_s, Write(u"bad.mcr"_s, "SETFOCUS\n")}).out, QString());
}

// Each file is played on and saved in its own code set and line ending; a file that cannot be
// opened fails alone; every box is on standard error; a macro that does not load runs on nothing.
TEST_F(Korvelmacro, RunPlaysOnEachFileAndSavesItAsItWas) {
    const QString macro = Write(u"m.mcr"_s, "REPLACE /A \"b\" \"XX\"\nGOTO HOME\nTYPE \"# \"\n");
    const QString crlf = Write(u"a.txt"_s, "abc\r\nbcd\r\n");
    const QString shiftJis = Write(u"b.txt"_s, "\x93\xfa\x96\x7b b\n");
    const Outcome run = Start({u"run"_s, macro, crlf, dir_.filePath(u"gone.txt"_s), shiftJis});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(Read(crlf), "# aXXc\r\nXXcd\r\n");
    EXPECT_EQ(Read(shiftJis), "# \x93\xfa\x96\x7b XX\n");
    EXPECT_TRUE(run.err.startsWith(u"[33026] 2 箇所"_s)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"[33003] "_s));

    EXPECT_EQ(Start({u"run"_s, Write(u"bad.mcr"_s, "SETFOCUS\n"), crlf}).exitCode, 1);
    EXPECT_EQ(Read(crlf), "# aXXc\r\nXXcd\r\n");
}

TEST_F(Korvelmacro, CommandLineErrors) {
    EXPECT_EQ(Start({u"--help"_s}).exitCode, 0);
    for (const QStringList& arguments :
         {QStringList{}, QStringList{u"check"_s}, QStringList{u"list"_s, u"a"_s, u"b"_s},
          QStringList{u"play"_s, u"a"_s}, QStringList{u"run"_s, u"a"_s}})
        EXPECT_EQ(Start(arguments).exitCode, 2);
}

} // namespace
