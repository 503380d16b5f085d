#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

namespace korvel {

// Owns one malloc'd converter output, so C++ callers cannot leak or double-free it.
// The designed functions stay the primary interface; this only holds their result.
class CodecBlock {
public:
    CodecBlock() = default;
    CodecBlock(std::uint8_t* data, std::size_t length) : data_(data), length_(length) {}
    CodecBlock(CodecBlock&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), length_(std::exchange(other.length_, 0)) {}
    CodecBlock& operator=(CodecBlock&& other) noexcept {
        if (this != &other) {
            std::free(data_);
            data_ = std::exchange(other.data_, nullptr);
            length_ = std::exchange(other.length_, 0);
        }
        return *this;
    }
    CodecBlock(const CodecBlock&) = delete;
    CodecBlock& operator=(const CodecBlock&) = delete;
    ~CodecBlock() { std::free(data_); }

    // Gives the block up without freeing it, for a caller that reallocates it.
    std::uint8_t* release() {
        length_ = 0;
        return std::exchange(data_, nullptr);
    }

    std::span<const std::uint8_t> bytes() const { return {data_, length_}; }
    std::uint8_t* data() { return data_; }
    std::size_t size() const { return length_; }

    // The block read as UTF-16 code units (for converters whose output is UTF-16LE).
    std::u16string_view units() const {
        return {reinterpret_cast<const char16_t*>(data_), length_ / 2};
    }

private:
    std::uint8_t* data_ = nullptr;
    std::size_t length_ = 0;
};

// Calls a converter of the common form and wraps its output.
struct CodecResult {
    CodecStatus status = CodecOk;
    CodecBlock block;
};

template <typename Converter, typename... Extra>
CodecResult RunConverter(Converter converter, const void* source, std::size_t byteLength,
                         Extra... extra) {
    std::uint8_t* output = nullptr;
    std::size_t outputLength = 0;
    CodecResult result;
    result.status = converter(source, byteLength, &output, &outputLength, extra...);
    if (result.status == CodecOk) {
        result.block = CodecBlock(output, outputLength);
    }
    return result;
}

} // namespace korvel
