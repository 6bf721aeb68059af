#pragma once

#include "platform/Workspace.h"

#include <string>
#include <string_view>

namespace dorix {

class Accessibility;

/// Whether a blank belongs between a text and the end of what stands before the cursor: not at the beginning
/// of a line, after a blank, or after what opens a bracket, a quotation or an address. Pure, any thread.
bool wantsGap(std::string_view before, std::string_view text);

/// The blank, or nothing, to be put before `text` where the cursor of `app` stands now; nothing where that is
/// not known. Main executor; blocks for a twentieth of a second at most, and mostly a few milliseconds.
std::string gapBefore(std::string_view text, const RunningApplication& app, Accessibility& accessibility);

}  // namespace dorix
