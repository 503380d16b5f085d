#include "codec/CodecBlock.h"
#include "codec/JisEucConversion.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <gtest/gtest.h>

// What every converter promises its callers, whatever it converts. The fuzz targets check the
// rest of the promise (status Ok and the terminator behind the output, the empty input too).

namespace korvel {
namespace {

using Call = CodecStatus (*)(std::uint8_t*, std::size_t, std::uint8_t**, std::size_t*);

template <auto converter>
CodecStatus CallOf(std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
    return converter(s, n, o, l);
}

CodecStatus ShiftJisToJisKeepingKatakana(std::uint8_t* s, std::size_t n, std::uint8_t** o,
                                         std::size_t* l) {
    return ShiftJisToJis(s, n, o, l, 1);
}

struct Converter {
    const char* name;
    Call call;
};

const Converter kConverters[] = {
    {"UnicodeToShiftJis", CallOf<UnicodeToShiftJis>},
    {"ShiftJisToUnicode", CallOf<ShiftJisToUnicode>},
    {"Utf8ToUnicode", CallOf<Utf8ToUnicode>},
    {"UnicodeToUtf8", CallOf<UnicodeToUtf8>},
    {"JisToShiftJis", CallOf<JisToShiftJis>},
    {"EucToShiftJis", CallOf<EucToShiftJis>},
    {"GarbledMailToShiftJis", CallOf<GarbledMailToShiftJis>},
    {"ShiftJisToEuc", CallOf<ShiftJisToEuc>},
    {"ShiftJisToJis", ShiftJisToJisKeepingKatakana},
};

TEST(ConverterContract, NullArgumentsAreRejectedAndTheSlotsLeftAlone) {
    std::uint8_t source[4] = {'a', 0, 'b', 0};
    std::uint8_t* const sentinel = &source[1];
    for (const Converter& converter : kConverters) {
        SCOPED_TRACE(converter.name);
        std::uint8_t* output = sentinel;
        std::size_t length = 12345;
        EXPECT_EQ(converter.call(nullptr, 4, &output, &length), CodecInvalidArgument);
        EXPECT_EQ(converter.call(nullptr, 0, &output, &length), CodecInvalidArgument);
        EXPECT_EQ(converter.call(source, 4, nullptr, &length), CodecInvalidArgument);
        EXPECT_EQ(converter.call(source, 4, &output, nullptr), CodecInvalidArgument);
        EXPECT_EQ(output, sentinel);
        EXPECT_EQ(length, 12345u);
    }
}

} // namespace
} // namespace korvel
