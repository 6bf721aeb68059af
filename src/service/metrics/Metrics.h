#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix::service {

/// What is counted of the service's work, nothing of its content. Any thread.
class Metrics {
 public:
    /// The routes that there are, so that each shows before it is first used.
    explicit Metrics(std::vector<std::string> routes);

    void countRequest(std::string_view route, unsigned status, double seconds);

    std::atomic<std::int64_t> connections = 0;
    std::atomic<std::int64_t> refusedConnections = 0;
    std::atomic<std::int64_t> streams = 0;
    std::atomic<std::int64_t> events = 0;
    std::atomic<std::int64_t> modelCalls = 0;
    std::atomic<std::int64_t> modelFailures = 0;
    std::atomic<std::int64_t> modelRetries = 0;
    std::atomic<std::int64_t> mailsSent = 0;
    std::atomic<std::int64_t> mailsFailed = 0;
    std::atomic<std::int64_t> storageFailures = 0;

    /// All of it as Prometheus reads it (text, version 0.0.4).
    std::string text() const;

 private:
    mutable std::mutex mutex_;
    std::map<std::pair<std::string, unsigned>, std::int64_t> requests_;  // by route and status
    std::map<std::string, double, std::less<>> seconds_;                 // by route
};

}  // namespace dorix::service
