#include "korvelconv/FileBytes.h"
#include "korvelconv/SlicedConversion.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Args = std::vector<std::string>;

// 日本語のテキスト / abc, CR LF breaks, in Shift_JIS and EUC.
const std::string kSjisText = "\x93\xfa\x96\x7b\x8c\xea\x82\xcc\x83\x65\x83\x4c"
                              "\x83\x58\x83\x67\r\nabc\r\n";
const std::string kEucText = "\xc6\xfc\xcb\xdc\xb8\xec\xa4\xce\xa5\xc6\xa5\xad"
                             "\xa5\xb9\xa5\xc8\r\nabc\r\n";

std::string Slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string Times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

struct Result {
    int exitCode = -1;
    std::string out, err;
};

// Each test's files are in work/; the streams of a run in io/, out of the way.
class Korvelconv : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "korvelconv-test-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        fs::create_directory(root_ / "io");
        fs::create_directory(root_ / "work");
    }
    void TearDown() override { fs::remove_all(root_); }

    std::string Path(const std::string& name) const { return (root_ / "work" / name).string(); }
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Read(const std::string& name) const { return Slurp(Path(name)); }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(root_ / "work")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // Runs korvelconv through the shell after `setup` (a limit), with the input through a pipe as
    // standard input; a run that hangs ends after 30 s.
    Result Run(const Args& args, const std::string& input = {},
               const std::string& setup = {}) const {
        const std::string io = (root_ / "io").string();
        std::ofstream(io + "/in", std::ios::binary) << input;
        std::string command = setup + "\ncat " + io + "/in | timeout 30 " KORVELCONV_PATH;
        for (const std::string& arg : args) {
            command += " '" + arg + "'";
        }
        const int status = std::system((command + " >" + io + "/out 2>" + io + "/err").c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(io + "/out"),
                Slurp(io + "/err")};
    }

    // The output of a conversion that must succeed quietly.
    std::string Convert(const std::string& bytes, Args args) const {
        args.push_back(Write("in.txt", bytes));
        const Result result = Run(args);
        EXPECT_TRUE(result.exitCode == 0 && result.err.empty()) << result.err;
        return result.out;
    }

    fs::path root_;
};

// Detection and its names are the document's; here: the editor's words or the raw numbers, a row
// per readable file (control characters and '\' in names escaped, so that a name cannot forge a
// row), and an unreadable file reported without hiding the ones after it.
TEST_F(Korvelconv, DetectWritesOneRowPerFileAndGoesOnAfterAnUnreadableOne) {
    const std::string cr = Write("cr.txt", "a\rb\rc\r\n");
    const std::string odd = Write("a\tb\nc\\d\x01.txt", "\x1b$B0!\x1b(B\n");
    const std::string empty = Write("empty.txt", "");
    fs::create_directory(Path("folder"));
    ASSERT_EQ(::mkfifo(Path("fifo").c_str(), 0644), 0);
    const std::string escaped = Path("a\\tb\\nc\\\\d\\x01.txt");
    Args args = {"--detect", cr, Path("missing.txt"), odd, Path("folder"), Path("fifo"), empty};
    Result result = Run(args);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out,
              cr + "\tシフトJIS\tCR\n" + escaped + "\tJIS\tLF\n" + empty + "\tシフトJIS\tCR-LF\n");
    for (const char* name : {"missing.txt:", "folder:", "fifo:"}) {
        EXPECT_NE(result.err.find(name), std::string::npos) << result.err;
    }
    args.insert(args.begin() + 1, "--raw");
    result = Run(args);
    EXPECT_EQ(result.out, cr + "\t0\t1\n" + escaped + "\t2\t2\n" + empty + "\t9\t3\n");
    EXPECT_EQ(Run({"--detect", "-"}, kEucText).out, "-\tEUC\tCR-LF\n");
}

