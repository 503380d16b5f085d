#include "codec/CodecBuffer.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace korvel {
namespace {

TEST(AppendBytes, FirstCallStartsAnEmptyTerminatedBlockOf256Bytes) {
    std::size_t capacity = 0;
    std::size_t length = 0;
    std::uint8_t* data = AppendBytes(nullptr, &capacity, &length, "", 0);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(capacity, 256u);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(data[0], 0);
    std::free(data);
}

TEST(AppendBytes, OneByteAtATimeGrowsWhenTheTerminatorNoLongerFits) {
    std::size_t capacity = 0;
    std::size_t length = 0;
    std::uint8_t* data = nullptr;
    for (int i = 0; i < 254; ++i) {
        data = AppendBytes(data, &capacity, &length, "x", 1);
        ASSERT_NE(data, nullptr);
    }
    EXPECT_EQ(capacity, 256u);
    data = AppendBytes(data, &capacity, &length, "y", 1);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(capacity, 512u);
    EXPECT_EQ(length, 255u);
    EXPECT_EQ(data[254], 'y');
    EXPECT_EQ(data[255], 0);
    std::free(data);
}

// Converters append up to 7 bytes at a time; each full block grows by exactly one step.
TEST(AppendBytes, MixedCountsKeepContentTerminatorAndTheGrowthRule) {
    std::mt19937 rng(20240601);
    std::uniform_int_distribution<int> count(0, 7);
    std::uint8_t* data = nullptr;
    std::size_t capacity = 0;
    std::size_t length = 0;
    std::size_t modelCapacity = 0;
    std::vector<std::uint8_t> model;
    std::uint8_t next = 1;
    while (model.size() < 3000) {
        const std::size_t n = count(rng);
        std::uint8_t chunk[7];
        for (std::size_t k = 0; k < n; ++k) {
            chunk[k] = next++;
        }
        if (modelCapacity == 0) {
            modelCapacity = 256;
        } else if (modelCapacity <= model.size() + n + 1) {
            modelCapacity += 256;
        }
        model.insert(model.end(), chunk, chunk + n);
        data = AppendBytes(data, &capacity, &length, chunk, n);
        ASSERT_NE(data, nullptr);
        ASSERT_EQ(capacity, modelCapacity) << "after " << model.size() << " bytes";
        ASSERT_EQ(length, model.size());
        ASSERT_EQ(data[length], 0);
    }
    EXPECT_EQ(std::vector<std::uint8_t>(data, data + length), model);
    std::free(data);
}

// The leak checker of the sanitizer build tells whether the block was really freed.
TEST(AppendBytes, NullSlotOrSourceReleasesTheBlock) {
    struct Row {
        const char* name;
        bool nullCapacity;
        bool nullLength;
        bool nullSource;
    };
    for (const Row row : {Row{"capacity", true, false, false}, Row{"length", false, true, false},
                          Row{"source", false, false, true}}) {
        SCOPED_TRACE(row.name);
        std::size_t capacity = 0;
        std::size_t length = 0;
        std::uint8_t* data = AppendBytes(nullptr, &capacity, &length, "abc", 3);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(AppendBytes(data, row.nullCapacity ? nullptr : &capacity,
                              row.nullLength ? nullptr : &length, row.nullSource ? nullptr : "d",
                              1),
                  nullptr);
    }
}

} // namespace
} // namespace korvel
