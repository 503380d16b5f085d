#pragma once

// Byte and text literals for the tests of the encoding engine and of the documents built on it,
// and readable failure messages.

#include "Cp932Oracle.h"
#include "codec/CodecTypes.h"

#include <ostream>
#include <string>
#include <string_view>

namespace korvel::testing {

using reference::Bytes;
using reference::ByteView;

// "[1B 24 42]" and "u[3042 000D]", for failure messages.
std::string Hex(ByteView bytes);
std::string Hex(std::u16string_view units);

// Byte and text literals without casts.
Bytes BytesOf(std::string_view text);
ByteView ViewOf(std::string_view text);
ByteView ViewOf(std::u16string_view text);

} // namespace korvel::testing

namespace korvel {

// Names instead of raw numbers in failure messages.
void PrintTo(TextEncoding encoding, std::ostream* os);
void PrintTo(LineEnding lineEnding, std::ostream* os);

} // namespace korvel
