#pragma once

#include "localdata/HistoryKind.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// One thing that was written or answered.
struct HistoryItem {
    /// What is known besides; all of it may be absent.
    struct Meta {
        std::optional<std::string> tone;
        std::optional<std::string> engine;
        std::optional<bool> inserted;
        std::optional<std::int64_t> durationMs;
        std::optional<std::string> source;
        std::optional<std::string> context;
        std::optional<std::vector<std::string>> sources;

        bool operator==(const Meta&) const = default;
    };

    std::string id;  // a UUID, made by whoever creates the item
    HistoryKind kind = HistoryKind::dictado;
    std::string app;  // display name of the application in front
    std::optional<std::string> bundleID;
    std::string title;
    double createdAt = 0;  // seconds since 1970
    std::string query;     // what the user said
    std::string answer;    // what was written or answered
    Meta meta;

    bool operator==(const HistoryItem&) const = default;
};

/// A list that grows at its front without moving what it holds.
using HistoryItems = std::deque<HistoryItem>;

}  // namespace dorix
