#include "codec/Cp932Tables.h"

#include <algorithm>
#include <memory>

namespace korvel::cp932 {

namespace {

std::unique_ptr<FlatTables> BuildTables() {
    auto tables = std::make_unique<FlatTables>();
    std::fill(std::begin(tables->singleByte), std::end(tables->singleByte), kUnmapped);
    std::fill(std::begin(tables->doubleByte), std::end(tables->doubleByte), kUnmapped);
    std::fill(std::begin(tables->fromUnicode), std::end(tables->fromUnicode), kUnmapped);
    for (std::size_t i = 0; i < kDecodePairsCount; ++i) {
        const Cp932Pair pair = kDecodePairs[i];
        if (pair.from < 0x100) {
            tables->singleByte[pair.from] = pair.to;
        } else {
            tables->doubleByte[pair.from] = pair.to;
        }
    }
    for (std::size_t i = 0; i < kEncodePairsCount; ++i) {
        tables->fromUnicode[kEncodePairs[i].from] = kEncodePairs[i].to;
    }
    auto orSubstitute = [](std::uint16_t unit) { return unit == kUnmapped ? kSubstitute : unit; };
    for (unsigned b0 = 0; b0 < 0x100; ++b0) {
        for (unsigned b1 = 0; b1 < 0x100; ++b1) {
            const auto b0b1 = static_cast<std::uint16_t>(b0 << 8 | b1);
            tables->decodedUnits[b0b1] = !IsLeadByte(static_cast<std::uint8_t>(b0))
                                             ? orSubstitute(tables->singleByte[b0])
                                         : IsTrailByte(static_cast<std::uint8_t>(b1))
                                             ? orSubstitute(tables->doubleByte[b0b1])
                                             : kSubstitute;
        }
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::uint16_t code = tables->fromUnicode[unit];
        std::uint16_t bytes = code;
        if (IsSurrogate(static_cast<char16_t>(unit))) {
            bytes = kUnmapped;
        } else if (code == kUnmapped) {
            bytes = kDefaultCharacter;
        } else if (code >= 0x100) {
            bytes = static_cast<std::uint16_t>(code >> 8 | (code & 0xFF) << 8);
        }
        tables->encodedBytes[unit] = bytes;
    }
    return tables;
}

} // namespace

const FlatTables& Tables() {
    static const std::unique_ptr<FlatTables> tables = BuildTables();
    return *tables;
}

} // namespace korvel::cp932
