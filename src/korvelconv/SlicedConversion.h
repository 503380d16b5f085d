#pragma once

#include "document/DocumentBytes.h"
#include "korvelconv/CommandLine.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvel::conv {

// The decoded text may point into the input bytes, and the output into the text.
struct Conversion {
    DecodedDocument decoded;
    EncodedDocument encoded;
    CodecStatus status() const {
        return decoded.status != CodecOk ? decoded.status : encoded.status;
    }
};

// The editor's load and save of one whole input, as the editor does them.
Conversion ConvertWhole(std::span<const std::uint8_t> bytes, const CommandLine& line);

// The same output a slice at a time, so that a large input never has its whole output (or
// its whole text) in memory, nor the fresh pages that would hold it. Each slice is cut after a
// line feed in plain text, so no character, escape sequence or CR LF pair is split, and the
// JIS output is back in its single-byte set where a slice ends. A slice takes at least
// sliceBytes of input unless the input ends first.
class SlicedConversion {
public:
    SlicedConversion(const CommandLine& line, std::size_t sliceBytes)
        : line_(line), sliceBytes_(sliceBytes) {}

    // Chooses the code set, and the line ending when it is to change, from the whole input.
    void Begin(std::span<const std::uint8_t> bytes);
    bool Done() const { return started_ && offset_ >= inputLength_; }
    // Converts the slice after the last one taken into slice(); bytes hold the same input
    // that Begin saw, or a prefix of it read again. Returns the converter's status.
    CodecStatus Next(std::span<const std::uint8_t> bytes);
    // The converted slice, the mark in front of the first; call Take once it is written.
    std::span<const std::span<const std::uint8_t>> slice() const { return parts_; }
    void Take();

private:
    std::size_t SliceEnd(std::span<const std::uint8_t> bytes) const;

    const CommandLine& line_;
    std::size_t sliceBytes_;
    TextEncoding encoding_ = TextEncoding::ShiftJis;
    LineEnding fileLineEnding_ = LineEnding::CrLf;
    std::size_t inputLength_ = 0;
    std::size_t offset_ = 0;
    std::size_t nextOffset_ = 0;
    bool started_ = false; // a slice has been taken
    Conversion current_;
    std::span<const std::uint8_t> parts_[2];
};

} // namespace korvel::conv
