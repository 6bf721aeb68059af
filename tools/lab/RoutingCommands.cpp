#include "Command.h"
#include "routing/IntentRules.h"

namespace dorix::lab {

namespace {

Json intents(const Utterance& utterance) {
    using namespace IntentRules;
    return {{"normalised", utterance.normalised()},
            {"isTeach", isTeach(utterance)},
            {"isSearch", isSearch(utterance)},
            {"isAction", isAction(utterance)},
            {"isRecap", isRecap(utterance)},
            {"refersToSelection", refersToSelection(utterance)},
            {"isTransform", isTransform(utterance)},
            {"isReply", isReply(utterance)},
            {"isSelectionCommand", isSelectionCommand(utterance)},
            {"refersToScreen", refersToScreen(utterance)},
            {"isScreenQuestion", isScreenQuestion(utterance)},
            {"meetingStart", matchesMeetingStart(utterance)},
            {"meetingStop", matchesMeetingStop(utterance)},
            {"teachDone", matchesTeachDone(utterance)}};
}

bool isSecret(const Json& input) {
    const auto name = optionalString(input, "name");
    const auto content = optionalString(input, "content");
    if (name.has_value() == content.has_value()) throw BadInput(R"(give either "name" or "content")");
    return name ? IntentRules::isSecretName(*name) : IntentRules::holdsSecret(*content);
}

}  // namespace

std::vector<Command> routingCommands() {
    return {
        {"intent", R"({"transcript"})",
         R"({"normalised","isTeach","isSearch","isAction","isRecap","refersToSelection","isTransform","isReply",)"
         R"("isSelectionCommand","refersToScreen","isScreenQuestion","meetingStart","meetingStop","teachDone"})",
         [](const Json& input) -> Json { return intents(requiredString(input, "transcript")); }},
        {"secret", R"({"name"} or {"content"})", R"({"secret"})",
         [](const Json& input) -> Json { return {{"secret", isSecret(input)}}; }},
    };
}

}  // namespace dorix::lab
