// korvel_floor: the cheapest whole process that does what a conversion must do to its bytes and
// nothing else. It takes the input into memory (read into a fresh buffer, or mapped), writes
// every byte of a fresh output block of the given size from it, and writes that block to
// standard output. compare.sh times it beside korvelconv, so that the table shows how much of
// a conversion's time the machine takes before any character is converted.
//
// Usage: korvel_floor read|map FILE OUTPUT_BYTES

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int Fail(const char* what) {
    std::fprintf(stderr, "korvel_floor: %s: %s\n", what, std::strerror(errno));
    return 1;
}

// A fresh block in huge pages, as korvelconv asks for its large blocks: a fault then zeroes
// 2 MiB at a time instead of 4 KiB.
std::uint8_t* FreshBlock(std::size_t size) {
    constexpr std::size_t kHugePage = std::size_t{2} << 20;
    const std::size_t rounded = (size / kHugePage + 1) * kHugePage;
    void* block = std::aligned_alloc(kHugePage, rounded);
    if (block != nullptr) {
        ::madvise(block, rounded, MADV_HUGEPAGE);
    }
    return static_cast<std::uint8_t*>(block);
}

const std::uint8_t* ReadWhole(int fd, std::size_t size) {
    std::uint8_t* buffer = FreshBlock(size);
    std::size_t length = 0;
    while (buffer != nullptr && length < size) {
        const ssize_t count = ::read(fd, buffer + length, size - length);
        if (count <= 0) {
            return nullptr;
        }
        length += static_cast<std::size_t>(count);
    }
    return buffer;
}

const std::uint8_t* MapWhole(int fd, std::size_t size) {
    void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
    return mapping == MAP_FAILED ? nullptr : static_cast<const std::uint8_t*>(mapping);
}

} // namespace

int main(int argc, char** argv) {
    char* end = nullptr;
    const unsigned long long outputBytes = argc == 4 ? std::strtoull(argv[3], &end, 10) : 0;
    const std::string_view mode = argc == 4 ? argv[1] : "";
    if ((mode != "read" && mode != "map") || end == nullptr || *end != '\0') {
        std::fputs("usage: korvel_floor read|map FILE OUTPUT_BYTES\n", stderr);
        return 2;
    }
    const int fd = ::open(argv[2], O_RDONLY | O_CLOEXEC);
    struct stat info {};
    if (fd < 0 || ::fstat(fd, &info) != 0) {
        return Fail(argv[2]);
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    const std::uint8_t* input = size == 0       ? nullptr
                                : mode == "map" ? MapWhole(fd, size)
                                                : ReadWhole(fd, size);
    if (size != 0 && input == nullptr) {
        return Fail(argv[2]);
    }
    // The output is made from the input, a page at a time, so that every output page is
    // touched once, as a converter's would be, at memory speed.
    std::uint8_t* output = FreshBlock(outputBytes);
    if (output == nullptr) {
        return Fail("output");
    }
    constexpr std::size_t kPage = 4096;
    for (std::size_t done = 0; done < outputBytes; done += kPage) {
        const std::size_t count = std::min<std::size_t>(kPage, outputBytes - done);
        const std::size_t from = size == 0 ? 0 : done % size;
        if (size == 0 || from + count > size) {
            std::memset(output + done, 'x', count);
        } else {
            std::memcpy(output + done, input + from, count);
        }
    }
    for (std::size_t written = 0; written < outputBytes;) {
        const ssize_t count = ::write(STDOUT_FILENO, output + written, outputBytes - written);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return Fail("standard output");
        }
        written += static_cast<std::size_t>(count);
    }
    return 0;
}