// Each --to word writes the code set that --detect names, and the same word given to --from reads
// it back; the other options each reach the conversion.
TEST_F(Korvelconv, OptionsReachTheConversion) {
    const std::pair<const char*, const char*> words[] = {
        {"sjis", "シフトJIS"},  {"jis", "JIS"},    {"euc", "EUC"},
        {"unicode", "Unicode"}, {"utf8", "UTF-8"}, {"utf8n", "UTF-8N"},
    };
    for (const auto& [word, name] : words) {
        const std::string converted = Convert(kSjisText, {"--to", word});
        const std::string out = Write("out.txt", converted);
        EXPECT_EQ(Run({"--detect", out}).out, out + '\t' + name + "\tCR-LF\n");
        EXPECT_EQ(Convert(converted, {"--from", word, "--to", "sjis"}), kSjisText) << word;
    }
    // Through standard input, larger than one read block, named "-" or not.
    const struct {
        std::string input;
        Args args;
        std::string output;
    } rows[] = {
        {Times(5000, kSjisText), {"--to", "euc"}, Times(5000, kEucText)},
        {Times(5000, kSjisText), {"--to", "euc", "-"}, Times(5000, kEucText)},
        {kEucText, {"--to", "sjis"}, kSjisText}, // detected
        {"$B$\"(B", {"--from", "garbled-mail", "--to", "utf8n"}, "\xe3\x81\x82"},
        {"a\r\nb\r\n", {"--to", "sjis", "--eol", "lf"}, "a\nb\n"},
        {"a\rb\r", {"--to", "euc"}, "a\rb\r"}, // the input's own line ending
        // ｱｶﾞ made full width by default, or kept.
        {"\xb1\xb6\xde", {"--to", "jis"}, "\x1b$B%\"%,\x1b(B"},
        {"\xb1\xb6\xde", {"--to", "jis", "--jis-katakana", "keep"}, "\x1b(I16^\x1b(B"},
    };
    for (const auto& row : rows) {
        const std::string out = Run(row.args, row.input).out;
        EXPECT_TRUE(out == row.output)
            << testing::PrintToString(row.args) << ": " << out.size() << " bytes";
    }
    const Result help = Run({"--help"});
    EXPECT_TRUE(help.exitCode == 0 && help.out.starts_with("Usage: korvelconv") &&
                help.err.empty());
}

// Usage errors exit with 2, file errors with 1. A pipe without a writer would block the open, and
// replacing it with a regular file breaks whatever uses it (devices are refused alike); a read-only
// output is the owner's missing write permission, root's too. A file-size limit (ulimit -f, 512
// bytes: room for the message on standard error) stops the write instead of killing the run. 32 MiB
// of text read whole fits in 80 MiB of address space, its UTF-16 form does not: the conversion runs
// out and says so in the editor's words. Nothing is written and nothing is left.
TEST_F(Korvelconv, OutputFileGetsTheWholeConversionOrStaysAsItWas) {
    const std::string in = Write("in.txt", "abc");
    const std::string out = Write("out.txt", "keep me");
    const std::string readOnly = Write("ro.txt", "keep me");
    fs::permissions(readOnly, fs::perms::owner_read);
    fs::create_directory(Path("folder"));
    const std::string fifo = Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    const std::string large = Write("large.txt", std::string(std::size_t(32) << 20, 'a'));
    const auto before = Names();
    const struct {
        int exitCode;
        Args args;
        std::string says = {};
        const char* limit = "";
    } rows[] =
    { {2, {"--to", "garbled-mail", in}}, // a way of reading, not of writing
      {2, {"--to", "sjis", "--to", "euc", "-o", out, in}},
      {2, {"--frobnicate", "--to", "sjis", "-o", out, in}},
      {2, {"--from", "sjis", "-o", out, in}},
      {2, {"--to", "sjis", "-o", out, in, in}},
      {2, {"--raw", "--to", "sjis", "-o", out, in}},
      {2, {"--detect", "--to", "sjis", "-o", out, in}},
      {2, {"--detect"}},
      {2, {"-o", out, in, "--to"}},
      {1, {"--to", "sjis", "-o", Path("new.txt"), Path("missing.txt")}},
      {1, {"--to", "sjis", "-o", out, Path("folder")}},
      {1, {"--to", "sjis", "-o", out, fifo}},
      {1, {"--to", "sjis", "-o", Path("folder"), in}},
      {1, {"--to", "sjis", "-o", Path("no-folder/out.txt"), in}},
      {1, {"--to", "sjis", "-o", fifo, in}},
      {1, {"--to", "sjis", "-o", readOnly, in}},
      {1, {"--to", "utf8", "-o", out, large}, std::strerror(EFBIG), "ulimit -f 1"},
#if !defined(__SANITIZE_ADDRESS__) // its allocator does not survive an
                                   // address-space limit
      {1, {"--to", "unicode", "-o", out, large}, "メモリー不足が発生しました。", "ulimit -v 81920"},
#endif
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.args));
        // One line on standard error in the tool's name, and nothing on standard output.
        const Result result = Run(row.args, {}, row.limit);
        EXPECT_EQ(result.exitCode, row.exitCode);
        EXPECT_EQ(result.err.rfind("korvelconv: ", 0), 0u) << result.err;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(Read("out.txt") + Read("ro.txt"), "keep mekeep me");
    EXPECT_EQ(Names(), before);
    EXPECT_TRUE(fs::is_fifo(fifo) && fs::is_empty(Path("folder")));

    // The output file gets the conversion, and the input may be the output too: it is read whole
    // first. How a file is replaced (mode, links, owner) is the document's.
    Write("in.txt", kSjisText);
    const Result result = Run({"--to", "euc", "-o", out, in});
    EXPECT_EQ(result.exitCode + result.out.size() + result.err.size(), 0u) << result.err;
    EXPECT_EQ(Read("out.txt"), kEucText);
    EXPECT_EQ(Run({"--to", "euc", "-o", in, in}).exitCode, 0);
    EXPECT_EQ(Read("in.txt"), kEucText);
}

