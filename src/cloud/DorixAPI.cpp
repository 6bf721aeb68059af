#include "cloud/DorixAPI.h"

#include "base/text/Url.h"
#include "localdata/Language.h"
#include "platform/UserDefaults.h"

#include <exception>

namespace dorix {

namespace {

// Seconds.
constexpr double getTimeout = 15;
constexpr double streamTimeout = 120;

std::string addressOr(std::optional<std::string> address, std::string_view otherwise) {
    return address && isServerAddress(*address) ? *std::move(address) : std::string(otherwise);
}

std::string appending(std::string url, std::string_view component) {
    if (!url.ends_with('/')) url += '/';
    return url.append(component);
}

APIError errorFor(int status, std::string_view body) {
    constexpr int unauthorized = 401;
    constexpr int tooManyRequests = 429;
    if (status == unauthorized) return APIError::notLoggedIn();
    const auto answer = Json::parse(body, nullptr, false);
    const auto* told = answer.is_object() ? stringAt(answer, "message") : nullptr;
    const bool isLimited = status == tooManyRequests;
    if (told == nullptr) {
        using enum APIError::Kind;
        return APIError::unexplained(isLimited ? limited : server, status);
    }
    return isLimited ? APIError::limited(*told) : APIError::server(*told);
}

/// What the task gives; with no answer at all, APIError::offline.
template <typename T>
Task<T> answered(Task<T> exchange) {
    try {
        co_return co_await std::move(exchange);
    } catch (const HttpError&) {
        throw APIError::offline();
    }
}

void authorize(HttpRequest& request, const std::string& token) {
    request.headers.emplace_back("authorization", "Bearer " + token);
}

}  // namespace

DorixAPI::DorixAPI(const Executor& executor, HttpClient& http, Keychain& keychain,
                   std::optional<std::string> address)
    : executor_(executor),
      http_(http),
      token_(keychain),
      baseURL_(addressOr(std::move(address), developmentURL)) {}

void DorixAPI::useServer(std::optional<std::string> address) {
    baseURL_ = addressOr(std::move(address), developmentURL);
}

std::string DorixAPI::manualURL() const {
    auto url = appending(baseURL_, "manual");
    if (currentAppLanguage() == "en") url += "?lang=en";
    return url;
}

HttpRequest DorixAPI::getRequest(std::string_view path) const {
    return {.url = appending(baseURL_, path),
            .headers = {{"X-DORIX-Lang", currentAppLanguage()}},
            .timeout = getTimeout};
}

HttpRequest DorixAPI::postRequest(std::string_view path, const Json& body, double timeout) const {
    return {.method = HttpRequest::Method::post,
            .url = appending(baseURL_, path),
            .headers = {{"content-type", "application/json"}, {"X-DORIX-Lang", currentAppLanguage()}},
            .body = body.dump(-1, ' ', false, Json::error_handler_t::replace),
            .timeout = timeout};
}

Task<std::string> DorixAPI::usableToken() {
    auto kept = co_await token_.of(baseURL_);
    if (kept) co_return *std::move(kept);
    onFailure(APIError::notLoggedIn());
    throw APIError::notLoggedIn();
}

void DorixAPI::connect() {
    if (isAnswered()) http_.connect(baseURL_);
}

Task<std::string> DorixAPI::call(HttpRequest request, Session session) {
    std::string used;
    if (session == Session::required) {
        used = co_await usableToken();
        authorize(request, used);
    }
    if (!isAnswered()) throw APIError::offline();
    auto answer = co_await answered(http_.send(std::move(request)));
    if (answer.status < 200 || answer.status > 299) {
        throw co_await refusal(answer.status, std::move(answer.body), std::move(used));
    }
    co_return std::move(answer.body);
}

Task<std::string> DorixAPI::stream(std::string path, Json body, OnText onText) {
    auto request = postRequest(path, body, streamTimeout);
    const auto largestBody = request.largestBody;
    auto used = co_await usableToken();
    authorize(request, used);
    if (!isAnswered()) throw APIError::offline();
    const auto answer = co_await answered(http_.open(std::move(request)));
    if (answer.status != 200) {
        auto words = co_await answered(wholeBody(*answer.body, largestBody));
        throw co_await refusal(answer.status, std::move(words), std::move(used));
    }
    EventStreamReader reader(std::move(onText));
    while (const auto bytes = co_await answer.body->next()) reader.read(*bytes);
    co_return reader.finish();
}

/// The error to fail with, of which those who have to know have been told.
Task<APIError> DorixAPI::refusal(int status, std::string body, std::string usedToken) {
    const auto error = errorFor(status, body);
    // A late answer to a session that has ended says nothing about the one that has begun since.
    bool isStale = false;
    if (error == APIError::notLoggedIn() && !usedToken.empty()) {
        const auto current = co_await token_.of(baseURL_);
        isStale = current && *current != usedToken;
    }
    if (error == APIError::notLoggedIn() && !isStale) onFailure(error);
    co_return error;
}

bool isServerAddress(const std::string& address) {
    return isWebAddress(address) && hostOf(address) && !address.contains('?') && !address.contains('#');
}

std::optional<std::string> configuredServer(const UserDefaults& defaults,
                                            const std::optional<std::string>& packaged) {
    auto chosen = defaults.string(DorixAPI::serverKey);
    return chosen ? chosen : packaged;
}

}  // namespace dorix
