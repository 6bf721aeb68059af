#pragma once

#include "service/http/Exchange.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace boost::asio {
class thread_pool;
}

namespace dorix::service {

class Accounts;
class MailQueue;
class Metrics;
class ModelClient;
class StorageThreads;

/// What the calls are answered with. All of it outlives the server.
struct Collaborators {
    const Accounts& accounts;
    StorageThreads& storage;
    MailQueue& mail;
    boost::asio::thread_pool& work;  // for what computes for long
    ModelClient* model = nullptr;    // null: rules and extraction
    bool modelSeesPictures = false;
    Metrics& metrics;
    std::string metricsToken;  // empty: the metrics are for programs of this computer alone
    /// With the secret of whoever started the service for themselves, it answers nobody but programs of this
    /// computer.
    bool isLocal = false;
    /// Where it listens, which is known once it does.
    std::uint16_t port = 0;
};

/// The names of all routes, for the metrics.
std::vector<std::string> routeNames();

/// Answers every request by its route. Keeps a reference.
Handler makeHandler(Collaborators& with);

}  // namespace dorix::service
