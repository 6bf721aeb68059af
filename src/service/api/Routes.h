#pragma once

#include "base/Json.h"
#include "service/accounts/Accounts.h"
#include "service/api/Api.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// One call under way, and what is known of it.
struct Call {
    Exchange& exchange;
    const Collaborators& with;
    std::string parameter;  // what stands in place of "{id}" in the path
    Session session;        // empty where the route needs none

    Language language() const { return exchange.head().language; }
};

enum class Needs : std::uint8_t { nothing, session };

struct Route {
    Method method = Method::get;
    std::string_view path;  // its name, too; may end in "{id}"
    Needs needs = Needs::session;
    Awaitable<Reply> (*answer)(Call call) = nullptr;
};

/// Each file of routes lists its own.
std::vector<Route> authRoutes();
std::vector<Route> aiRoutes();
std::vector<Route> operationRoutes();

/// Whole seconds since 1970.
std::int64_t secondsNow();

Response jsonResponse(const Json& body, unsigned status = 200);

/// An answer with a "message" in the caller's language.
Response messageResponse(unsigned status, Message message, Language language);
Response refusalResponse(Refusal refusal, Language language);

}  // namespace dorix::service
