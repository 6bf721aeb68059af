#pragma once

#include "context/Glyph.h"
#include "dictation/AppState.h"

#include <QString>

namespace dorix {

/// The glyph of the icon font.
QString glyph(PanelSection section);
QString glyph(Ph app);

}  // namespace dorix
