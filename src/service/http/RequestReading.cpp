#include "service/http/RequestReading.h"

#include "base/text/Text.h"
#include "service/http/Address.h"

#include <string_view>

namespace dorix::service {

namespace {

Method methodOf(http::verb verb) {
    switch (verb) {
        case http::verb::get:
            return Method::get;
        case http::verb::post:
            return Method::post;
        case http::verb::delete_:
            return Method::remove;
        default:
            return Method::other;
    }
}

std::string bearerToken(std::string_view field) {
    constexpr std::string_view scheme = "bearer ";
    if (field.size() <= scheme.size() || text::lowercase(field.substr(0, scheme.size())) != scheme) return {};
    return std::string(text::trim(field.substr(scheme.size())));
}

}  // namespace

RequestHead readHead(const http::request_header<>& head, const std::string& peer,
                     const std::vector<std::string>& trustedProxies) {
    const auto field = [&](auto name) { return std::string_view(head[name].data(), head[name].size()); };
    const auto has = [&](auto name) { return head.find(name) != head.end(); };
    const std::string_view target(head.target().data(), head.target().size());
    return {.method = methodOf(head.method()),
            .path = std::string(target.substr(0, target.find('?'))),
            .host = std::string(field(http::field::host)),
            .token = bearerToken(field(http::field::authorization)),
            .address = callerAddress(peer, field("x-forwarded-for"), trustedProxies),
            .language = languageAsked(field("x-dorix-lang")),
            .hasOrigin = has(http::field::origin),
            // Who passes on what others ask says so, also when nobody has told us to believe it.
            .isFromHere = isLoopbackAddress(peer) && !has("x-forwarded-for") &&
                          !has(http::field::forwarded) && !has(http::field::via)};
}

std::optional<HttpError> faultOf(error_code error) {
    if (error == http::error::body_limit) return HttpError{.status = 413, .message = Message::bodyTooLong};
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        return HttpError{.status = 431, .message = Message::bodyTooLong};
    }
    const bool isProtocol = error.category() == http::make_error_code(http::error::bad_method).category();
    if (!isProtocol || error == http::error::end_of_stream || error == http::error::partial_message)
        return std::nullopt;
    return HttpError{.status = 400, .message = Message::badBody};
}

}  // namespace dorix::service
