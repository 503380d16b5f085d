#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Args = std::vector<std::string>;

// 日本語のテキスト / かな・カナ・ＡＢＣ abc, CR LF breaks, in Shift_JIS and EUC.
const std::string kSjisText = "\x93\xfa\x96\x7b\x8c\xea\x82\xcc\x83\x65\x83\x4c\x83\x58\x83\x67\r\n"
                              "\x82\xa9\x82\xc8\x81\x45\x83\x4a\x83\x69\x81\x45\x82\x60\x82\x61"
                              "\x82\x62 abc\r\n";
const std::string kEucText = "\xc6\xfc\xcb\xdc\xb8\xec\xa4\xce\xa5\xc6\xa5\xad\xa5\xb9\xa5\xc8\r\n"
                             "\xa4\xab\xa4\xca\xa1\xa6\xa5\xab\xa5\xca\xa1\xa6\xa3\xc1\xa3\xc2"
                             "\xa3\xc3 abc\r\n";

std::string Slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Result {
    int exitCode = -1;
    std::string out;
    std::string err;
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

    // Runs korvelconv through the shell after `setup` (limits, signal dispositions), with the
    // input through a pipe or /dev/null as standard input; a run that hangs ends after 30 s.
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
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    fs::path root_;
};

// A failure is one line on standard error in the tool's name, and nothing on standard output.
void ExpectOneErrorLine(const Result& result, int exitCode) {
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.err.rfind("korvelconv: ", 0), 0u) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    EXPECT_EQ(result.out, "");
}

// Detection and its names are the document's; here: the editor's words or the raw numbers, a
// row per readable file (control characters and '\' in names escaped, so that a name cannot
// forge a row), and an unreadable file reported without hiding the ones after it.
TEST_F(Korvelconv, DetectWritesOneRowPerFileAndGoesOnAfterAnUnreadableOne) {
    const std::string cr = Write("cr.txt", "a\rb\rc\r\n");
    const std::string odd = Write("a\tb\nc\\d\x01.txt", "\x1b$B0!\x1b(B\n");
    const std::string empty = Write("empty.txt", "");
    fs::create_directory(Path("folder"));
    ASSERT_EQ(::mkfifo(Path("fifo").c_str(), 0644), 0);
    const std::string escaped = Path("a\\tb\\nc\\\\d\\x01.txt");
    const Args files = {cr, Path("missing.txt"), odd, Path("folder"), Path("fifo"), empty};

    Args args = files;
    args.insert(args.begin(), "--detect");
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

// Each --to word writes the code set that --detect names, and the same word given to --from
// reads it back; the other options each reach the conversion.
TEST_F(Korvelconv, OptionsReachTheConversion) {
    for (const auto& [word, name] : {std::pair{"sjis", "シフトJIS"},
                                     {"jis", "JIS"},
                                     {"euc", "EUC"},
                                     {"unicode", "Unicode"},
                                     {"utf8", "UTF-8"},
                                     {"utf8n", "UTF-8N"}}) {
        const std::string converted = Convert(kSjisText, {"--to", word});
        const std::string out = Write("out.txt", converted);
        EXPECT_EQ(Run({"--detect", out}).out, out + '\t' + name + "\tCR-LF\n");
        EXPECT_EQ(Convert(converted, {"--from", word, "--to", "sjis"}), kSjisText) << word;
    }
    const struct {
        std::string input;
        Args args;
        std::string output;
    } rows[] = {
        {kEucText, {"--to", "sjis"}, kSjisText}, // detected
        {"$B$\"(B", {"--from", "garbled-mail", "--to", "utf8n"}, "\xe3\x81\x82"},
        {"a\r\nb\r\n", {"--to", "sjis", "--eol", "lf"}, "a\nb\n"},
        {"a\r\nb\r\n", {"--to", "sjis", "--eol", "cr"}, "a\rb\r"},
        {"a\rb\r", {"--to", "sjis", "--eol", "crlf"}, "a\r\nb\r\n"},
        {"a\rb\r", {"--to", "euc"}, "a\rb\r"}, // the input's own line ending
        // ｱｶﾞ made full width by default, or kept.
        {"\xb1\xb6\xde", {"--from", "sjis", "--to", "jis"}, "\x1b$B%\"%,\x1b(B"},
        {"\xb1\xb6\xde", {"--to", "jis", "--jis-katakana", "full"}, "\x1b$B%\"%,\x1b(B"},
        {"\xb1\xb6\xde", {"--to", "jis", "--jis-katakana", "keep"}, "\x1b(I16^\x1b(B"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Convert(row.input, row.args), row.output) << testing::PrintToString(row.args);
    }
    // Standard input larger than one read block, named "-" or not.
    std::string sjis;
    std::string euc;
    for (int i = 0; i < 5000; ++i) {
        sjis += kSjisText;
        euc += kEucText;
    }
    for (const Args& args : {Args{"--to", "euc"}, Args{"--to", "euc", "-"}}) {
        const Result result = Run(args, sjis);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out == euc) << "output of " << result.out.size() << " bytes";
    }
    const Result help = Run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.out.rfind("Usage: korvelconv", 0), 0u) << help.out;
    EXPECT_EQ(help.err, "");
}

