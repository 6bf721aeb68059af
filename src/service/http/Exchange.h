#pragma once

#include "service/ai/Language.h"
#include "service/net/Awaitable.h"
#include "service/words/Messages.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace dorix::service {

enum class Method : std::uint8_t { get, post, remove, other };

/// What a request says before its body.
struct RequestHead {
    Method method = Method::other;
    std::string path;  // as it came, without the query; may hold anything
    std::string host;
    std::string token;    // of "authorization: Bearer …"; may be empty
    std::string address;  // who calls, for limits: an IPv4 address, or the /64 network of an IPv6 one
    Language language = Language::spanish;
    bool hasOrigin = false;
    bool isFromHere = false;  // from a program of this computer, with nobody between
};

struct Response {
    unsigned status = 200;
    std::string contentType = "application/json";
    std::string body;
    std::vector<std::pair<std::string, std::string>> fields;  // further ones of the head
};

/// An answer that is refused, in the words of the service.
struct HttpError {
    unsigned status = 500;
    Message message = Message::internal;
};

/// Where events go, to one client. A client that does not take them in time, or is gone, ends whoever sends.
class EventSink {
 public:
    virtual ~EventSink() = default;

    /// Sends whole events as they go over the wire. The first call sends the head of the answer.
    virtual Awaitable<void> send(std::string events) = 0;
};

/// What is done for an answer while somebody watches whether the client is still there; if not, it is
/// cancelled where it waits. Gives the answer, or nothing after it has sent events.
using Work = std::function<Awaitable<std::optional<Response>>(EventSink& sink)>;

using Reply = std::variant<Response, Work>;

/// One request under way. Lives as long as whoever answers it is awaited. Network thread.
class Exchange {
 public:
    virtual ~Exchange() = default;

    virtual const RequestHead& head() const = 0;

    /// Reads the body, once. Throws HttpError when it is longer than `limit` bytes, or not what its head
    /// says.
    virtual Awaitable<std::string> readBody(std::size_t limit) = 0;

    /// What the request is called in the metrics and the log: never what the caller wrote.
    std::string_view route = "other";
};

/// Answers requests. May throw HttpError, which becomes an answer with its message; anything else becomes a
/// 500.
using Handler = std::function<Awaitable<Reply>(Exchange& exchange)>;

}  // namespace dorix::service
