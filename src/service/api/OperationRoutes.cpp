#include "service/accounts/Secrets.h"
#include "service/api/Background.h"
#include "service/api/Routes.h"
#include "service/metrics/Metrics.h"

namespace dorix::service {

namespace {

/// Whether it can do its work: it is up, and the database answers. One that a program started for its user
/// alone says so, for other users' programs on the same computer.
Awaitable<Reply> health(Call call) {
    co_await call.with.storage.run([](Database& database) { return database.run("SELECT 1"); });
    Json body{{"ok", true}};
    if (call.with.isLocal) body["private"] = true;
    co_return jsonResponse(body);
}

bool mayReadMetrics(const Call& call) {
    const auto& head = call.exchange.head();
    return head.isFromHere ||
           (!call.with.metricsToken.empty() && isSameSecret(head.token, call.with.metricsToken));
}

Awaitable<Reply> metrics(Call call) {
    if (!mayReadMetrics(call)) co_return messageResponse(403, Message::notForCaller, call.language());
    co_return Response{.contentType = "text/plain; version=0.0.4; charset=utf-8",
                       .body = call.with.metrics.text()};
}

}  // namespace

std::vector<Route> operationRoutes() {
    return {
        {Method::get, "/healthz", Needs::nothing, &health},
        {Method::get, "/metrics", Needs::nothing, &metrics},
    };
}

}  // namespace dorix::service
