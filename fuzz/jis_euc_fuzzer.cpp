// The JIS, EUC and garbled-mail converters and ParseJisEscape on any bytes. Besides memory
// safety: escapes never reach past a terminator, the mail repair leaves no eighth bit set,
// well-formed Shift_JIS survives EUC and JIS (katakana kept) unchanged, and the direct
// conversions to and from UTF-16 give what the route through Shift_JIS gives, byte for byte.

#include "FuzzCheck.h"
#include "codec/CodecBlock.h"
#include "codec/JisEucConversion.h"
#include "codec/ShiftJisConversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace {

using korvel::CodecOk;
using korvel::CodecResult;
using korvel::RunConverter;
using korvel::fuzz::Require;

constexpr std::uint8_t kEsc = 0x1B;

bool InRange(std::uint8_t b, std::uint8_t low, std::uint8_t high) {
    return b >= low && b <= high;
}

// Status Ok and the output a NUL-terminated string, as callers read it.
void RequireTerminated(CodecResult&& result, const char* property) {
    Require(result.status == CodecOk && result.block.data()[result.block.size()] == 0, property);
}

void CheckConverters(const std::uint8_t* data, std::size_t size) {
    RequireTerminated(RunConverter(korvel::JisToShiftJis, data, size), "JisToShiftJis delivers");
    RequireTerminated(RunConverter(korvel::EucToShiftJis, data, size), "EucToShiftJis delivers");
    RequireTerminated(RunConverter(korvel::ShiftJisToEuc, data, size), "ShiftJisToEuc delivers");
    for (const int katakanaMode : {0, 1}) {
        RequireTerminated(RunConverter(korvel::ShiftJisToJis, data, size, katakanaMode),
                          "ShiftJisToJis delivers");
    }
    // The repair changes its source: it gets a copy of exactly the input's size.
    const auto mail = std::make_unique<std::uint8_t[]>(size);
    std::copy(data, data + size, mail.get());
    CodecResult repaired;
    std::uint8_t* output = nullptr;
    std::size_t outputLength = 0;
    repaired.status = korvel::GarbledMailToShiftJis(mail.get(), size, &output, &outputLength);
    repaired.block = korvel::CodecBlock(output, outputLength);
    RequireTerminated(std::move(repaired), "GarbledMailToShiftJis delivers");
    Require(std::all_of(mail.get(), mail.get() + size, [](std::uint8_t b) { return b < 0x80; }),
            "the mail repair clears every eighth bit of its source");
}

// ParseJisEscape reads a NUL-terminated run: an escape it finds ends before the terminator,
// and reads alike with and without its ESC (the mail repair looks for bodies without one).
void CheckEscapes(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> text(data, data + size);
    text.push_back(0);
    for (std::size_t i = 0; i < size; ++i) {
        int length = -1;
        const int mode = korvel::ParseJisEscape(text.data() + i, true, nullptr, &length);
        if (mode == 3) {
            continue;
        }
        int bodyLength = -1;
        Require(length >= 3 && i + static_cast<std::size_t>(length) <= size &&
                    korvel::ParseJisEscape(text.data() + i + 1, false, nullptr, &bodyLength) ==
                        mode &&
                    bodyLength == length - 1,
                "an escape ends before the terminator and reads alike without its ESC");
    }
}

// Builds Shift_JIS text from the fuzz bytes that EUC and JIS can carry both ways: ASCII but
// ESC (JIS would read it as an escape), half-width katakana, and JIS X 0208 pairs whose trail
// byte is forced into the trail range.
std::vector<std::uint8_t> CarriableShiftJis(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> text;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t b = data[i];
        if ((b < 0x80 && b != kEsc) || InRange(b, 0xA1, 0xDF)) {
            text.push_back(b);
        } else if ((InRange(b, 0x81, 0x9F) || InRange(b, 0xE0, 0xEF)) && i + 1 < size) {
            std::uint8_t trail = static_cast<std::uint8_t>(0x40 + data[++i] % 188);
            trail += trail >= 0x7F ? 1 : 0;
            text.push_back(b);
            text.push_back(trail);
        }
    }
    return text;
}

void CheckRoundTrips(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> text = CarriableShiftJis(data, size);
    text.push_back(0); // a real buffer even when nothing was carriable
    const std::span<const std::uint8_t> carried(text.data(), text.size() - 1);
    auto survives = [&](CodecResult there, auto back) {
        const CodecResult result = RunConverter(back, there.block.data(), there.block.size());
        return there.status == CodecOk && result.status == CodecOk &&
               std::ranges::equal(result.block.bytes(), carried);
    };
    Require(survives(RunConverter(korvel::ShiftJisToEuc, carried.data(), carried.size()),
                     korvel::EucToShiftJis),
            "Shift_JIS survives EUC and back");
    Require(survives(RunConverter(korvel::ShiftJisToJis, carried.data(), carried.size(), 1),
                     korvel::JisToShiftJis),
            "Shift_JIS survives JIS (katakana kept) and back");
}

// The route through a whole Shift_JIS buffer, the twin of each direct conversion.
template <typename Second, typename... Extra>
CodecResult ThroughShiftJis(CodecResult first, Second second, Extra... extra) {
    if (first.status != CodecOk) {
        return first;
    }
    return RunConverter(second, first.block.data(), first.block.size(), extra...);
}

bool SameResult(CodecResult direct, CodecResult route, int zeros) {
    if (direct.status != route.status) {
        return false;
    }
    if (direct.status != CodecOk) {
        return true;
    }
    const std::uint8_t* end = direct.block.data() + direct.block.size();
    return std::ranges::equal(direct.block.bytes(), route.block.bytes()) &&
           std::all_of(end, end + zeros, [](std::uint8_t b) { return b == 0; });
}

void CheckDirectRoutes(const std::uint8_t* data, std::size_t size) {
    using namespace korvel;
    Require(SameResult(RunConverter(JisToUnicode, data, size),
                       ThroughShiftJis(RunConverter(JisToShiftJis, data, size), ShiftJisToUnicode),
                       2),
            "JisToUnicode gives what the route through Shift_JIS gives");
    Require(SameResult(RunConverter(EucToUnicode, data, size),
                       ThroughShiftJis(RunConverter(EucToShiftJis, data, size), ShiftJisToUnicode),
                       2),
            "EucToUnicode gives what the route through Shift_JIS gives");
    // The route's Shift_JIS encoder is held against glibc at each level by its own target.
    korvel::fuzz::ForEachVectorLevel([&] {
        Require(SameResult(
                    RunConverter(UnicodeToEuc, data, size),
                    ThroughShiftJis(RunConverter(UnicodeToShiftJis, data, size), ShiftJisToEuc), 1),
                "UnicodeToEuc gives what the route through Shift_JIS gives");
    });
    for (const int katakanaMode : {0, 1}) {
        Require(SameResult(RunConverter(UnicodeToJis, data, size, katakanaMode),
                           ThroughShiftJis(RunConverter(UnicodeToShiftJis, data, size),
                                           ShiftJisToJis, katakanaMode),
                           1),
                "UnicodeToJis gives what the route through Shift_JIS gives");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The converters refuse a null source; the empty input may come without a buffer.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    CheckConverters(bytes, size);
    CheckEscapes(bytes, size);
    CheckRoundTrips(bytes, size);
    CheckDirectRoutes(bytes, size);
    return 0;
}
