#include "codec/Detection.h"

#include "codec/ByteMasks.h"
#include "codec/OutputBlock.h"
#include "codec/VectorSupport.h"

#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace korvel {

using detail::ByteAt;

namespace {

constexpr std::uint8_t kEsc = 0x1B;
constexpr std::size_t kBlock = 32;

constexpr bool IsTextControl(std::uint8_t b) {
    return b == 0x09 || b == 0x0A || b == 0x0D;
}

// True when every byte of the 32-byte block at p is printable ASCII up to `highest`, TAB, CR
// or LF: bytes that the detector passes without looking further. UTF-8 text passes DEL (0x7F),
// Shift_JIS and EUC text do not. Written branch-free so that the compiler turns it into vector
// compares.
inline bool IsPlainTextBlock(const std::uint8_t* p, std::uint8_t highest) {
    const auto span = static_cast<std::uint8_t>(highest - 0x20);
    std::uint8_t bad = 0;
    for (std::size_t k = 0; k < kBlock; ++k) {
        const std::uint8_t b = p[k];
        const bool printable = static_cast<std::uint8_t>(b - 0x20) <= span;
        const bool control = (b == 0x09) | (b == 0x0A) | (b == 0x0D);
        bad |= static_cast<std::uint8_t>(!(printable | control));
    }
    return bad == 0;
}

// True when the 32-byte block at p holds a 0 byte or an ESC byte.
inline bool BlockHasZeroOrEscape(const std::uint8_t* p) {
    std::uint8_t hit = 0;
    for (std::size_t k = 0; k < kBlock; ++k) {
        hit |= static_cast<std::uint8_t>((p[k] == 0) | (p[k] == kEsc));
    }
    return hit != 0;
}

// What the scan for UTF-16 zeros and ISO-2022-JP escapes found first.
enum class ScanHit { None, Zero, Escape };

ScanHit FindZeroOrJisEscape(const std::uint8_t* bytes, std::size_t length) {
    std::size_t i = 0;
    while (i < length) {
        if (i + kBlock <= length && !BlockHasZeroOrEscape(bytes + i)) {
            i += kBlock;
            continue;
        }
        const std::uint8_t b = bytes[i];
        if (b == 0) {
            return ScanHit::Zero;
        }
        if (b == kEsc) {
            const std::uint8_t next = ByteAt(bytes, length, i + 1);
            if (next == '$' || next == '(') {
                return ScanHit::Escape;
            }
        }
        ++i;
    }
    return ScanHit::None;
}

// Bytes that pass as a character of their own in text of any of the detected code sets.
inline std::uint64_t PlainTextMask(const std::uint8_t* block) {
    return detail::RangeMask(block, 0x20, 0x7E) | detail::ByteMask(block, 0x09) |
           detail::ByteMask(block, 0x0A) | detail::ByteMask(block, 0x0D);
}

// Validates whole 64-byte blocks of UTF-8 at once: valid exactly when the continuation bytes
// are the positions that the lead bytes ask for, and no byte is a control or FE/FF. Stops
// before the first block that fails, so that the byte-wise scan finds the failure itself.
// Returns the start of the first unchecked block; pending receives the number of continuation
// bytes that its first bytes still owe to a lead byte of the block before.
std::size_t SkipValidUtf8Blocks(const std::uint8_t* bytes, std::size_t length, bool& sawHighByte,
                                int& pending) {
    std::uint64_t owed = 0;
    std::size_t i = 0;
    for (; i + detail::kMaskBlock <= length; i += detail::kMaskBlock) {
        const std::uint8_t* block = bytes + i;
        const std::uint64_t high = detail::HighBitMask(block);
        const std::uint64_t allowedLow =
            detail::RangeMask(block, 0x20, 0x7F) | detail::ByteMask(block, 0x09) |
            detail::ByteMask(block, 0x0A) | detail::ByteMask(block, 0x0D);
        if (high == 0 && owed == 0) {
            if (allowedLow != ~std::uint64_t{0}) {
                break;
            }
            continue;
        }
        const detail::Utf8BlockMasks masks = detail::Utf8Masks(block, owed);
        const std::uint64_t validBytes = allowedLow | masks.continuation | masks.leads;
        if (masks.wanted != masks.continuation || validBytes != ~std::uint64_t{0}) {
            break;
        }
        owed = masks.nextOwed;
        sawHighByte |= high != 0;
    }
    pending = detail::CountBits(owed);
    return i;
}

struct BreakCounts {
    std::size_t cr = 0;
    std::size_t lf = 0;
    std::size_t crlf = 0; // CR then LF, or the UTF-16LE pair 0D 00 0A 00
};

// Masks and bit counts with the x86-64 baseline (or none).
struct PortableMasks {
    static std::uint64_t Byte(const std::uint8_t* block, std::uint8_t value) {
        return detail::ByteMask(block, value);
    }
    static std::size_t Count(std::uint64_t mask) {
        return static_cast<std::size_t>(detail::CountBits(mask));
    }
};

// Bit k of the result is bit k + shift of the block's mask, the bits past its end filled from
// the bytes behind the block (shift 1 to 3).
inline std::uint64_t Following(std::uint64_t mask, const std::uint8_t* block, std::uint8_t value,
                               int shift) {
    std::uint64_t result = mask >> shift;
    for (int k = 0; k < shift; ++k) {
        result |= static_cast<std::uint64_t>(block[detail::kMaskBlock + k] == value)
                  << (detail::kMaskBlock - shift + k);
    }
    return result;
}

// Counts the breaks of the whole 64-byte blocks that have three bytes behind them; returns
// where it stopped.
template <typename Masks>
std::size_t CountBreaks(const std::uint8_t* bytes, std::size_t length, BreakCounts& counts) {
    std::size_t i = 0;
    for (; i + detail::kMaskBlock + 3 <= length; i += detail::kMaskBlock) {
        const std::uint8_t* block = bytes + i;
        const std::uint64_t crs = Masks::Byte(block, 0x0D);
        const std::uint64_t lfs = Masks::Byte(block, 0x0A);
        counts.lf += Masks::Count(lfs);
        if (crs == 0) {
            continue;
        }
        counts.cr += Masks::Count(crs);
        const std::uint64_t lfNext = Following(lfs, block, 0x0A, 1);
        counts.crlf += Masks::Count(crs & lfNext);
        const std::uint64_t rest = crs & ~lfNext;
        if (rest != 0) {
            const std::uint64_t zeros = Masks::Byte(block, 0);
            counts.crlf +=
                Masks::Count(rest & Following(zeros, block, 0, 1) & Following(lfs, block, 0x0A, 2) &
                             Following(zeros, block, 0, 3));
        }
    }
    return i;
}

#if defined(__x86_64__)
// 32 bytes a compare and the popcnt instruction: the scan runs at the speed of memory.
struct Avx2Masks {
    __attribute__((target("avx2"))) static std::uint64_t Byte(const std::uint8_t* block,
                                                              std::uint8_t value) {
        const __m256i wanted = _mm256_set1_epi8(static_cast<char>(value));
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + 32));
        const auto lowBits =
            static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, wanted)));
        const auto highBits =
            static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, wanted)));
        return lowBits | static_cast<std::uint64_t>(highBits) << 32;
    }
    __attribute__((target("popcnt"))) static std::size_t Count(std::uint64_t mask) {
        return static_cast<std::size_t>(__builtin_popcountll(mask));
    }
};

