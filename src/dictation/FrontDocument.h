#pragma once

#include "assistant/Assistant.h"
#include "base/async/Task.h"
#include "memory/DocumentReader.h"
#include "platform/Workspace.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace dorix {

class Accessibility;

/// The path that a "file:" address names (RFC 8089); nothing for any other address, or one of another
/// computer. Pure; any thread; takes any bytes.
std::optional<std::filesystem::path> pathOfFileURL(std::string_view url);

/// The document that the front window of `app` shows, if it can be read and its name does not tell of a
/// secret. Never fails. Main executor; may block for one accessibility budget; both references outlive the
/// task.
Task<std::optional<FrontDocument>> readFrontDocument(Accessibility& accessibility, DocumentReader& reader,
                                                     std::optional<RunningApplication> app);

}  // namespace dorix
