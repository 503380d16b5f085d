#pragma once

#include "codec/VectorSupport.h"

namespace korvel::testing {

// Runs check with the vector loops the CPU has, then without AVX-512 (where it had it), then
// with the portable loops, so that every input holds each level against the same judge.
template <typename Check> void ForEachVectorLevel(Check check) {
    detail::VectorSupport& vectors = detail::Vectors();
    const detail::VectorSupport found = vectors;
    check();
    if (found.avx512) {
        vectors.avx512 = false;
        check();
    }
    vectors = detail::VectorSupport{};
    check();
    vectors = found;
}

} // namespace korvel::testing
