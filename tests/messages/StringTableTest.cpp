#include "messages/StringTable.h"

#include "messages/StringTableData.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace korvel {
namespace {

// The lookup finds every entry of the tables, whichever its place, and gives its text whole.
TEST(StringTable, FindsEveryEntryWithItsText) {
    for (const detail::StringEntry& entry : detail::StringTableEntries()) {
        EXPECT_EQ(FindString(entry.id), QString::fromUtf16(entry.text)) << entry.id;
        EXPECT_EQ(LoadString(entry.id), QString::fromUtf16(entry.text)) << entry.id;
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
