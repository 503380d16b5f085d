#include "DocumentHarness.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>

namespace korvel {
namespace {

using testing::Bytes;
using testing::Hex;
using testing::Load;
using testing::Save;

// Japanese texts in three code sets with UTF-8 twins, written by others (Debian package
// libpython3.11-testsuite), so our reading of the code sets is not checked against itself.
const std::filesystem::path kSampleFolder = "/usr/lib/python3.11/test/cjkencodings";

struct Sample {
    const char* name;
    TextEncoding encoding;
};

constexpr Sample kSamples[] = {
    {"shift_jis", TextEncoding::ShiftJis},
    {"euc_jp", TextEncoding::Euc},
    {"iso2022_jp", TextEncoding::Jis},
};

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

struct SampleText {
    Bytes bytes;
    std::u16string twinText;
};

// Nullopt when the package is not installed.
std::optional<SampleText> ReadSample(const char* name) {
    const std::filesystem::path file = kSampleFolder / (std::string(name) + ".txt");
    const std::filesystem::path twin = kSampleFolder / (std::string(name) + "-utf8.txt");
    if (!std::filesystem::exists(file) || !std::filesystem::exists(twin)) {
        return std::nullopt;
    }
    // The twins use LF like the samples, so both texts are widened alike.
    return SampleText{ReadFile(file), Load(ReadFile(twin), TextEncoding::Utf8N).text};
}

class SampleFiles : public ::testing::TestWithParam<Sample> {
protected:
    void SetUp() override {
        std::optional<SampleText> sample = ReadSample(GetParam().name);
        if (!sample) {
            GTEST_SKIP() << "no " << GetParam().name << " sample (libpython3.11-testsuite)";
        }
        ASSERT_FALSE(sample->bytes.empty());
        ASSERT_FALSE(sample->twinText.empty());
        bytes_ = std::move(sample->bytes);
        twinText_ = std::move(sample->twinText);
    }

    Bytes bytes_;
    std::u16string twinText_;
};

// Detected or chosen, the code set reads the twin's text. Every character of the samples has
// one form in its code set, so saving gives the file back.
TEST_P(SampleFiles, CodeSetDetectedOrChosenReadsTheTwinsTextAndSavesTheFileBack) {
    for (const TextEncoding requested : {TextEncoding::AutoDetect, GetParam().encoding}) {
        SCOPED_TRACE(::testing::Message() << "requested " << static_cast<int>(requested));
        const testing::LoadedText loaded = Load(bytes_, requested);
        EXPECT_EQ(loaded.encoding, GetParam().encoding);
        EXPECT_TRUE(loaded.text == twinText_) << Hex(loaded.text);
        for (const int jisKatakanaMode : {0, 1}) {
            EXPECT_EQ(Hex(Save(loaded.text, loaded.encoding, loaded.lineEnding, jisKatakanaMode)),
                      Hex(bytes_))
                << "katakana mode " << jisKatakanaMode;
        }
    }
}

// Mail that got the eighth bit set on every byte but the line breaks still reads right once
// repaired: no escape body is restored where there was none.
TEST(SampleMail, EighthBitMailIsRepaired) {
    std::optional<SampleText> sample = ReadSample("iso2022_jp");
    if (!sample) {
        GTEST_SKIP() << "no iso2022_jp sample (libpython3.11-testsuite)";
    }
    for (std::uint8_t& b : sample->bytes) {
        if (b != '\n') {
            b |= 0x80;
        }
    }
    const testing::LoadedText loaded = Load(sample->bytes, TextEncoding::GarbledMail);
    EXPECT_EQ(loaded.lineEnding, LineEnding::Lf);
    EXPECT_TRUE(loaded.text == sample->twinText) << Hex(loaded.text);
}

INSTANTIATE_TEST_SUITE_P(CjkEncodings, SampleFiles, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<Sample>& info) {
                             return std::string(info.param.name);
                         });

} // namespace
} // namespace korvel
