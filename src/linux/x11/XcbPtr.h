#pragma once

#include <cstdlib>
#include <memory>

namespace dorix {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

/// What xcb allocates and leaves to the caller: replies, errors, events. Null for a request that failed.
template <typename T>
using XcbPtr = std::unique_ptr<T, FreeMemory>;

}  // namespace dorix
