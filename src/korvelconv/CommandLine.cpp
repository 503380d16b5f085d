#include "korvelconv/CommandLine.h"

#include <span>

namespace korvel::conv {
namespace {

template <typename T> struct Choice {
    std::string_view word;
    T value;
};

constexpr Choice<TextEncoding> kFromChoices[] = {
    {"auto", TextEncoding::AutoDetect}, {"sjis", TextEncoding::ShiftJis},
    {"jis", TextEncoding::Jis},         {"euc", TextEncoding::Euc},
    {"unicode", TextEncoding::Unicode}, {"utf8", TextEncoding::Utf8},
    {"utf8n", TextEncoding::Utf8N},     {"garbled-mail", TextEncoding::GarbledMail},
};

// The save list: detection and mail repair are ways of reading, never of writing.
constexpr Choice<TextEncoding> kToChoices[] = {
    {"sjis", TextEncoding::ShiftJis}, {"jis", TextEncoding::Jis},
    {"euc", TextEncoding::Euc},       {"unicode", TextEncoding::Unicode},
    {"utf8", TextEncoding::Utf8},     {"utf8n", TextEncoding::Utf8N},
};

constexpr Choice<LineEnding> kEolChoices[] = {
    {"crlf", LineEnding::CrLf},
    {"cr", LineEnding::Cr},
    {"lf", LineEnding::Lf},
};

constexpr Choice<int> kKatakanaChoices[] = {{"full", 0}, {"keep", 1}};

template <typename T>
std::string TakeChoice(std::string_view option, const char* value,
                       std::span<const Choice<T>> choices, std::optional<T>& slot) {
    if (slot) {
        return "option '" + std::string(option) + "' given twice";
    }
    if (value == nullptr) {
        return "option '" + std::string(option) + "' needs a value";
    }
    for (const Choice<T>& choice : choices) {
        if (choice.word == value) {
            slot = choice.value;
            return {};
        }
    }
    std::string error =
        "invalid value '" + std::string(value) + "' for " + std::string(option) + " (one of:";
    for (const Choice<T>& choice : choices) {
        error += ' ';
        error += choice.word;
    }
    return error + ")";
}

// Fills line from the arguments after the program name; returns the error, empty when valid.
std::string Parse(std::span<const char* const> args, CommandLine& line) {
    bool detect = false;
    bool optionsEnded = false;
    std::string_view conversionOption; // the first one seen, for the --detect error
    std::optional<TextEncoding> from;
    std::optional<TextEncoding> to;
    std::optional<LineEnding> lineEnding;
    std::optional<int> katakanaMode;
    std::optional<std::string> outputPath;

    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string_view arg = args[i];
        if (optionsEnded || arg == "-" || !arg.starts_with('-')) {
            line.inputs.emplace_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        if (arg == "--help") {
            line.mode = Mode::Help;
            return {};
        }
        if (arg == "--detect") {
            detect = true;
            continue;
        }
        if (arg == "--raw") {
            line.raw = true;
            continue;
        }

        const char* value = i + 1 < args.size() ? args[i + 1] : nullptr;
        std::string error;
        if (arg == "--from") {
            error = TakeChoice<TextEncoding>(arg, value, kFromChoices, from);
        } else if (arg == "--to") {
            error = TakeChoice<TextEncoding>(arg, value, kToChoices, to);
        } else if (arg == "--eol") {
            error = TakeChoice<LineEnding>(arg, value, kEolChoices, lineEnding);
        } else if (arg == "--jis-katakana") {
            error = TakeChoice<int>(arg, value, kKatakanaChoices, katakanaMode);
        } else if (arg == "-o") {
            if (outputPath) {
                error = "option '-o' given twice";
            } else if (value == nullptr) {
                error = "option '-o' needs a value";
            } else {
                outputPath = value;
            }
        } else {
            return "unknown option '" + std::string(arg) + "'";
        }
        if (!error.empty()) {
            return error;
        }
        if (conversionOption.empty()) {
            conversionOption = arg;
        }
        ++i;
    }

    if (detect) {
        if (!conversionOption.empty()) {
            return "--detect cannot be combined with " + std::string(conversionOption);
        }
        if (line.inputs.empty()) {
            return "--detect needs at least one file";
        }
        line.mode = Mode::Detect;
        return {};
    }
    if (line.raw) {
        return "--raw works only with --detect";
    }
    if (!to) {
        return "missing --to";
    }
    if (line.inputs.size() > 1) {
        return "only one input file can be converted at a time";
    }
    line.mode = Mode::Convert;
    line.from = from.value_or(TextEncoding::AutoDetect);
    line.to = *to;
    line.lineEnding = lineEnding;
    line.jisKatakanaMode = katakanaMode.value_or(0);
    line.outputPath = std::move(outputPath);
    if (line.inputs.empty()) {
        line.inputs.emplace_back("-");
    }
    return {};
}

} // namespace

ParsedCommandLine ParseCommandLine(int argc, const char* const* argv) {
    ParsedCommandLine parsed;
    const std::span<const char* const> args(argv, static_cast<std::size_t>(argc));
    parsed.error = Parse(args.subspan(args.empty() ? 0 : 1), parsed.commandLine);
    return parsed;
}

std::string_view UsageText() {
    return R"(Usage: korvelconv --detect [--raw] FILE...
       korvelconv [--from CODE] --to CODE [--eol crlf|cr|lf] [--jis-katakana full|keep]
                  [-o OUT] [FILE|-]

Reads and writes text files with KorvelEdit's own rules for code sets and line endings.

  --detect                  print each file's name, code set and line ending, tab-separated,
                            as the editor would choose them
  --raw                     with --detect: the detectors' own numbers (code set 0-9,
                            line ending 0-3)
  --from CODE               read the input as auto (the default: detect it), sjis, jis, euc,
                            unicode, utf8, utf8n or garbled-mail
  --to CODE                 write sjis, jis, euc, unicode (UTF-16LE with mark FF FE),
                            utf8 (with mark EF BB BF) or utf8n (without mark)
  --eol crlf|cr|lf          line ending to write (default: the input's own)
  --jis-katakana full|keep  half-width katakana in JIS output: made full width (default)
                            or kept
  -o OUT                    write to OUT (default: standard output), a regular file or a
                            new name; OUT is replaced only once the whole output is written,
                            and keeps its mode, owner and group
  --help                    show this help

FILE must be a regular file. Without FILE, or with FILE -, standard input is read, up to
1 GiB. File names in --detect's table have control characters and \ written as C escapes.
Exit status: 0 success, 1 file or conversion error, 2 usage error.
)";
}

} // namespace korvel::conv