// Flattened: the loop and its masks are all inlined, so all of them use AVX2.
[[gnu::flatten]] __attribute__((target("avx2,popcnt"))) std::size_t
CountBreaksAvx2(const std::uint8_t* bytes, std::size_t length, BreakCounts& counts) {
    return CountBreaks<Avx2Masks>(bytes, length, counts);
}
#endif

} // namespace

int Utf8LeadLength(std::uint8_t b) {
    const int ones = std::countl_one(b);
    return (ones < 2 || ones > 6) ? -1 : ones;
}

bool IsUtf8Text(const std::uint8_t* bytes, std::size_t length, bool* asciiOnly) {
    if (bytes == nullptr) {
        return false;
    }
    bool sawHighByte = false;
    int pending = 0;
    std::size_t i = SkipValidUtf8Blocks(bytes, length, sawHighByte, pending);
    bool sawOnlyAscii = !sawHighByte;
    bool result = true;
    // The owed bytes belong to a sequence that the block check has already begun.
    for (; pending > 0; --pending, ++i) {
        if (i == length || (bytes[i] & 0xC0) != 0x80) {
            result = false;
            break;
        }
    }
    while (result && i < length) {
        const std::uint8_t b = bytes[i];
        if (b < 0x80) {
            if (i + kBlock <= length && IsPlainTextBlock(bytes + i, 0x7F)) {
                i += kBlock;
                continue;
            }
            if (b < 0x20 && !IsTextControl(b)) {
                result = false;
                break;
            }
            ++i;
            continue;
        }
        const int sequenceLength = Utf8LeadLength(b);
        // A sequence cut off by the end of the data meets the trailing 0 bytes and fails.
        if (sequenceLength < 0 || length - i < static_cast<std::size_t>(sequenceLength)) {
            result = false;
            break;
        }
        bool continuationsOk = true;
        for (int k = 1; k < sequenceLength; ++k) {
            continuationsOk &= (bytes[i + k] & 0xC0) == 0x80;
        }
        if (!continuationsOk) {
            result = false;
            break;
        }
        sawOnlyAscii = false;
        i += static_cast<std::size_t>(sequenceLength);
    }
    if (asciiOnly != nullptr) {
        *asciiOnly = sawOnlyAscii;
    }
    return result;
}

