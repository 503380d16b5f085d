// JIS and EUC straight to and from UTF-16. Well-formed text converts a character at a time
// through tables that fold the row-cell arithmetic and CP932 into one lookup; anything else
// takes the slow path, which feeds the Shift_JIS bytes of each character one by one through the
// Shift_JIS step of the two-step route. Both steps keep at most one byte of state (a lead byte
// waiting for its trail), and the fast paths run only while none is waiting, so the results are
// those of the route through a whole Shift_JIS buffer, on any input.

#include "codec/ByteMasks.h"
#include "codec/Cp932Tables.h"
#include "codec/JisArithmetic.h"
#include "codec/JisEucConversion.h"
#include "codec/OutputBlock.h"
#include "codec/ShiftJisSteps.h"
#include "codec/StartLookup.h"
#include "codec/TableEncoding.h"
#include "codec/VectorSupport.h"

#include <bit>
#include <cstring>
#include <memory>

namespace korvel {

namespace {

using detail::ByteAt;
using detail::IsHalfWidthKatakana;
using detail::IsJisLeadByte;
using detail::kEsc;

struct JisEucTables {
    // b0 << 8 | b1 of a well-formed EUC character (ASCII, 8E and a katakana, a JIS X 0208 pair)
    // to its code unit; a JIS pair reads as its EUC form.
    std::uint16_t eucUnits[65536];
    std::uint16_t gatherRoom = 0; // read, never used, when a gather looks up eucUnits[0xFFFF]
    // Code unit to its EUC bytes in output order (as cp932 encodedBytes), or kUnmapped where
    // the Shift_JIS bytes need the slow path: surrogates, and user-defined and IBM codes, whose
    // lead byte EUC copies so that their trail byte is read on its own.
    std::uint16_t eucBytes[65536];
    // Code unit to a byte that JIS copies in ASCII mode (below 0x100), to the JIS pair
    // j1 << 8 | j2 (j1 is 0x21 or more), or kUnmapped for the slow path (katakana as well).
    std::uint16_t jisCodes[65536];
};

std::unique_ptr<JisEucTables> BuildTables() {
    const cp932::FlatTables& cp932 = cp932::Tables();
    auto tables = std::make_unique<JisEucTables>();
    std::fill(std::begin(tables->eucUnits), std::end(tables->eucUnits), cp932::kSubstitute);
    for (unsigned b0 = 0; b0 < 0x100; ++b0) {
        for (unsigned b1 = 0; b1 < 0x100; ++b1) {
            std::uint16_t& unit = tables->eucUnits[b0 << 8 | b1];
            if (b0 < 0x80) {
                unit = cp932.decodedUnits[b0 << 8];
            } else if (b0 == 0x8E && IsHalfWidthKatakana(static_cast<std::uint8_t>(b1))) {
                unit = cp932.decodedUnits[b1 << 8];
            } else if (b0 >= 0xA1 && b0 <= 0xFE && b1 >= 0xA1 && b1 <= 0xFE) {
                std::uint8_t shiftJis[2];
                detail::JisPairToShiftJis(static_cast<std::uint8_t>(b0 & 0x7F),
                                          static_cast<std::uint8_t>(b1 & 0x7F), shiftJis);
                unit = cp932.decodedUnits[shiftJis[0] << 8 | shiftJis[1]];
            }
        }
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const std::uint16_t bytes = cp932.encodedBytes[unit];
        const auto s1 = static_cast<std::uint8_t>(bytes);
        const auto s2 = static_cast<std::uint8_t>(bytes >> 8);
        std::uint16_t euc = cp932::kUnmapped;
        std::uint16_t jis = cp932::kUnmapped;
        if (bytes == cp932::kUnmapped) {
            // surrogates: both stay on the slow path
        } else if (detail::EncodedLength(bytes) == 1) {
            euc = IsHalfWidthKatakana(s1) ? static_cast<std::uint16_t>(0x8E | s1 << 8) : s1;
            jis = IsHalfWidthKatakana(s1) ? cp932::kUnmapped : s1;
        } else if (IsJisLeadByte(s1)) {
            std::uint8_t pair[2];
            detail::ShiftJisPairToJis(s1, s2, pair);
            euc = static_cast<std::uint16_t>((pair[0] | 0x80) | (pair[1] | 0x80) << 8);
            jis = static_cast<std::uint16_t>(pair[0] << 8 | pair[1]);
        }
        tables->eucBytes[unit] = euc;
        tables->jisCodes[unit] = jis;
    }
    return tables;
}

const JisEucTables& Tables() {
    static const std::unique_ptr<JisEucTables> tables = BuildTables();
    return *tables;
}

// Writes the 64 ASCII bytes at block as code units; CP932 maps ASCII to itself.
inline void WidenAscii64(const std::uint8_t* block, char16_t* d) {
    for (int k = 0; k < detail::kMaskBlock; ++k) {
        d[k] = block[k];
    }
}

// The two ways of a block loop, each a set of mask and lookup functions: the baseline's, and
// AVX-512 throughout. A block function is written once, as a template over them; the AVX-512
// form is compiled whole for AVX-512 (flatten), so that the masks and lookups sit inline.
struct PortableBlocks {
    static std::uint64_t HighBits(const std::uint8_t* block) { return detail::HighBitMask(block); }
    static std::uint64_t Range(const std::uint8_t* block, std::uint8_t low, std::uint8_t high) {
        return detail::RangeMask(block, low, high);
    }
    static std::uint64_t Byte(const std::uint8_t* block, std::uint8_t value) {
        return detail::ByteMask(block, value);
    }
    static void LookUp(const std::uint8_t* block, std::uint64_t starts, std::uint64_t jisPairs,
                       const std::uint16_t* table, char16_t*& d) {
        detail::LookUpStarts(block, starts, jisPairs, table, d);
    }
};

#if defined(__x86_64__)
#define KORVEL_AVX512_BLOCKS __attribute__((target("avx512f,avx512bw,avx512vbmi2,popcnt")))
struct Avx512Blocks {
    KORVEL_AVX512_BLOCKS static std::uint64_t HighBits(const std::uint8_t* block) {
        return detail::HighBitMaskAvx512(block);
    }
    KORVEL_AVX512_BLOCKS static std::uint64_t Range(const std::uint8_t* block, std::uint8_t low,
                                                    std::uint8_t high) {
        return detail::RangeMaskAvx512(block, low, high);
    }
    KORVEL_AVX512_BLOCKS static std::uint64_t Byte(const std::uint8_t* block, std::uint8_t value) {
        return detail::ByteMaskAvx512(block, value);
    }
    KORVEL_AVX512_BLOCKS static void LookUp(const std::uint8_t* block, std::uint64_t starts,
                                            std::uint64_t jisPairs, const std::uint16_t* table,
                                            char16_t*& d) {
        detail::LookUpStartsAvx512(block, starts, jisPairs, table, d);
    }
};
#endif

// Converts the characters that begin in the 64 bytes at block, when all are well formed: ASCII,
// 8E and a katakana, or a pair of bytes A1 to FE. The last may end on block[64]. Returns the
// bytes used, or 0, having written nothing, for a block that needs the slow path.
template <typename Blocks>
std::size_t DecodeEucBlock(const std::uint8_t* block, const std::uint16_t* eucUnits, char16_t*& d) {
    const std::uint64_t ascii = ~Blocks::HighBits(block);
    if (ascii == ~std::uint64_t{0}) {
        WidenAscii64(block, d);
        d += detail::kMaskBlock;
        return detail::kMaskBlock;
    }
    const std::uint64_t kana = Blocks::Byte(block, 0x8E);
    const std::uint64_t pairBytes = Blocks::Range(block, 0xA1, 0xFE);
    if ((ascii | pairBytes | kana) != ~std::uint64_t{0}) {
        return 0;
    }
    std::uint64_t carry = 0;
    const std::uint64_t seconds = detail::SecondBytePositions(pairBytes | kana, carry);
    const std::uint64_t kanaSeconds = (kana & ~seconds) << 1;
    if ((seconds & ~pairBytes) != 0 || (kanaSeconds & ~Blocks::Range(block, 0xA1, 0xDF)) != 0) {
        return 0;
    }
    if (carry != 0) {
        const std::uint8_t last = block[detail::kMaskBlock];
        const std::uint8_t highest = block[detail::kMaskBlock - 1] == 0x8E ? 0xDF : 0xFE;
        if (last < 0xA1 || last > highest) {
            return 0;
        }
    }
    Blocks::LookUp(block, ~seconds, 0, eucUnits, d);
    return detail::kMaskBlock + carry;
}

// Bits first to last - 1 of a block's mask; first and last run from 0 to 64.
inline std::uint64_t BitsBetween(int first, int last) {
    const auto from = [](int k) { return k >= detail::kMaskBlock ? 0 : ~std::uint64_t{0} << k; };
    return from(first) & ~from(last);
}

// Converts the 64 bytes at block while they are stretches of ASCII (any byte below 80 but ESC)
// or of JIS X 0208 pairs (bytes 21 to 7E) between the escapes ESC $ B and ESC ( B, which the
// text nearly always uses; mode (0 ASCII, 1 kanji) follows the escapes read. Stops before the
// first escape or stretch that is not such, and before an escape or pair that the block's end
// cuts, for the slow path to take from there. Returns the bytes used. The block is split at its
// escapes, so that a stretch costs a few mask operations, not a branch per byte.
template <typename Blocks>
std::size_t DecodeJisBlock(const std::uint8_t* block, int& mode, const std::uint16_t* eucUnits,
                           char16_t*& d) {
    constexpr std::uint64_t kEvenBits = 0x5555555555555555ULL;
    const std::uint64_t high = Blocks::HighBits(block);
    const std::uint64_t jisBytes = Blocks::Range(block, 0x21, 0x7E);
    std::uint64_t escapes = Blocks::Byte(block, kEsc);
    std::uint64_t starts = 0;
    std::uint64_t pairs = 0;
    int used = 0;
    for (;;) {
        const int end = escapes != 0 ? std::countr_zero(escapes) : detail::kMaskBlock;
        int stop = end;
        if (mode == 1 && (end - used) % 2 != 0) {
            if (end != detail::kMaskBlock) {
                break; // the slow path reads the escape as the second byte of a pair
            }
            stop = end - 1;
        }
        const std::uint64_t stretch = BitsBetween(used, stop);
        if ((stretch & (mode == 1 ? ~jisBytes : high)) != 0) {
            break;
        }
        const std::uint64_t stretchStarts =
            mode == 1 ? stretch & (kEvenBits << (used & 1)) : stretch;
        starts |= stretchStarts;
        pairs |= mode == 1 ? stretchStarts : 0;
        used = stop;
        if (end == detail::kMaskBlock || end + 3 > detail::kMaskBlock) {
            break;
        }
        const std::uint8_t set = block[end + 1];
        if ((set != '$' && set != '(') || block[end + 2] != 'B') {
            break;
        }
        mode = set == '$' ? 1 : 0;
        used = end + 3;
        escapes &= escapes - 1;
    }
    Blocks::LookUp(block, starts, pairs, eucUnits, d);
    return static_cast<std::size_t>(used);
}

#if defined(__x86_64__)
KORVEL_AVX512_BLOCKS __attribute__((flatten)) std::size_t
DecodeEucBlockAvx512(const std::uint8_t* block, const std::uint16_t* eucUnits, char16_t*& d) {
    return DecodeEucBlock<Avx512Blocks>(block, eucUnits, d);
}

KORVEL_AVX512_BLOCKS __attribute__((flatten)) std::size_t
DecodeJisBlockAvx512(const std::uint8_t* block, int& mode, const std::uint16_t* eucUnits,
                     char16_t*& d) {
    return DecodeJisBlock<Avx512Blocks>(block, mode, eucUnits, d);
}
#endif

std::size_t DecodeEucBlockAtLevel(bool avx512, const std::uint8_t* block,
                                  const std::uint16_t* eucUnits, char16_t*& d) {
#if defined(__x86_64__)
    if (avx512) {
        return DecodeEucBlockAvx512(block, eucUnits, d);
    }
#endif
    (void)avx512;
    return DecodeEucBlock<PortableBlocks>(block, eucUnits, d);
}

std::size_t DecodeJisBlockAtLevel(bool avx512, const std::uint8_t* block, int& mode,
                                  const std::uint16_t* eucUnits, char16_t*& d) {
#if defined(__x86_64__)
    if (avx512) {
        return DecodeJisBlockAvx512(block, mode, eucUnits, d);
    }
#endif
    (void)avx512;
    return DecodeJisBlock<PortableBlocks>(block, mode, eucUnits, d);
}

// One character of EucToShiftJis, its Shift_JIS bytes fed to writer; returns the bytes used.
std::size_t PutEucCharacter(const std::uint8_t* bytes, std::size_t length, std::size_t i,
                            detail::ShiftJisUnitWriter& writer) {
    const std::uint8_t b = bytes[i];
    if (b == 0x8E) {
        writer.Put(ByteAt(bytes, length, i + 1));
        return 2;
    }
    if (b == 0x8F) {
        // Two bytes used, not three, as in EucToShiftJis.
        writer.Put(detail::kBlackSquare[0]);
        writer.Put(detail::kBlackSquare[1]);
        return 2;
    }
    if (b >= 0xA1) {
        std::uint8_t shiftJis[2];
        detail::JisPairToShiftJis(b & 0x7F, ByteAt(bytes, length, i + 1) & 0x7F, shiftJis);
        writer.Put(shiftJis[0]);
        writer.Put(shiftJis[1]);
        return 2;
    }
    writer.Put(b);
    return 1;
}

// Shift_JIS to EUC fed one byte at a time, as ShiftJisToEuc reads a whole buffer.
class EucByteWriter {
public:
    explicit EucByteWriter(std::uint8_t* out) : out_(out) {}

