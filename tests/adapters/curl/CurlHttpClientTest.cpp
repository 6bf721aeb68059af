#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "adapters/harness/WebServer.h"
#include "base/Json.h"
#include "fakes/TemporaryFolder.h"
#include "linux/curl/CurlHttpClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace dorix {
namespace {

using Kind = HttpError::Kind;
namespace fs = std::filesystem;

const std::vector<std::string> serverCommand{DORIX_HTTP_SERVER};

class CurlHttpClientTest : public testing::Test {
 protected:
    /// What the task gives, or throws.
    template <typename T>
    T result(Task<T> task) {
        auto handle = scope.spawn(std::move(task));
        EXPECT_TRUE(loop.runUntil([&] { return handle.isDone(); }));
        std::optional<T> value;
        std::exception_ptr error;
        TaskScope reader(loop.main);
        const auto read = reader.spawn([](TaskHandle<T> from, auto& into, auto& failure) -> Task<void> {
            try {
                into = co_await std::move(from);
            } catch (...) {
                failure = std::current_exception();
            }
        }(std::move(handle), value, error));
        EXPECT_TRUE(loop.runUntil([&] { return read.isDone(); }));
        if (error) std::rethrow_exception(error);
        return std::move(*value);
    }

    template <typename T>
    std::optional<Kind> failure(Task<T> task) {
        try {
            result(std::move(task));
        } catch (const HttpError& error) {
            EXPECT_FALSE(error.localizedDescription().empty());
            EXPECT_FALSE(error.localizedDescription().contains("secret"));
            return error.kind();
        }
        return std::nullopt;
    }

    HttpRequest get(const std::string& path, double timeout = 10) const {
        return {.url = server.url(path), .timeout = timeout};
    }
    Json json(HttpRequest request) { return Json::parse(result(client->send(std::move(request))).body); }
    int seen(const char* what) { return json(get("seen")).at(what); }

