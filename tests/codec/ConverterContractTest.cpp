#include "codec/CodecBlock.h"
#include "codec/JisEucConversion.h"
#include "codec/ShiftJisConversion.h"
#include "codec/Utf8Conversion.h"

#include <gtest/gtest.h>

namespace korvel {
namespace {

using Call = CodecStatus (*)(std::uint8_t*, std::size_t, std::uint8_t**, std::size_t*);

struct Converter {
    const char* name;
    Call call;
    int terminatorBytes;
    CodecStatus emptyInputStatus; // the platform's conversion reports an empty text as a failure
    bool mayLeaveEmptyOutputUnallocated; // converters that create their output on first append
};

const Converter kConverters[] = {
    {"UnicodeToShiftJis",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return UnicodeToShiftJis(s, n, o, l);
     },
     1, CodecUnconvertible, false},
    {"ShiftJisToUnicode",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return ShiftJisToUnicode(s, n, o, l);
     },
     2, CodecOk, false},
    {"Utf8ToUnicode",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return Utf8ToUnicode(s, n, o, l);
     },
     2, CodecOk, false},
    {"UnicodeToUtf8",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return UnicodeToUtf8(s, n, o, l);
     },
     2, CodecOk, false},
    {"JisToShiftJis",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return JisToShiftJis(s, n, o, l);
     },
     1, CodecOk, false},
    {"EucToShiftJis",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return EucToShiftJis(s, n, o, l);
     },
     1, CodecOk, false},
    {"GarbledMailToShiftJis",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return GarbledMailToShiftJis(s, n, o, l);
     },
     1, CodecOk, false},
    {"ShiftJisToEuc",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return ShiftJisToEuc(s, n, o, l);
     },
     1, CodecOk, true},
    {"ShiftJisToJis",
     [](std::uint8_t* s, std::size_t n, std::uint8_t** o, std::size_t* l) {
         return ShiftJisToJis(s, n, o, l, 0);
     },
     1, CodecOk, true},
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
        EXPECT_EQ(output, sentinel);
        EXPECT_EQ(length, 12345u);
        EXPECT_EQ(converter.call(source, 4, nullptr, &length), CodecInvalidArgument);
        EXPECT_EQ(length, 12345u);
        EXPECT_EQ(converter.call(source, 4, &output, nullptr), CodecInvalidArgument);
        EXPECT_EQ(output, sentinel);
    }
}

TEST(ConverterContract, EmptyInputGivesAnEmptyTerminatedOutput) {
    for (const Converter& converter : kConverters) {
        SCOPED_TRACE(converter.name);
        std::uint8_t source[1] = {'A'};
        std::uint8_t* output = nullptr;
        std::size_t length = 12345;
        const CodecStatus status = converter.call(source, 0, &output, &length);
        const CodecBlock owner(output, length);
        ASSERT_EQ(status, converter.emptyInputStatus);
        if (status != CodecOk) {
            continue;
        }
        EXPECT_EQ(length, 0u);
        if (output == nullptr) {
            EXPECT_TRUE(converter.mayLeaveEmptyOutputUnallocated);
            continue;
        }
        for (int k = 0; k < converter.terminatorBytes; ++k) {
            EXPECT_EQ(output[k], 0);
        }
    }
}

// A single byte is no UTF-16 code unit: the text is empty, but still a terminated block.
TEST(ConverterContract, UnicodeToUtf8OfOneByteIsEmpty) {
    std::uint8_t source[1] = {'A'};
    std::uint8_t* output = nullptr;
    std::size_t length = 12345;
    ASSERT_EQ(UnicodeToUtf8(source, 1, &output, &length), CodecOk);
    const CodecBlock owner(output, length);
    EXPECT_EQ(length, 0u);
    ASSERT_NE(output, nullptr);
    EXPECT_EQ(output[0], 0);
    EXPECT_EQ(output[1], 0);
}

} // namespace
} // namespace korvel