// Stopped while it writes, korvelconv takes its temporary file with it and the old output stays; a
// file it rewrites in place (it has a second hard link) is finished first. Either way the output is
// whole and nothing else is left in the folder.
TEST_F(Korvelconv, InterruptedWriteLeavesAWholeOutputAndNoOtherFile) {
    std::string large = Times(1 << 22, "0123456789abcdef\r\n");
    const std::string input = Write("in.txt", large);
    const std::string converted = Convert(large, {"--to", "unicode"});
    large.clear();
    for (int run = 0; run < 6; ++run) {
        const int signal = run % 3 == 0 ? SIGINT : run % 3 == 1 ? SIGTERM : SIGHUP;
        const bool hardLinked = run >= 3;
        SCOPED_TRACE(std::to_string(signal) + (hardLinked ? " hard-linked" : ""));
        int status = 0;
        for (int attempt = 0; attempt < 5 && !WIFSIGNALED(status); ++attempt) {
            Write("out.txt", "keep me");
            if (hardLinked && !fs::exists(Path("second"))) {
                fs::create_hard_link(Path("out.txt"), Path("second"));
            }
            const pid_t pid = ::fork();
            if (pid == 0) {
                // The test may itself run with these ignored (nohup, a background job).
                sigset_t all;
                sigfillset(&all);
                ::sigprocmask(SIG_UNBLOCK, &all, nullptr);
                std::signal(signal, SIG_DFL);
                ::execl(KORVELCONV_PATH, KORVELCONV_PATH, "--to", "unicode", "-o",
                        Path("out.txt").c_str(), input.c_str(), static_cast<char*>(nullptr));
                ::_exit(127);
            }
            // Waits for a temporary file or the copy of the old bytes, then stops the run.
            while (::waitpid(pid, &status, WNOHANG) == 0) {
                if (Names().size() > (hardLinked ? 3u : 2u)) {
                    ::kill(pid, signal);
                    ::waitpid(pid, &status, 0);
                }
            }
            EXPECT_EQ(Names().size(), hardLinked ? 3u : 2u);
        }
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << "never stopped";
        const std::string after = Read("out.txt");
        EXPECT_TRUE(after == "keep me" || after == converted) << after.size() << " bytes";
        EXPECT_TRUE(!hardLinked || Read("second") == after);
    }
}

