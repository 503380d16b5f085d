#pragma once

#include "codec/CodecTypes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace korvel::detail {

// A whole file's bytes or output touch every page once; with 4 KiB pages the page faults
// cost about as much as the conversion itself, so large blocks ask for huge pages.
inline void AdviseHugePages(std::uint8_t* data, std::size_t size) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kHugePage = 2 * 1024 * 1024;
    if (size < 4 * kHugePage) {
        return;
    }
    // The advice covers whole small pages, not only the huge pages inside the block: advice
    // on part of a mapping splits it, and a split mapping cannot grow in place when the
    // block is reallocated (line breaks widened after the conversion).
    constexpr std::uintptr_t kPage = 4096;
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = begin & ~(kPage - 1);
    const std::uintptr_t last = (begin + size + kPage - 1) & ~(kPage - 1);
    madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
    (void)data;
    (void)size;
#endif
}

// The output of one converter, allocated once from an upper bound of its size, so that a
// large file does not pay for a growth step every 256 bytes. Pages never written are never
// touched, so a generous bound costs address space, not memory.
class OutputBlock {
public:
    OutputBlock() = default;
    OutputBlock(const OutputBlock&) = delete;
    OutputBlock& operator=(const OutputBlock&) = delete;
    ~OutputBlock() { std::free(data_); }

    // Room for maxBytes of output plus a two-byte terminator; false when out of memory.
    bool Reserve(std::size_t maxBytes) {
        if (maxBytes > std::numeric_limits<std::size_t>::max() - kTerminatorRoom) {
            return false;
        }
        data_ = static_cast<std::uint8_t*>(std::malloc(maxBytes + kTerminatorRoom));
        if (data_ == nullptr) {
            return false;
        }
        AdviseHugePages(data_, maxBytes);
        return true;
    }

    std::uint8_t* bytes() { return data_; }
    char16_t* units() { return reinterpret_cast<char16_t*>(data_); }

    // Writes the terminator behind length bytes, gives the block away through the slots.
    CodecStatus Deliver(std::size_t length, int terminatorBytes, std::uint8_t** output,
                        std::size_t* outputLength) {
        for (int i = 0; i < terminatorBytes; ++i) {
            data_[length + i] = 0;
        }
        // Shrinking a large block is a cheap remap; keep the original when it cannot shrink.
        if (auto* shrunk = static_cast<std::uint8_t*>(
                std::realloc(data_, length + static_cast<std::size_t>(terminatorBytes)))) {
            data_ = shrunk;
        }
        *output = data_;
        *outputLength = length;
        data_ = nullptr;
        return CodecOk;
    }

private:
    static constexpr std::size_t kTerminatorRoom = 2;
    std::uint8_t* data_ = nullptr;
};

// Bytes of an upper bound, or SIZE_MAX when it overflows (Reserve then fails).
constexpr std::size_t BoundBytes(std::size_t length, std::size_t perByte, std::size_t extra) {
    constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
    if (length > (kMax - extra) / perByte) {
        return kMax;
    }
    return length * perByte + extra;
}

// The byte at index i of a run, or 0 past its end: the loader keeps four 0 bytes behind every
// file, and the designed reads past the end see those.
inline std::uint8_t ByteAt(const std::uint8_t* bytes, std::size_t length, std::size_t i) {
    return i < length ? bytes[i] : 0;
}

} // namespace korvel::detail
