#pragma once

#include "context/Glyph.h"
#include "dictation/AppState.h"
#include "panel/PanelVerbs.h"

#include <QString>

namespace dorix {

/// The glyph of the icon font.
QString glyph(PanelSection section);
QString glyph(Ph app);
QString glyph(VerbMark mark);

}  // namespace dorix
