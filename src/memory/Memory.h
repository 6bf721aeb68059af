#pragma once

#include "base/async/Task.h"
#include "memory/recall/Recap.h"
#include "memory/store/MemoryRecords.h"

#include <cstddef>
#include <string>
#include <vector>

namespace dorix {

/// What is asked of the user's memory. Main executor, which nothing here blocks.
class Memory {
 public:
    virtual ~Memory() = default;

    /// What is known about a subject, best first: files by their names, messages, the index. In some seconds
    /// at most; never fails.
    virtual Task<std::vector<MemoryHit>> search(std::string query, std::size_t limit) = 0;

    /// What the user worked on in the last day and a half.
    virtual Task<Recap> recap() = 0;

    /// Whether the user has what they work on noted.
    virtual bool notesActivity() const = 0;

    /// Whether documents are being read, and none has been so far.
    virtual bool isReadingFirst() const = 0;
};

}  // namespace dorix
