#pragma once

#include "dictation/Collaborators.h"
#include "localdata/HistoryStore.h"

namespace dorix {

/// Keeps in the history, and in its file, what the dictation flow wrote. Main executor.
class HistoryRecorder final : public DictationHistory {
 public:
    /// The store must outlive this.
    explicit HistoryRecorder(HistoryStore& store) : store_(store) {}

    const HistoryItems& items() const override { return store_.items(); }
    void add(HistoryItem item) override { store_.add(item, HistoryStore::Persist::yes); }

 private:
    HistoryStore& store_;
};

}  // namespace dorix
