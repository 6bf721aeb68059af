#pragma once

#include <cstdlib>

namespace dorix {

inline int numberFrom(const char* variable, int otherwise) {
    const char* const told = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    // NOLINTNEXTLINE(bugprone-unchecked-string-to-number-conversion)
    return told == nullptr ? otherwise : std::atoi(told);
}

}  // namespace dorix
