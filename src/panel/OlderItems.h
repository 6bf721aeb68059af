#pragma once

#include "base/Observable.h"
#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "dictation/AppState.h"
#include "localdata/HistoryStore.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

namespace dorix {

/// Looks for the panel's search text in what the history's file holds beyond the list in memory, once the
/// user pauses in typing it, and lists what it finds. The file is read on a thread of its own. Main executor.
class OlderItems {
 public:
    /// What a search lists at most.
    static constexpr std::size_t limit = 100;

    /// All must outlive it.
    OlderItems(Executor& executor, AppState& state, HistoryStore& history, std::filesystem::path database);
    ~OlderItems();
    OlderItems(const OlderItems&) = delete;
    OlderItems& operator=(const OlderItems&) = delete;

 private:
    void begin();
    void stop();
    Task<void> search(std::string folded, std::stop_token stop);

    AppState& state_;
    HistoryStore& history_;
    const std::filesystem::path database_;
    Timer pause_;
    std::stop_source stop_;
    std::vector<Subscription> subscriptions_;
    std::optional<SerialExecutor> disk_;  // from the first search
    TaskScope tasks_;
};

}  // namespace dorix
