// The message boxes as the user meets them, the printf-style texts, the string table's lookup,
// and the scripted service the other suites answer boxes with.
#include "messages/MessageService.h"

#include "messages/MessageFormat.h"
#include "messages/StringTable.h"
#include "messages/StringTableData.h"
#include "messages/testing/ScriptedMessageService.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <functional>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace korvel {
namespace {

using Answer = MessageAnswer;

// Waits for the box that the code under test puts up and hands it to `act`, which must end it
// the way a user would. A box left open fails the test instead of hanging it.
class UserAtTheBox {
public:
    explicit UserAtTheBox(std::function<void(QMessageBox&)> act) : act_(std::move(act)) {
        QObject::connect(&poll_, &QTimer::timeout, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            poll_.stop();
            act_(*box);
            QTimer::singleShot(2000, box, [box] {
                ADD_FAILURE() << "the box is still open";
                box->done(0);
            });
        });
        poll_.start(10);
    }

private:
    std::function<void(QMessageBox&)> act_;
    QTimer poll_;
};

void Press(QWidget& target, Qt::Key key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(&target, &press);
}

// Plain text (a path may hold "<"), the program's caption, its own Japanese button labels; a
// topmost box stays on top under the caption it is given.
TEST(MessageBoxService, ShowsTheRequestAndAnswersTheClickedButton) {
    const MessageRequest request{.text = QStringLiteral("<b>%s</b>"),
                                 .arguments = {QStringLiteral("/home/<i>古い</i>")},
                                 .buttons = MessageButtons::YesNo,
                                 .icon = MessageIcon::Question,
                                 .defaultButton = Answer::No};
    QString text, caption, yes, no;
    bool plain = false, noIsDefault = false, onTop = true;
    UserAtTheBox user([&](QMessageBox& box) {
        text = box.text();
        plain = box.textFormat() == Qt::PlainText;
        caption = box.windowTitle();
        yes = box.button(QMessageBox::Yes)->text();
        no = box.button(QMessageBox::No)->text();
        noIsDefault = box.defaultButton() == box.button(QMessageBox::No);
        onTop = box.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        box.button(QMessageBox::Yes)->click();
    });
    EXPECT_EQ(ShowMessage(request), Answer::Yes);
    EXPECT_EQ(text, QStringLiteral("<b>/home/<i>古い</i></b>"));
    EXPECT_TRUE(plain);
    EXPECT_EQ(caption, LoadString(57344));
    EXPECT_TRUE(yes != no && !yes.contains(u'&') && !no.contains(u'&')) << yes.toStdString();
    EXPECT_TRUE(noIsDefault);
    EXPECT_FALSE(onTop);

    UserAtTheBox again([&](QMessageBox& box) {
        onTop = box.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        caption = box.windowTitle();
        box.button(QMessageBox::Ok)->click();
    });
    ShowMessage({.id = 40013, .topmost = true, .caption = QStringLiteral("PID")});
    EXPECT_TRUE(onTop);
    EXPECT_EQ(caption, QStringLiteral("PID")); // a topmost box's own caption
}

// Enter presses the default button (the first when the box lacks the one asked for); Escape and
// closing the box answer Cancel, else No, else OK.
TEST(MessageBoxService, KeysAndClosingAnswerAsTheButtonsSay) {
    using Act = std::function<void(QMessageBox&)>;
    const Act enter = [](QMessageBox& box) { Press(box, Qt::Key_Return); };
    const Act escape = [](QMessageBox& box) { Press(box, Qt::Key_Escape); };
    const Act close = [](QMessageBox& box) { box.close(); };
    const struct {
        const char* name;
        MessageButtons buttons;
        Answer defaultButton;
        Act act;
        Answer answer;
    } rows[] = {
        {"enter, default No", MessageButtons::YesNoCancel, Answer::No, enter, Answer::No},
        {"enter, no such default", MessageButtons::YesNo, Answer::Ok, enter, Answer::Yes},
        {"escape Ok", MessageButtons::Ok, Answer::Ok, escape, Answer::Ok},
        {"escape OkCancel", MessageButtons::OkCancel, Answer::Ok, escape, Answer::Cancel},
        {"escape YesNo", MessageButtons::YesNo, Answer::Yes, escape, Answer::No},
        {"escape YesNoCancel", MessageButtons::YesNoCancel, Answer::Yes, escape, Answer::Cancel},
        {"close YesNo", MessageButtons::YesNo, Answer::Yes, close, Answer::No},
        {"close YesNoCancel", MessageButtons::YesNoCancel, Answer::Yes, close, Answer::Cancel},
    };
    for (const auto& row : rows) {
        UserAtTheBox user(row.act);
        EXPECT_EQ(
            ShowMessage({.id = 30006, .buttons = row.buttons, .defaultButton = row.defaultButton}),
            row.answer)
            << row.name;
    }
}

