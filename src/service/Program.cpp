#include "service/Program.h"

#include "base/Log.h"
#include "service/accounts/Accounts.h"
#include "service/api/Api.h"
#include "service/api/Background.h"
#include "service/api/MailQueue.h"
#include "service/http/Server.h"
#include "service/mail/Mailer.h"
#include "service/metrics/Metrics.h"
#include "service/model/ModelClient.h"
#include "service/settings/Settings.h"

#include <sys/resource.h>

#include <array>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <chrono>
#include <csignal>
#include <string_view>
#include <utility>

namespace dorix::service {

namespace asio = boost::asio;

namespace {

// More than the cores of a small machine help nobody: what they do is short.
constexpr std::size_t workThreads = 2;
constexpr std::int64_t secondsOfDay = 86400;
constexpr std::chrono::minutes tidyEvery{10};

/// Each connection is a descriptor, and with a model two.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

Accounts::Rules rulesOf(const Settings& settings, std::string localSecret) {
    return {.mayHaveAccount = [settings](std::string_view email) { return mayHaveAccount(settings, email); },
            .sessionSeconds = settings.sessionDays * secondsOfDay,
            .requestsPerDay = settings.requestsPerDay,
            .localSecret = std::move(localSecret)};
}

}  // namespace

class Program::Impl {
 public:
    Impl(const Settings& settings, const std::string& localSecret)
        : accounts_(rulesOf(settings, localSecret)),
          metrics_(routeNames()),
          storage_(settings.database),
          mail_(makeMailer(settings), metrics_),
          model_(settings.modelUrl.empty() ? nullptr : std::make_unique<ModelClient>(settings, metrics_)),
          with_{.accounts = accounts_,
                .storage = storage_,
                .mail = mail_,
                .work = work_,
                .model = model_.get(),
                .modelSeesPictures = settings.modelSeesPictures,
                .metrics = metrics_,
                .metricsToken = settings.metricsToken,
                .isLocal = !localSecret.empty()},
          server_(network_, settings, makeHandler(with_), metrics_),
          signals_(network_, SIGTERM, SIGINT) {
        with_.port = server_.port();
        logLine("event=listening address=" + settings.listen.host +
                " port=" + std::to_string(server_.port()) + (settings.hasTls() ? " tls=yes" : " tls=no") +
                (model_ ? " model=yes" : " model=no"));
    }

    void run(std::optional<int> parent) {
        signals_.async_wait([this](auto error, int) {
            if (error) return;
            // Who asks twice does not want to wait.
            signals_.async_wait([this](auto, int) { network_.stop(); });
            stop("signal");
        });
        if (parent) asio::co_spawn(network_, watchParent(*parent), asio::detached);
        asio::co_spawn(network_, tidyNowAndThen(), asio::detached);
        network_.run();
        // They may still hold something of the network's.
        work_.join();
        logLine("event=stopped");
    }

 private:
    void stop(std::string_view why) {
        logLine("event=stopping why=" + std::string(why));
        server_.stop([this] { network_.stop(); });
    }

    /// The end of whoever started this closes the descriptor, however it came about.
    asio::awaitable<void> watchParent(int descriptor) {
        asio::posix::stream_descriptor parent(network_, descriptor);
        std::array<char, 64> ignored{};
        boost::system::error_code error;
        while (!error) {
            co_await parent.async_read_some(asio::buffer(ignored),
                                            asio::redirect_error(asio::use_awaitable, error));
        }
        stop("parent");
    }

    asio::awaitable<void> tidyNowAndThen() {
        asio::steady_timer timer(network_);
        for (;;) {
            co_await tidy();
            timer.expires_after(tidyEvery);
            co_await timer.async_wait(asio::use_awaitable);
        }
    }

    asio::awaitable<void> tidy() {
        try {
            co_await storage_.run([this](Database& database) {
                const auto now = std::chrono::system_clock::now().time_since_epoch();
                accounts_.tidy(database, std::chrono::duration_cast<std::chrono::seconds>(now).count());
                return true;
            });
        } catch (const StorageError& error) {
            ++metrics_.storageFailures;
            logLine(std::string("event=storage-failure what=") + error.what());
        }
    }

    // What answers outlives the network, on which the answers are.
    Accounts accounts_;
    Metrics metrics_;
    asio::io_context network_{1};
    StorageThreads storage_;
    MailQueue mail_;
    asio::thread_pool work_{workThreads};
    std::unique_ptr<ModelClient> model_;
    Collaborators with_;
    Server server_;
    asio::signal_set signals_;
};

Program::Program(const Settings& settings, const std::string& localSecret) {
    raiseDescriptorLimit();
    impl_ = std::make_unique<Impl>(settings, localSecret);
}

Program::~Program() = default;

void Program::run(std::optional<int> parent) { impl_->run(parent); }

}  // namespace dorix::service