    void Put(std::uint8_t b) {
        if (lead_ != 0) {
            detail::ShiftJisPairToJis(lead_, b, out_);
            out_[0] |= 0x80;
            out_[1] |= 0x80;
            out_ += 2;
            lead_ = 0;
        } else if (IsHalfWidthKatakana(b)) {
            out_[0] = 0x8E;
            out_[1] = b;
            out_ += 2;
        } else if (IsJisLeadByte(b)) {
            lead_ = b;
        } else {
            *out_++ = b;
        }
    }
    void PutEncoded(std::uint16_t bytes) {
        Put(static_cast<std::uint8_t>(bytes));
        if (detail::EncodedLength(bytes) == 2) {
            Put(static_cast<std::uint8_t>(bytes >> 8));
        }
    }
    // A lead byte at the end pairs with the terminator.
    void Finish() {
        if (lead_ != 0) {
            Put(0);
        }
    }
    bool Idle() const { return lead_ == 0; }
    std::uint8_t*& out() { return out_; }

private:
    std::uint8_t* out_;
    std::uint8_t lead_ = 0;
};

// Shift_JIS to JIS fed one byte at a time, as ShiftJisToJis reads a whole buffer: the escape
// of a stretch is written when its first byte arrives, before a lead byte waits for its trail
// or a half-width katakana for a sound mark to merge.
class JisByteWriter {
public:
    enum State { Ascii, Kanji, Katakana };

