#pragma once

#include "dictation/AppState.h"
#include "localdata/HistoryItem.h"

#include <array>
#include <string>

namespace dorix {

/// In the order of the sidebar.
inline constexpr std::array allPanelSections{PanelSection::todo,      PanelSection::dictado,
                                             PanelSection::preguntas, PanelSection::reunion,
                                             PanelSection::busqueda,  PanelSection::accion};

/// The section's name for people, in the app language. Any thread.
std::string label(PanelSection section);

/// Whether items of that kind are listed in the section.
bool shows(PanelSection section, HistoryKind kind);

}  // namespace dorix