// Usage errors exit with 2, file errors with 1. A pipe without a writer would block the open,
// a device might never end, and replacing either with a regular file breaks whatever uses it;
// a read-only output is the owner's missing write permission, root's too. Nothing is written
// and nothing is left.
TEST_F(Korvelconv, WhatCannotBeDoneFailsWithOneLineAndChangesNothing) {
    const std::string in = Write("in.txt", "abc");
    const std::string out = Write("out.txt", "keep me");
    const std::string readOnly = Write("ro.txt", "keep me");
    fs::permissions(readOnly, fs::perms::owner_read);
    fs::create_directory(Path("folder"));
    const std::string fifo = Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    const bool root = ::geteuid() == 0;
    const std::string device = root ? Path("null") : fifo;
    ASSERT_TRUE(!root || ::mknod(device.c_str(), S_IFCHR | 0666, ::makedev(1, 3)) == 0);
    const auto before = Names();
    const std::pair<int, Args> rows[] = {
        {2, {"--to", "garbled-mail", in}}, // a way of reading, not of writing
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
        {1, {"--to", "sjis", "-o", out, "/dev/zero"}},
        {1, {"--to", "sjis", "-o", Path("folder"), in}},
        {1, {"--to", "sjis", "-o", Path("no-folder/out.txt"), in}},
        {1, {"--to", "sjis", "-o", fifo, in}},
        {1, {"--to", "sjis", "-o", device, in}},
        {1, {"--to", "sjis", "-o", readOnly, in}},
    };
    for (const auto& [exitCode, args] : rows) {
        SCOPED_TRACE(testing::PrintToString(args));
        ExpectOneErrorLine(Run(args), exitCode);
    }
    EXPECT_EQ(Read("out.txt") + Read("ro.txt"), "keep mekeep me");
    EXPECT_EQ(Names(), before);
    EXPECT_TRUE(fs::is_fifo(fifo) && fs::is_empty(Path("folder")));
    EXPECT_TRUE(!root || fs::is_character_file(device));
}

// The input is read whole before it is replaced, so it may be the output too; how a file is
// replaced (mode, links, owner) is the document's.
TEST_F(Korvelconv, OutputFileGetsTheConversionAndNoTemporaryFileIsLeft) {
    const std::string output = Write("out.txt", "old contents that are longer than the new");
    const std::string input = Write("in.txt", kSjisText);
    const Result result = Run({"--to", "euc", "-o", output, input});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(Read("out.txt"), kEucText);
    EXPECT_EQ(Run({"--to", "euc", "-o", input, input}).exitCode, 0);
    EXPECT_EQ(Read("in.txt"), kEucText);
    EXPECT_EQ(Names(), (std::vector<std::string>{"in.txt", "out.txt"}));
}