    JisByteWriter(std::uint8_t* out, int katakanaMode)
        : out_(out), keepKatakana_(katakanaMode == 1) {}

    void Put(std::uint8_t b) {
        if (lead_ != 0) {
            detail::ShiftJisPairToJis(lead_, b, out_);
            out_ += 2;
            lead_ = 0;
            return;
        }
        if (kana_ != 0) {
            std::uint8_t scratch[2] = {kana_, (b == 0xDE || b == 0xDF) ? b : std::uint8_t{0}};
            kana_ = 0;
            const int merged = HalfKanaToFullWidth(scratch);
            detail::ShiftJisPairToJis(scratch[0], scratch[1], out_);
            out_ += 2;
            if (merged != 0) {
                return;
            }
        }
        if (IsJisLeadByte(b)) {
            SwitchTo(Kanji);
            lead_ = b;
        } else if (IsHalfWidthKatakana(b) && !keepKatakana_) {
            SwitchTo(Kanji);
            kana_ = b;
        } else if (IsHalfWidthKatakana(b)) {
            SwitchTo(Katakana);
            *out_++ = static_cast<std::uint8_t>(b - 0x80);
        } else {
            SwitchTo(Ascii); // so CR and LF always end a kanji or katakana stretch
            *out_++ = b;
        }
    }
    void PutEncoded(std::uint16_t bytes) {
        Put(static_cast<std::uint8_t>(bytes));
        if (detail::EncodedLength(bytes) == 2) {
            Put(static_cast<std::uint8_t>(bytes >> 8));
        }
    }
    // What waits reads the terminator, which merges with nothing; then the text returns to
    // ASCII.
    void Finish() {
        if (lead_ != 0) {
            Put(0);
        } else if (kana_ != 0) {
            std::uint8_t scratch[2] = {kana_, 0};
            kana_ = 0;
            HalfKanaToFullWidth(scratch);
            detail::ShiftJisPairToJis(scratch[0], scratch[1], out_);
            out_ += 2;
        }
        SwitchTo(Ascii);
    }
    void SwitchTo(State wanted) {
        if (state_ == wanted) {
            return;
        }
        out_[0] = kEsc;
        out_[1] = wanted == Kanji ? '$' : '(';
        out_[2] = wanted == Katakana ? 'I' : 'B';
        out_ += 3;
        state_ = wanted;
    }
    bool Idle() const { return lead_ == 0 && kana_ == 0; }
    std::uint8_t*& out() { return out_; }

private:
    std::uint8_t* out_;
    bool keepKatakana_;
    State state_ = Ascii;
    std::uint8_t lead_ = 0;
    std::uint8_t kana_ = 0;
};

} // namespace

CodecStatus EucToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    // Every byte gives at most one unit; a pair cut off by the end still gives two.
    if (!out.Reserve(detail::BoundBytes(byteLength, 2, 2))) {
        return CodecOutOfMemory;
    }
    const std::uint16_t* eucUnits = Tables().eucUnits;
    const bool avx512 = detail::Vectors().avx512;
    detail::ShiftJisUnitWriter writer(out.units());
    std::size_t i = 0;
    // A block that needs the slow path is walked to its end before blocks are tried again.
    std::size_t slowUntil = 0;
    while (i < byteLength) {
        if (i >= slowUntil && writer.Idle() && byteLength - i > detail::kMaskBlock) {
            const std::size_t used =
                DecodeEucBlockAtLevel(avx512, bytes + i, eucUnits, writer.out());
            if (used != 0) {
                i += used;
                continue;
            }
            slowUntil = i + detail::kMaskBlock;
        }
        i += PutEucCharacter(bytes, byteLength, i, writer);
    }
    writer.Finish();
    const auto units = static_cast<std::size_t>(writer.out() - out.units());
    return out.Deliver(units * 2, 2, output, outputLength);
}

