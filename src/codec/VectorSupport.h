#pragma once

// Which instruction sets beyond the x86-64 baseline (SSE2) the block loops may use, read from
// the CPU once. Code that uses them is compiled for them with target attributes, not for the
// whole build, so that one binary runs on any x86-64 machine. The fuzz replay and the tests clear
// the flags to hold the portable loops against the same inputs.

namespace korvel::detail {

struct VectorSupport {
    bool ssse3 = false;
    bool avx2 = false; // with popcnt, which every AVX2 machine has
};

inline VectorSupport& Vectors() {
    static VectorSupport support = [] {
        VectorSupport found;
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
        found.ssse3 = __builtin_cpu_supports("ssse3");
        found.avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
#endif
        return found;
    }();
    return support;
}

} // namespace korvel::detail
