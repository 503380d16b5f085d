#pragma once

// Calls the engine the way its callers do and checks what every converter promises: status Ok
// and the 0 bytes behind the output. The input is copied into a block of exactly its size, so
// that a read past the end of the data is caught by the sanitizers instead of hitting slack.

#include "ReferenceCodec.h"
#include "TestInputs.h"
#include "codec/CodecBlock.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace korvel::testing {

class ExactCopy {
public:
    explicit ExactCopy(ByteView bytes)
        : data_(std::make_unique<std::uint8_t[]>(bytes.size())), size_(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), data_.get());
    }
    std::uint8_t* data() { return data_.get(); }
    std::size_t size() const { return size_; }
    Bytes bytes() const { return Bytes(data_.get(), data_.get() + size_); }

private:
    std::unique_ptr<std::uint8_t[]> data_;
    std::size_t size_;
};

// terminatorBytes is 1 for byte output and 2 for UTF-16 output.
template <typename Converter, typename... Extra>
std::optional<Bytes> Convert(Converter converter, ExactCopy& input, int terminatorBytes,
                             Extra... extra) {
    std::uint8_t* output = nullptr;
    std::size_t length = 0;
    const CodecStatus status = converter(input.data(), input.size(), &output, &length, extra...);
    const CodecBlock owner(output, length);
    EXPECT_EQ(status, CodecOk) << "input " << Hex(input.bytes());
    if (status != CodecOk) {
        return std::nullopt;
    }
    if (output == nullptr) {
        EXPECT_EQ(length, 0u) << "input " << Hex(input.bytes());
        return Bytes();
    }
    for (int k = 0; k < terminatorBytes; ++k) {
        EXPECT_EQ(output[length + k], 0)
            << "terminator byte " << k << ", input " << Hex(input.bytes());
    }
    return Bytes(output, output + length);
}

template <typename Converter, typename... Extra>
std::optional<Bytes> Convert(Converter converter, ByteView input, int terminatorBytes,
                             Extra... extra) {
    ExactCopy copy(input);
    return Convert(converter, copy, terminatorBytes, extra...);
}

inline std::u16string UnitsOf(const Bytes& bytes) {
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        units.push_back(static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8));
    }
    return units;
}

// Exact where the reference settled its output; after a pair cut by the end of the data only
// a few harmless bytes may follow.
inline void ExpectSameOutput(const reference::Converted& expected, const Bytes& actual,
                             ByteView input) {
    if (!expected.cutAt) {
        if (actual != expected.bytes) {
            EXPECT_EQ(Hex(actual), Hex(expected.bytes)) << "input " << Hex(input);
        }
        return;
    }
    const std::size_t settled = *expected.cutAt;
    const ByteView prefix(actual.data(), std::min(settled, actual.size()));
    const ByteView expectedPrefix(expected.bytes.data(), settled);
    if (!std::ranges::equal(prefix, expectedPrefix)) {
        EXPECT_EQ(Hex(prefix), Hex(expectedPrefix)) << "input (last pair cut) " << Hex(input);
    }
    EXPECT_LE(actual.size(), settled + 8) << "input (last pair cut) " << Hex(input);
}

} // namespace korvel::testing
