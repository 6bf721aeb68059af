#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// Who called: the peer, or where a trusted peer says that the request comes from, which is the last address
/// of `forwardedFor` that is none of the trusted. IPv6 callers have a whole network each, so it is the
/// network. Pure.
std::string callerAddress(const std::string& peer, std::string_view forwardedFor,
                          const std::vector<std::string>& trustedProxies);

/// Whether it is this computer's, also where IPv4 comes over IPv6. False for what is no address. Pure.
bool isLoopbackAddress(const std::string& peer);

/// Whether it is one of the addresses, likewise.
bool isOneOf(const std::vector<std::string>& addresses, const std::string& peer);

}  // namespace dorix::service