TEST(FormatMessage, FillsFieldsInOrderAndNothingElse) {
    const struct {
        const char16_t* format;
        QStringList arguments;
        const char16_t* filled;
    } rows[] = {
        {u"%s (%d): %s", {"a", "12", "b"}, u"a (12): b"},
        {u"%02d:%02d|%03d", {"7", "123", "-5"}, u"07:123|-05"}, // zeros after the sign
        {u"[%5s][%5d][%2s]", {"ab", "42", "long"}, u"[   ab][   42][long]"},
        {u"%s and %d", {"100%s", "%d"}, u"100%s and %d"}, // arguments are never formats
        {u"100%% %s", {"x"}, u"100% x"},
        {u"%s: %s", {"a"}, u"a: %s"}, // a missing argument shows
        {u"%x %s %", {"a"}, u"%x a %"},
        {u"no fields", {"extra"}, u"no fields"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FormatMessage(QStringView(row.format), row.arguments), QStringView(row.filled))
            << QString::fromUtf16(row.format).toStdString();
}

// Lookups are binary searches over the tables.
TEST(StringTable, FindsEveryEntryAndNothingElse) {
    for (const detail::StringEntry& entry : detail::StringTableEntries())
        EXPECT_EQ(LoadString(entry.id), QString::fromUtf16(entry.text)) << entry.id;
    for (int missing : {0, 30000, 99999})
        EXPECT_FALSE(FindString(missing).has_value()) << missing;
    EXPECT_TRUE(LoadString(30000).isEmpty());
    // A fallback is for a text that may be missing; the string itself comes first.
    for (const detail::StringEntry& fallback : detail::EnglishFallbackEntries()) {
        EXPECT_EQ(EnglishFallback(fallback.id), QString::fromUtf16(fallback.text));
        EXPECT_NE(LoadString(fallback.id), EnglishFallback(fallback.id)) << fallback.id;
    }
}

// An escape written twice in the data file would show "\n" to the user; a field FormatMessage
// does not fill would show as it stands.
TEST(StringTable, TextsHoldNoLiteralEscapeAndOnlyFieldsThatAreFilled) {
    const QRegularExpression mistake(QStringLiteral(R"(\\[ntr"]|%(?!s|d|02d))"));
    for (const detail::StringEntry& entry : detail::StringTableEntries())
        EXPECT_FALSE(QString::fromUtf16(entry.text).contains(mistake)) << entry.id;
}

TEST(ScriptedMessageService, AnswersInOrderAndRecordsTheDefaultTheBoxReallyHas) {
    ScriptedMessageService messages{Answer::No, Answer::Ok};
    // A Yes/No question that names no default gets the first button.
    EXPECT_EQ(ShowMessage({.id = 33038, .arguments = {"/a"}, .buttons = MessageButtons::YesNo}),
              Answer::No);
    EXPECT_EQ(ShowMessage({.id = 40000, .defaultButton = Answer::Cancel}), Answer::Ok);
    EXPECT_EQ(messages.shownIds(), (QList<int>{33038, 40000}));
    EXPECT_EQ(messages.shown()[0].defaultButton, Answer::Yes);
    EXPECT_EQ(messages.shown()[1].defaultButton, Answer::Ok);
}

// gtest's failure catchers allow no locals.
Answer answered;

TEST(ScriptedMessageService, FailsTheTestOnAnythingUnscripted) {
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages;
            answered = ShowMessage({.id = 30006, .buttons = MessageButtons::YesNoCancel});
        },
        "unexpected message 30006");
    EXPECT_EQ(answered, Answer::Cancel);
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages{Answer::Yes};
            answered = ShowMessage({.id = 40003});
        },
        "scripted answer Yes is not a button of message 40003");
    EXPECT_EQ(answered, Answer::Ok);
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages{Answer::Ok};
            ShowMessage({.id = 39999});
        },
        "the string table has no text for message 39999");
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages({Answer::Yes, Answer::No});
            ShowMessage({.id = 30003, .buttons = MessageButtons::YesNo});
        },
        "1 scripted answer(s) unused, the next being No");
}

} // namespace
} // namespace korvel
