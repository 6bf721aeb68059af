#pragma once

#include "base/async/Task.h"
#include "memory/store/MemoryRecords.h"

#include <string>
#include <vector>

namespace dorix {

/// Searches the messages of the user's workspaces. Main executor.
class MessageSearch {
 public:
    virtual ~MessageSearch() = default;

    /// Whether a workspace is connected.
    virtual bool isConnected() const = 0;
    /// The names of the workspaces that are searched.
    virtual std::vector<std::string> workspaces() const = 0;
    /// Throws an Error where that fails.
    virtual Task<std::vector<MemoryHit>> search(std::string question) = 0;
};

}  // namespace dorix
