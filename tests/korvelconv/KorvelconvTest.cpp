#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// "93 fa 0d" -> the three bytes.
std::string Hex(const char* text) {
    std::istringstream in(text);
    std::string bytes;
    unsigned value = 0;
    while (in >> std::hex >> value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// 日本語のテキスト / かな・カナ・ＡＢＣ abc, CR LF breaks, in Shift_JIS and EUC.
const std::string kSjisText = Hex("93 fa 96 7b 8c ea 82 cc 83 65 83 4c 83 58 83 67 0d 0a 82 a9 82 "
                                  "c8 81 45 83 4a 83 69 81 45 82 60 82 61 82 62 20 61 62 63 0d 0a");
const std::string kEucText = Hex("c6 fc cb dc b8 ec a4 ce a5 c6 a5 ad a5 b9 a5 c8 0d 0a a4 ab a4 "
                                 "ca a1 a6 a5 ab a5 ca a1 a6 a3 c1 a3 c2 a3 c3 20 61 62 63 0d 0a");

struct RunResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

std::string Slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class KorvelconvTest : public ::testing::Test {
protected:
    void SetUp() override {
        // A child that stops reading its standard input must not kill the test.
        std::signal(SIGPIPE, SIG_IGN);
        std::string pattern = (fs::temp_directory_path() / "korvelconv-test-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        fs::create_directory(root_ / "io");
        fs::create_directory(root_ / "work");
    }

    void TearDown() override { fs::remove_all(root_); }

    // Files of a test live in work/; the captured output streams in io/, out of the way.
    fs::path Path(const std::string& name) const { return root_ / "work" / name; }

    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name).string();
    }

    std::string Read(const std::string& name) const { return Slurp(Path(name)); }

    std::vector<std::string> WorkFolderNames() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(root_ / "work")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // Runs korvelconv; standard input is the given bytes through a pipe, or /dev/null.
    // inChild runs in the child before korvelconv starts (limits, signal dispositions).
    RunResult Run(const std::vector<std::string>& args,
                  const std::optional<std::string>& input = std::nullopt,
                  void (*inChild)() = nullptr) const {
        std::vector<std::string> all = {KORVELCONV_PATH};
        all.insert(all.end(), args.begin(), args.end());
        std::vector<char*> argv;
        for (std::string& arg : all) {
            argv.push_back(arg.data());
        }
        argv.push_back(nullptr);
        const std::string outPath = (root_ / "io" / "stdout").string();
        const std::string errPath = (root_ / "io" / "stderr").string();

        int pipeEnds[2] = {-1, -1};
        if (input && ::pipe(pipeEnds) != 0) {
            ADD_FAILURE() << "pipe failed";
            return {};
        }
        const pid_t pid = ::fork();
        if (pid == 0) {
            std::signal(SIGPIPE, SIG_DFL);
            const int in = input ? pipeEnds[0] : ::open("/dev/null", O_RDONLY);
            if (input) {
                ::close(pipeEnds[1]);
            }
            ::dup2(in, STDIN_FILENO);
            ::dup2(::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            ::dup2(::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            // A run that waits for ever fails instead of hanging the suite.
            ::alarm(30);
            if (inChild != nullptr) {
                inChild();
            }
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        if (input) {
            ::close(pipeEnds[0]);
            std::size_t done = 0;
            while (done < input->size()) {
                const ssize_t count =
                    ::write(pipeEnds[1], input->data() + done, input->size() - done);
                if (count <= 0) {
                    break;
                }
                done += static_cast<std::size_t>(count);
            }
            ::close(pipeEnds[1]);
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        RunResult result;
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = Slurp(outPath);
        result.err = Slurp(errPath);
        return result;
    }

    // Converts the bytes of a file and returns what korvelconv printed.
    std::string Convert(const std::string& bytes, std::vector<std::string> args) const {
        args.push_back(Write("in.txt", bytes));
        const RunResult result = Run(args);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    fs::path root_;
};

// One line on standard error, in the tool's name.
void ExpectOneErrorLine(const RunResult& result, int exitCode) {
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.err.rfind("korvelconv: ", 0), 0u) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    EXPECT_EQ(result.out, "");
}

TEST_F(KorvelconvTest, DetectNamesWhatTheEditorWouldChooseOrTheRawNumbers) {
    struct Case {
        const char* name;
        std::string bytes;
        const char* words; // code set TAB line ending, as the editor says them
        const char* raw;
    };
    // Detection and the names are tested where they are made; these rows show both columns.
    const Case cases[] = {
        {"cr.txt", "a\rb\rc\r\n", "シフトJIS\tCR", "0\t1"},
        {"jis.txt", Hex("1b 24 42 30 21 1b 28 42 0a"), "JIS\tLF", "2\t2"},
        {"empty.txt", "", "シフトJIS\tCR-LF", "9\t3"},
    };
    std::vector<std::string> files;
    std::string words;
    std::string raw;
    for (const Case& c : cases) {
        files.push_back(Write(c.name, c.bytes));
        words += files.back() + '\t' + c.words + '\n';
        raw += files.back() + '\t' + c.raw + '\n';
    }

    std::vector<std::string> args = {"--detect"};
    args.insert(args.end(), files.begin(), files.end());
    RunResult result = Run(args);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, words);

    args.insert(args.begin() + 1, "--raw");
    result = Run(args);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, raw);
}

TEST_F(KorvelconvTest, DetectGoesOnAfterAnUnreadableFileButFails) {
    const std::string first = Write("first.txt", "abc");
    const std::string last = Write("last.txt", kEucText);
    fs::create_directory(Path("folder"));

    const RunResult result =
        Run({"--detect", first, Path("missing.txt").string(), Path("folder").string(), last});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, first + "\tシフトJIS\tCR-LF\n" + last + "\tEUC\tCR-LF\n");
    EXPECT_NE(result.err.find("missing.txt"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("folder"), std::string::npos) << result.err;
}

// Each --to word writes the code set that --detect then names, and the same word given to
// --from reads it back to the original bytes. The code sets themselves are the document's.
TEST_F(KorvelconvTest, EveryCodeSetWordWritesAndReadsItsCodeSet) {
    const struct {
        const char* word;
        const char* detected;
    } rows[] = {
        {"sjis", "シフトJIS"},  {"jis", "JIS"},    {"euc", "EUC"},
        {"unicode", "Unicode"}, {"utf8", "UTF-8"}, {"utf8n", "UTF-8N"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.word);
        const std::string converted = Convert(kSjisText, {"--to", row.word});
        const std::string out = Write("out.txt", converted);
        EXPECT_EQ(Run({"--detect", out}).out, out + '\t' + row.detected + "\tCR-LF\n");
        EXPECT_EQ(Convert(converted, {"--from", row.word, "--to", "sjis"}), kSjisText);
    }
    EXPECT_EQ(Convert(kEucText, {"--from", "auto", "--to", "sjis"}), kSjisText);
    // JIS mail that lost its ESC bytes.
    EXPECT_EQ(Convert(Hex("24 42 24 22 28 42"), {"--from", "garbled-mail", "--to", "utf8n"}),
              Hex("e3 81 82"));
}

TEST_F(KorvelconvTest, LineEndingIsTheInputsOwnUnlessEolIsGiven) {
    EXPECT_EQ(Convert("a\r\nb\r\n", {"--to", "sjis", "--eol", "lf"}), "a\nb\n");
    EXPECT_EQ(Convert("a\r\nb\r\n", {"--to", "sjis", "--eol", "cr"}), "a\rb\r");
    EXPECT_EQ(Convert("a\rb\r", {"--to", "sjis", "--eol", "crlf"}), "a\r\nb\r\n");
    EXPECT_EQ(Convert("a\rb\r", {"--to", "euc"}), "a\rb\r");
}

TEST_F(KorvelconvTest, JisKatakanaFullWidthByDefaultOrKept) {
    const std::string halfWidth = Hex("b1 b6 de"); // ｱｶﾞ
    const std::string fullWidth = Hex("1b 24 42 25 22 25 2c 1b 28 42");
    EXPECT_EQ(Convert(halfWidth, {"--from", "sjis", "--to", "jis"}), fullWidth);
    EXPECT_EQ(Convert(halfWidth, {"--from", "sjis", "--to", "jis", "--jis-katakana", "full"}),
              fullWidth);
    EXPECT_EQ(Convert(halfWidth, {"--from", "sjis", "--to", "jis", "--jis-katakana", "keep"}),
              Hex("1b 28 49 31 36 5e 1b 28 42"));
}

TEST_F(KorvelconvTest, StandardInputAndOutput) {
    // Larger than one read block, so the pipe is read in several pieces.
    std::string sjis;
    std::string euc;
    for (int i = 0; i < 5000; ++i) {
        sjis += kSjisText;
        euc += kEucText;
    }
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"--to", "euc"}, std::vector<std::string>{"--to", "euc", "-"}}) {
        const RunResult result = Run(args, sjis);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out == euc) << "output of " << result.out.size() << " bytes";
    }

    const RunResult detected = Run({"--detect", "-"}, euc);
    EXPECT_EQ(detected.exitCode, 0) << detected.err;
    EXPECT_EQ(detected.out, "-\tEUC\tCR-LF\n");
}

