// Runs a fuzz target's checks over the files it is given, or over every file in the folders it
// is given: the targets' properties then run in the ordinary test suite over their seeds, and
// an input a fuzzer once broke stays a test as a seed file.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsIn(const fs::path& argument) {
    std::vector<fs::path> inputs;
    if (!fs::is_directory(argument)) {
        inputs.push_back(argument);
        return inputs;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(argument)) {
        if (entry.is_regular_file()) {
            inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

} // namespace

int main(int argc, char** argv) {
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& input : InputsIn(argv[i])) {
            std::ifstream file(input, std::ios::binary);
            if (!file) {
                std::fprintf(stderr, "cannot read %s\n", input.c_str());
                return 1;
            }
            // An exact-size buffer, so that the sanitizers see any read past the input.
            const std::vector<char> contents{std::istreambuf_iterator<char>(file), {}};
            std::vector<std::uint8_t> bytes(contents.begin(), contents.end());
            // A failed check aborts, naming the property; this line names the input.
            std::fprintf(stderr, "%s\n", input.c_str());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    // No input at all means the seeds went missing, which must not pass for a clean run.
    return replayed > 0 ? 0 : 1;
}
