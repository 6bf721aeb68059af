#include "base/Log.h"
#include "service/LocalSecret.h"
#include "service/accounts/Accounts.h"
#include "service/api/Api.h"
#include "service/api/Background.h"
#include "service/api/MailQueue.h"
#include "service/http/Server.h"
#include "service/mail/Mailer.h"
#include "service/metrics/Metrics.h"
#include "service/model/ModelClient.h"
#include "service/model/ModelUrl.h"
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
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace dorix;
using namespace dorix::service;
namespace asio = boost::asio;

constexpr int badUsage = 2;
constexpr int badSettings = 3;
// More than the cores of a small machine help nobody: what they do is short.
constexpr std::size_t workThreads = 2;
constexpr std::int64_t secondsOfDay = 86400;
constexpr std::chrono::minutes tidyEvery{10};

constexpr std::string_view usage =
    R"(dorix-service                      answers DORIX on the address from its settings, until SIGTERM or SIGINT
dorix-service --check              says what is wrong with the settings, and whether anything is
dorix-service --help               this

  --config FILE                    further settings, a NAME=value a line; the environment comes first
  --local-secret-fd NUMBER         for the program that starts it for one user: a line with a secret is read from this
                                   inherited descriptor, which is good as the code of local@dorix.localhost. Then only
                                   programs of this computer are answered, and the service ends when the other end of
                                   the descriptor is closed.

Settings, in the environment or the file:

)";

struct Options {
    bool isHelp = false;
    bool isCheck = false;
    std::optional<std::filesystem::path> config;
    std::optional<int> secretDescriptor;
};

/// Nothing when they cannot be understood.
std::optional<Options> readOptions(std::span<char*> arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (argument == "--help" || argument == "-h") {
            options.isHelp = true;
        } else if (argument == "--check") {
            options.isCheck = true;
        } else if (argument == "--config" && hasValue) {
            options.config = arguments[++i];
        } else if (argument == "--local-secret-fd" && hasValue) {
            const std::string_view number = arguments[++i];
            int descriptor = -1;
            const auto read = std::from_chars(number.data(), number.data() + number.size(), descriptor);
            if (read.ec != std::errc() || read.ptr != number.data() + number.size() || descriptor < 0)
                return {};
            options.secretDescriptor = descriptor;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

std::optional<std::string> fromEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

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

/// The whole service, from its start to its end.
class Program {
 public:
    Program(const Settings& settings, std::string localSecret)
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
                .isLocal = !localSecret.empty()},
          server_(network_, settings, makeHandler(with_), metrics_),
          signals_(network_, SIGTERM, SIGINT) {
        with_.port = server_.port();
        logLine("event=listening address=" + settings.listen.host +
                " port=" + std::to_string(server_.port()) + (settings.hasTls() ? " tls=yes" : " tls=no") +
                (model_ ? " model=yes" : " model=no"));
    }

    /// Returns when it is to end.
    void run(std::optional<int> parent) {
        signals_.async_wait([this](auto error, int) {
            if (!error) stop("signal");
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

std::vector<std::string> faultsOf(const Settings& settings) {
    auto faults = faultsOnThisMachine(settings);
    if (!settings.modelUrl.empty() && !parseModelUrl(settings.modelUrl)) {
        faults.emplace_back("DORIX_SERVICE_MODEL_URL: must be http://HOST:PORT/PATH, or https://");
    }
    return faults;
}

int tell(const std::vector<std::string>& faults) {
    for (const auto& fault : faults) std::fprintf(stderr, "%s\n", fault.c_str());
    return badSettings;
}

int runService(const Settings& settings, const Options& options) {
    std::string secret;
    if (options.secretDescriptor) {
        if (!settings.listen.isLoopback)
            return tell({"--local-secret-fd: DORIX_SERVICE_LISTEN must be this computer"});
        secret = readLocalSecret(*options.secretDescriptor);
    }
    raiseDescriptorLimit();
    Program program(settings, std::move(secret));
    program.run(options.secretDescriptor);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = readOptions(std::span(argv + 1, static_cast<std::size_t>(argc - 1)));
    if (!options || options->isHelp) {
        std::fprintf(options ? stdout : stderr, "%s%s", std::string(usage).c_str(), settingsHelp().c_str());
        return options ? 0 : badUsage;
    }
    setLogName("dorix-service");
    // A client that is gone, and a log that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    const auto settings = readSettings(fromEnvironment, options->config);
    if (!settings) return tell(settings.error());
    if (const auto faults = faultsOf(*settings); !faults.empty()) return tell(faults);
    if (options->isCheck) {
        std::puts("nothing is wrong with the settings");
        return 0;
    }
    try {
        return runService(*settings, *options);
    } catch (const std::exception& error) {
        logLine(std::string("event=failed what=") + error.what());
        return EXIT_FAILURE;
    }
}
