#include "messages/testing/ScriptedMessageService.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace korvel {
namespace {

TEST(ScriptedMessageService, RecordsEachBoxAsTheUserWouldSeeIt) {
    ScriptedMessageService messages{MessageAnswer::Yes, MessageAnswer::Ok};

    EXPECT_EQ(ShowMessage({.id = 30024,
                           .arguments = {QStringLiteral("/home/user/古い")},
                           .buttons = MessageButtons::YesNo,
                           .icon = MessageIcon::Question,
                           .defaultButton = MessageAnswer::No}),
              MessageAnswer::Yes);
    EXPECT_EQ(
        ShowMessage({.text = QStringLiteral("下記フォルダの削除でエラーが発生しました。\n\n%s"),
                     .arguments = {QStringLiteral("/tmp/a")},
                     .icon = MessageIcon::Stop,
                     .topmost = true,
                     .caption = QStringLiteral("削除")}),
        MessageAnswer::Ok);

    ASSERT_EQ(messages.shown().size(), 2);
    const ShownMessage& question = messages.shown()[0];
    EXPECT_EQ(question.id, 30024);
    EXPECT_EQ(question.text,
              QStringLiteral("下記フォルダを削除します。よろしいですか？\n\n/home/user/古い"));
    EXPECT_EQ(question.buttons, MessageButtons::YesNo);
    EXPECT_EQ(question.icon, MessageIcon::Question);
    EXPECT_EQ(question.defaultButton, MessageAnswer::No);
    EXPECT_FALSE(question.topmost);
    EXPECT_EQ(question.caption, QStringLiteral("Korvelエディタ"));

    const ShownMessage& error = messages.shown()[1];
    EXPECT_EQ(error.id, 0);
    EXPECT_EQ(error.text, QStringLiteral("下記フォルダの削除でエラーが発生しました。\n\n/tmp/a"));
    EXPECT_EQ(error.icon, MessageIcon::Stop);
    EXPECT_TRUE(error.topmost);
    EXPECT_EQ(error.caption, QStringLiteral("削除"));
    EXPECT_EQ(messages.shownIds(), (QList<int>{30024, 0}));
}

TEST(ScriptedMessageService, RecordsTheDefaultButtonTheBoxReallyHas) {
    ScriptedMessageService messages{MessageAnswer::No, MessageAnswer::Ok};
    // A Yes/No question that names no default gets the first button, as on the original.
    ShowMessage({.id = 33038, .arguments = {"/a"}, .buttons = MessageButtons::YesNo});
    ShowMessage({.id = 40000, .defaultButton = MessageAnswer::Cancel});
    EXPECT_EQ(messages.shown()[0].defaultButton, MessageAnswer::Yes);
    EXPECT_EQ(messages.shown()[1].defaultButton, MessageAnswer::Ok);
}

TEST(ScriptedMessageService, AnswersFromTheScriptInOrder) {
    ScriptedMessageService messages;
    messages.script({MessageAnswer::Cancel, MessageAnswer::No});
    messages.script({MessageAnswer::Yes});
    const MessageRequest question{.id = 30006, .buttons = MessageButtons::YesNoCancel};
    EXPECT_EQ(ShowMessage(question), MessageAnswer::Cancel);
    EXPECT_EQ(messages.unusedAnswers(), 2);
    EXPECT_EQ(ShowMessage(question), MessageAnswer::No);
    EXPECT_EQ(ShowMessage(question), MessageAnswer::Yes);
    EXPECT_EQ(messages.unusedAnswers(), 0);
}

// The failure checks run in blocks of their own: gtest's failure catchers allow no locals.
MessageAnswer answered;

TEST(ScriptedMessageService, FailsTheTestOnABoxWithNoAnswerLeft) {
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages;
            answered = ShowMessage({.id = 30006, .buttons = MessageButtons::YesNoCancel});
        },
        "unexpected message 30006");
    EXPECT_EQ(answered, MessageAnswer::Cancel);
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages;
            answered = ShowMessage({.id = 33038, .buttons = MessageButtons::YesNo});
        },
        "unexpected message 33038");
    EXPECT_EQ(answered, MessageAnswer::No);
}

TEST(ScriptedMessageService, FailsTheTestOnAnAnswerTheBoxDoesNotOffer) {
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages{MessageAnswer::Yes};
            answered = ShowMessage({.id = 40003});
        },
        "scripted answer Yes is not a button of message 40003");
    EXPECT_EQ(answered, MessageAnswer::Ok);
}

TEST(ScriptedMessageService, FailsTheTestOnAnIdTheStringTableLacks) {
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages{MessageAnswer::Ok};
            ShowMessage({.id = 39999});
        },
        "the string table has no text for message 39999");
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages{MessageAnswer::Ok};
            ShowMessage({});
        },
        "neither a string id nor a text");
}

TEST(ScriptedMessageService, FailsTheTestWhenScriptedBoxesNeverCame) {
    EXPECT_NONFATAL_FAILURE(
        {
            ScriptedMessageService messages({MessageAnswer::Yes, MessageAnswer::No});
            ShowMessage({.id = 30003, .buttons = MessageButtons::YesNo});
        },
        "1 scripted answer(s) unused, the next being No");
}

} // namespace
} // namespace korvel
