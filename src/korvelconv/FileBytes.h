#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace korvel::conv {

// The whole content of one input: a regular file, or standard input of any kind up to
// kStandardInputLimit. Read copies the bytes into memory. Map maps a named regular file
// instead, which spares zeroing as many fresh pages and copying the file into them, but a
// mapped file that another program cuts short takes its pages along: touching them raises
// SIGBUS. So mapped bytes are only touched inside Guarded,
// and a pass that lost pages is run again over the file read afresh; the output is then the
// shorter file's, as with Read, and never a crash.
class FileBytes {
public:
    // A pipe or a device read as standard input stops here instead of filling memory.
    static constexpr std::size_t kStandardInputLimit = std::size_t{1} << 30;

    // path "-" is standard input; any other path must name a regular file (a pipe would wait
    // for a writer, a device may never end). On failure returns nothing and sets error to one
    // line that names the input.
    static std::optional<FileBytes> Read(const std::string& path, std::string& error);
    // As Read, but a non-empty named file is mapped read-only.
    static std::optional<FileBytes> Map(const std::string& path, std::string& error);

    FileBytes(FileBytes&& other) noexcept;
    FileBytes& operator=(FileBytes&& other) noexcept;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    ~FileBytes();

    std::span<const std::uint8_t> bytes() const { return {data_, length_}; }

    // Runs pass, the only place where mapped bytes may be touched (and never by a system
    // call: the kernel answers a vanished page with EFAULT, which no guard sees). Returns
    // false when the file shrank under its mapping during the pass: the lost pages read as
    // zeros from then on, so whatever pass made from them must be thrown away.
    template <typename Pass> bool Guarded(Pass&& pass) const {
        if (!mapped_) {
            pass();
            return true;
        }
        const BusErrorGuard guard(data_, length_);
        pass();
        return guard.Intact();
    }

private:
    // While it lives, SIGBUS on the given bytes puts zero pages in place of the lost ones.
    // One at a time: korvelconv has one input open.
    class BusErrorGuard {
    public:
        BusErrorGuard(const std::uint8_t* data, std::size_t length);
        BusErrorGuard(const BusErrorGuard&) = delete;
        BusErrorGuard& operator=(const BusErrorGuard&) = delete;
        ~BusErrorGuard();
        bool Intact() const;
    };

    FileBytes() = default;
    static std::optional<FileBytes> Open(const std::string& path, bool mayMap, std::string& error);

    const std::uint8_t* data_ = nullptr;
    std::size_t length_ = 0;
    bool mapped_ = false; // else data_ is malloc'd (or null)
};

} // namespace korvel::conv
