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

// The characters that are easy to lose are spelt out: \u3000 ideographic space, \uFF11 and
// \uFF12 full-width digits, \uFF5E full-width tilde, \u201C \u201D curly quotes.
const ExactText kTrickyTexts[] = {
    {"backslash and line break", 30503,
     u"ファイル名には、次の文字列は使えません。\n* ? < > | \\ : /"},
    {"zero-padded fields", 33005, u"%d 年 %d月 %d日 %d:%02d:%02d"},
    {"Worning without a line number", 33028,
     u"*** Worning: このマクロは新しいバージョン %d.%02d "
     u"の文法で記述されているため、正しく動作しない可能性があります。"},
    {"warning indent", 33011,
     u"    Worning (%d): コマンド引数のダブルクォートの対応が正しくありません。"},
    {"quoted field", 33034,
     u"*** ERROR (%d): %s コマンドの引数は省略できません。\"%s\" を指定してください。"},
    {"LOAD for OPEN", 33014,
     u"*** ERROR (%d): LOAD コマンドでデータの読み込み元のファイルが指定されていません。"},
    {"full-width digit", 33031,
     u"    Worning (%d): REPLACE コマンドの\uFF12番目の引数のダブルクォートの対応が正しくあり"
     u"ません。"},
    {"よろしですか", 30400, u"選択されているファイル・フォルダを削除します。\nよろしですか？"},
    {"テクスト", 40010,
     u"まもなく、テクストサイズの制限値に達します。\n速やかに「データをファイルに保存する」など"
     u"の対処を行ってください。"},
    {"full-width digit and tilde", 40024,
     u"フォントサイズには \uFF11 \uFF5E 144 を入力してください。"},
    {"ideographic spaces", 40007,
     u"\u3000\u3000エラーが発生したため、マクロのロードを中止しました。"},
    {"curly quotes", 40014, u"\u201C置換元\u201D にマッチする文字列が見つかりません。"},
    {"leading blank", 35036, u" バイト"},
    {"tab before the accelerator", 35001, u"記録終了(&R)\tShift+Ctrl+R"},
    {"half-width katakana", 30303, u"\uFF75\uFF8C\uFF9F\uFF7C\uFF6E\uFF9D"},
    {"quotes inside", 40011,
     u"このファイルは \"ワードパット\" など、他のアプリケーションで既に使用されているため、"
     u"オープンできません。"},
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

TEST(StringTable, KeepsEnglishFallbacksOnlyWhereATextCanBeMissing) {
    const std::pair<int, const char*> fallbacks[] = {
        {30308, "Name"},           {30309, "Size"},           {30310, "Time"},
        {30307, "My Device"},      {30303, "Option"},         {30311, "Delete"},
        {30312, "Select All"},     {30313, "Paste"},          {30314, "Select Complete"},
        {35032, "(New Document)"}, {35034, "Open"},           {35035, "Save As"},
        {35036, " Byte"},          {40023, "Error Occured!"}, {57344, "PID:Korvel TextEditor"},
    };
    for (const auto& [id, english] : fallbacks) {
        EXPECT_EQ(EnglishFallback(id), QString::fromUtf8(english)) << id;
        EXPECT_NE(LoadString(id), QString::fromUtf8(english)) << id << ": the string comes first";
    }
    EXPECT_TRUE(EnglishFallback(40000).isEmpty());
    EXPECT_TRUE(EnglishFallback(30000).isEmpty());
}

TEST(StringTable, EveryFallbackBelongsToAString) {
    for (const detail::StringEntry& fallback : detail::EnglishFallbackEntries())
        EXPECT_TRUE(FindString(fallback.id).has_value()) << fallback.id;
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
