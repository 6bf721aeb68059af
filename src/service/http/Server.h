#pragma once

#include "service/http/Exchange.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace boost::asio {
class io_context;
}

namespace dorix::service {

class Metrics;
struct Settings;

/// Answers HTTP/1.1 on one address, plain or over TLS, each connection a coroutine on the thread of
/// `network`. Everything is called there.
class Server {
 public:
    /// Listens from now on. Throws std::runtime_error when it cannot, or when the certificate cannot be used.
    Server(boost::asio::io_context& network, const Settings& settings, Handler handler, Metrics& metrics);
    /// Cuts what is still connected.
    ~Server();

    std::uint16_t port() const;

    /// Listens no more, ends idle connections, and lets the others finish their answer. Calls `done` once
    /// none is left, or when the time from the settings is over, after which the rest are cut.
    void stop(std::function<void()> done);

 private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace dorix::service
