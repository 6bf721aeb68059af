#pragma once

#include <QCoreApplication>
#include <memory>

namespace dorix {

/// The toolkit's application: one that draws where there is a display for it, and a mute one elsewhere, so
/// that the program starts in any case. Before anything else of the toolkit; on the main thread.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool hasDisplay);

/// Whether windows can be made.
bool canDraw();

}  // namespace dorix
