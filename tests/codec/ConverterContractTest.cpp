#include "codec/JisEucConversion.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <gtest/gtest.h>

// What every converter promises its callers, whatever it converts. The fuzz targets check the
// rest of the promise (status Ok and the terminator behind the output, the empty input too).

namespace korvel {
namespace {

TEST(ConverterContract, NullArgumentsAreRejectedAndTheSlotsLeftAlone) {
    std::uint8_t source[4] = {'a', 0, 'b', 0};
    auto expectRejected = [&](const char* name, auto converter) {
        SCOPED_TRACE(name);
        std::uint8_t* output = source + 1;
        std::size_t length = 12345;
        EXPECT_EQ(converter(nullptr, 4, &output, &length), CodecInvalidArgument);
        EXPECT_EQ(converter(nullptr, 0, &output, &length), CodecInvalidArgument);
        EXPECT_EQ(converter(source, 4, nullptr, &length), CodecInvalidArgument);
        EXPECT_EQ(converter(source, 4, &output, nullptr), CodecInvalidArgument);
        EXPECT_EQ(output, source + 1);
        EXPECT_EQ(length, 12345u);
    };
    expectRejected("UnicodeToShiftJis", UnicodeToShiftJis);
    expectRejected("ShiftJisToUnicode", ShiftJisToUnicode);
    expectRejected("Utf8ToUnicode", Utf8ToUnicode);
    expectRejected("UnicodeToUtf8", UnicodeToUtf8);
    expectRejected("JisToShiftJis", JisToShiftJis);
    expectRejected("EucToShiftJis", EucToShiftJis);
    expectRejected("GarbledMailToShiftJis", GarbledMailToShiftJis);
    expectRejected("ShiftJisToEuc", ShiftJisToEuc);
    expectRejected("ShiftJisToJis",
                   [](auto... arguments) { return ShiftJisToJis(arguments..., 1); });
}

} // namespace
} // namespace korvel
