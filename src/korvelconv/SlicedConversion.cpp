#include "korvelconv/SlicedConversion.h"

#include "codec/Detection.h"
#include "codec/JisArithmetic.h"

#include <cstring>

namespace korvel::conv {
namespace {

constexpr std::uint8_t kLf = 0x0A;

// Where the first line feed at or after from ends, or the end of the input.
std::size_t AfterLineFeed(std::span<const std::uint8_t> bytes, std::size_t from) {
    const void* found = std::memchr(bytes.data() + from, kLf, bytes.size() - from);
    return found == nullptr
               ? bytes.size()
               : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data()) +
                     1;
}

// UTF-16LE: the first line feed unit at an even offset at or after from.
std::size_t AfterLineFeedUnit(std::span<const std::uint8_t> bytes, std::size_t from) {
    for (std::size_t at = from + (from & 1); at + 1 < bytes.size();) {
        const void* found = std::memchr(bytes.data() + at, kLf, bytes.size() - at - 1);
        if (found == nullptr) {
            break;
        }
        const auto index =
            static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
        if (index % 2 == 0 && bytes[index + 1] == 0) {
            return index + 2;
        }
        at = index + 1 + (index % 2 == 0 ? 1 : 0);
    }
    return bytes.size();
}

// UTF-8: the decoder takes a lead byte's continuation bytes as they come, a line feed among them.
// Readings that start at different places fall into step at the first character they share,
// and the whole input's reading starts somewhere in any six bytes in a row (the longest form):
// when every reading that starts in six such bytes shortly before a line feed lands on it, so
// does the whole input's.
bool StartsUtf8Character(std::span<const std::uint8_t> bytes, std::size_t start,
                         std::size_t target) {
    constexpr std::size_t kLongest = 6;
    constexpr std::size_t kRunUp = 24;
    std::size_t first = start;
    std::size_t last = start;
    if (target - start > kRunUp + kLongest) {
        first = target - kRunUp - kLongest + 1;
        last = target - kRunUp;
    }
    for (std::size_t reading = first; reading <= last; ++reading) {
        std::size_t at = reading;
        while (at < target) {
            const int length = bytes[at] < 0x80 ? 1 : Utf8LeadLength(bytes[at]);
            at += length < 0 ? 1 : static_cast<std::size_t>(length);
        }
        if (at != target) {
            return false;
        }
    }
    return true;
}

// ISO-2022-JP: a line feed read in the single-byte set, where a piece that starts in that set (as
// every conversion does) reads on as the whole input would. The set is a state, and in the
// double-byte set an ESC at the second byte of a pair is no escape, so no byte is a sure start;
// but readings that start in different states fall into step at the first escape they all see.
// The whole input's reading passes some step start in any six bytes in a row (the longest
// escape), in one of the three sets: when every such reading that starts shortly before a line
// feed reads it in the single-byte set, so does the whole input's.
bool ReadsJisLineFeed(std::span<const std::uint8_t> bytes, std::size_t start, std::size_t target) {
    constexpr std::size_t kLongest = 6;
    constexpr std::size_t kRunUp = 128;
    const std::uint8_t* data = bytes.data();
    const std::size_t length = bytes.size();
    const bool known = target - start <= kRunUp + kLongest;
    const std::size_t first = known ? start : target - kRunUp - kLongest + 1;
    const std::size_t last = known ? start : target - kRunUp;
    for (std::size_t reading = first; reading <= last; ++reading) {
        for (int initial = 0; initial < (known ? 1 : 3); ++initial) {
            int mode = initial;
            std::size_t at = reading;
            while (at < target) {
                if (data[at] == detail::kEsc) {
                    const detail::EscapeMatch match =
                        detail::MatchEscapeBody(data + at + 1, length - at - 1);
                    mode = match.mode == 3 ? 0 : match.mode;
                    at += match.mode == 3 ? 1 : static_cast<std::size_t>(match.length);
                } else {
                    at += mode == 1 ? 2 : 1;
                }
            }
            if (at != target || mode != 0) {
                return false;
            }
        }
    }
    return true;
}

// The end of the first line feed at or after from that readsSafely(bytes, start, at) accepts,
// or the end of the input.
template <typename ReadsSafely>
std::size_t AfterLineFeedWhere(std::span<const std::uint8_t> bytes, std::size_t start,
                               std::size_t from, ReadsSafely readsSafely) {
    for (std::size_t at = from; at < bytes.size();) {
        const std::size_t end = AfterLineFeed(bytes, at);
        if (end == bytes.size() || readsSafely(bytes, start, end - 1)) {
            return end;
        }
        at = end;
    }
    return bytes.size();
}

} // namespace

