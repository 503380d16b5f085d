#include "codec/CodecBuffer.h"

#include <cstdlib>
#include <cstring>

namespace korvel {

namespace {
constexpr std::size_t kBlockStep = 256;
}

std::uint8_t* AppendBytes(std::uint8_t* data, std::size_t* capacity, std::size_t* length,
                          const void* source, std::size_t count) {
    if (capacity == nullptr || length == nullptr || source == nullptr) {
        std::free(data);
        return nullptr;
    }
    if (data == nullptr) {
        data = static_cast<std::uint8_t*>(std::malloc(kBlockStep));
        if (data == nullptr) {
            return nullptr;
        }
        *capacity = kBlockStep;
    } else if (*capacity <= *length + count + 1) {
        // One step is enough: converters append at most 7 bytes at a time.
        auto* grown = static_cast<std::uint8_t*>(std::realloc(data, *capacity + kBlockStep));
        if (grown == nullptr) {
            std::free(data);
            return nullptr;
        }
        data = grown;
        *capacity += kBlockStep;
    }
    if (count > 0) {
        std::memcpy(data + *length, source, count);
    }
    *length += count;
    data[*length] = 0;
    return data;
}

} // namespace korvel
