#include "base/Log.h"
#include "base/text/CodeFence.h"
#include "service/accounts/Secrets.h"
#include "service/ai/Extraction.h"
#include "service/ai/ModelAnswer.h"
#include "service/ai/Prompts.h"
#include "service/ai/Requests.h"
#include "service/ai/RuleWriter.h"
#include "service/ai/Transforms.h"
#include "service/api/Background.h"
#include "service/api/Routes.h"
#include "service/metrics/Metrics.h"
#include "service/model/ModelClient.h"

#include <memory>
#include <optional>
#include <utility>

namespace dorix::service {

namespace {

constexpr std::size_t boundaryBytes = 16;
// The desktop waits for 20 and 60 seconds; a refusal is to come before that.
constexpr int writeSeconds = 17;
constexpr int transformSeconds = 55;

/// What the model was asked with, and for whom.
struct Asked {
    Collaborators with;
    std::string route;
    Language language;
};

Pictures picturesFor(const Collaborators& with) {
    return with.modelSeesPictures ? Pictures::sent : Pictures::leftOut;
}

/// In ASCII: there are readers that end a line at any of Unicode's line separators.
std::string event(const Json& content) {
    return "data: " + content.dump(-1, ' ', true, Json::error_handler_t::replace) + "\n\n";
}

std::string textEvent(std::string_view text) { return event({{"type", "text"}, {"text", text}}); }

std::string errorEvent(std::string_view message) { return event({{"type", "error"}, {"message", message}}); }

Awaitable<std::optional<Refusal>> countRequest(Call call) {
    if (!call.with.accounts.hasDailyLimit()) co_return std::nullopt;
    co_return co_await call.with.storage.run(
        [&accounts = call.with.accounts, session = call.session](Database& database) {
            const auto outcome = accounts.countRequest(database, session, secondsNow());
            return outcome ? std::nullopt : std::optional(outcome.error());
        });
}

/// Counts the call, reads its body and parses it off the network thread. Throws HttpError; a body that is not
/// right gives the answer that says so.
template <typename T>
Awaitable<std::expected<std::shared_ptr<const T>, Response>> take(Call call,
                                                                  Parsed<T> (*parse)(std::string_view)) {
    if (const auto refusal = co_await countRequest(call)) {
        co_return std::unexpected(refusalResponse(*refusal, call.language()));
    }
    auto body = co_await call.exchange.readBody(bounds::body);
    auto parsed = co_await runOn(call.with.work, [parse, body = std::move(body)] { return parse(body); });
    if (!parsed) {
        co_return std::unexpected(jsonResponse({{"message", message(parsed.error(), call.language())}}, 400));
    }
    co_return std::make_shared<const T>(std::move(*parsed));
}

void noteFailure(const Asked& asked, const ModelError& error) {
    ++asked.with.metrics.modelFailures;
    logLine("event=model-failure route=" + asked.route + " what=" + error.what());
}

/// The model's whole answer, made into one of ours; an answer with a message when it does not come, or is
/// none.
template <typename T>
Awaitable<std::optional<Response>> completed(Asked asked, std::shared_ptr<const T> request,
                                             Json (*messages)(const T&, const Collaborators&), int seconds,
                                             std::optional<Json> (*read)(const T&, const std::string&)) {
    auto body = co_await runOn(asked.with.work, [&with = asked.with, request, messages] {
        return with.model->requestBody(messages(*request, with).dump(), ModelClient::Answer::whole);
    });
    std::optional<std::string> answer;
    try {
        answer = co_await asked.with.model->complete(std::move(body), seconds);
    } catch (const ModelError& error) {
        noteFailure(asked, error);
    }
    if (!answer) co_return messageResponse(502, Message::modelDown, asked.language);
    const auto json = read(*request, *answer);
    if (!json) co_return messageResponse(502, Message::modelUnclear, asked.language);
    co_return jsonResponse(*json);
}

Json messagesToWrite(const WriteRequest& request, const Collaborators& with) {
    return writeMessages(request, randomHex(boundaryBytes), picturesFor(with));
}

std::optional<Json> written(const WriteRequest&, const std::string& answer) {
    const auto read = readWriteAnswer(answer);
    return read ? std::optional(toJson(*read)) : std::nullopt;
}

Json messagesToTransform(const TransformRequest& request, const Collaborators&) {
    return transformMessages(request, randomHex(boundaryBytes));
}

std::optional<Json> transformed(const TransformRequest& request, const std::string& answer) {
    std::string text(text::withoutFence(answer, request.selection));
    if (text.empty()) return std::nullopt;
    return Json{{"texto", std::move(text)}};
}

Asked askedBy(const Call& call) {
    return {.with = call.with, .route = std::string(call.exchange.route), .language = call.language()};
}

Awaitable<Reply> write(Call call) {
    auto request = co_await take(call, &parseWriteRequest);
    if (!request) co_return std::move(request.error());
    if (call.with.model == nullptr) {
        const auto answer =
            co_await runOn(call.with.work, [request = *request] { return toJson(writeByRules(*request)); });
        co_return jsonResponse(answer);
    }
    co_return Work([asked = askedBy(call), request = *request](EventSink&) {
        return completed(asked, request, &messagesToWrite, writeSeconds, &written);
    });
}

Awaitable<Reply> transform(Call call) {
    auto request = co_await take(call, &parseTransformRequest);
    if (!request) co_return std::move(request.error());
    // What is mechanical is done at once, and to the letter, also where there is a model.
    const auto text =
        co_await runOn(call.with.work, [request = *request] { return transformByRules(*request); });
    if (text) co_return jsonResponse({{"texto", *text}});
    if (call.with.model == nullptr) {
        co_return jsonResponse({{"message", message(text.error(), call.language())}}, 501);
    }
    co_return Work([asked = askedBy(call), request = *request](EventSink&) {
        return completed(asked, request, &messagesToTransform, transformSeconds, &transformed);
    });
}

/// Counts a stream for as long as it is there.
class StreamCount {
 public:
    explicit StreamCount(Metrics& metrics) : metrics_(metrics) { ++metrics_.streams; }
    ~StreamCount() { --metrics_.streams; }
    StreamCount(const StreamCount&) = delete;
    StreamCount& operator=(const StreamCount&) = delete;

