#include "Command.h"

namespace dorix::lab {

std::vector<Command> languageCommands() {
    return {
        {"tr", R"({"text","language"})", R"({"text"})",
         [](const Json& input) -> Json {
             const AppLanguage language(requiredString(input, "language"));
             return {{"text", tr(requiredString(input, "text"))}};
         }},
        {"number", R"({"value","language"})", R"({"text"})",
         [](const Json& input) -> Json {
             const AppLanguage language(requiredString(input, "language"));
             return {{"text", formatNumber(requiredInteger(input, "value"))}};
         }},
    };
}

}  // namespace dorix::lab
