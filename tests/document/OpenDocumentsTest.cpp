// The list of open documents shared by the running instances, in a settings file of its own.
#include "document/OpenDocuments.h"

#include "document/FileTime.h"
#include "settings/SettingNames.h"
#include "settings/SettingsStore.h"

#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvel {
namespace {

class OpenDocumentsTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(dir_.isValid()); }

    // Writes a value as another instance would.
    void writeValue(qint64 instance, const QString& path) {
        store_.openGroup(kOpenDocsGroup)->setValue(QString::number(instance), path);
    }
    QStringList instances() const {
        const auto list = store_.openGroup(kOpenDocsGroup);
        return list->childKeys();
    }

    QTemporaryDir dir_;
    SettingsStore store_{dir_.filePath(QStringLiteral("settings.ini"))};
    OpenDocuments documents_{store_};
};

// Another instance is a process running this same program: a child forked from the test.
TEST_F(OpenDocumentsTest, OnlyAnotherLivingInstanceCounts) {
    const QString path = QStringLiteral("/home/user/メモ.txt");
    documents_.RegisterOpenDocument(path);
    EXPECT_FALSE(documents_.IsOpenElsewhere(path)); // its own value is no other instance
    EXPECT_EQ(instances(), QStringList{QString::number(::getpid())});

    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        ::pause();
        ::_exit(0);
    }
    QProcess stranger; // alive, but another program
    stranger.start(QStringLiteral("sleep"), {QStringLiteral("30")});
    ASSERT_TRUE(stranger.waitForStarted());
    writeValue(other, QStringLiteral("/HOME/USER/メモ.TXT"));
    writeValue(stranger.processId(), path);
    writeValue(999999999, path); // gone
    writeValue(0, path);

    EXPECT_TRUE(documents_.IsOpenElsewhere(path)); // letter case ignored
    EXPECT_FALSE(documents_.IsOpenElsewhere(QStringLiteral("/home/user/other.txt")));
    QStringList expected{QString::number(::getpid()), QString::number(other)};
    QStringList left = instances();
    left.sort();
    expected.sort();
    EXPECT_EQ(left, expected);

    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    stranger.kill();
    stranger.waitForFinished();
    EXPECT_FALSE(documents_.IsOpenElsewhere(path));
    EXPECT_EQ(instances(), QStringList{QString::number(::getpid())});

    documents_.UnregisterOpenDocument();
    EXPECT_TRUE(instances().isEmpty());
    // Unregistering again touches nobody else's value.
    writeValue(::getpid(), path);
    documents_.UnregisterOpenDocument();
    EXPECT_EQ(instances().size(), 1);
}

TEST(FileTime, OnlyAReadableRegularFileHasOne) {
    EXPECT_FALSE(ReadFileTime(QStringLiteral("/nonexistent/file")));
    EXPECT_FALSE(ReadFileTime(QStringLiteral("/tmp")));
}

} // namespace
} // namespace korvel