bool IsShiftJisText(const std::uint8_t* bytes, std::size_t length) {
    if (bytes == nullptr) {
        return false;
    }
    // Whole blocks first; a block reads one byte beyond itself, the trail of its last byte.
    std::size_t i = 0;
    std::uint64_t carry = 0;
    for (; i + detail::kMaskBlock + 1 <= length; i += detail::kMaskBlock) {
        const std::uint8_t* block = bytes + i;
        const std::uint64_t leads =
            detail::RangeMask(block, 0x81, 0x9F) | detail::RangeMask(block, 0xE0, 0xEF);
        const std::uint64_t singles = PlainTextMask(block) | detail::RangeMask(block, 0xA1, 0xDF);
        const std::uint64_t trailNext =
            detail::RangeMask(block + 1, 0x40, 0xFC) & ~detail::ByteMask(block + 1, 0x7F);
        const std::uint64_t starts = ~detail::SecondBytePositions(leads, carry);
        const std::uint64_t leadStarts = leads & starts;
        if ((leadStarts & ~trailNext) != 0 || (starts & ~leads & ~singles) != 0) {
            return false;
        }
    }
    i += carry; // the trail of the last block's last character, already checked
    while (i < length) {
        const std::uint8_t b = bytes[i];
        if (b < 0x80) {
            if (i + kBlock <= length && IsPlainTextBlock(bytes + i, 0x7E)) {
                i += kBlock;
                continue;
            }
            if ((b < 0x20 && !IsTextControl(b)) || b == 0x7F) {
                return false;
            }
            ++i;
        } else if (b >= 0xA1 && b <= 0xDF) {
            ++i; // half-width katakana
        } else if (b <= 0x9F ? b >= 0x81 : b >= 0xE0 && b <= 0xEF) {
            if (i + 1 == length) {
                return true; // a trail byte still due at the end is accepted
            }
            const std::uint8_t trail = bytes[i + 1];
            if (trail < 0x40 || trail > 0xFC || trail == 0x7F) {
                return false;
            }
            i += 2;
        } else {
            return false; // 0x80, 0xA0 and 0xF0 to 0xFF, user-defined leads included
        }
    }
    return true;
}

