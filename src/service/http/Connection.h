#pragma once

#include "service/http/Exchange.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <set>
#include <string>
#include <vector>

namespace dorix::service {

class Metrics;

/// How the server reaches a connection while it runs.
class Connection {
 public:
    virtual ~Connection() = default;
    /// Ends it if it is between two requests.
    virtual void closeIfIdle() = 0;
};

/// What all connections of a server share. Outlives them.
struct ConnectionContext {
    Handler handler;
    Metrics& metrics;
    std::vector<std::string> trustedProxies;
    boost::asio::ssl::context* tls = nullptr;  // null for plain HTTP
    bool isStopping = false;
    std::set<Connection*> open;
};

/// Serves one connection to its end. Throws nothing.
Awaitable<void> serveConnection(boost::asio::ip::tcp::socket socket, ConnectionContext& context);

}  // namespace dorix::service
