#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace korvel::conv {

// The whole content of one input, read into memory: a regular file, or standard input of any
// kind up to kStandardInputLimit. The file is read, not mapped, so one that another program
// cuts short while it is converted gives shorter text instead of a crash.
class FileBytes {
public:
    // A pipe or a device read as standard input stops here instead of filling memory.
    static constexpr std::size_t kStandardInputLimit = std::size_t{1} << 30;

    // path "-" is standard input; any other path must name a regular file (a pipe would wait
    // for a writer, a device may never end). On failure returns nothing and sets error to one
    // line that names the input.
    static std::optional<FileBytes> Read(const std::string& path, std::string& error);

    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) = delete;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes() = default;

    std::span<const std::uint8_t> bytes() const { return {readBuffer_.get(), length_}; }

private:
    struct FreeBlock {
        void operator()(std::uint8_t* block) const { std::free(block); }
    };

    FileBytes() = default;

    std::size_t length_ = 0;
    std::unique_ptr<std::uint8_t, FreeBlock> readBuffer_;
};

} // namespace korvel::conv
