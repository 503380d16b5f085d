// Two real KorvelEdit processes sharing one settings file: the second to open a file is warned
// while the first holds it, and after the first is killed its left-over value is cleared and
// nobody is warned any more.
#include "settings/SettingNames.h"
#include "settings/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

namespace korvel {
namespace {

class TwoInstancesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        QFile file(text_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("shared\r\n");
    }
    ~TwoInstancesTest() override {
        for (auto& process : processes_) {
            process->kill();
            process->waitForFinished();
        }
    }

    // A start of the program opening file (the shared text by default). With a run-time folder
    // of its own each start is an instance of its own; starts that share one are one instance.
    QProcess& start(const QString& runtimeName = QString(), const QString& file = QString()) {
        auto& process = *processes_.emplace_back(std::make_unique<QProcess>());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir_.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), dir_.path());
        environment.insert(QStringLiteral("KORVEL_MESSAGE_LOG"), log_);
        const QString runtime =
            dir_.filePath(runtimeName.isEmpty() ? QString::number(processes_.size()) : runtimeName);
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(dir_.path());
        process.start(QStringLiteral(KORVEL_EDITOR_PROGRAM), {file.isEmpty() ? text_ : file});
        EXPECT_TRUE(process.waitForStarted());
        return process;
    }

    QStringList holders() const {
        const auto list = store_.openGroup(kOpenDocsGroup);
        list->sync();
        return list->childKeys();
    }
    bool holds(qint64 process) const { return holders().contains(QString::number(process)); }
    QString heldBy(qint64 process) const {
        const auto list = store_.openGroup(kOpenDocsGroup);
        list->sync();
        return list->value(QString::number(process)).toString();
    }
    QStringList logged() const {
        QFile log(log_);
        return log.open(QIODevice::ReadOnly)
                   ? QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts)
                   : QStringList();
    }

    QTemporaryDir dir_;
    QString text_ = dir_.filePath(QStringLiteral("shared.txt"));
    QString log_ = dir_.filePath(QStringLiteral("messages.log"));
    SettingsStore store_{dir_.filePath(QStringLiteral("Harrow Apps/Korvelエディタ.ini"))};
    std::vector<std::unique_ptr<QProcess>> processes_;
};

TEST_F(TwoInstancesTest, TheSecondIsWarnedUntilTheFirstIsGone) {
    QProcess& first = start();
    const qint64 firstId = first.processId();
    ASSERT_TRUE(QTest::qWaitFor([&] { return holds(firstId); }, 20000));
    EXPECT_TRUE(logged().isEmpty());

    QProcess& second = start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !logged().isEmpty(); }, 20000));
    EXPECT_TRUE(logged().front().startsWith(QStringLiteral("35024\t")));
    second.kill();
    second.waitForFinished();

    // Killed, the first leaves its value behind; the next instance clears it and is not warned.
    first.kill();
    first.waitForFinished();
    EXPECT_TRUE(holds(firstId));
    const qint64 thirdId = start().processId();
    ASSERT_TRUE(QTest::qWaitFor([&] { return holds(thirdId); }, 20000));
    EXPECT_FALSE(holds(firstId));
    EXPECT_EQ(logged().size(), 1);
}

// A later start hands its file, named relative to where it was started, to the instance and
// ends; the instance has it open.
TEST_F(TwoInstancesTest, ALaterStartHandsItsFileOverAndEnds) {
    const qint64 first = start(QStringLiteral("shared")).processId();
    ASSERT_TRUE(QTest::qWaitFor([&] { return holds(first); }, 20000));
    QFile other(dir_.filePath(QStringLiteral("other.txt")));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.write("other\r\n");
    other.close();
    QProcess& later = start(QStringLiteral("shared"), QStringLiteral("other.txt"));
    ASSERT_TRUE(later.waitForFinished(20000));
    EXPECT_EQ(later.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(later.exitCode(), 0);
    EXPECT_EQ(heldBy(first), dir_.filePath(QStringLiteral("other.txt")));
}

// Starts at the same moment end with exactly one instance; the others hand over and end.
TEST_F(TwoInstancesTest, StartsAtTheSameMomentLeaveOneInstance) {
    QList<QProcess*> starts;
    for (int i = 0; i < 3; ++i)
        starts << &start(QStringLiteral("together"));
    const auto ended = [&] {
        return std::count_if(starts.begin(), starts.end(), [](QProcess* process) {
            return process->state() == QProcess::NotRunning;
        });
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return ended() == 2; }, 20000));
    QTest::qWait(500); // the one left keeps running
    EXPECT_EQ(ended(), 2);
    for (QProcess* process : starts) {
        if (process->state() == QProcess::NotRunning) {
            EXPECT_EQ(process->exitCode(), 0);
        }
    }
}

} // namespace
} // namespace korvel
