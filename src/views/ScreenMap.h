#pragma once

#include "overlay/Placement.h"
#include "platform/WindowSystem.h"

#include <QPointF>
#include <QRect>

/// Between the core's points, which count upwards from the bottom left of the main screen, and the toolkit's,
/// which count downwards from the top left of all screens.
namespace dorix::screenmap {

/// The screens that are there now. Asks nobody but the toolkit.
Screens current();

/// The same, without what bars take of which the toolkit does not know. Asks the display about every window.
Screens clearOfBars(WindowSystem& windowSystem);

Point fromQt(QPointF point);
Rect fromQt(const QRect& rect);
QRect toQt(const Rect& rect);

}  // namespace dorix::screenmap