 private:
    Metrics& metrics_;
};

Awaitable<std::optional<Response>> streamModel(Asked asked, std::shared_ptr<const AskRequest> request,
                                               EventSink& sink) {
    const StreamCount counted(asked.with.metrics);
    auto body = co_await runOn(asked.with.work, [&asked, request] {
        const auto messages =
            askMessages(*request, asked.language, randomHex(boundaryBytes), picturesFor(asked.with));
        return asked.with.model->requestBody(messages.dump(), ModelClient::Answer::streamed);
    });
    request.reset();
    bool hasBegun = false;
    bool hasFailed = false;
    try {
        co_await asked.with.model->stream(
            std::move(body), [&](std::vector<std::string> texts) -> Awaitable<void> {
                hasBegun = true;
                std::string events;
                for (const auto& text : texts) events += textEvent(text);
                asked.with.metrics.events += static_cast<std::int64_t>(texts.size());
                co_await sink.send(std::move(events));
            });
    } catch (const ModelError& error) {
        hasFailed = true;
        noteFailure(asked, error);
    }
    if (hasFailed && !hasBegun) co_return messageResponse(502, Message::modelDown, asked.language);
    if (hasFailed) co_await sink.send(errorEvent(say(Message::modelCutOff, asked.language)));
    co_return std::nullopt;
}

Awaitable<std::optional<Response>> streamExtraction(Asked asked, std::shared_ptr<const AskRequest> request,
                                                    EventSink& sink) {
    const StreamCount counted(asked.with.metrics);
    const auto answer = co_await runOn(
        asked.with.work, [&asked, request] { return answerByExtraction(*request, asked.language); });
    ++asked.with.metrics.events;
    co_await sink.send(answer ? textEvent(*answer) : errorEvent(message(answer.error(), asked.language)));
    co_return std::nullopt;
}

Awaitable<Reply> ask(Call call) {
    auto request = co_await take(call, &parseAskRequest);
    if (!request) co_return std::move(request.error());
    const auto answer = call.with.model == nullptr ? &streamExtraction : &streamModel;
    co_return Work([answer, asked = askedBy(call), request = std::move(*request)](EventSink& sink) {
        return answer(asked, request, sink);
    });
}

/// A feature that is not there yet.
Awaitable<Reply> notOffered(Call call) {
    co_return messageResponse(501, Message::notOffered, call.language());
}

}  // namespace

std::vector<Route> aiRoutes() {
    std::vector<Route> routes = {
        {Method::post, "/v1/ai/write", Needs::session, &write},
        {Method::post, "/v1/ai/ask", Needs::session, &ask},
        {Method::post, "/v1/ai/transform", Needs::session, &transform},
        {Method::get, "/v1/slack/status", Needs::session, &notOffered},
    };
    for (const std::string_view path :
         {"/v1/ai/action", "/v1/ai/learn", "/v1/ai/apply-rule", "/v1/slack/connect", "/v1/slack/search",
          "/v1/slack/send", "/v1/slack/disconnect", "/v1/stats"}) {
        routes.push_back({Method::post, path, Needs::session, &notOffered});
    }
    return routes;
}

}  // namespace dorix::service
