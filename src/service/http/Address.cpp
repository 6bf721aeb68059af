#include "service/http/Address.h"

#include "base/text/Text.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>

namespace dorix::service {

namespace {

namespace ip = boost::asio::ip;

ip::address unmapped(const ip::address& address) {
    if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address;
    return ip::make_address_v4(ip::v4_mapped, address.to_v6());
}

std::string grouped(const ip::address& address) {
    if (address.is_v4()) return address.to_string();
    auto bytes = address.to_v6().to_bytes();
    std::fill(bytes.begin() + 8, bytes.end(), std::uint8_t{0});
    return ip::address_v6(bytes).to_string() + "/64";
}

bool isAmong(const std::vector<std::string>& addresses, const ip::address& address) {
    return std::ranges::find(addresses, address.to_string()) != addresses.end();
}

}  // namespace

std::string callerAddress(const std::string& peer, std::string_view forwardedFor,
                          const std::vector<std::string>& trustedProxies) {
    boost::system::error_code error;
    auto caller = unmapped(ip::make_address(peer, error));
    if (error) return peer;
    auto hops = text::split(forwardedFor, ',');
    while (isAmong(trustedProxies, caller) && !hops.empty()) {
        const auto hop = ip::make_address(std::string(text::trim(hops.back())), error);
        if (error) break;
        caller = unmapped(hop);
        hops.pop_back();
    }
    return grouped(caller);
}

bool isLoopbackAddress(const std::string& peer) {
    boost::system::error_code error;
    const auto address = unmapped(ip::make_address(peer, error));
    return !error && address.is_loopback();
}

bool isOneOf(const std::vector<std::string>& addresses, const std::string& peer) {
    boost::system::error_code error;
    const auto address = unmapped(ip::make_address(peer, error));
    return !error && isAmong(addresses, address);
}

}  // namespace dorix::service
