#include "shell/MainWindow.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace korvel {
namespace {

class MainWindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static int argc = 1;
        static char name[] = "shell_tests";
        static char* argv[] = {name, nullptr};
        if (QApplication::instance() == nullptr) {
            new QApplication(argc, argv);
        }
    }

    QString writeFile(const char* name, const QByteArray& bytes) {
        const QString path = dir_.filePath(QString::fromLatin1(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }

    QTemporaryDir dir_;
};

TEST_F(MainWindowTest, ShowsShiftJisFileWithItsCodeSetAndLineEnding) {
    MainWindow window;
    // "あいう" CR "かき" in Shift_JIS: the lone CR makes it a CR file.
    const QString path =
        writeFile("memo.txt", QByteArray("\x82\xA0\x82\xA2\x82\xA4\r\x82\xA9\x82\xAB"));
    ASSERT_TRUE(window.openFile(path));
    EXPECT_EQ(window.text(), QString::fromUtf8("あいう\nかき"));
    EXPECT_EQ(window.encoding(), TextEncoding::ShiftJis);
    EXPECT_EQ(window.lineEnding(), LineEnding::Cr);
    EXPECT_TRUE(window.windowTitle().startsWith(QStringLiteral("memo.txt")));
}

TEST_F(MainWindowTest, KeepsTextWhenFileIsMissing) {
    MainWindow window;
    const QString path = writeFile("a.txt", QByteArray("\xEF\xBB\xBF\xE6\x97\xA5\xE6\x9C\xAC"));
    ASSERT_TRUE(window.openFile(path));
    EXPECT_EQ(window.encoding(), TextEncoding::Utf8);
    EXPECT_FALSE(window.openFile(dir_.filePath(QStringLiteral("missing.txt"))));
    EXPECT_EQ(window.text(), QString::fromUtf8("日本"));
}

} // namespace
} // namespace korvel