CodecStatus JisToUnicode(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    detail::OutputBlock out;
    if (!out.Reserve(detail::BoundBytes(byteLength, 2, 2))) {
        return CodecOutOfMemory;
    }
    const std::uint16_t* eucUnits = Tables().eucUnits;
    const bool avx512 = detail::Vectors().avx512;
    const std::uint16_t* decodedUnits = cp932::Tables().decodedUnits;
    detail::ShiftJisUnitWriter writer(out.units());
    char16_t*& d = writer.out();
    int mode = 0;
    std::size_t i = 0;
    // Where a block stopped short, the steps below take its bytes up to here.
    std::size_t slowUntil = 0;
    while (i < byteLength) {
        if (i >= slowUntil && mode < 2 && writer.Idle() && byteLength - i > detail::kMaskBlock) {
            const std::size_t used = DecodeJisBlockAtLevel(avx512, bytes + i, mode, eucUnits, d);
            i += used;
            if (used < detail::kMaskBlock - 2) {
                slowUntil = i + detail::kMaskBlock;
            }
            if (used != 0) {
                continue;
            }
        }
        const std::uint8_t b = bytes[i];
        if (b == kEsc) {
            const detail::EscapeMatch match =
                detail::MatchEscapeBody(bytes + i + 1, byteLength - i - 1);
            if (match.mode == 3) {
                mode = 0; // only the ESC is dropped; what follows is read as text
                ++i;
            } else {
                mode = match.mode;
                i += static_cast<std::size_t>(match.length);
            }
            continue;
        }
        if (writer.Idle()) {
            if (mode == 0 && b < 0x80) {
                *d++ = b;
                ++i;
                continue;
            }
            if (mode == 1 && i + 1 < byteLength && b - 0x21u < 94 && bytes[i + 1] - 0x21u < 94) {
                *d++ = eucUnits[(b | 0x80) << 8 | (bytes[i + 1] | 0x80)];
                i += 2;
                continue;
            }
            if (mode == 2 && IsHalfWidthKatakana(b | 0x80)) {
                *d++ = decodedUnits[(b | 0x80) << 8];
                ++i;
                continue;
            }
        }
        // The slow path: one step of JisToShiftJis, its bytes fed to the writer.
        if (mode == 1) {
            std::uint8_t shiftJis[2];
            detail::JisPairToShiftJis(b, ByteAt(bytes, byteLength, i + 1), shiftJis);
            writer.Put(shiftJis[0]);
            writer.Put(shiftJis[1]);
            i += 2;
        } else {
            writer.Put(mode == 2 ? static_cast<std::uint8_t>(b | 0x80) : b);
            ++i;
        }
    }
    writer.Finish();
    const auto units = static_cast<std::size_t>(d - out.units());
    return out.Deliver(units * 2, 2, output, outputLength);
}

