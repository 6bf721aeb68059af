#include "Command.h"
#include "base/Log.h"
#include "fakes/writing/WritingBench.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace dorix::lab {

namespace {

using Availability = SystemLanguageModel::Availability;

constexpr std::array allTones{Tone::informal,     Tone::profesional, Tone::cercano, Tone::comunicativo,
                              Tone::estructurado, Tone::tecnico,     Tone::neutral};

Tone toneOf(const Json& request) {
    const auto name = optionalString(request, "tone").value_or("neutral");
    const auto* found = std::ranges::find(allTones, name, toneName);
    if (found == allTones.end()) throw BadInput(R"(field "tone" names no tone)");
    return *found;
}

PolishRequest requestOf(const Json& input) {
    const Json given = optionalObject(input, "request");
    if (given.is_null()) throw BadInput(R"(field "request" must be an object)");
    PolishRequest request{.transcript = requiredString(given, "transcript"),
                          .appName = optionalString(given, "appName").value_or(""),
                          .windowTitle = optionalString(given, "windowTitle"),
                          .tone = toneOf(given),
                          .signatureName = optionalString(given, "signatureName").value_or(""),
                          .editableFocus = optionalBoolean(given, "editableFocus"),
                          .styleNotes = optionalString(given, "styleNotes").value_or("")};
    if (const auto picture = optionalString(given, "screenshot"))
        request.screenshot = bytesOf("screenshot", *picture);
    for (const auto& example : given.value("styleExamples", Json::array()))
        request.styleExamples.push_back(example.get<std::string>());
    return request;
}

Availability availabilityOf(const Json& model) {
    constexpr std::array<std::pair<std::string_view, Availability>, 4> names{
        {{"available", Availability::available},
         {"deviceNotEligible", Availability::deviceNotEligible},
         {"appleIntelligenceNotEnabled", Availability::appleIntelligenceNotEnabled},
         {"modelNotReady", Availability::modelNotReady}}};
    const auto name = requiredString(model, "availability");
    const auto* found = std::ranges::find(names, name, &std::pair<std::string_view, Availability>::first);
    return found == names.end() ? Availability::otherwise : found->second;
}

void prepareModel(FakeLanguageModel& model, const Json& given) {
    model.state = given.is_null() ? Availability::deviceNotEligible : availabilityOf(given);
    const Json answer = given.is_null() ? Json() : optionalObject(given, "answer");
    if (answer.is_null()) return;
    model.answer = GeneratedContent{{"titulo", requiredString(answer, "titulo")},
                                    {"texto", requiredString(answer, "texto")}};
}

void prepareService(WritingBench& bench, const Json& given) {
    if (given.is_null()) return;
    const auto status = static_cast<int>(requiredInteger(given, "status"));
    const Json body = given.value("body", Json());
    const auto bytes = body.is_string() ? body.get<std::string>() : body.is_null() ? "" : body.dump();
    bench.service = [=](auto& exchange) { exchange.respond(status, bytes); };
}

/// What the log gets for as long as it lives.
class LogLines {
 public:
    LogLines() {
        setLogSink([this](std::string_view line) { lines.push_back(line); });
    }
    ~LogLines() {
        setLogSink([](std::string_view) {});
    }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    Json lines = Json::array();
};

Task<void> answer(WritingRouter& router, PolishRequest request, bool allowAsk, WriteOrAsk& outcome) {
    if (allowAsk) {
        outcome = co_await router.writeOrAsk(std::move(request));
    } else {
        outcome = co_await router.polish(std::move(request));
    }
}

Json write(const Json& input) {
    const AppLanguage language(languageOf(input));
    LogLines log;
    WritingBench bench;
    const bool isLocal = isSecond(input, "engine", {"auto", "local"});
    bench.settings.engine.set(isLocal ? WritingEngine::local : WritingEngine::automatic);
    if (optionalBoolean(input, "loggedIn").value_or(false)) bench.signIn();
    prepareService(bench, optionalObject(input, "server"));
    prepareModel(bench.model, optionalObject(input, "local"));
    WriteOrAsk outcome;
    bench.run(
        answer(bench.router, requestOf(input), optionalBoolean(input, "allowAsk").value_or(false), outcome));
    const auto* result = std::get_if<PolishResult>(&outcome);
    return {
        {"text", result ? Json(result->text) : Json()},     {"title", result ? Json(result->title) : Json()},
        {"engine", result ? Json(result->engine) : Json()}, {"ask", result == nullptr},
        {"serverCalls", bench.http.exchanges.size()},       {"log", log.lines}};
}

}  // namespace

std::vector<Command> writeCommands() {
    return {{"write",
             R"({"request":{"transcript","appName"?,"windowTitle"?,"tone"?,"signatureName"?,)"
             R"("screenshot"? in base64,"editableFocus"?,"styleNotes"?,"styleExamples"?},)"
             R"("engine":"auto"|"local","loggedIn","server":{"status","body"}|null,)"
             R"("local":{"availability","answer":{"titulo","texto"}|null}|null,"allowAsk","language"?})",
             R"({"text","title","engine","ask","serverCalls","log"}; no service: it cannot be reached)",
             write}};
}

}  // namespace dorix::lab
