#pragma once

#include "codec/VectorSupport.h"

#include <cstdio>
#include <cstdlib>

namespace korvel::fuzz {

// A broken property is a finding like a crash: libFuzzer keeps the input that aborted.
inline void Require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "property broken: %s\n", property);
        std::abort();
    }
}

// Runs check with the vector loops the CPU has, then with the portable loops, so that every
// input holds both against the same model.
template <typename Check> void ForEachVectorLevel(Check check) {
    detail::VectorSupport& vectors = detail::Vectors();
    const detail::VectorSupport found = vectors;
    check();
    vectors = detail::VectorSupport{};
    check();
    vectors = found;
}

} // namespace korvel::fuzz
