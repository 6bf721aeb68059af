#pragma once

#include "context/Glyph.h"
#include "context/Tone.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix {

class Accessibility;
class AXUIElement;

/// What the user was working in when it was captured. As it stands it is the placeholder: nothing is in
/// front, or this application itself is.
struct AppContext {
    std::optional<RunningApplication> app;
    std::optional<std::string> bundleID;
    /// A name for people: a site, the application, "App" or "Escritorio".
    std::string displayName = "Escritorio";
    std::optional<std::string> windowTitle;
    Tone tone = Tone::neutral;
    Ph icon = Ph::appWindow;
    /// Whether the cursor stands where text can be typed; none for unknown.
    std::optional<bool> hasEditableFocus;
    /// Whether it stands where a password goes.
    bool hasSecretFocus = false;
    /// Whether the place tells what stands before the cursor.
    bool tellsCursor = false;
    /// Of a browser only.
    std::optional<std::string> pageURL;

    bool operator==(const AppContext&) const = default;
};

/// What the tables tell of an application and the site that its window shows.
struct AppDescription {
    std::string displayName;
    Tone tone = Tone::neutral;
    Ph icon = Ph::appWindow;

    bool operator==(const AppDescription&) const = default;
};

/// Pure, any thread.
AppDescription describeApp(const std::optional<std::string>& bundleID,
                           const std::optional<std::string>& localizedName,
                           const std::optional<std::string>& windowTitle);

/// Whether a field of this application itself takes what is dictated.
enum class OwnField { no, yes };

/// A snapshot of the application in front. Never fails: what cannot be had is left open. Main executor; may
/// block for one accessibility budget.
AppContext captureAppContext(Workspace& workspace, Accessibility& accessibility,
                             OwnField ownField = OwnField::no);

/// Whether the user is talking to another assistant, where words are typed as they are. Pure, any thread.
bool isAIChat(const std::optional<std::string>& bundleID, const std::optional<std::string>& windowTitle,
              const std::optional<std::string>& pageURL);

/// Pure, any thread.
bool isBrowser(const std::optional<std::string>& bundleID);

/// The identifier that the history keeps of an application: the system's own where it tells one. Pure, any
/// thread.
std::optional<std::string> keptIdentifier(const AppContext& context);

/// The icon of a history row, which keeps a name and an identifier only. Pure, any thread.
Ph storedRowIcon(std::string_view displayName, const std::optional<std::string>& bundleID);

/// Whether the role is that of a place to type in. Pure, any thread.
bool isEditableRole(std::string_view role);

}  // namespace dorix
