#include "service/http/Server.h"

#include "base/Log.h"
#include "service/http/Address.h"
#include "service/http/Connection.h"
#include "service/metrics/Metrics.h"
#include "service/net/Beast.h"
#include "service/settings/Settings.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <stdexcept>

namespace dorix::service {

using tcp = asio::ip::tcp;

namespace {

// When descriptors run out, until some may have come free.
constexpr std::chrono::milliseconds acceptPause{100};

asio::ssl::context tlsContext(const Settings& settings) {
    asio::ssl::context context(asio::ssl::context::tls_server);
    context.set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                        asio::ssl::context::no_tlsv1_1);
    try {
        context.use_certificate_chain_file(settings.tlsCertificate.string());
        context.use_private_key_file(settings.tlsKey.string(), asio::ssl::context::pem);
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("the certificate or its key cannot be used: " + error.code().message());
    }
    return context;
}

tcp::acceptor listening(asio::io_context& network, const ListenAddress& address) {
    try {
        return {network, tcp::endpoint(asio::ip::make_address(address.host), address.port)};
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot listen on " + address.host + ":" + std::to_string(address.port) +
                                 ": " + error.code().message());
    }
}

}  // namespace

class Server::Impl : public std::enable_shared_from_this<Server::Impl> {
 public:
    Impl(asio::io_context& network, const Settings& settings, Handler handler, Metrics& metrics)
        : network_(network),
          acceptor_(listening(network, settings.listen)),
          tls_(settings.hasTls() ? std::optional(tlsContext(settings)) : std::nullopt),
          context_{.handler = std::move(handler),
                   .metrics = metrics,
                   .trustedProxies = settings.trustedProxies,
                   .tls = tls_ ? &*tls_ : nullptr},
          mostConnections_(settings.connections),
          stopTime_(settings.stopSeconds),
          answersEverybody_(settings.hasTls() || settings.listen.isLoopback),
          deadline_(network) {}

    std::uint16_t port() const { return acceptor_.local_endpoint().port(); }

    void start() { asio::co_spawn(network_, accept(shared_from_this()), asio::detached); }

    void stop(std::function<void()> done) {
        if (context_.isStopping) return;
        context_.isStopping = true;
        onStopped_ = std::move(done);
        error_code ignored;
        acceptor_.close(ignored);
        for (auto* connection : std::set(context_.open)) connection->closeIfIdle();
        deadline_.expires_after(stopTime_);
        deadline_.async_wait([self = shared_from_this()](error_code error) {
            if (!error) self->tellStopped();
        });
        if (connections_ == 0) tellStopped();
    }

 private:
    // `self` keeps what the coroutine uses.
    Awaitable<void> accept(std::shared_ptr<Impl> self) {
        while (acceptor_.is_open()) {
            error_code error;
            auto socket = co_await acceptor_.async_accept(redirect_error(use_awaitable, error));
            if (!error && isWelcome(socket)) {
                ++connections_;
                asio::co_spawn(network_, serve(self, std::move(socket)), asio::detached);
            } else if (!error) {
                ++context_.metrics.refusedConnections;
            } else if (acceptor_.is_open()) {
                asio::steady_timer pause(network_, acceptPause);
                co_await pause.async_wait(redirect_error(use_awaitable, error));
            }
        }
    }

    bool isWelcome(const tcp::socket& socket) const {
        if (connections_ >= mostConnections_) return false;
        if (answersEverybody_) return true;
        error_code error;
        const auto peer = socket.remote_endpoint(error).address().to_string();
        return !error && (isLoopbackAddress(peer) || isOneOf(context_.trustedProxies, peer));
    }

    static Awaitable<void> serve(std::shared_ptr<Impl> self, tcp::socket socket) {
        co_await serveConnection(std::move(socket), self->context_);
        --self->connections_;
        if (self->context_.isStopping && self->connections_ == 0) self->tellStopped();
    }

    void tellStopped() {
        deadline_.cancel();
        if (const auto done = std::exchange(onStopped_, nullptr)) done();
    }

    asio::io_context& network_;
    tcp::acceptor acceptor_;
    std::optional<asio::ssl::context> tls_;
    ConnectionContext context_;
    std::int64_t connections_ = 0;
    std::int64_t mostConnections_;
    std::chrono::seconds stopTime_;
    bool answersEverybody_;
    asio::steady_timer deadline_;
    std::function<void()> onStopped_;
};

Server::Server(asio::io_context& network, const Settings& settings, Handler handler, Metrics& metrics)
    : impl_(std::make_shared<Impl>(network, settings, std::move(handler), metrics)) {
    impl_->start();
}

Server::~Server() = default;

std::uint16_t Server::port() const { return impl_->port(); }

void Server::stop(std::function<void()> done) { impl_->stop(std::move(done)); }

}  // namespace dorix::service
