#include "service/api/Api.h"

#include "base/Log.h"
#include "service/api/Background.h"
#include "service/api/Routes.h"
#include "service/metrics/Metrics.h"

#include <algorithm>
#include <optional>

namespace dorix::service {

namespace {

constexpr std::string_view parameterMark = "{id}";

std::vector<Route> allRoutes() {
    auto routes = authRoutes();
    for (const auto& more : {aiRoutes(), operationRoutes()})
        routes.insert(routes.end(), more.begin(), more.end());
    return routes;
}

/// What stands for the parameter, empty where there is none; nothing when it is another path.
std::optional<std::string> matched(const Route& route, std::string_view path) {
    if (!route.path.ends_with(parameterMark)) {
        return path == route.path ? std::optional(std::string()) : std::nullopt;
    }
    const auto head = route.path.substr(0, route.path.size() - parameterMark.size());
    if (!path.starts_with(head)) return std::nullopt;
    path.remove_prefix(head.size());
    if (path.empty() || path.size() > 64 || path.find('/') != std::string_view::npos) return std::nullopt;
    return std::string(path);
}

std::string nameOf(Method method) {
    switch (method) {
        case Method::get:
            return "GET";
        case Method::post:
            return "POST";
        case Method::remove:
            return "DELETE";
        case Method::other:
            break;
    }
    return {};
}

/// A page in a browser can reach this computer's addresses, under a name of its own choice; but it cannot
/// keep the browser from telling that name, and its origin.
bool isOfThisComputer(const RequestHead& head, std::uint16_t port) {
    const auto suffix = ":" + std::to_string(port);
    for (const std::string name : {"localhost", "127.0.0.1", "[::1]"}) {
        if (head.host == name + suffix) return true;
    }
    return false;
}

class Router {
 public:
    explicit Router(Collaborators& with) : with_(with), routes_(allRoutes()) {}

    Awaitable<Reply> answer(Exchange& exchange) const {
        const auto& head = exchange.head();
        if (head.hasOrigin || (with_.isLocal && !isOfThisComputer(head, with_.port))) {
            co_return messageResponse(403, Message::foreignOrigin, head.language);
        }
        std::string allowed;
        for (const auto& route : routes_) {
            const auto parameter = matched(route, head.path);
            if (!parameter) continue;
            if (route.method == head.method) co_return co_await answerRoute(exchange, route, *parameter);
            allowed += (allowed.empty() ? "" : ", ") + nameOf(route.method);
        }
        if (allowed.empty()) co_return messageResponse(404, Message::unknownPath, head.language);
        auto response = messageResponse(405, Message::wrongMethod, head.language);
        response.fields.emplace_back("allow", allowed);
        co_return response;
    }

 private:
    Awaitable<Reply> answerRoute(Exchange& exchange, const Route& route, std::string parameter) const {
        exchange.route = route.path;
        const auto language = exchange.head().language;
        Call call{.exchange = exchange, .with = with_, .parameter = std::move(parameter), .session = {}};
        std::optional<std::string> failure;
        try {
            if (route.needs == Needs::session) {
                auto session =
                    co_await with_.storage.run([this, token = exchange.head().token](Database& database) {
                        return with_.accounts.authenticate(database, token, secondsNow());
                    });
                if (!session) co_return refusalResponse(session.error(), language);
                call.session = std::move(*session);
            }
            co_return co_await route.answer(std::move(call));
        } catch (const StorageError& error) {
            failure = error.what();
        }
        ++with_.metrics.storageFailures;
        logLine("event=storage-failure what=" + *failure);
        co_return messageResponse(503, Message::storageDown, language);
    }

    Collaborators& with_;
    std::vector<Route> routes_;
};

}  // namespace

std::vector<std::string> routeNames() {
    std::vector<std::string> names{"other"};
    for (const auto& route : allRoutes()) names.emplace_back(route.path);
    std::ranges::sort(names);
    names.erase(std::ranges::unique(names).begin(), names.end());
    return names;
}

Handler makeHandler(Collaborators& with) {
    return [router = std::make_shared<Router>(with)](Exchange& exchange) { return router->answer(exchange); };
}

}  // namespace dorix::service
