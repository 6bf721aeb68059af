#pragma once

#include "assistant/Assistant.h"
#include "base/async/Task.h"
#include "memory/DocumentReader.h"
#include "platform/Workspace.h"

#include <optional>

namespace dorix {

class Accessibility;

/// The document that the front window of `app` shows, if it can be read and its name does not tell of a
/// secret. Never fails. Main executor; may block for one accessibility budget; both references outlive the
/// task.
Task<std::optional<FrontDocument>> readFrontDocument(Accessibility& accessibility, DocumentReader& reader,
                                                     std::optional<RunningApplication> app);

}  // namespace dorix