TEST_F(KorvelconvTest, UsageErrorsExitWithTwoAndWriteNothing) {
    const std::string input = Write("in.txt", "abc");
    const std::string output = Path("out.txt").string();
    const std::vector<std::vector<std::string>> cases = {
        {"--to", "auto", input},
        {"--to", "garbled-mail", input},
        {"--to", "latin1", input},
        {"--from", "sjis2", "--to", "sjis", input},
        {"--to", "sjis", "--eol", "crcr", input},
        {"--to", "jis", "--jis-katakana", "half", input},
        {"--to", "sjis", "--to", "euc", input},
        {"--frobnicate", "--to", "sjis", input},
        {"--from", "sjis", input},
        {"--to", "sjis", input, input},
        {"--raw", "--to", "sjis", input},
        {"--detect", "--to", "sjis", input},
        {"--detect"},
        {input, "--to"},
    };
    for (std::vector<std::string> args : cases) {
        args.insert(args.begin(), {"-o", output});
        SCOPED_TRACE(testing::PrintToString(args));
        ExpectOneErrorLine(Run(args), 2);
        EXPECT_FALSE(fs::exists(output));
    }
    EXPECT_EQ(WorkFolderNames(), std::vector<std::string>{"in.txt"});
}

TEST_F(KorvelconvTest, FileErrorsLeaveTheOutputFileAsItWas) {
    const std::string output = Write("out.txt", "keep me");
    fs::permissions(output, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_directory(Path("folder"));
    const std::string input = Write("in.txt", "abc");

    const std::vector<std::vector<std::string>> cases = {
        {"--to", "sjis", "-o", output, Path("missing.txt").string()},
        {"--to", "sjis", "-o", output, Path("folder").string()},
        {"--to", "sjis", "-o", Path("folder").string(), input},
        {"--to", "sjis", "-o", Path("no-folder/out.txt").string(), input},
        {"--to", "sjis", "-o", Path("new.txt").string(), Path("missing.txt").string()},
    };
    for (const std::vector<std::string>& args : cases) {
        SCOPED_TRACE(testing::PrintToString(args));
        ExpectOneErrorLine(Run(args), 1);
    }
    EXPECT_EQ(Read("out.txt"), "keep me");
    EXPECT_EQ(fs::status(output).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(WorkFolderNames(), (std::vector<std::string>{"folder", "in.txt", "out.txt"}));
    EXPECT_TRUE(fs::is_empty(Path("folder")));
}

// Root too: read-only is the owner's missing write permission.
TEST_F(KorvelconvTest, ReadOnlyOutputIsNotOverwritten) {
    const std::string output = Write("out.txt", "keep me");
    fs::permissions(output, fs::perms::owner_read);
    ExpectOneErrorLine(Run({"--to", "sjis", "-o", output, Write("in.txt", "abc")}), 1);
    EXPECT_EQ(Read("out.txt"), "keep me");
}

// How the file is replaced (mode, links, owner) is the document's; here -o gets the bytes.
TEST_F(KorvelconvTest, OutputFileIsReplaced) {
    const std::string output = Write("out.txt", "old contents that are longer than the new");
    const std::string input = Write("in.txt", kSjisText);

    RunResult result = Run({"--to", "euc", "-o", output, input});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Read("out.txt"), kEucText);

    // In place: the input is read whole before it is replaced.
    result = Run({"--to", "euc", "-o", input, input});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(Read("in.txt"), kEucText);

    // No temporary file is left behind.
    EXPECT_EQ(WorkFolderNames(), (std::vector<std::string>{"in.txt", "out.txt"}));
}

// A pipe without a writer would block the open, a device might never end, and replacing
// either with a regular file breaks whatever reads or writes it.
TEST_F(KorvelconvTest, OnlyRegularFilesAreReadOrReplaced) {
    const std::string fifo = Path("fifo").string();
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    std::string device;
    if (::geteuid() == 0) {
        device = Path("null").string();
        ASSERT_EQ(::mknod(device.c_str(), S_IFCHR | 0666, ::makedev(1, 3)), 0);
    }
    const std::string input = Write("in.txt", "abc");

    std::vector<std::vector<std::string>> cases = {
        {"--to", "sjis", fifo},
        {"--detect", fifo},
        {"--to", "sjis", "/dev/zero"},
        {"--to", "sjis", "-o", fifo, input},
    };
    if (!device.empty()) {
        cases.push_back({"--to", "sjis", "-o", device, input});
    }
    for (const std::vector<std::string>& args : cases) {
        SCOPED_TRACE(testing::PrintToString(args));
        ExpectOneErrorLine(Run(args), 1);
    }
    EXPECT_TRUE(fs::is_fifo(fifo));
    if (!device.empty()) {
        EXPECT_TRUE(fs::is_character_file(device));
    }
}

// Room for the error message on standard error, which is a file here too, not for the output.
void LimitFileSize() {
    const rlimit limit{512, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

void LimitFileSizeWithTheSignalIgnored() {
    LimitFileSize();
    std::signal(SIGXFSZ, SIG_IGN);
}

// A full disk or a file-size limit: the old output stays whole and the run says so.
TEST_F(KorvelconvTest, OutputThatDoesNotFitLeavesTheOldFileWhole) {
    std::string text;
    for (int i = 0; i < 20; ++i) {
        text += kSjisText;
    }
    const std::string input = Write("in.txt", text);
    for (void (*limit)() : {LimitFileSize, LimitFileSizeWithTheSignalIgnored}) {
        const std::string output = Write("out.txt", "keep me");
        const RunResult result = Run({"--to", "utf8", "-o", output, input}, std::nullopt, limit);
        ExpectOneErrorLine(result, 1);
        EXPECT_NE(result.err.find(std::strerror(EFBIG)), std::string::npos) << result.err;
        EXPECT_EQ(Read("out.txt"), "keep me");
        EXPECT_EQ(WorkFolderNames(), (std::vector<std::string>{"in.txt", "out.txt"}));
    }
}

// Names are the user's, and may hold anything but '/' and NUL.
TEST_F(KorvelconvTest, DetectWritesControlCharactersInNamesAsEscapes) {
    const std::string path = Write("a\tb\nc\\d\x01.txt", "abc");
    const RunResult result = Run({"--detect", "--raw", path});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::string folder = Path("").string();
    EXPECT_EQ(result.out, folder + "a\\tb\\nc\\\\d\\x01.txt\t0\t3\n");
}

// Stopped while it writes, korvelconv takes its temporary file with it and the old output
// stays; a file it rewrites in place (it has a second hard link) is finished first. Either
// way the output is whole and nothing else is left in the folder.
TEST_F(KorvelconvTest, InterruptedWriteLeavesAWholeOutputAndNoOtherFile) {
    std::string large;
    for (int i = 0; i < (1 << 22); ++i) {
        large += "0123456789abcdef\r\n";
    }
    const std::string input = Write("in.txt", large);
    large.clear();
    const std::string output = Path("out.txt").string();
    ASSERT_EQ(Run({"--to", "unicode", "-o", Path("converted.txt").string(), input}).exitCode, 0);
    const std::string converted = Read("converted.txt");
    fs::remove(Path("converted.txt"));

    for (const bool hardLinked : {false, true}) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            SCOPED_TRACE(std::to_string(signal) + (hardLinked ? " hard-linked" : ""));
            const std::vector<std::string> names =
                hardLinked ? std::vector<std::string>{"in.txt", "out.txt", "second"}
                           : std::vector<std::string>{"in.txt", "out.txt"};
            bool interrupted = false;
            for (int attempt = 0; attempt < 5 && !interrupted; ++attempt) {
                Write("out.txt", "keep me");
                if (hardLinked && !fs::exists(Path("second"))) {
                    fs::create_hard_link(output, Path("second"));
                }
                const std::size_t quiet = names.size();
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
                    if (WorkFolderNames().size() > quiet ||
                        std::chrono::steady_clock::now() > deadline) {
                        ::kill(pid, signal);
                        ::waitpid(pid, &status, 0);
                        interrupted = WIFSIGNALED(status) && WTERMSIG(status) == signal;
                        break;
                    }
                }
                EXPECT_EQ(WorkFolderNames(), names);
            }
            EXPECT_TRUE(interrupted) << "every run finished before it could be stopped";
            const std::string after = Read("out.txt");
            EXPECT_TRUE(after == "keep me" || after == converted) << after.size() << " bytes";
            if (hardLinked) {
                EXPECT_EQ(Read("second"), after);
            }
        }
    }
}

// 32 MiB of text read whole fits; its UTF-16 form does not: the conversion, not the read,
// runs out, and says so in the editor's words.
void LimitAddressSpace() {
    const rlimit limit{80u << 20, 80u << 20};
    ::setrlimit(RLIMIT_AS, &limit);
}

TEST_F(KorvelconvTest, AConversionThatRunsOutOfMemorySaysSoAndWritesNothing) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer's allocator does not survive an address-space limit";
#endif
    std::string text;
    for (int i = 0; i < (1 << 22); ++i) {
        text += "abcdefgh";
    }
    const std::string input = Write("in.txt", text);
    const RunResult result = Run({"--to", "unicode", "-o", Path("out.txt").string(), input},
                                 std::nullopt, LimitAddressSpace);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "korvelconv: メモリー不足が発生しました。\n");
    EXPECT_EQ(WorkFolderNames(), std::vector<std::string>{"in.txt"});
}

TEST_F(KorvelconvTest, HelpGoesToStandardOutput) {
    const RunResult result = Run({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.rfind("Usage: korvelconv", 0), 0u) << result.out;
    EXPECT_EQ(result.err, "");
}

} // namespace
