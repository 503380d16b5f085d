#pragma once

#include "codec/CodecTypes.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::conv {

enum class Mode { Help, Detect, Convert };

// What one run of korvelconv is asked to do. An input of "-" is standard input.
struct CommandLine {
    Mode mode = Mode::Convert;
    std::vector<std::string> inputs;
    bool raw = false; // --detect: the detectors' numbers instead of the editor's words
    TextEncoding from = TextEncoding::AutoDetect;
    TextEncoding to = TextEncoding::ShiftJis;
    std::optional<LineEnding> lineEnding;  // absent: keep the line ending the input was read with
    int jisKatakanaMode = 0;               // 1 keeps half-width katakana in JIS output
    std::optional<std::string> outputPath; // absent: standard output
};

struct ParsedCommandLine {
    CommandLine commandLine;
    std::string error; // one line, set when the arguments are not a valid command
};

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);

std::string_view UsageText();

} // namespace korvel::conv