// Cut short by another program while korvelconv maps it, a file loses the pages past its new end:
// they read as zeros instead of raising SIGBUS, the pass says it was spoilt, and reading the file
// again gives what it holds now. A pass over a file that stays whole is not disturbed.
TEST_F(Korvelconv, MappedFileCutShortDuringThePassReadsAsZerosAndIsReadAgain) {
    using korvel::conv::FileBytes;
    const std::string path = Write("cut.txt", std::string(std::size_t(1) << 20, 'a'));
    std::string error;
    std::optional<FileBytes> file = FileBytes::Map(path, error);
    ASSERT_TRUE(file) << error;
    std::size_t total = 0;
    const auto sum = [&] {
        total = 0;
        for (const std::uint8_t b : file->bytes()) {
            total += b;
        }
    };
    EXPECT_TRUE(file->Guarded(sum));
    EXPECT_EQ(total, std::size_t{'a'} << 20);
    EXPECT_FALSE(file->Guarded([&] {
        ASSERT_EQ(::truncate(path.c_str(), 5000), 0);
        sum();
    }));
    EXPECT_EQ(total, std::size_t{'a'} * 5000);
    file = FileBytes::Read(path, error);
    ASSERT_TRUE(file) << error;
    EXPECT_EQ(file->bytes().size(), 5000u);
}

// Standard output gets the conversion in slices cut after line feeds; the bytes must be the whole
// conversion's for every pair of code sets and line ending, on every prefix of a mix of every
// code set's seeds (shift states left open, stray bytes, lone CR and LF, a long line) cut as often
// as it can be.
TEST(SlicedConversion, GivesTheWholeConversionsBytes) {
    using korvel::LineEnding;
    using korvel::TextEncoding;
    std::string mix;
    const char* const breaks[] = {"\n", "\r\n", "\r", "\x1b(B\n"};
    int next = 0;
    for (const char* folder : {"document_fuzzer", "jis_euc_fuzzer", "shiftjis_utf8_fuzzer"}) {
        std::vector<fs::path> seeds(fs::directory_iterator(fs::path(KORVEL_SEEDS_DIR) / folder),
                                    fs::directory_iterator());
        std::sort(seeds.begin(), seeds.end());
        for (const fs::path& seed : seeds) {
            mix += Slurp(seed) + breaks[next++ % 4];
        }
    }
    // A long stretch without a line feed: a cut after it is judged from the bytes just before it.
    std::string stretch = mix.substr(0, 200);
    std::replace(stretch.begin(), stretch.end(), '\n', ' ');
    mix += stretch + "\n" + stretch + "\x1b$Ba\n" + mix.substr(0, 100);
    const auto asBytes = [](const std::string& text) {
        return std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    };
    const auto joined = [](std::span<const std::span<const std::uint8_t>> parts) {
        std::string all;
        for (const auto part : parts) {
            all.append(reinterpret_cast<const char*>(part.data()), part.size());
        }
        return all;
    };
    for (const TextEncoding from : {TextEncoding::ShiftJis, TextEncoding::Jis, TextEncoding::Euc,
                                    TextEncoding::Utf8, TextEncoding::Utf8N, TextEncoding::Unicode,
                                    TextEncoding::AutoDetect, TextEncoding::GarbledMail}) {
        for (const TextEncoding to : {TextEncoding::ShiftJis, TextEncoding::Jis, TextEncoding::Euc,
                                      TextEncoding::Utf8, TextEncoding::Unicode}) {
            for (const std::optional<LineEnding> lineEnding :
                 {std::optional<LineEnding>{}, std::optional{LineEnding::Lf},
                  std::optional{LineEnding::Cr}}) {
                korvel::conv::CommandLine line;
                line.from = from;
                line.to = to;
                line.lineEnding = lineEnding;
                line.jisKatakanaMode = next++ % 2;
                for (std::size_t length = 0; length <= mix.size(); ++length) {
                    const std::string prefix = mix.substr(0, length);
                    const auto input = asBytes(prefix);
                    const korvel::conv::Conversion whole = korvel::conv::ConvertWhole(input, line);
                    ASSERT_EQ(whole.status(), korvel::CodecOk);
                    const std::span<const std::uint8_t> parts[] = {whole.encoded.mark,
                                                                   whole.encoded.body};
                    const std::string expected = joined(parts);
                    for (const std::size_t sliceBytes : {1, 7}) {
                        korvel::conv::SlicedConversion sliced(line, sliceBytes);
                        sliced.Begin(input);
                        std::string got;
                        while (!sliced.Done()) {
                            ASSERT_EQ(sliced.Next(input), korvel::CodecOk);
                            got += joined(sliced.slice());
                            sliced.Take();
                        }
                        ASSERT_EQ(got, expected) << "from " << int(from) << " to " << int(to)
                                                 << " length " << length << " slice " << sliceBytes;
                    }
                }
            }
        }
    }
}

} // namespace
