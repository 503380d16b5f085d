#pragma once

#include <bit>
#include <cstdint>

// The encoding engine works on UTF-16LE text in memory and reads it through char16_t.
static_assert(std::endian::native == std::endian::little,
              "KorvelEdit assumes a little-endian host");

namespace korvel {

// Code set of a document. The numbers travel between the browse dialog, the loader, the saver
// and the settings, so they are fixed.
enum class TextEncoding : std::uint32_t {
    AsciiOnly = 0,    // detection only: no byte >= 0x80; read as ShiftJis
    ShiftJis = 1,     // CP932
    Jis = 2,          // ISO-2022-JP
    Euc = 3,          // EUC-JP
    Utf8 = 4,         // UTF-8 with the mark EF BB BF
    Utf8N = 5,        // UTF-8 without mark
    Unicode = 6,      // UTF-16LE, with or without the mark FF FE
    AutoDetect = 7,   // load request only
    GarbledMail = 8,  // load request only: ISO-2022-JP mail that lost its ESC or 8th bits
    Undetermined = 9, // detection only: nothing fits; read as ShiftJis
};

// Line ending of a file. Text in memory always uses CR LF.
enum class LineEnding : std::uint32_t {
    CrLf = 0,
    Cr = 1,
    Lf = 2,
    NoLineBreak = 3, // detection only; stored as CrLf
};

// Result of every converter. A non-zero status means the output slots must not be used.
enum CodecStatus : std::uint32_t {
    CodecOk = 0,
    CodecInvalidArgument = 0x20000002,
    CodecOutOfMemory = 0x20000004,
    CodecUnconvertible = 0x20000013,
};

} // namespace korvel
