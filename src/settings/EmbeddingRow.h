#pragma once

#include "memory/embedding/EmbeddingModel.h"
#include "settings/SettingsRow.h"

#include <cstdint>
#include <functional>
#include <string>

namespace dorix {

/// The model by which texts of like meaning are found: how it is put on this computer and taken away again.
/// Main executor.
class EmbeddingRow {
 public:
    /// The model must outlive it. `changed` is called when the row is another than it was.
    EmbeddingRow(EmbeddingModel& model, std::function<void()> changed);

    /// Looks at the disk, some milliseconds.
    void lookAnew();
    SettingsRow row();
    /// Gives up what waits for the user's second word; whether there was anything.
    bool stepBack();

 private:
    void describe(SettingsRow& row) const;
    void press(const std::string& button);

    EmbeddingModel& model_;
    const std::function<void()> changed_;
    std::uint64_t toFetch_ = 0;  // bytes
    std::uint64_t size_ = 0;     // bytes
    bool isRemoval_ = false;     // waits for the user's second word
    Subscription changes_;
};

}  // namespace dorix
