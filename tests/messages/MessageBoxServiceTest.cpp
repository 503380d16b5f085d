#include "messages/MessageService.h"
#include "messages/testing/ScriptedMessageService.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace korvel {
namespace {

// Waits for the box that the code under test puts up and hands it to `act`, which must end it
// the way a user would. A box left open fails the test instead of hanging it.
class UserAtTheBox {
public:
    explicit UserAtTheBox(std::function<void(QMessageBox&)> act) : act_(std::move(act)) {
        QObject::connect(&poll_, &QTimer::timeout, [this] { answerBox(); });
        poll_.start(10);
    }

private:
    void answerBox() {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll_.stop();
        act_(*box);
        QTimer::singleShot(2000, box, [box] {
            ADD_FAILURE() << "the box is still open";
            box->done(0);
        });
    }

    std::function<void(QMessageBox&)> act_;
    QTimer poll_;
};

void Press(QWidget& target, Qt::Key key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&target, &press);
}

QString ButtonText(QMessageBox& box, QMessageBox::StandardButton button) {
    QAbstractButton* found = box.button(button);
    return found ? found->text() : QStringLiteral("(none)");
}

TEST(MessageBoxService, ShowsTheTextWithJapaneseButtonsAndAnswersTheClickedOne) {
    QString text, caption, yes, no;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    bool noIsDefault = false;
    qsizetype buttonCount = 0;
    UserAtTheBox user([&](QMessageBox& box) {
        text = box.text();
        caption = box.windowTitle();
        icon = box.icon();
        yes = ButtonText(box, QMessageBox::Yes);
        no = ButtonText(box, QMessageBox::No);
        noIsDefault = box.defaultButton() == box.button(QMessageBox::No);
        buttonCount = box.buttons().size();
        box.button(QMessageBox::Yes)->click();
    });

    const MessageAnswer answer = ShowMessage({.id = 30024,
                                              .arguments = {QStringLiteral("/home/user/古い")},
                                              .buttons = MessageButtons::YesNo,
                                              .icon = MessageIcon::Question,
                                              .defaultButton = MessageAnswer::No});

    EXPECT_EQ(answer, MessageAnswer::Yes);
    EXPECT_EQ(text,
              QStringLiteral("下記フォルダを削除します。よろしいですか？\n\n/home/user/古い"));
    EXPECT_EQ(caption, QStringLiteral("Korvelエディタ"));
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_EQ(yes, QStringLiteral("はい"));
    EXPECT_EQ(no, QStringLiteral("いいえ"));
    EXPECT_TRUE(noIsDefault);
    EXPECT_EQ(buttonCount, 2);
}

TEST(MessageBoxService, NamesCancelAndOkInJapaneseToo) {
    QString ok, cancel;
    UserAtTheBox user([&](QMessageBox& box) {
        ok = ButtonText(box, QMessageBox::Ok);
        cancel = ButtonText(box, QMessageBox::Cancel);
        box.button(QMessageBox::Cancel)->click();
    });
    EXPECT_EQ(ShowMessage({.id = 30020, .arguments = {"/a"}, .buttons = MessageButtons::OkCancel}),
              MessageAnswer::Cancel);
    EXPECT_EQ(ok, QStringLiteral("OK"));
    EXPECT_EQ(cancel, QStringLiteral("キャンセル"));
}

TEST(MessageBoxService, EnterPressesTheDefaultButton) {
    UserAtTheBox user([](QMessageBox& box) { Press(box, Qt::Key_Return); });
    EXPECT_EQ(ShowMessage({.id = 30006,
                           .buttons = MessageButtons::YesNoCancel,
                           .icon = MessageIcon::Question,
                           .defaultButton = MessageAnswer::No}),
              MessageAnswer::No);
}

TEST(MessageBoxService, EnterPressesTheFirstButtonWhenNoDefaultWasAskedFor) {
    UserAtTheBox user([](QMessageBox& box) { Press(box, Qt::Key_Return); });
    EXPECT_EQ(ShowMessage({.id = 30003, .buttons = MessageButtons::YesNo}), MessageAnswer::Yes);
}

struct EscapeRow {
    MessageButtons buttons;
    MessageAnswer answer;
};

void PrintTo(const EscapeRow& row, std::ostream* out) {
    *out << ::testing::PrintToString(row.buttons) << " -> " << ::testing::PrintToString(row.answer);
}

class EscapeTest : public ::testing::TestWithParam<EscapeRow> {};

TEST_P(EscapeTest, EscapeAnswersCancelElseNoElseOk) {
    UserAtTheBox user([](QMessageBox& box) { Press(box, Qt::Key_Escape); });
    EXPECT_EQ(ShowMessage({.id = 30006, .buttons = GetParam().buttons}), GetParam().answer);
}

TEST_P(EscapeTest, ClosingTheBoxAnswersLikeEscape) {
    UserAtTheBox user([](QMessageBox& box) { box.close(); });
    EXPECT_EQ(ShowMessage({.id = 30006, .buttons = GetParam().buttons}), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    EveryButtonSet, EscapeTest,
    ::testing::Values(EscapeRow{MessageButtons::Ok, MessageAnswer::Ok},
                      EscapeRow{MessageButtons::OkCancel, MessageAnswer::Cancel},
                      EscapeRow{MessageButtons::YesNo, MessageAnswer::No},
                      EscapeRow{MessageButtons::YesNoCancel, MessageAnswer::Cancel}),
    [](const ::testing::TestParamInfo<EscapeRow>& row) {
        return ::testing::PrintToString(row.param.buttons);
    });

TEST(MessageBoxService, ATopmostBoxStaysOnTopUnderItsOwnCaption) {
    bool onTop = false;
    QString caption;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    UserAtTheBox user([&](QMessageBox& box) {
        onTop = box.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        caption = box.windowTitle();
        icon = box.icon();
        box.button(QMessageBox::Ok)->click();
    });
    ShowMessage({.id = 40013,
                 .icon = MessageIcon::Stop,
                 .topmost = true,
                 .caption = QStringLiteral("PID:Korvel TextEditor")});
    EXPECT_TRUE(onTop);
    EXPECT_EQ(caption, QStringLiteral("PID:Korvel TextEditor"));
    EXPECT_EQ(icon, QMessageBox::Critical);
}

TEST(MessageBoxService, AnOrdinaryBoxIsNotTopmost) {
    bool onTop = true;
    UserAtTheBox user([&](QMessageBox& box) {
        onTop = box.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        box.button(QMessageBox::Ok)->click();
    });
    ShowMessage({.id = 40003});
    EXPECT_FALSE(onTop);
}

TEST(MessageBoxService, ShowsMarkupCharactersAsPlainText) {
    Qt::TextFormat format = Qt::AutoText;
    QString text;
    UserAtTheBox user([&](QMessageBox& box) {
        format = box.textFormat();
        text = box.text();
        box.button(QMessageBox::Ok)->click();
    });
    ShowMessage({.text = QStringLiteral("<b>%s</b>"), .arguments = {"<i>x</i>"}});
    EXPECT_EQ(format, Qt::PlainText);
    EXPECT_EQ(text, QStringLiteral("<b><i>x</i></b>"));
}

} // namespace
} // namespace korvel