// A file-size limit (ulimit -f, 512 bytes: room for the message on standard error) stops the
// write instead of killing the run: the old output stays whole and the run says why. 32 MiB of text
// read whole fits in 80 MiB of address space, its UTF-16 form does not: the conversion runs out and
// says so in the editor's words.
TEST_F(Korvelconv, OutputThatDoesNotFitLeavesTheOldFileWhole) {
    std::string text;
    for (int i = 0; i < 20; ++i) {
        text += kSjisText;
    }
    const std::string input = Write("in.txt", text);
    const std::string output = Write("out.txt", "keep me");
    Result result = Run({"--to", "utf8", "-o", output, input}, {}, "ulimit -f 1");
    ExpectOneErrorLine(result, 1);
    EXPECT_NE(result.err.find(std::strerror(EFBIG)), std::string::npos) << result.err;
    EXPECT_EQ(Read("out.txt"), "keep me");
    EXPECT_EQ(Names(), (std::vector<std::string>{"in.txt", "out.txt"}));
#if !defined(__SANITIZE_ADDRESS__)
    Write("in.txt", std::string(std::size_t(32) << 20, 'a'));
    result = Run({"--to", "unicode", "-o", output, input}, {}, "ulimit -v 81920");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "korvelconv: メモリー不足が発生しました。\n");
    EXPECT_EQ(Read("out.txt"), "keep me");
#endif
}

// Stopped while it writes, korvelconv takes its temporary file with it and the old output
// stays; a file it rewrites in place (it has a second hard link) is finished first. Either way
// the output is whole and nothing else is left in the folder.
TEST_F(Korvelconv, InterruptedWriteLeavesAWholeOutputAndNoOtherFile) {
    std::string large;
    for (int i = 0; i < (1 << 22); ++i) {
        large += "0123456789abcdef\r\n";
    }
    const std::string input = Write("in.txt", large);
    const std::string output = Path("out.txt");
    const std::string converted = Convert(large, {"--to", "unicode"});
    large.clear();
    for (const bool hardLinked : {false, true}) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            SCOPED_TRACE(std::to_string(signal) + (hardLinked ? " hard-linked" : ""));
            const std::size_t quiet = hardLinked ? 3 : 2;
            bool interrupted = false;
            for (int attempt = 0; attempt < 5 && !interrupted; ++attempt) {
                Write("out.txt", "keep me");
                if (hardLinked && !fs::exists(Path("second"))) {
                    fs::create_hard_link(output, Path("second"));
                }
                const pid_t pid = ::fork();
                if (pid == 0) {
                    // The test may itself run with these ignored (nohup, a background job).
                    sigset_t all;
                    sigfillset(&all);
                    ::sigprocmask(SIG_UNBLOCK, &all, nullptr);
                    std::signal(signal, SIG_DFL);
                    ::execl(KORVELCONV_PATH, KORVELCONV_PATH, "--to", "unicode", "-o",
                            output.c_str(), input.c_str(), static_cast<char*>(nullptr));
                    ::_exit(127);
                }
                // Waits for a temporary file or the copy of the old bytes, then stops the run.
                const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
                int status = 0;
                while (::waitpid(pid, &status, WNOHANG) == 0) {
                    if (Names().size() > quiet || std::chrono::steady_clock::now() > deadline) {
                        ::kill(pid, signal);
                        ::waitpid(pid, &status, 0);
                        interrupted = WIFSIGNALED(status) && WTERMSIG(status) == signal;
                        break;
                    }
                }
                EXPECT_EQ(Names().size(), quiet);
            }
            EXPECT_TRUE(interrupted) << "every run finished before it could be stopped";
            const std::string after = Read("out.txt");
            EXPECT_TRUE(after == "keep me" || after == converted) << after.size() << " bytes";
            EXPECT_TRUE(!hardLinked || Read("second") == after);
        }
    }
}

} // namespace
