// korvelconv: the editor's load and save pipeline on the command line.

#include "codec/Detection.h"
#include "document/DocumentBytes.h"
#include "document/EncodingNames.h"
#include "korvelconv/CommandLine.h"
#include "korvelconv/FileBytes.h"
#include "korvelconv/OutputFile.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

namespace korvel::conv {
namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

void ReportError(const std::string& message) {
    std::fprintf(stderr, "korvelconv: %s\n", message.c_str());
}

// The editor's own messages for a failed conversion.
std::string CodecFailureMessage(CodecStatus status) {
    return status == CodecOutOfMemory ? "メモリー不足が発生しました。"
                                      : "文字コード変換の際にエラーが発生しました。";
}

int PrintUsage() {
    const std::string_view usage = UsageText();
    std::fwrite(usage.data(), 1, usage.size(), stdout);
    return std::fflush(stdout) == 0 ? 0 : kExitFailure;
}

// A tab or a line break in a file name would forge a column or a row of --detect's table, so
// control characters and the backslash that introduces the escapes are written as C escapes.
std::string EscapedName(const std::string& name) {
    std::string escaped;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '\\':
            escaped += "\\\\";
            break;
        case '\t':
            escaped += "\\t";
            break;
        case '\n':
            escaped += "\\n";
            break;
        case '\r':
            escaped += "\\r";
            break;
        default:
            if (byte < 0x20 || byte == 0x7F) {
                static constexpr char kHex[] = "0123456789abcdef";
                escaped += {'\\', 'x', kHex[byte >> 4], kHex[byte & 0xF]};
            } else {
                escaped += c;
            }
        }
    }
    return escaped;
}

std::string DetectionRow(const std::string& name, std::span<const std::uint8_t> bytes, bool raw) {
    const TextEncoding encoding = DetectTextEncoding(bytes.data(), bytes.size());
    const LineEnding lineEnding = DetectLineEnding(bytes.data(), bytes.size());
    std::string row = EscapedName(name) + '\t';
    if (raw) {
        row += std::to_string(static_cast<std::uint32_t>(encoding)) + '\t' +
               std::to_string(static_cast<std::uint32_t>(lineEnding));
    } else {
        row += EncodingDisplayName(encoding);
        row += '\t';
        row += LineEndingDisplayName(lineEnding);
    }
    return row + '\n';
}

// An unreadable file is reported and skipped, so one bad name does not hide the others.
int RunDetect(const CommandLine& line) {
    int exitCode = 0;
    for (const std::string& input : line.inputs) {
        std::string error;
        const std::optional<FileBytes> file = FileBytes::Read(input, error);
        if (!file) {
            ReportError(error);
            exitCode = kExitFailure;
            continue;
        }
        const std::string row = DetectionRow(input, file->bytes(), line.raw);
        const std::span<const std::uint8_t> parts[] = {
            {reinterpret_cast<const std::uint8_t*>(row.data()), row.size()}};
        if (!WriteStandardOutput(parts, error)) {
            ReportError(error);
            return kExitFailure;
        }
    }
    return exitCode;
}

int RunConvert(const CommandLine& line) {
    std::string error;
    // The decoded text may point into these bytes, so they live until the output is written.
    const std::optional<FileBytes> file = FileBytes::Read(line.inputs.front(), error);
    if (!file) {
        ReportError(error);
        return kExitFailure;
    }
    const DecodedDocument decoded = DecodeDocumentBytes(file->bytes(), line.from);
    if (decoded.status != CodecOk) {
        ReportError(CodecFailureMessage(decoded.status));
        return kExitFailure;
    }
    const EncodedDocument encoded = EncodeDocumentText(
        decoded.text, line.to, line.lineEnding.value_or(decoded.lineEnding), line.jisKatakanaMode);
    if (encoded.status != CodecOk) {
        ReportError(CodecFailureMessage(encoded.status));
        return kExitFailure;
    }

    const std::span<const std::uint8_t> parts[] = {encoded.mark, encoded.body};
    const bool written = line.outputPath ? WriteOutputFile(*line.outputPath, parts, error)
                                         : WriteStandardOutput(parts, error);
    if (!written) {
        ReportError(error);
        return kExitFailure;
    }
    return 0;
}

} // namespace
} // namespace korvel::conv

int main(int argc, char** argv) {
    using namespace korvel::conv;
    korvel::ProtectFileReplacementFromSignals();
    const ParsedCommandLine parsed = ParseCommandLine(argc, argv);
    if (!parsed.error.empty()) {
        ReportError(parsed.error);
        return kExitUsage;
    }
    switch (parsed.commandLine.mode) {
    case Mode::Help:
        return PrintUsage();
    case Mode::Detect:
        return RunDetect(parsed.commandLine);
    case Mode::Convert:
        break;
    }
    return RunConvert(parsed.commandLine);
}
