#include "service/metrics/Metrics.h"

#include <functional>
#include <sstream>

namespace dorix::service {

namespace {

void describe(std::ostream& out, std::string_view name, std::string_view type, std::string_view help) {
    out << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n';
}

void single(std::ostream& out, std::string_view name, std::string_view type, std::string_view help,
            std::int64_t value) {
    describe(out, name, type, help);
    out << name << ' ' << value << '\n';
}

}  // namespace

Metrics::Metrics(std::vector<std::string> routes) {
    for (auto& route : routes) seconds_.emplace(std::move(route), 0.0);
}

void Metrics::countRequest(std::string_view route, unsigned status, double seconds) {
    const std::lock_guard lock(mutex_);
    ++requests_[{std::string(route), status}];
    seconds_[std::string(route)] += seconds;
}

std::string Metrics::text() const {
    std::ostringstream out;
    const std::lock_guard lock(mutex_);
    describe(out, "dorix_service_requests_total", "counter", "Requests answered, by route and status.");
    for (const auto& [key, count] : requests_) {
        out << "dorix_service_requests_total{route=\"" << key.first << "\",status=\"" << key.second << "\"} "
            << count << '\n';
    }
    describe(out, "dorix_service_request_seconds_total", "counter",
             "Time from a request to the end of its answer.");
    for (const auto& [route, seconds] : seconds_) {
        out << "dorix_service_request_seconds_total{route=\"" << route << "\"} " << seconds << '\n';
    }
    single(out, "dorix_service_connections", "gauge", "Connections held.", connections);
    single(out, "dorix_service_refused_connections_total", "counter", "Connections closed at once.",
           refusedConnections);
    single(out, "dorix_service_streams", "gauge", "Answers being streamed.", streams);
    single(out, "dorix_service_events_total", "counter", "Events streamed.", events);
    single(out, "dorix_service_model_calls_total", "counter", "Calls to the language model.", modelCalls);
    single(out, "dorix_service_model_failures_total", "counter", "Calls to it that failed.", modelFailures);
    single(out, "dorix_service_model_retries_total", "counter", "Calls to it that were tried again.",
           modelRetries);
    single(out, "dorix_service_mails_sent_total", "counter", "Codes delivered.", mailsSent);
    single(out, "dorix_service_mails_failed_total", "counter", "Codes that could not be delivered.",
           mailsFailed);
    single(out, "dorix_service_storage_failures_total", "counter", "Calls to the database that failed.",
           storageFailures);
    return out.str();
}

}  // namespace dorix::service