bool IsEucText(const std::uint8_t* bytes, std::size_t length) {
    if (bytes == nullptr) {
        return false;
    }
    auto inRange = [](std::uint8_t b, std::uint8_t low, std::uint8_t high) {
        return b >= low && b <= high;
    };
    // Whole blocks of two-byte characters first, as for Shift_JIS; a block reads one byte
    // beyond itself. The three-byte characters of JIS X 0212 are rare enough to leave the
    // rest of the run to the byte-wise walk.
    std::size_t i = 0;
    std::uint64_t carry = 0;
    for (; i + detail::kMaskBlock + 1 <= length; i += detail::kMaskBlock) {
        const std::uint8_t* block = bytes + i;
        if (detail::ByteMask(block, 0x8F) != 0) {
            break;
        }
        const std::uint64_t kana = detail::ByteMask(block, 0x8E);
        const std::uint64_t pairBytes = detail::RangeMask(block, 0xA1, 0xFE);
        const std::uint64_t seconds = detail::SecondBytePositions(pairBytes | kana, carry);
        const std::uint64_t starts = ~seconds;
        // Bit 0 of seconds is the last block's carried second byte, which it checked.
        const std::uint64_t kanaSeconds = (kana & starts) << 1;
        const bool kanaAtEnd = (kana & starts) >> 63 != 0;
        if ((starts & ~(PlainTextMask(block) | pairBytes | kana)) != 0 ||
            (seconds & ~pairBytes & ~std::uint64_t{1}) != 0 ||
            (kanaSeconds & ~detail::RangeMask(block, 0xA1, 0xDF)) != 0 ||
            (carry != 0 && !inRange(block[detail::kMaskBlock], 0xA1, kanaAtEnd ? 0xDF : 0xFE))) {
            return false;
        }
    }
    i += carry; // the second byte of the last block's last character, already checked
    while (i < length) {
        const std::uint8_t b = bytes[i];
        if (b >= 0xA1 && b <= 0xFE) {
            if (i + 1 == length) {
                return true; // a second byte still due at the end is accepted
            }
            if (!inRange(bytes[i + 1], 0xA1, 0xFE)) {
                return false;
            }
            i += 2;
        } else if (b == 0x8E) {
            if (!inRange(ByteAt(bytes, length, i + 1), 0xA1, 0xDF)) {
                return false;
            }
            i += 2;
        } else if (b == 0x8F) {
            if (!inRange(ByteAt(bytes, length, i + 1), 0xA1, 0xFE) ||
                !inRange(ByteAt(bytes, length, i + 2), 0xA1, 0xFE)) {
                return false;
            }
            i += 3;
        } else if ((b >= 0x20 && b <= 0x7E) || IsTextControl(b)) {
            if (i + kBlock <= length && IsPlainTextBlock(bytes + i, 0x7E)) {
                i += kBlock;
                continue;
            }
            ++i;
        } else {
            return false;
        }
    }
    return true;
}

TextEncoding DetectTextEncoding(const std::uint8_t* bytes, std::size_t length) {
    if (bytes == nullptr || length == 0) {
        return TextEncoding::Undetermined;
    }
    bool asciiOnly = true;
    if (length >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        // After the UTF-8 mark Shift_JIS is deliberately not tried.
        if (IsUtf8Text(bytes, length, &asciiOnly)) {
            return TextEncoding::Utf8;
        }
        return IsEucText(bytes, length) ? TextEncoding::Euc : TextEncoding::Undetermined;
    }
    if (IsUtf8Text(bytes, length, &asciiOnly)) {
        return asciiOnly ? TextEncoding::AsciiOnly : TextEncoding::Utf8N;
    }
    switch (FindZeroOrJisEscape(bytes, length)) {
    case ScanHit::Zero:
        return TextEncoding::Unicode;
    case ScanHit::Escape:
        return TextEncoding::Jis;
    case ScanHit::None:
        break;
    }
    if (IsShiftJisText(bytes, length)) {
        return TextEncoding::ShiftJis;
    }
    return IsEucText(bytes, length) ? TextEncoding::Euc : TextEncoding::Undetermined;
}

LineEnding DetectLineEnding(const std::uint8_t* bytes, std::size_t length) {
    if (bytes == nullptr || length == 0) {
        return LineEnding::NoLineBreak;
    }
    BreakCounts counts;
    // The lookahead of a pair reads up to three bytes, so whole blocks stop three bytes short
    // of the end and the rest goes through the bounded read.
#if defined(__x86_64__)
    std::size_t i = detail::Vectors().avx2 ? CountBreaksAvx2(bytes, length, counts)
                                           : CountBreaks<PortableMasks>(bytes, length, counts);
#else
    std::size_t i = CountBreaks<PortableMasks>(bytes, length, counts);
#endif
    auto pairAt = [&](std::size_t k) {
        const std::uint8_t next = ByteAt(bytes, length, k + 1);
        return next == 0x0A || (next == 0 && ByteAt(bytes, length, k + 2) == 0x0A &&
                                ByteAt(bytes, length, k + 3) == 0);
    };
    for (; i < length; ++i) {
        const std::uint8_t b = bytes[i];
        counts.cr += b == 0x0D;
        counts.lf += b == 0x0A;
        counts.crlf += b == 0x0D && pairAt(i);
    }
    const auto [cr, lf, crlf] = counts;
    if (crlf > 0) {
        if (crlf * 100 / cr < 50) {
            return LineEnding::Cr;
        }
        return crlf * 100 / lf >= 50 ? LineEnding::CrLf : LineEnding::Lf;
    }
    if (cr == 0 && lf == 0) {
        return LineEnding::NoLineBreak;
    }
    return cr >= lf ? LineEnding::Cr : LineEnding::Lf;
}

} // namespace korvel
