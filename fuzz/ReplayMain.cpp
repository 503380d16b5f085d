// Runs a fuzz target's checks over the files it is given, or over every file in the folders it
// is given: the targets' properties then run in the ordinary test suite over their seeds, and
// an input a fuzzer once broke stays a test as a seed file.
// With --every-cut first, each input also runs cut at every length from either end, so that
// the fast paths meet the end of the data at every offset of their blocks.

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsIn(const fs::path& argument) {
    if (!fs::is_directory(argument)) {
        return {argument};
    }
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry : fs::directory_iterator(argument)) {
        if (entry.is_regular_file()) {
            inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

// Which cut of the input is running, for the report of a check that aborts.
char gCut[64] = "";

extern "C" void NameTheCut(int) {
    static_cast<void>(write(STDERR_FILENO, gCut, std::strlen(gCut)));
}

// A block of exactly the input's size, so that the sanitizers see any read past its end.
void Run(const std::uint8_t* bytes, std::size_t size, std::size_t from) {
    std::snprintf(gCut, sizeof gCut, "cut: bytes %zu to %zu\n", from, from + size);
    const auto copy = std::make_unique<std::uint8_t[]>(size);
    std::copy(bytes, bytes + size, copy.get());
    LLVMFuzzerTestOneInput(copy.get(), size);
}

} // namespace

int main(int argc, char** argv) {
    const bool everyCut = argc > 1 && std::strcmp(argv[1], "--every-cut") == 0;
    std::signal(SIGABRT, NameTheCut);
    int replayed = 0;
    for (int i = everyCut ? 2 : 1; i < argc; ++i) {
        for (const fs::path& input : InputsIn(argv[i])) {
            std::ifstream file(input, std::ios::binary);
            if (!file) {
                std::fprintf(stderr, "cannot read %s\n", input.c_str());
                return 1;
            }
            const std::vector<char> contents{std::istreambuf_iterator<char>(file), {}};
            const std::vector<std::uint8_t> bytes(contents.begin(), contents.end());
            // A failed check aborts, naming the property; this line names the input.
            std::fprintf(stderr, "%s\n", input.c_str());
            Run(bytes.data(), bytes.size(), 0);
            for (std::size_t cut = 0; everyCut && cut < bytes.size(); ++cut) {
                Run(bytes.data(), cut, 0);
                Run(bytes.data() + cut + 1, bytes.size() - cut - 1, cut + 1);
            }
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    // No input at all means the seeds went missing, which must not pass for a clean run.
    return replayed > 0 ? 0 : 1;
}
