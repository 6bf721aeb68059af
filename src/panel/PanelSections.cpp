#include "panel/PanelSections.h"

#include "localdata/Language.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace dorix {

namespace {

using Kind = HistoryKind;

struct Row {
    PanelSection section;
    std::string_view label;
    std::span<const Kind> kinds;
};

constexpr std::array dictations{Kind::dictado};
constexpr std::array questions{Kind::screen, Kind::seleccion, Kind::pregunta};
constexpr std::array meetings{Kind::reunion};
constexpr std::array searches{Kind::busqueda};
constexpr std::array actions{Kind::accion};

constexpr std::array rows{
    Row{PanelSection::todo, "Historial", allHistoryKinds}, Row{PanelSection::dictado, "Dictados", dictations},
    Row{PanelSection::preguntas, "Preguntas", questions},  Row{PanelSection::reunion, "Reuniones", meetings},
    Row{PanelSection::busqueda, "Memoria", searches},      Row{PanelSection::accion, "Acciones", actions},
};

const Row& rowOf(PanelSection section) { return *std::ranges::find(rows, section, &Row::section); }

}  // namespace

std::string label(PanelSection section) { return tr(rowOf(section).label); }

bool shows(PanelSection section, HistoryKind kind) {
    const auto kinds = rowOf(section).kinds;
    return std::ranges::find(kinds, kind) != kinds.end();
}

}  // namespace dorix
