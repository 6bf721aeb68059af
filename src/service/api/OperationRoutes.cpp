#include "service/api/Background.h"
#include "service/api/Routes.h"
#include "service/metrics/Metrics.h"

namespace dorix::service {

namespace {

/// Whether it can do its work: it is up, and the database answers.
Awaitable<Reply> health(Call call) {
    co_await call.with.storage.run([](Database& database) { return database.run("SELECT 1"); });
    co_return jsonResponse({{"ok", true}});
}

Awaitable<Reply> metrics(Call call) {
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
