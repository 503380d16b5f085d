#pragma once

// Calls the engine the way its callers do and checks what every converter promises: status Ok
// and the 0 bytes behind the output. The input is copied into a block of exactly its size, so
// that a read past the end of the data is caught by the sanitizers instead of hitting slack.

#include "TestInputs.h"
#include "codec/CodecBlock.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

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

// terminatorBytes is 1 for byte output and 2 for UTF-16 output; a failure gives no bytes.
template <typename Converter, typename... Extra>
Bytes Convert(Converter converter, ExactCopy& input, int terminatorBytes, Extra... extra) {
    std::uint8_t* output = nullptr;
    std::size_t length = 0;
    const CodecStatus status = converter(input.data(), input.size(), &output, &length, extra...);
    const CodecBlock owner(output, length);
    EXPECT_EQ(status, CodecOk) << "input " << Hex(input.bytes());
    if (status != CodecOk || output == nullptr) {
        return Bytes();
    }
    for (int k = 0; k < terminatorBytes; ++k) {
        EXPECT_EQ(output[length + k], 0) << "terminator, input " << Hex(input.bytes());
    }
    return Bytes(output, output + length);
}

template <typename Converter, typename... Extra>
Bytes Convert(Converter converter, ByteView input, int terminatorBytes, Extra... extra) {
    ExactCopy copy(input);
    return Convert(converter, copy, terminatorBytes, extra...);
}

inline std::u16string UnitsOf(const Bytes& bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    std::copy_n(bytes.data(), units.size() * 2, reinterpret_cast<std::uint8_t*>(units.data()));
    return units;
}

} // namespace korvel::testing
