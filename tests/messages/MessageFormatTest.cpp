#include "messages/MessageFormat.h"

#include "messages/StringTable.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

QString Format(const char16_t* format, const QStringList& arguments) {
    return FormatMessage(QStringView(format), arguments);
}

TEST(FormatMessage, FillsStringAndNumberFieldsInOrder) {
    EXPECT_EQ(FormatMessage(*FindString(33034), {"12", "LOCK", "CTRL | SHIFT"}),
              QStringLiteral("*** ERROR (12): LOCK コマンドの引数は省略できません。"
                             "\"CTRL | SHIFT\" を指定してください。"));
    EXPECT_EQ(FormatMessage(*FindString(33003), {QStringLiteral("/home/user/メモ.txt")}),
              QStringLiteral("下記ファイルにアクセスできません。\n\n/home/user/メモ.txt"));
    EXPECT_EQ(FormatMessage(*FindString(30008), {QStringLiteral("/tmp/"), "7"}),
              QStringLiteral("/tmp/新規フォルダ(7)"));
}

TEST(FormatMessage, PadsZeroFlaggedNumbersToTheirWidth) {
    EXPECT_EQ(FormatMessage(*FindString(33005), {"2024", "3", "9", "7", "5", "0"}),
              QStringLiteral("2024 年 3月 9日 7:05:00"));
    EXPECT_EQ(FormatMessage(*FindString(33028), {"1", "1"}),
              QStringLiteral("*** Worning: このマクロは新しいバージョン 1.01 "
                             "の文法で記述されているため、正しく動作しない可能性があります。"));
    EXPECT_EQ(Format(u"%02d|%02d|%03d", {"59", "123", "-5"}), QStringLiteral("59|123|-05"));
    EXPECT_EQ(Format(u"[%5s][%5d][%2s]", {"ab", "42", "long"}),
              QStringLiteral("[   ab][   42][long]"));
}

TEST(FormatMessage, NeverReadsArgumentsAsFormats) {
    EXPECT_EQ(Format(u"%s and %d", {"100%s", "%d"}), QStringLiteral("100%s and %d"));
}

TEST(FormatMessage, WritesADoubledPercentOnce) {
    EXPECT_EQ(Format(u"100%% %s", {"x"}), QStringLiteral("100% x"));
}

TEST(FormatMessage, LeavesFieldsWithoutArgumentsVisible) {
    EXPECT_EQ(Format(u"%s: %s", {"a"}), QStringLiteral("a: %s"));
    EXPECT_EQ(Format(u"%x %s %", {"a"}), QStringLiteral("%x a %"));
    EXPECT_EQ(Format(u"%d", {}), QStringLiteral("%d"));
    EXPECT_EQ(Format(u"no fields", {"extra"}), QStringLiteral("no fields"));
}

} // namespace
} // namespace korvel
