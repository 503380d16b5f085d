#pragma once

// Replacing a file's whole content so that nothing is ever lost: either the file ends up with
// the complete new bytes, or it stays exactly as it was (bytes, mode, owner, group, links).
// Shared by the editor, korvelconv and everything else that writes a user's file.

#include <cstdint>
#include <span>
#include <string>

namespace korvel {

// Output bytes in pieces (a mark, then the body), written in order without joining them.
using ByteParts = std::span<const std::span<const std::uint8_t>>;

enum class ReplaceFailure {
    None,
    Folder,         // the path names a folder
    NotRegularFile, // a pipe, a device or a socket: a file in its place would break its users
    System,         // systemError says why; the file is as it was
};

struct ReplaceOutcome {
    ReplaceFailure failure = ReplaceFailure::None;
    int systemError = 0; // an errno value, with System
    // Set only when a file rewritten in place could not be put back after a failure: the name
    // of the synced copy of its old bytes, left for the user.
    std::string keptCopy;
    bool succeeded() const { return failure == ReplaceFailure::None; }
};

// Writes parts as the whole content of path. Symbolic links are followed and stay links; a
// dangling one gets its target created. The bytes go to a new file in the same folder, which
// is given the old file's mode, owner, group and extended attributes (ACLs), synced and renamed
// over the old one. Where the new file cannot be given all of them (another user's
// group-writable file), or the file has other hard links, the file is rewritten in place
// instead, after a synced copy of its old bytes is made beside it to put back on a failure.
ReplaceOutcome ReplaceFileContents(const std::string& path, ByteParts parts) noexcept;

// Writes every byte of parts to fd from its current offset, resuming short writes.
bool WriteAllBytes(int fd, ByteParts parts);

// For the whole process, once at start: a write past the file-size limit fails with EFBIG
// instead of killing the process, and SIGINT, SIGTERM, SIGHUP and SIGQUIT remove a temporary
// file of a replacement under way, or wait for a file rewritten in place to be whole, before
// the process ends as it would have.
void ProtectFileReplacementFromSignals();

} // namespace korvel
