#pragma once

#include "service/http/Exchange.h"
#include "service/net/Beast.h"

#include <optional>
#include <string>
#include <vector>

/// What a request's head means to the service. Pure.
namespace dorix::service {

/// `peer` is who sent it, in digits; for `trustedProxies` see callerAddress().
RequestHead readHead(const http::request_header<>& head, const std::string& peer,
                     const std::vector<std::string>& trustedProxies);

/// How a request is refused that could not be read; nothing for what is no fault of the request, as when the
/// client goes away.
std::optional<HttpError> faultOf(error_code error);

}  // namespace dorix::service
