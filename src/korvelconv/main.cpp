// korvelconv: the editor's load and save pipeline on the command line.

#include "codec/Detection.h"
#include "document/DocumentBytes.h"
#include "document/EncodingNames.h"
#include "korvelconv/CommandLine.h"
#include "korvelconv/FileBytes.h"
#include "korvelconv/OutputFile.h"
#include "korvelconv/SlicedConversion.h"

#include <cstdint>
#if defined(__GLIBC__)
#include <malloc.h>
#endif
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
        std::optional<FileBytes> file = FileBytes::Map(input, error);
        std::string row;
        if (file && !file->Guarded([&] { row = DetectionRow(input, file->bytes(), line.raw); })) {
            file = FileBytes::Read(input, error); // cut short meanwhile: what it holds now
            if (file) {
                row = DetectionRow(input, file->bytes(), line.raw);
            }
        }
        if (!file) {
            ReportError(error);
            exitCode = kExitFailure;
            continue;
        }
        const std::span<const std::uint8_t> parts[] = {
            {reinterpret_cast<const std::uint8_t*>(row.data()), row.size()}};
        if (!WriteStandardOutput(parts, error)) {
            ReportError(error);
            return kExitFailure;
        }
    }
    return exitCode;
}

// Standard output gets the conversion a slice at a time through the same few MiB; a file named
// with -o is replaced as a whole, so it gets the whole output at once.
constexpr std::size_t kSliceBytes = std::size_t{4} << 20;

int ReportCodecFailure(CodecStatus status) {
    ReportError(CodecFailureMessage(status));
    return kExitFailure;
}

int ConvertToStandardOutput(std::optional<FileBytes> file, const CommandLine& line,
                            std::string& error) {
#if defined(__GLIBC__)
    // Each slice's text and output are blocks of a few MiB, which malloc would map afresh for
    // every slice, and the kernel would zero every page of them again. From the heap, the blocks
    // of one slice reuse the pages that the blocks of the last one gave back.
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(kSliceBytes * 8));
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(kSliceBytes * 16));
#endif
    SlicedConversion conversion(line, kSliceBytes);
    if (!file->Guarded([&] { conversion.Begin(file->bytes()); })) {
        file = FileBytes::Read(line.inputs.front(), error); // cut short meanwhile
        if (!file) {
            ReportError(error);
            return kExitFailure;
        }
        conversion.Begin(file->bytes());
    }
    while (!conversion.Done()) {
        CodecStatus status = CodecOk;
        if (!file->Guarded([&] { status = conversion.Next(file->bytes()); })) {
            // The slices written so far came from pages that were still there; the rest comes
            // from what the file holds now.
            file = FileBytes::Read(line.inputs.front(), error);
            if (!file) {
                ReportError(error);
                return kExitFailure;
            }
            status = conversion.Next(file->bytes());
        }
        if (status != CodecOk) {
            return ReportCodecFailure(status);
        }
        if (!WriteStandardOutput(conversion.slice(), error)) {
            ReportError(error);
            return kExitFailure;
        }
        conversion.Take();
    }
    return 0;
}

int RunConvert(const CommandLine& line) {
    std::string error;
    const std::string& input = line.inputs.front();
    // UTF-16 read and written as UTF-16 may be written straight from the input's bytes, which
    // the kernel then reads outside any guard: such a file is read instead of mapped.
    const bool mayBeUtf16 =
        line.from == TextEncoding::Unicode || line.from == TextEncoding::AutoDetect;
    std::optional<FileBytes> file = mayBeUtf16 && line.to == TextEncoding::Unicode
                                        ? FileBytes::Read(input, error)
                                        : FileBytes::Map(input, error);
    if (!file) {
        ReportError(error);
        return kExitFailure;
    }
    if (!line.outputPath) {
        return ConvertToStandardOutput(std::move(file), line, error);
    }
    Conversion conversion;
    if (!file->Guarded([&] { conversion = ConvertWhole(file->bytes(), line); })) {
        conversion = {};
        file = FileBytes::Read(input, error); // cut short meanwhile: what it holds now
        if (!file) {
            ReportError(error);
            return kExitFailure;
        }
        conversion = ConvertWhole(file->bytes(), line);
    }
    if (conversion.status() != CodecOk) {
        return ReportCodecFailure(conversion.status());
    }
    const EncodedDocument& encoded = conversion.encoded;
    const std::span<const std::uint8_t> parts[] = {encoded.mark, encoded.body};
    if (!WriteOutputFile(*line.outputPath, parts, error)) {
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
