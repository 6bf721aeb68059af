#include "context/AppContext.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "context/AppTables.h"
#include "platform/Accessibility.h"

#include <algorithm>

namespace dorix {

namespace {

/// How far up from the focus a page is looked for, the focus included.
constexpr int maxPageDepth = 40;

bool contains(std::span<const std::string_view> list, std::string_view text) {
    return std::ranges::find(list, text) != list.end();
}

const apptables::App* tableRow(const std::optional<std::string>& bundleID) {
    const auto rows = apptables::apps();
    const auto row = std::ranges::find_if(rows, [&](const auto& app) { return app.bundleID == bundleID; });
    return row == rows.end() ? nullptr : &*row;
}

const apptables::Site* siteShownBy(const std::optional<std::string>& windowTitle) {
    if (!windowTitle) return nullptr;
    const std::string title = text::lowercase(*windowTitle);
    for (const auto& site : apptables::sites()) {
        if (std::ranges::any_of(site.keywords, [&](auto word) { return title.contains(word); })) return &site;
    }
    return nullptr;
}

Ph appIcon(const std::optional<std::string>& bundleID) {
    if (isBrowser(bundleID)) return Ph::browser;
    const auto* row = tableRow(bundleID);
    return row ? row->icon : Ph::appWindow;
}

std::optional<std::string> focusedWindowTitle(const AXUIElement& application) {
    const auto window = application.element("AXFocusedWindow");
    if (!window) return std::nullopt;
    const auto title = (*window)->string("AXTitle");
    return title ? std::optional(*title) : std::nullopt;
}

std::optional<bool> isEditable(const AXUIElement& element) {
    const std::string role = element.string("AXRole").value_or("");
    if (isEditableRole(role)) return true;
    if (element.isAttributeSettable("AXValue").value_or(false)) return true;
    if (contains(apptables::neverEditableRoles(), role)) return false;
    return std::nullopt;
}

/// An application that says that nothing has the focus is told apart from one that says nothing.
std::optional<bool> editableFocus(const std::expected<AXValue, AXError>& focused) {
    if (!focused) return focused.error() == AXError::noValue ? std::optional(false) : std::nullopt;
    const auto* element = std::get_if<AXUIElementRef>(&*focused);
    return element && *element ? isEditable(**element) : std::nullopt;
}

bool isPasswordField(const std::expected<AXValue, AXError>& focused) {
    const auto* element = focused ? std::get_if<AXUIElementRef>(&*focused) : nullptr;
    return element && *element && (*element)->string("AXSubrole") == "AXSecureTextField";
}

bool tellsCursor(const std::expected<AXValue, AXError>& focused) {
    const auto* element = focused ? std::get_if<AXUIElementRef>(&*focused) : nullptr;
    return element && *element && (*element)->string("AXTextBeforeCursor").has_value();
}

std::optional<std::string> pageURLAround(const std::expected<AXValue, AXError>& focused) {
    const auto* start = focused ? std::get_if<AXUIElementRef>(&*focused) : nullptr;
    AXUIElementRef element = start ? *start : nullptr;
    for (int depth = 0; element && depth < maxPageDepth; ++depth) {
        if (element->string("AXRole") == "AXWebArea") {
            auto url = element->string("AXURL");
            return url && !url->empty() ? std::optional(std::move(*url)) : std::nullopt;
        }
        element = element->element("AXParent").value_or(nullptr);
    }
    return std::nullopt;
}

AppContext ownContext(const RunningApplication& app) {
    AppContext context;
    context.app = app;
    context.bundleID = app.bundleIdentifier;
    context.displayName = "DORIX";
    context.hasEditableFocus = true;
    return context;
}

}  // namespace

AppDescription describeApp(const std::optional<std::string>& bundleID,
                           const std::optional<std::string>& localizedName,
                           const std::optional<std::string>& windowTitle) {
    const auto* site = isBrowser(bundleID) ? siteShownBy(windowTitle) : nullptr;
    if (site) return {std::string(site->name), site->tone, site->icon};
    const auto* row = tableRow(bundleID);
    return {localizedName.value_or("App"), row ? row->tone : Tone::neutral, appIcon(bundleID)};
}

AppContext captureAppContext(Workspace& workspace, Accessibility& accessibility, OwnField ownField) {
    AppContext context;
    const auto app = workspace.frontmostApplication();
    if (!app || !app->bundleIdentifier) return context;
    if (*app->bundleIdentifier == workspace.ownBundleIdentifier()) {
        // Its accessibility is not asked: it would have to answer meanwhile.
        return ownField == OwnField::yes ? ownContext(*app) : context;
    }
    const auto element = accessibility.createApplication(app->processIdentifier);
    context.app = app;
    context.bundleID = app->bundleIdentifier;
    context.windowTitle = focusedWindowTitle(*element);
    const auto focused = element->copyAttributeValue("AXFocusedUIElement");
    context.hasEditableFocus = editableFocus(focused);
    context.hasSecretFocus = isPasswordField(focused);
    context.tellsCursor = !context.hasSecretFocus && tellsCursor(focused);
    auto description = describeApp(context.bundleID, app->localizedName, context.windowTitle);
    context.displayName = std::move(description.displayName);
    context.tone = description.tone;
    context.icon = description.icon;
    if (isBrowser(context.bundleID)) context.pageURL = pageURLAround(focused);
    return context;
}

bool isAIChat(const std::optional<std::string>& bundleID, const std::optional<std::string>& windowTitle,
              const std::optional<std::string>& pageURL) {
    if (bundleID && contains(apptables::aiChatApps(), *bundleID)) return true;
    if (const auto host = pageURL ? hostOf(*pageURL) : std::nullopt) {
        const auto serves = [&](std::string_view site) {
            return *host == site || host->ends_with("." + std::string(site));
        };
        if (std::ranges::any_of(apptables::aiChatHosts(), serves)) return true;
    }
    const auto* site = siteShownBy(windowTitle);
    return site && site->name == apptables::aiChatSiteName;
}

bool isBrowser(const std::optional<std::string>& bundleID) {
    return bundleID && contains(apptables::browsers(), *bundleID);
}

std::optional<std::string> keptIdentifier(const AppContext& context) {
    return context.app && context.app->systemIdentifier ? context.app->systemIdentifier : context.bundleID;
}

Ph storedRowIcon(std::string_view displayName, const std::optional<std::string>& bundleID) {
    const auto rows = apptables::sites();
    const auto site = std::ranges::find(rows, displayName, &apptables::Site::name);
    return site != rows.end() ? site->icon : appIcon(bundleID);
}

bool isEditableRole(std::string_view role) { return contains(apptables::editableRoles(), role); }

}  // namespace dorix
