#pragma once

// Which instruction sets beyond the x86-64 baseline (SSE2) the block loops may use, read from
// the CPU once. Code that uses them is compiled for them with target attributes, not for the
// whole build, so that one binary runs on any x86-64 machine. The fuzz replay and the tests clear
// the flags, the widest first, to hold each narrower path against the same inputs.

namespace korvel::detail {

struct VectorSupport {
    bool ssse3 = false;
    bool avx2 = false; // with popcnt, which every AVX2 machine has
    // AVX-512 with byte and word lanes and the compress instructions (BW, VBMI2): a block's
    // characters are packed in one step instead of one at a time.
    bool avx512 = false;
};

inline VectorSupport& Vectors() {
    static VectorSupport support = [] {
        VectorSupport found;
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
        found.ssse3 = __builtin_cpu_supports("ssse3");
        found.avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
        found.avx512 = found.avx2 && __builtin_cpu_supports("avx512bw") &&
                       __builtin_cpu_supports("avx512vbmi2");
#endif
        return found;
    }();
    return support;
}

} // namespace korvel::detail
