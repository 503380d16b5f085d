#pragma once

#include "VectorLevels.h"

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

using testing::ForEachVectorLevel;

} // namespace korvel::fuzz
