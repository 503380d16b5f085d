#include "document/EncodingNames.h"

#include <gtest/gtest.h>
#include <set>
#include <string_view>

namespace korvel {
namespace {

// A file that detection found to be plain ASCII, or could not place, is read and saved as
// Shift_JIS, and one without a break as CR LF: it must be named as what it will be saved in.
TEST(EncodingNames, DetectionOnlyValuesAreNamedAsTheirStandIns) {
    EXPECT_EQ(EncodingDisplayName(TextEncoding::AsciiOnly),
              EncodingDisplayName(TextEncoding::ShiftJis));
    EXPECT_EQ(EncodingDisplayName(TextEncoding::Undetermined),
              EncodingDisplayName(TextEncoding::ShiftJis));
    EXPECT_EQ(LineEndingDisplayName(LineEnding::NoLineBreak),
              LineEndingDisplayName(LineEnding::CrLf));
}

// Two choices sharing a name could not be told apart in a dialog or in korvelconv's report.
TEST(EncodingNames, EveryChoiceHasANameOfItsOwn) {
    std::set<std::string_view> names;
    for (const TextEncoding encoding : kLoadEncodingList) {
        EXPECT_TRUE(names.insert(EncodingDisplayName(encoding)).second)
            << static_cast<int>(encoding);
    }
    std::set<std::string_view> lineEndings;
    for (const LineEnding lineEnding : {LineEnding::CrLf, LineEnding::Cr, LineEnding::Lf}) {
        EXPECT_TRUE(lineEndings.insert(LineEndingDisplayName(lineEnding)).second)
            << static_cast<int>(lineEnding);
    }
    EXPECT_EQ(names.count(""), 0u);
    EXPECT_EQ(lineEndings.count(""), 0u);
}

} // namespace
} // namespace korvel
