#include "codec/ByteMasks.h"

#include <bit>
#include <gtest/gtest.h>
#include <random>

// The vector forms of the block masks against their scalar twins: random blocks crowding round
// the edges of each range, and dense lead masks, whose long runs of leads must pair up from
// their start across the block boundary.

namespace korvel::detail {
namespace {

TEST(ByteMasks, RangeMaskAgreesWithItsScalarTwin) {
    std::mt19937 random(1234);
    const std::pair<int, int> ranges[] = {{0x80, 0xFF}, {0x81, 0x9F}, {0xE0, 0xFC}, {0x40, 0xFC},
                                          {0x7F, 0x7F}, {0x00, 0x00}, {0x20, 0x7E}, {0xFC, 0xFD}};
    std::uint8_t block[kMaskBlock];
    for (int round = 0; round < 4000; ++round) {
        for (const auto& [low, high] : ranges) {
            for (std::uint8_t& b : block) {
                const int nearEdge =
                    (round % 2 == 0 ? low : high) + static_cast<int>(random() % 7) - 3;
                b = static_cast<std::uint8_t>(round % 3 == 0 ? random() : nearEdge);
            }
            const auto l = static_cast<std::uint8_t>(low);
            const auto h = static_cast<std::uint8_t>(high);
            ASSERT_EQ(RangeMask(block, l, h), RangeMaskScalar(block, l, h))
                << "range " << low << "-" << high << " round " << round;
            ASSERT_EQ(ByteMask(block, l), RangeMaskScalar(block, l, l))
                << "byte " << low << " round " << round;
            ASSERT_EQ(HighBitMask(block), RangeMaskScalar(block, 0x80, 0xFF)) << "round " << round;
#if defined(__x86_64__)
            if (__builtin_cpu_supports("avx512bw")) {
                ASSERT_EQ(RangeMaskAvx512(block, l, h), RangeMaskScalar(block, l, h)) << round;
                ASSERT_EQ(ByteMaskAvx512(block, l), RangeMaskScalar(block, l, l)) << round;
                ASSERT_EQ(HighBitMaskAvx512(block), RangeMaskScalar(block, 0x80, 0xFF)) << round;
            }
#endif
        }
    }
}

TEST(ByteMasks, SecondBytePositionsAgreesWithCharacterWalk) {
    std::mt19937_64 random(99);
    for (int round = 0; round < 20000; ++round) {
        const std::uint64_t leads = round == 0   ? 0
                                    : round == 1 ? ~std::uint64_t{0}
                                                 : random() | random() | (round % 2 ? random() : 0);
        for (const std::uint64_t carryIn : {0, 1}) {
            std::uint64_t fastCarry = carryIn;
            std::uint64_t slowCarry = carryIn;
            ASSERT_EQ(SecondBytePositions(leads, fastCarry),
                      SecondBytePositionsScalar(leads, slowCarry))
                << std::hex << "leads " << leads << " carry " << carryIn;
            ASSERT_EQ(fastCarry, slowCarry)
                << std::hex << "leads " << leads << " carry " << carryIn;
            ASSERT_EQ(CountBits(leads), std::popcount(leads)) << std::hex << "leads " << leads;
        }
    }
}

} // namespace
} // namespace korvel::detail
