#include "Command.h"
#include "context/AppContext.h"

namespace dorix::lab {

std::vector<Command> contextCommands() {
    return {
        {"context", R"({"bundleID","localizedName","windowTitle","pageURL"})",
         R"({"displayName","tone","icon","isAIChat"})",
         [](const Json& input) -> Json {
             const auto bundleID = optionalString(input, "bundleID");
             const auto windowTitle = optionalString(input, "windowTitle");
             const auto app = describeApp(bundleID, optionalString(input, "localizedName"), windowTitle);
             return {{"displayName", app.displayName},
                     {"tone", toneName(app.tone)},
                     {"icon", glyphName(app.icon)},
                     {"isAIChat", isAIChat(bundleID, windowTitle, optionalString(input, "pageURL"))}};
         }},
    };
}

}  // namespace dorix::lab
