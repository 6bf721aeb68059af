#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

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

}  // namespace dorix
