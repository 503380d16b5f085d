#include "messages/StringTable.h"

#include "messages/StringTableData.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace korvel {
namespace {

struct ExactText {
    const char* what;
    int id;
    const char16_t* text;
};

// The characters that are easy to lose are spelt out: \u3000 ideographic space, \uFF11
// full-width digit, \uFF5E full-width tilde, \u201C \u201D curly quotes.
const ExactText kTrickyTexts[] = {
    {"backslash and line break", 30503,
     u"ファイル名には、次の文字列は使えません。\n* ? < > | \\ : /"},
    {"zero-padded fields", 33005, u"%d 年 %d月 %d日 %d:%02d:%02d"},
    {"Worning without a line number", 33028,
     u"*** Worning: このマクロは新しいバージョン %d.%02d "
     u"の文法で記述されているため、正しく動作しない可能性があります。"},
    {"よろしですか", 30400, u"選択されているファイル・フォルダを削除します。\nよろしですか？"},
    {"テクスト", 40010,
     u"まもなく、テクストサイズの制限値に達します。\n速やかに「データをファイルに保存する」など"
     u"の対処を行ってください。"},
    {"full-width digit and tilde", 40024,
     u"フォントサイズには \uFF11 \uFF5E 144 を入力してください。"},
    {"ideographic spaces", 40007,
     u"\u3000\u3000エラーが発生したため、マクロのロードを中止しました。"},
    {"curly quotes", 40014, u"\u201C置換元\u201D にマッチする文字列が見つかりません。"},
    {"half-width katakana", 30303, u"\uFF75\uFF8C\uFF9F\uFF7C\uFF6E\uFF9D"},
    {"filter list", 35045,
     u"テキスト (*.txt)|*.txt|設定ファイル (*.ini;*.inf)|*.ini;*.inf|Webファイル "
     u"(*.htm;*.html;*.xml)|*.htm;*.html;*.xml|マクロファイル (*.mcr)|*.mcr|すべてのファイル "
     u"(*.*)|*.*||"},
};

TEST(StringTable, HoldsTrickyTextsExactly) {
    for (const ExactText& row : kTrickyTexts) {
        SCOPED_TRACE(row.what);
        const std::optional<QString> text = FindString(row.id);
        ASSERT_TRUE(text.has_value()) << row.id;
        EXPECT_EQ(*text, QString::fromUtf16(row.text)) << row.id;
    }
}

TEST(StringTable, SaysWhenItHasNoSuchString) {
    EXPECT_EQ(FindString(0), std::nullopt);
    EXPECT_EQ(FindString(30000), std::nullopt);
    EXPECT_EQ(FindString(99999), std::nullopt);
    EXPECT_TRUE(LoadString(30000).isEmpty());
}

// A fallback is for a text that may be missing; the string itself always comes first.
TEST(StringTable, EveryFallbackBelongsToAStringThatComesFirst) {
    for (const detail::StringEntry& fallback : detail::EnglishFallbackEntries()) {
        EXPECT_TRUE(FindString(fallback.id).has_value()) << fallback.id;
        EXPECT_EQ(EnglishFallback(fallback.id), QString::fromUtf16(fallback.text)) << fallback.id;
        EXPECT_NE(LoadString(fallback.id), EnglishFallback(fallback.id)) << fallback.id;
    }
    EXPECT_EQ(EnglishFallback(30308), QStringLiteral("Name"));
    EXPECT_TRUE(EnglishFallback(40000).isEmpty());
}

// The data file writes texts as C++ literals: an escape written twice would show "\n" to the
// user instead of a line break.
TEST(StringTable, NoTextHoldsALiteralEscape) {
    const QRegularExpression escape(QStringLiteral(R"(\\[ntr"])"));
    for (const detail::StringEntry& entry : detail::StringTableEntries())
        EXPECT_FALSE(QString::fromUtf16(entry.text).contains(escape)) << entry.id;
}

// FormatMessage fills "%s", "%d" and "%02d" only; any other field would reach the user as is.
TEST(StringTable, EveryFieldIsOneTheFormatterFills) {
    const QRegularExpression otherField(QStringLiteral("%(?!s|d|02d)"));
    for (const detail::StringEntry& entry : detail::StringTableEntries())
        EXPECT_FALSE(QString::fromUtf16(entry.text).contains(otherField)) << entry.id;
}

} // namespace
} // namespace korvel
