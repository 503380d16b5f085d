// "設定..." and "バージョン情報..." from the main window: confirmed settings reach the view at
// once, and the about box names its version and its Qt.
#include "editor/CEditer.h"
#include "editor/EditControl.h"
#include "settings/CPPageEdit.h"
#include "settings/CPPageTap.h"
#include "settings/SettingsSheet.h"
#include "shell/AboutBox.h"
#include "shell/CMainFrame.h"
#include "shell/CommandIds.h"
#include "shell/CommandTable.h"
#include "support/WindowTest.h"
#include "widgets/HoldGesture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace korvel {
namespace {

using testing::WhenDialogShows;

class SettingsAndAboutTest : public testing::WindowTest<CMainFrame> {
protected:
    // A coarse timer may fire up to 5% early; the two hold times are 600 and 1000 ms.
    static constexpr qint64 kBetweenTheTwo = 900;

    // How long the text's tap-and-hold gesture takes to be recognised.
    qint64 holdTime() {
        auto* hold = window_->view()->activeControl()->viewport()->findChild<HoldGesture*>();
        QSignalSpy recognised(hold, &HoldGesture::recognised);
        QElapsedTimer clock;
        clock.start();
        hold->watch(QPoint(20, 20));
        EXPECT_TRUE(recognised.wait(3000));
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
            menu->close();
        return clock.elapsed();
    }
};

// The tab width and the hold time of a confirmed sheet are the view's at once; a cancelled
// sheet changes nothing.
TEST_F(SettingsAndAboutTest, ConfirmedSettingsReachTheViewAtOnce) {
    EditControl* control = window_->view()->activeControl();
    const qreal tabStop = control->tabStopDistance();
    ASSERT_GE(holdTime(), kBetweenTheTwo); // "長め"
    for (const bool confirm : {false, true}) {
        WhenDialogShows<SettingsSheet>([confirm](SettingsSheet& sheet) {
            sheet.editPage()->tabField()->setText(QStringLiteral("2"));
            sheet.tapPage()->delayButton(0)->setChecked(true); // "普通"
            confirm ? sheet.accept() : sheet.reject();
        });
        ASSERT_TRUE(window_->commands().run(command::Settings));
        EXPECT_EQ(control->tabStopDistance(), confirm ? tabStop / 4 : tabStop);
    }
    EXPECT_LT(holdTime(), kBetweenTheTwo);
}

// The about box names the build's version and the Qt it runs on.
TEST_F(SettingsAndAboutTest, AboutBoxNamesTheVersionAndTheQtItRunsOn) {
    QString shown;
    WhenDialogShows<AboutBox>([&shown](AboutBox& box) {
        shown = box.text();
        box.accept();
    });
    ASSERT_TRUE(window_->commands().run(command::About));
    EXPECT_TRUE(
        shown.contains(QRegularExpression(QStringLiteral("\\nバージョン \\d+\\.\\d+\\.\\d+\\n"))))
        << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(QStringLiteral("\nQt ") + QString::fromLatin1(qVersion())));
}

} // namespace
} // namespace korvel
