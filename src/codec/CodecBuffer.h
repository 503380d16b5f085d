#pragma once

#include <cstddef>
#include <cstdint>

namespace korvel {

// Appends count bytes to a malloc'd block that always keeps a 0 byte behind its length.
// A null data pointer starts a 256-byte block; a full block grows by exactly 256 bytes.
// A null capacity slot, length slot or source releases data and returns null.
// Returns the (possibly moved) block, or null when an allocation failed.
std::uint8_t* AppendBytes(std::uint8_t* data, std::size_t* capacity, std::size_t* length,
                          const void* source, std::size_t count);

// The growable output of a converter: data, capacity and length in one place.
struct CodecBuffer {
    std::uint8_t* data = nullptr;
    std::size_t capacity = 0;
    std::size_t length = 0;
};

} // namespace korvel
