#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the user did with an utterance.
enum class HistoryKind { dictado, screen, seleccion, pregunta, reunion, busqueda, accion };

inline constexpr std::array allHistoryKinds{
    HistoryKind::dictado, HistoryKind::screen,   HistoryKind::seleccion, HistoryKind::pregunta,
    HistoryKind::reunion, HistoryKind::busqueda, HistoryKind::accion};

/// The name under which a kind is stored; the other way gives nothing for a name that is unknown.
std::string_view storedName(HistoryKind kind);
std::optional<HistoryKind> historyKind(std::string_view storedName);

/// The kind's name for people, and the heading above what they said, in the app language. Any thread.
std::string label(HistoryKind kind);
std::string questionTitle(HistoryKind kind);

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
    std::string app;                      // display name of the application in front
    std::optional<std::string> bundleID;  // the system's own name of the application
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
