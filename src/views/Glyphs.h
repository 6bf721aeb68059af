#pragma once

#include "dictation/AppState.h"
#include "dictation/context/Glyph.h"

#include <QString>

namespace dorix {

/// The glyph of the icon font.
QString glyph(PanelSection section);
QString glyph(Ph app);

}  // namespace dorix
