#include "codec/ByteMasks.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace korvel::detail {
namespace {

using Block = std::array<std::uint8_t, kMaskBlock>;

Block RandomBlock(std::mt19937& random, std::uint8_t bias) {
    // Half the blocks come from a narrow window around bias, so the range edges are hit often.
    Block block;
    std::uniform_int_distribution<int> any(0, 255);
    std::uniform_int_distribution<int> near(-3, 3);
    const bool narrow = any(random) % 2 == 0;
    for (auto& b : block) {
        b = static_cast<std::uint8_t>(narrow ? bias + near(random) : any(random));
    }
    return block;
}

TEST(ByteMasksTest, RangeMaskAgreesWithItsScalarTwin) {
    std::mt19937 random(1234);
    const std::pair<int, int> ranges[] = {{0x80, 0xFF}, {0x81, 0x9F}, {0xE0, 0xFC}, {0x40, 0xFC},
                                          {0x7F, 0x7F}, {0x00, 0x00}, {0x20, 0x7E}, {0xFC, 0xFD}};
    for (int round = 0; round < 2000; ++round) {
        for (const auto& [low, high] : ranges) {
            const Block block = RandomBlock(random, static_cast<std::uint8_t>(low));
            const auto l = static_cast<std::uint8_t>(low);
            const auto h = static_cast<std::uint8_t>(high);
            ASSERT_EQ(RangeMask(block.data(), l, h), RangeMaskScalar(block.data(), l, h))
                << "range " << low << "-" << high << " round " << round;
        }
    }
}

TEST(ByteMasksTest, SecondBytePositionsAgreesWithCharacterWalk) {
    std::mt19937_64 random(99);
    const std::uint64_t patterns[] = {0,
                                      ~std::uint64_t{0},
                                      0x5555555555555555ULL,
                                      0xAAAAAAAAAAAAAAAAULL,
                                      std::uint64_t{1} << 63,
                                      0x8000000000000001ULL,
                                      0x7FFFFFFFFFFFFFFFULL,
                                      0x00FF00FF00FF00FFULL};
    auto check = [](std::uint64_t leads, std::uint64_t carryIn) {
        std::uint64_t fastCarry = carryIn;
        std::uint64_t slowCarry = carryIn;
        const std::uint64_t fast = SecondBytePositions(leads, fastCarry);
        const std::uint64_t slow = SecondBytePositionsScalar(leads, slowCarry);
        ASSERT_EQ(fast, slow) << std::hex << "leads " << leads << " carry " << carryIn;
        ASSERT_EQ(fastCarry, slowCarry) << std::hex << "leads " << leads << " carry " << carryIn;
    };
    for (const std::uint64_t leads : patterns) {
        check(leads, 0);
        check(leads, 1);
    }
    for (int round = 0; round < 20000; ++round) {
        // Dense masks make long lead runs, where the parity rule matters.
        const std::uint64_t leads = random() | random() | (round % 2 ? random() : 0);
        check(leads, static_cast<std::uint64_t>(round % 3 == 0));
    }
}

} // namespace
} // namespace korvel::detail
