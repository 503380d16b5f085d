#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace korvel::conv {

// The whole content of one input: a private read-only mapping of a regular file, or the bytes
// read from a pipe, a terminal or an empty file (which cannot be mapped).
class FileBytes {
public:
    // path "-" is standard input. On failure returns nothing and sets error to one line that
    // names the input.
    static std::optional<FileBytes> Read(const std::string& path, std::string& error);

    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) = delete;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes();

    std::span<const std::uint8_t> bytes() const { return {data_, length_}; }

private:
    struct FreeBlock {
        void operator()(std::uint8_t* block) const { std::free(block); }
    };

    FileBytes() = default;

    const std::uint8_t* data_ = nullptr;
    std::size_t length_ = 0;
    bool mapped_ = false;
    std::unique_ptr<std::uint8_t, FreeBlock> readBuffer_;
};

} // namespace korvel::conv