CodecStatus UnicodeToEuc(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    const std::size_t unitCount = byteLength / 2;
    if (unitCount == 0) {
        return CodecUnconvertible;
    }
    detail::OutputBlock out;
    // A user-defined code gives its lead byte and a katakana for its trail: three bytes.
    if (!out.Reserve(detail::BoundBytes(unitCount, 4, 2))) {
        return CodecOutOfMemory;
    }
    const std::uint16_t* eucBytes = Tables().eucBytes;
    const std::uint16_t* encodedBytes = cp932::Tables().encodedBytes;
    EucByteWriter writer(out.bytes());
    std::uint8_t*& d = writer.out();
    std::size_t k = 0;
#if defined(__x86_64__)
    const bool ssse3 = detail::Vectors().ssse3;
#endif
    while (k < unitCount) {
        const char16_t unit = detail::LoadUnit(bytes + 2 * k);
        if (writer.Idle()) {
#if defined(__x86_64__)
            // Sixteen bytes are stored whatever the eight characters take: 2 per unit at most.
            if (ssse3 && k + 8 <= unitCount) {
                const std::size_t stop =
                    detail::EncodeGroupsSsse3(eucBytes, bytes, k, unitCount, d);
                if (stop != k) {
                    k = stop;
                    continue;
                }
            }
#endif
            if (unit < 0x80 && k + 8 <= unitCount && detail::NarrowAscii8(bytes + 2 * k, d)) {
                d += 8;
                k += 8;
                continue;
            }
            const std::uint16_t euc = eucBytes[unit];
            if (euc != cp932::kUnmapped) {
                detail::StoreBytes(d, euc); // the second byte of one is overwritten next
                d += detail::EncodedLength(euc);
                ++k;
                continue;
            }
        }
        const detail::EncodedCharacter character =
            detail::EncodeShiftJisCharacter(encodedBytes, bytes, k, unitCount);
        writer.PutEncoded(character.bytes);
        k += character.units;
    }
    writer.Finish();
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

CodecStatus UnicodeToJis(const void* source, std::size_t byteLength, std::uint8_t** output,
                         std::size_t* outputLength, int katakanaMode) {
    if (source == nullptr || output == nullptr || outputLength == nullptr) {
        return CodecInvalidArgument;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    const std::size_t unitCount = byteLength / 2;
    if (unitCount == 0) {
        return CodecUnconvertible;
    }
    detail::OutputBlock out;
    // Per unit at most two Shift_JIS bytes, each at most an escape and a pair.
    if (!out.Reserve(detail::BoundBytes(unitCount, 10, 8))) {
        return CodecOutOfMemory;
    }
    const std::uint16_t* jisCodes = Tables().jisCodes;
    const std::uint16_t* encodedBytes = cp932::Tables().encodedBytes;
    JisByteWriter writer(out.bytes(), katakanaMode);
    std::uint8_t*& d = writer.out();
    std::size_t k = 0;
    while (k < unitCount) {
        const char16_t unit = detail::LoadUnit(bytes + 2 * k);
        if (writer.Idle()) {
            // A stretch of one kind at a time: the state is tested once per stretch, and the
            // loops do not guess at each character whether the next is of the other kind.
            std::uint16_t code = jisCodes[unit];
            if (code < 0x100) {
                writer.SwitchTo(JisByteWriter::Ascii);
                do {
                    if (k + 8 <= unitCount && detail::NarrowAscii8(bytes + 2 * k, d)) {
                        d += 8;
                        k += 8;
                    } else {
                        *d++ = static_cast<std::uint8_t>(code);
                        ++k;
                    }
                } while (k < unitCount &&
                         (code = jisCodes[detail::LoadUnit(bytes + 2 * k)]) < 0x100);
                continue;
            }
            if (code != cp932::kUnmapped) {
                writer.SwitchTo(JisByteWriter::Kanji);
                do {
                    d[0] = static_cast<std::uint8_t>(code >> 8);
                    d[1] = static_cast<std::uint8_t>(code);
                    d += 2;
                    ++k;
                } while (k < unitCount && static_cast<std::uint16_t>(
                                              (code = jisCodes[detail::LoadUnit(bytes + 2 * k)]) -
                                              0x100) < cp932::kUnmapped - 0x100);
                continue;
            }
        }
        const detail::EncodedCharacter character =
            detail::EncodeShiftJisCharacter(encodedBytes, bytes, k, unitCount);
        writer.PutEncoded(character.bytes);
        k += character.units;
    }
    writer.Finish();
    return out.Deliver(static_cast<std::size_t>(d - out.bytes()), 1, output, outputLength);
}

} // namespace korvel