    static std::string contents(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// What the server's path "bytes" gives.
    static std::string numberedBytes(std::size_t count) {
        std::string all(count, '\0');
        for (std::size_t i = 0; i < count; ++i) all[i] = static_cast<char>(i % 251);
        return all;
    }

    EventLoop loop;
    WebServer server{serverCommand};
    std::unique_ptr<CurlHttpClient> client = std::make_unique<CurlHttpClient>();
    TaskScope scope{loop.main};
};

TEST_F(CurlHttpClientTest, RequestsGoAsTheyAreOverOneConnection) {
    const auto post = [&] {
        return HttpRequest{.method = HttpRequest::Method::post,
                           .url = server.url("echo/a%20b"),
                           .headers = {{"authorization", "Bearer secret"}, {"x-empty", ""}},
                           .body = std::string("{\"a\":\"ñ\"}")};
    };
    const auto first = json(post());
    EXPECT_EQ(first.at("method"), "POST");
    EXPECT_EQ(first.at("path"), "/echo/a%20b");
    EXPECT_EQ(first.at("body"), "{\"a\":\"ñ\"}");
    EXPECT_EQ(first.at("headers").at("authorization"), "Bearer secret");
    EXPECT_EQ(first.at("headers").at("x-empty"), "");
    EXPECT_FALSE(first.at("headers").contains("expect"));

    const auto second = result(client->send(get("echo/")));
    EXPECT_EQ(second.status, 200);
    EXPECT_EQ(second.header("x-mixed-case"), "padded");
    EXPECT_EQ(Json::parse(second.body).at("connection"), first.at("connection"));

    const auto refused = result(client->send(get("status/429")));
    EXPECT_EQ(refused.status, 429);
    EXPECT_EQ(refused.body, "words of 429");
}

TEST_F(CurlHttpClientTest, ABodyIsHandedOverWhileItArrives) {
    auto stream = result(client->open(get("drip/")));
    EXPECT_EQ(stream.status, 200);
    EXPECT_EQ(result(stream.body->next()), "one");
    result(client->send(get("release/")));
    EXPECT_EQ(result(stream.body->next()), "two");
    EXPECT_EQ(result(stream.body->next()), std::nullopt);

    auto many = result(client->open(get("chunks/20000")));
    std::string all;
    while (auto bytes = result(many.body->next())) all += *bytes;
    EXPECT_EQ(all.size(), 20000U * 8);
    EXPECT_TRUE(all.ends_with("0019998\n0019999\n"));
}

TEST_F(CurlHttpClientTest, WhatNobodyTakesStaysWithTheServer) {
    constexpr std::size_t whole = 60'000'000;
    auto stream = result(client->open(get("bytes/" + std::to_string(whole), 0.5)));
    int before = -1;
    while (std::exchange(before, seen("sent")) != before) loop.runFor(0.3);
    EXPECT_LT(before, 30'000'000);
    loop.runFor(0.6);  // waiting for us is no stall of the server's
    std::size_t taken = 0;
    while (auto bytes = result(stream.body->next())) taken += bytes->size();
    EXPECT_EQ(taken, whole);
}

TEST_F(CurlHttpClientTest, WhatIsLetGoOfEndsAtOnce) {
    auto stream = result(client->open(get("stall/")));
    EXPECT_EQ(result(stream.body->next()), "some");
    stream.body.reset();
    EXPECT_TRUE(loop.runUntil([&] { return seen("left") == 1; }, 2));

    auto waiting = std::make_optional<TaskScope>(loop.main);
    const auto task = waiting->spawn(client->send(get("never/")));
    loop.runFor(0.2);
    task.cancel();
    EXPECT_TRUE(loop.runUntil([&] { return seen("left") == 2; }, 2));
    waiting->spawn(client->send(get("never/")));
    loop.runFor(0.2);
    waiting.reset();
    EXPECT_TRUE(loop.runUntil([&] { return seen("left") == 3; }, 2));

    const auto last = scope.spawn(client->send(get("never/")));
    loop.runFor(0.2);
    client.reset();
    EXPECT_TRUE(loop.runUntil([&] { return last.isDone(); }, 2));
}

TEST_F(CurlHttpClientTest, WhatIsNoAnswerSaysWhy) {
    EXPECT_EQ(failure(client->send({.url = "http://127.0.0.1:1/"})), Kind::unreachable);
    EXPECT_EQ(failure(client->send({.url = "file:///etc/passwd"})), Kind::badRequest);
    EXPECT_EQ(failure(client->send({.url = "http:///nowhere"})), Kind::badRequest);
    auto forged = get("echo/");
    forged.headers = {{"authorization", "Bearer secret\r\nx-other: 1"}};
    EXPECT_EQ(failure(client->send(forged)), Kind::badRequest);

    EXPECT_EQ(failure(client->send(get("never/", 0.3))), Kind::timedOut);
    EXPECT_EQ(failure(client->send(get("stall/", 0.3))), Kind::timedOut);
    EXPECT_EQ(failure(client->send(get("trickle/", 0.3))), Kind::timedOut) << "it has to come whole";
    EXPECT_EQ(failure(client->open(get("never/", 0.3))), Kind::timedOut);
    auto slow = result(client->open(get("trickle/", 0.3)));
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(result(slow.body->next())->empty());
    auto stalled = result(client->open(get("stall/", 0.3)));
    EXPECT_EQ(result(stalled.body->next()), "some");
    EXPECT_EQ(failure(stalled.body->next()), Kind::timedOut);

    EXPECT_EQ(failure(client->send(get("cut/"))), Kind::broken);
    auto cut = result(client->open(get("cut/")));
    EXPECT_EQ(result(cut.body->next()), "some");
    EXPECT_EQ(failure(cut.body->next()), Kind::broken);

    auto large = get("bytes/1001");
    large.largestBody = 1000;
    EXPECT_EQ(failure(client->send(large)), Kind::tooLarge);
    large.largestBody = 1001;
    EXPECT_EQ(result(client->send(large)).body, numberedBytes(1001));
}

TEST_F(CurlHttpClientTest, CredentialsAreNotTakenElsewhere) {
    const WebServer other(serverCommand);
    auto request = get("redirect/" + other.url("echo/"));
    EXPECT_EQ(result(client->send(request)).status, 302);
    request.redirects = HttpRequest::Redirects::follow;
    EXPECT_EQ(json(request).at("method"), "GET");
    request.headers = {{"Authorization", "Bearer secret"}};
    EXPECT_EQ(result(client->send(request)).status, 302);

    // A proxy would be shown what is meant for this computer.
    const Environment proxied({{"http_proxy", "http://127.0.0.1:1"}, {"no_proxy", ""}});
    EXPECT_EQ(result(client->send(get("echo/"))).status, 200);
    EXPECT_EQ(failure(client->send({.url = "http://dorix.invalid/"})), Kind::unreachable);
}

TEST_F(CurlHttpClientTest, AServerHasToProveWhoItIs) {
    const Certificate certificate;
    const WebServer secure(serverCommand, &certificate);
    EXPECT_EQ(failure(client->send({.url = secure.url("echo/")})), Kind::untrusted);
    CurlHttpClient trusting(certificate.file);
    EXPECT_EQ(result(trusting.send({.url = secure.url("echo/")})).status, 200);
    const auto path = secure.url("echo/").substr(std::string("https://127.0.0.1").size());
    EXPECT_EQ(failure(trusting.send({.url = "https://localhost" + path})), Kind::untrusted);
    // Nor is anybody led out of the safe.
    const HttpRequest lured{.url = secure.url("redirect/" + server.url("echo/")),
                            .redirects = HttpRequest::Redirects::follow};
    EXPECT_EQ(failure(trusting.send(lured)), Kind::badRequest);
}

TEST_F(CurlHttpClientTest, AServerOfHTTP2IsSpokenToAsSuch) {
    const Certificate certificate;
    std::ofstream(certificate.folder.path() / "page") << "words";
    const auto port = std::to_string(20'000 + ::getpid() % 20'000);
    const OtherProgram speaksNothingElse({"/usr/sbin/nghttpd", "--address=127.0.0.1", "-d",
                                          certificate.folder.path().string(), port, certificate.key,
                                          certificate.file});
    CurlHttpClient trusting(certificate.file);
    const HttpRequest request{.url = "https://127.0.0.1:" + port + "/page"};
    EXPECT_TRUE(eventually([&] { return failure(trusting.send(request)) != Kind::unreachable; }));
    EXPECT_EQ(result(trusting.send(request)).body, "words");
}

TEST_F(CurlHttpClientTest, AConnectionIsOpenedAheadAndNothingIsSentOverIt) {
    const Certificate certificate;
    const WebServer secure(serverCommand, &certificate);
    for (const WebServer* shop : {static_cast<const WebServer*>(&server), &secure}) {
        CurlHttpClient onlooker(certificate.file);
        CurlHttpClient early(certificate.file);
        int looks = 0;
        const auto seen = [&](const char* what) -> int {
            ++looks;
            return Json::parse(result(onlooker.send({.url = shop->url("seen")})).body).at(what);
        };
        early.connect(shop->url(""));
        // One is the onlooker's own.
        EXPECT_TRUE(loop.runUntil([&] { return seen("connections") == 2; }));
        loop.runFor(0.1);
        early.connect(shop->url(""));
        loop.runFor(0.1);
        EXPECT_EQ(result(early.send({.url = shop->url("echo/")})).status, 200);
        EXPECT_EQ(seen("connections"), 2);
        EXPECT_EQ(seen("requests"), looks + 1);
    }
    CurlHttpClient nowhere;
    nowhere.connect("http://127.0.0.1:1");
    nowhere.connect("mailto:x");
    loop.runFor(0.1);
}

TEST_F(CurlHttpClientTest, AFileIsWrittenAndGoneOnWith) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "model";
    std::uint64_t held = 0;
    std::optional<std::uint64_t> whole;
    const HttpDownload to{.file = file,
                          .onProgress = [&](std::uint64_t now, std::optional<std::uint64_t> all) {
                              held = now;
                              whole = all;
                          }};
    constexpr std::size_t size = 9'000'000;
    EXPECT_EQ(result(client->download(get("bytes/" + std::to_string(size)), to)).status, 200);
    EXPECT_TRUE(contents(file) == numberedBytes(size));
    EXPECT_EQ(held, size);
    EXPECT_EQ(whole, size);

