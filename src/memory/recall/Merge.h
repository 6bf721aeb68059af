#pragma once

#include "memory/store/MemoryRecords.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace dorix {

/// What was found, by where it was looked for.
struct FoundMemory {
    std::vector<MemoryHit> names;  // of files
    std::vector<MemoryHit> slack;
    std::vector<MemoryHit> index;
};

/// All of it in one list, without what comes twice: files by their names, messages, the index. A question
/// that speaks of the connected workspace gets its messages alone. `limit` is of those that are no messages.
/// Any thread.
std::vector<MemoryHit> merged(FoundMemory found, std::string_view query, std::size_t limit,
                              bool isSlackConnected);

/// Whether a question speaks of the workspace's messages.
bool speaksOfSlack(std::string_view query);

}  // namespace dorix
