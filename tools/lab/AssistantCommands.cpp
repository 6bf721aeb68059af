#include "Command.h"
#include "assistant/AnswerText.h"
#include "assistant/AskBody.h"
#include "assistant/DevicePrompt.h"

namespace dorix::lab {

namespace {

std::vector<MemoryHit> hitsIn(const Json& request) {
    std::vector<MemoryHit> hits;
    for (const auto& hit : request.value("memory", Json::array())) {
        hits.push_back({.path = {},
                        .title = requiredString(hit, "title"),
                        .text = requiredString(hit, "text"),
                        .modified = requiredNumber(hit, "modified"),
                        .kind = "file"});
    }
    return hits;
}

Assistant::Request requestIn(const Json& input) {
    const Json given = optionalObject(input, "request");
    if (given.is_null()) throw BadInput(R"(field "request" must be an object)");
    Assistant::Request request{.question = requiredString(given, "question"),
                               .mode = optionalString(given, "mode"),
                               .memory = hitsIn(given),
                               .recap = optionalString(given, "recap"),
                               .transcript = optionalString(given, "transcript"),
                               .meetingTitle = optionalString(given, "meetingTitle")};
    request.context.displayName = optionalString(given, "appName").value_or("");
    request.context.windowTitle = optionalString(given, "windowTitle");
    if (auto selection = optionalString(given, "selection"))
        request.selection = SelectedText{.text = *std::move(selection), .editable = {}};
    if (const Json document = optionalObject(given, "document"); !document.is_null())
        request.document = FrontDocument{requiredString(document, "name"), requiredString(document, "text")};
    if (optionalBoolean(given, "hasScreenshot").value_or(false)) request.shot.emplace();
    return request;
}

Json bodyFor(const Json& input) {
    auto body = askBody(requestIn(input));
    if (body.contains("screenshot")) body["screenshot"] = "…";
    return {{"body", std::move(body)}};
}

Json promptFor(const Json& input) {
    const auto request = requestIn(input);
    std::optional<std::string> screenText;
    if (request.shot) screenText = optionalString(input, "screenText").value_or("");
    return {{"system", answerInstructions(request)}, {"prompt", answerPrompt(request, screenText)}};
}

}  // namespace

std::vector<Command> assistantCommands() {
    constexpr std::string_view request =
        R"({"request":{"question","appName"?,"windowTitle"?,"selection"?,"document":{"name","text"}?,"mode"?,)"
        R"("recap"?,"transcript"?,"meetingTitle"?,"memory":[{"title","text","modified"}...]?,"hasScreenshot"?}})";
    return {
        {"ask-body", request, R"({"body"}, with "…" for the screenshot)", bodyFor},
        {"ask-prompt", R"({"request": as for ask-body,"screenText"?})", R"({"system","prompt"})", promptFor},
        {"strip-quotes", R"({"text"})", R"({"text"})",
         [](const Json& input) -> Json { return {{"text", withoutQuotes(requiredString(input, "text"))}}; }},
        {"strip-marks", R"({"text"})", R"({"text"})",
         [](const Json& input) -> Json { return {{"text", withoutMarks(requiredString(input, "text"))}}; }},
    };
}

}  // namespace dorix::lab