Conversion ConvertWhole(std::span<const std::uint8_t> bytes, const CommandLine& line) {
    Conversion conversion;
    conversion.decoded = DecodeDocumentBytes(bytes, line.from);
    if (conversion.decoded.status == CodecOk) {
        const DecodedDocument& decoded = conversion.decoded;
        conversion.encoded =
            EncodeDocumentText(decoded.text, line.to, line.lineEnding.value_or(decoded.lineEnding),
                               line.jisKatakanaMode);
    }
    return conversion;
}

void SlicedConversion::Begin(std::span<const std::uint8_t> bytes) {
    encoding_ = ChooseDocumentEncoding(bytes, line_.from);
    // Breaks read as CR LF in the file's own line ending and written back in it come out as they
    // were, whatever that ending is: the pass that looks for it is needed only for another one.
    fileLineEnding_ = line_.lineEnding ? ChooseDocumentLineEnding(bytes) : LineEnding::CrLf;
    inputLength_ = bytes.size();
}

std::size_t SlicedConversion::SliceEnd(std::span<const std::uint8_t> bytes) const {
    const std::size_t from = offset_ + sliceBytes_;
    if (from >= bytes.size() || from < offset_) {
        return bytes.size();
    }
    switch (encoding_) {
    case TextEncoding::GarbledMail: // repaired as a whole
        return bytes.size();
    case TextEncoding::Jis:
        return AfterLineFeedWhere(bytes, offset_, from, ReadsJisLineFeed);
    case TextEncoding::Unicode:
        return AfterLineFeedUnit(bytes, from);
    case TextEncoding::Utf8: // its mark is skipped untested, whatever the bytes are
        return AfterLineFeedWhere(bytes, offset_ == 0 && bytes.size() > 3 ? 3 : offset_, from,
                                  StartsUtf8Character);
    case TextEncoding::Utf8N:
        return AfterLineFeedWhere(bytes, offset_, from, StartsUtf8Character);
    default:
        return AfterLineFeed(bytes, from);
    }
}

CodecStatus SlicedConversion::Next(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < inputLength_) {
        inputLength_ = bytes.size(); // cut short meanwhile: what it holds now
    }
    const std::size_t offset = offset_ < inputLength_ ? offset_ : inputLength_;
    nextOffset_ = SliceEnd(bytes.first(inputLength_));
    current_ = {};
    parts_[0] = parts_[1] = {};
    const auto piece = bytes.subspan(offset, nextOffset_ - offset);
    current_.decoded = DecodeDocumentPiece(piece, encoding_, fileLineEnding_, !started_);
    if (current_.decoded.status != CodecOk) {
        return current_.decoded.status;
    }
    const DecodedDocument& decoded = current_.decoded;
    if (decoded.text.empty() && started_) {
        return CodecOk; // the encoders cannot convert nothing, and nothing follows a mark
    }
    current_.encoded =
        EncodeDocumentText(decoded.text, line_.to, line_.lineEnding.value_or(decoded.lineEnding),
                           line_.jisKatakanaMode);
    if (current_.encoded.status == CodecOk) {
        parts_[0] = started_ ? std::span<const std::uint8_t>{} : current_.encoded.mark;
        parts_[1] = current_.encoded.body;
    }
    return current_.encoded.status;
}

void SlicedConversion::Take() {
    offset_ = nextOffset_;
    started_ = true;
    current_ = {};
}

} // namespace korvel::conv
