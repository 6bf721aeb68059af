#pragma once

namespace dorix {

/// Whether there is an X display for the toolkit, which ends the program where it finds none. Before its
/// application is made.
bool toolkitFindsDisplay();

/// Whether the toolkit draws on an X display.
bool toolkitDrawsOnX11();

/// Waits until the X server has done all that the toolkit has asked of it. Main thread, where it draws there.
void finishToolkitRequests();

}  // namespace dorix
