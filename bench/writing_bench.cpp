// What writing through the service costs of the program's own, from the transcript to the text, beside the
// rules alone: the real router, client, network thread and keychain, and on loopback a service that answers
// at once. Then how long the text takes to come by rule where the service refuses connections, answers with
// 500, or takes the words and says nothing. On a session bus; in a desktop of its own:
// tools/desktop/with-desktop build/release/bench/writing_bench

#include "adapters/harness/EventLoop.h"
#include "base/Log.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeLanguageModel.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/loop/FileDescriptor.h"
#include "linux/secret/SecretKeychain.h"
#include "localdata/SettingsStore.h"
#include "writing/WritingRouter.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace dorix {
namespace {

constexpr int dictations = 1000;
constexpr int falls = 200;
constexpr const char* transcript =
    "bueno nos vemos mañana a las diez en la oficina y hablamos del presupuesto";

/// A service on loopback, up to the end of the process.
class StandIn {
 public:
    enum class Manner { answers, fails, saysNothing };

    StandIn() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{.sin_family = AF_INET, .sin_addr = {htonl(INADDR_LOOPBACK)}};
        socklen_t size = sizeof address;
        ::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), size);
        ::listen(listener_.get(), 16);
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
        url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        std::thread([this] { serve(); }).detach();
    }

    std::string url;
    std::atomic<Manner> manner = Manner::answers;

 private:
    void serve() {
        while (true) {
            const int connection = ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
            const int on = 1;
            ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
            std::thread([this, connection] { answerAll(FileDescriptor(connection)); }).detach();
        }
    }

    void answerAll(const FileDescriptor& connection) {
        const Json body{{"accion", "escribir"}, {"titulo", "Cita"}, {"texto", transcript}};
        const auto text = body.dump();
        const auto good =
            "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(text.size()) + "\r\n\r\n" + text;
        const std::string bad = "HTTP/1.1 500 Error\r\nContent-Length: 0\r\n\r\n";
        std::string held;
        std::array<char, 65536> piece{};
        while (true) {
            const auto count = ::read(connection.get(), piece.data(), piece.size());
            if (count <= 0) return;
            held.append(piece.data(), static_cast<std::size_t>(count));
            const auto head = held.find("\r\n\r\n");
            if (head == std::string::npos) continue;
            const auto whole = head + 4 + std::stoul(held.substr(held.find("Content-Length: ") + 16));
            if (held.size() < whole) continue;
            held.clear();
            if (manner == Manner::saysNothing) continue;
            const auto& answer = manner == Manner::answers ? good : bad;
            std::ignore = ::send(connection.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }

    const FileDescriptor listener_;
};

void print(const char* what, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    const auto at = [&](double part) {
        return 1000 * seconds[static_cast<std::size_t>(part * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("%-44s p50 %.2f ms, p95 %.2f ms, p99 %.2f ms, worst %.2f ms\n", what, at(0.5), at(0.95),
                at(0.99), at(1));
}

struct Bench {
    Bench(EventLoop& mainLoop, const std::string& url) : loop(mainLoop), server(url) {
        loop.runUntil([&] { return signedIn.isDone(); });
        account.loggedIn.set(true);
    }

    EventLoop& loop;
    const std::string server;
    TemporaryFolder folder;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings{defaults, loginItem, {}};
    CurlHttpClient http;
    SecretKeychain keychain{"dorix-bench", folder.path() / "secrets.json"};
    DorixAPI api{loop.main, http, keychain, server};
    AccountStore account{loop.main, api, keychain, defaults, "bench"};
    UnavailableLanguageModel model;
    LocalPolisher local{model};
    WritingRouter router{settings, account, api, local};
    SessionToken token{keychain};
    TaskScope tasks{loop.main};
    TaskHandle<void> signedIn = tasks.spawn(token.keep("token", server));

    /// Seconds to the text, and who wrote it. Timed within the loop, as the dictation waits there.
    Task<void> write(Writer& writer, std::vector<double>& taken, std::string& engine) {
        const double before = loop.main.now();
        engine = (co_await writer.polish({.transcript = transcript, .appName = "Mail"})).engine;
        taken.push_back(loop.main.now() - before);
    }
    void measure(const char* what, int times, std::string_view wanted) {
        std::vector<double> taken;
        std::string engine;
        for (int i = 0; i < times; ++i) {
            router.connect();
            loop.runFor(0.006);  // while the user talks
            const auto task = tasks.spawn(write(router, taken, engine));
            while (!task.isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            if (engine != wanted) std::printf("it was written by %s\n", engine.c_str());
        }
        print(what, taken);
    }
};

int run() {
    setLogSink([](std::string_view) {});
    StandIn service;
    EventLoop loop;
    Bench bench(loop, service.url);
    bench.settings.engine.set(WritingEngine::local);
    bench.measure("by rule alone", dictations, "Básico");
    bench.settings.engine.set(WritingEngine::automatic);
    bench.measure("by a service that answers at once", dictations, "Nube de DORIX");
    service.manner = StandIn::Manner::fails;
    bench.measure("by rule, the service says 500", falls, "Básico");
    Bench refused(loop, "http://127.0.0.1:1");
    refused.measure("by rule, the service takes no connections", falls, "Básico");
    service.manner = StandIn::Manner::saysNothing;
    bench.measure("by rule, the service says nothing", 1, "Básico");
    return 0;
}

}  // namespace
}  // namespace dorix

int main() { return dorix::run(); }
