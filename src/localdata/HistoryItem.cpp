#include "localdata/HistoryItem.h"

#include "localdata/Language.h"

#include <algorithm>

namespace dorix {

namespace {

struct Row {
    HistoryKind kind;
    std::string_view storedName;
    std::string_view label;
    std::string_view questionTitle;
};

// The names of the two ways to ask stand in English in both languages: there is no translation for them.
constexpr std::array rows{
    Row{HistoryKind::dictado, "dictado", "Dictado", "Lo que dijiste"},
    Row{HistoryKind::screen, "screen", "Ask Screen", "Pregunta"},
    Row{HistoryKind::seleccion, "seleccion", "Ask Selection", "Sobre la selección"},
    Row{HistoryKind::pregunta, "pregunta", "Pregunta", "Pregunta"},
    Row{HistoryKind::reunion, "reunion", "Reunión", "Reunión"},
    Row{HistoryKind::busqueda, "busqueda", "Búsqueda", "Buscaste"},
    Row{HistoryKind::accion, "accion", "Acción", "Pediste"},
};

const Row& rowOf(HistoryKind kind) { return *std::ranges::find(rows, kind, &Row::kind); }

}  // namespace

std::string_view storedName(HistoryKind kind) { return rowOf(kind).storedName; }

std::optional<HistoryKind> historyKind(std::string_view storedName) {
    const auto* row = std::ranges::find(rows, storedName, &Row::storedName);
    if (row == rows.end()) return std::nullopt;
    return row->kind;
}

std::string label(HistoryKind kind) { return tr(rowOf(kind).label); }

std::string questionTitle(HistoryKind kind) { return tr(rowOf(kind).questionTitle); }

}  // namespace dorix
