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
    return tables;
}

} // namespace

const FlatTables& Tables() {
    static const std::unique_ptr<FlatTables> tables = BuildTables();
    return *tables;
}

} // namespace korvel::cp932