    fs::resize_file(file, 1'000'000);
    auto rest = get("bytes/3000000");
    rest.range = HttpRange{.first = 1'000'000};
    EXPECT_EQ(result(client->download(rest, to)).status, 206);
    EXPECT_TRUE(contents(file) == numberedBytes(3'000'000));
    EXPECT_EQ(whole, 3'000'000U);

    // What is not the file after all leaves it alone.
    auto seen = to;
    seen.accepts = [](const HttpHead& head) { return head.header("content-length") != "100"; };
    EXPECT_EQ(result(client->download(get("bytes/100"), seen)).body, numberedBytes(100));
    EXPECT_EQ(fs::file_size(file), 3'000'000U);
    std::string pieces;
    seen.onPiece = [&](std::uint64_t at, std::string_view piece) {
        EXPECT_EQ(at, 2'999'000 + pieces.size());
        pieces += piece;
        if (pieces.size() > 5000) throw HttpError(Kind::tooLarge, "enough");
    };
    rest.range = HttpRange{.first = 2'999'000};
    EXPECT_EQ(result(client->download(rest, seen)).status, 206);
    EXPECT_EQ(pieces, numberedBytes(3'000'000).substr(2'999'000));
    pieces.clear();
    EXPECT_EQ(failure(client->download(
                  get("bytes/4000000"),
                  {.file = file, .onPiece = [](auto, auto) { throw HttpError(Kind::tooLarge, "enough"); }})),
              Kind::tooLarge);
    rest.range = HttpRange{.first = 1'000'000};
    fs::resize_file(file, 3'000'000);

    const auto missing = result(client->download(get("status/404"), to));
    EXPECT_EQ(missing.body, "words of 404");
    EXPECT_EQ(fs::file_size(file), 3'000'000U);
    EXPECT_EQ(failure(client->download(get("cut/"), to)), Kind::broken);
    EXPECT_EQ(contents(file), "some");
    rest.range = HttpRange{.first = 5};
    EXPECT_EQ(failure(client->download(rest, to)), Kind::disk) << "there would be a hole";
    EXPECT_EQ(contents(file), "some");
    EXPECT_EQ(failure(client->download(get("bytes/10"), {.file = folder.path()})), Kind::disk);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1'000'000, before.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(failure(client->download(get("bytes/9000000"), to)), Kind::disk);
    setrlimit(RLIMIT_FSIZE, &before);
}

}  // namespace
}  // namespace dorix
