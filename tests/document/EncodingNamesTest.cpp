#include "document/EncodingNames.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvel {
namespace {

// The dialogs' lists as the user sees them; positions map to code sets through the tables.
std::vector<std::string_view> Split(std::string_view list) {
    std::vector<std::string_view> items;
    while (!list.empty()) {
        const std::size_t bar = list.find('|');
        if (bar != 0) {
            items.push_back(list.substr(0, bar));
        }
        list.remove_prefix(bar == std::string_view::npos ? list.size() : bar + 1);
    }
    return items;
}

TEST(EncodingNames, ListPositionsNameTheirCodeSets) {
    const std::vector<std::string_view> load =
        Split("自動判定|シフトJIS|JIS|EUC|Unicode|UTF-8|UTF-8N|文字化けメール||");
    ASSERT_EQ(load.size(), std::size(kLoadEncodingList));
    for (std::size_t i = 0; i < load.size(); ++i) {
        EXPECT_EQ(EncodingDisplayName(kLoadEncodingList[i]), load[i]) << "load position " << i;
    }
    const std::vector<std::string_view> save = Split("シフトJIS|JIS|EUC|Unicode|UTF-8|UTF-8N||");
    ASSERT_EQ(save.size(), std::size(kSaveEncodingList));
    for (std::size_t i = 0; i < save.size(); ++i) {
        EXPECT_EQ(EncodingDisplayName(kSaveEncodingList[i]), save[i]) << "save position " << i;
    }
}

TEST(EncodingNames, DetectionOnlyValuesReadAsTheirStandIns) {
    EXPECT_EQ(EncodingDisplayName(TextEncoding::AsciiOnly), "シフトJIS");
    EXPECT_EQ(EncodingDisplayName(TextEncoding::Undetermined), "シフトJIS");
    EXPECT_EQ(LineEndingDisplayName(LineEnding::CrLf), "CR-LF");
    EXPECT_EQ(LineEndingDisplayName(LineEnding::Cr), "CR");
    EXPECT_EQ(LineEndingDisplayName(LineEnding::Lf), "LF");
    EXPECT_EQ(LineEndingDisplayName(LineEnding::NoLineBreak), "CR-LF");
}

} // namespace
} // namespace korvel
