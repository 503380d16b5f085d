#pragma once

// While alive, files this process writes may not grow past a few bytes, and a write that tries
// fails with EFBIG instead of killing the process: what a full disk does to a save, on demand.

#include <csignal>
#include <sys/resource.h>

namespace korvel::testing {

class ScopedFileSizeLimit {
public:
    explicit ScopedFileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &previousLimit_);
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, previousLimit_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ScopedFileSizeLimit(const ScopedFileSizeLimit&) = delete;
    ScopedFileSizeLimit& operator=(const ScopedFileSizeLimit&) = delete;
    ~ScopedFileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previousLimit_);
        std::signal(SIGXFSZ, previousHandler_);
    }

private:
    rlimit previousLimit_{};
    void (*previousHandler_)(int) = SIG_DFL;
};

} // namespace korvel::testing
