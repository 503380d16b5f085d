// Every detector on any bytes, checked against the tests' slow, literal reading of the
// detection rules: the engine skips plain-text blocks and bounds its reads near the end of the
// data, and those shortcuts must not change a single answer.

#include "FuzzCheck.h"
#include "ReferenceCodec.h"
#include "codec/Detection.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace reference = korvel::reference;
    using korvel::fuzz::Require;

    // libFuzzer may hand over a null pointer for the empty input; the detectors read that as
    // "no data", so give them a real empty run.
    static const std::uint8_t kEmpty[1] = {0};
    const std::uint8_t* bytes = size == 0 ? kEmpty : data;
    const reference::ByteView view(bytes, size);

    bool asciiOnly = false;
    bool referenceAsciiOnly = false;
    const bool utf8 = korvel::IsUtf8Text(bytes, size, &asciiOnly);
    Require(utf8 == reference::IsUtf8Text(view, &referenceAsciiOnly), "IsUtf8Text agrees");
    Require(!utf8 || asciiOnly == referenceAsciiOnly, "IsUtf8Text asciiOnly agrees");
    Require(korvel::IsShiftJisText(bytes, size) == reference::IsShiftJisText(view),
            "IsShiftJisText agrees");
    Require(korvel::IsEucText(bytes, size) == reference::IsEucText(view), "IsEucText agrees");
    Require(korvel::DetectTextEncoding(bytes, size) == reference::DetectTextEncoding(view),
            "DetectTextEncoding agrees");
    Require(korvel::DetectLineEnding(bytes, size) == reference::DetectLineEnding(view),
            "DetectLineEnding agrees");
    if (size > 0) {
        Require(korvel::Utf8LeadLength(data[0]) == reference::Utf8LeadLength(data[0]),
                "Utf8LeadLength agrees");
    }
    return 0;
}
