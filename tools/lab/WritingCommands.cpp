#include "Command.h"
#include "base/writing/Faithfulness.h"
#include "writing/BasicPolisher.h"

namespace dorix::lab {

std::vector<Command> writingCommands() {
    return {
        {"polish-basic", R"({"transcript","language"})", R"({"title","text"})",
         [](const Json& input) -> Json {
             const AppLanguage language(languageOf(input));
             const auto result = BasicPolisher().polished(requiredString(input, "transcript"));
             return {{"title", result.title}, {"text", result.text}};
         }},
        {"title", R"({"text","language"?})", R"({"title"})",
         [](const Json& input) -> Json {
             const AppLanguage language(languageOf(input));
             return {{"title", titleFrom(requiredString(input, "text"))}};
         }},
        {"faithfulness", R"({"produced","dictated"})", R"({"score"})",
         [](const Json& input) -> Json {
             return {{"score", faithfulnessScore(requiredString(input, "produced"),
                                                 requiredString(input, "dictated"))}};
         }},
    };
}

}  // namespace dorix::lab
