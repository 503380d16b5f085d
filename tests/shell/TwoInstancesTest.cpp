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

    // An instance of the program opening the text, with a run-time folder of its own so that
    // each is a program of its own.
    QProcess& start() {
        auto& process = *processes_.emplace_back(std::make_unique<QProcess>());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir_.path());
        environment.insert(QStringLiteral("KORVEL_MESSAGE_LOG"), log_);
        const QString runtime = dir_.filePath(QString::number(processes_.size()));
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(KORVEL_EDITOR_PROGRAM), {text_});
        EXPECT_TRUE(process.waitForStarted());
        return process;
    }

    QStringList holders() const {
        const auto list = store_.openGroup(kOpenDocsGroup);
        list->sync();
        return list->childKeys();
    }
    bool holds(qint64 process) const { return holders().contains(QString::number(process)); }
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

} // namespace
} // namespace korvel
