#include "adapters/harness/WebServer.h"
#include "base/Json.h"
#include "linux/jail/Confinement.h"
#include "recogniser/server/ServerEngine.h"
#include "recogniser/server/ServerFailure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <span>
#include <string>
#include <tuple>
#include <vector>

namespace dorix::recogniser {
namespace {

using Kind = ServerFailure::Kind;
using testing::Optional;

class Finals final : public Results {
 public:
    void partial(const std::string&) override { ADD_FAILURE(); }
    void final(const std::string& text) override { texts.push_back(text); }

    std::vector<std::string> texts;
};

constexpr ServerPatience little{.connecting = 5, .answering = 1, .perSecondSpoken = 0};

std::vector<std::string> transcribe(const ModelRequest& model, ServerPatience patience = {},
                                    double seconds = 1.5) {
    ServerEngine engine(model, patience);
    Finals finals;
    engine.begin(finals);
    std::vector<float> samples(static_cast<std::size_t>(seconds * Engine::sampleRate));
    for (std::size_t i = 0; i < samples.size(); i += 100) samples[i] = 0.5F;
    const auto half = samples.size() / 2;
    engine.accept(std::span(samples).first(half));
    engine.accept(std::span(samples).subspan(half));
    engine.finish();
    return finals.texts;
}

ModelRequest modelAt(const std::string& address, const std::string& key = "top-secret") {
    return {.engine = "server", .language = "pt", .server = {.address = address, .key = key, .model = "big"}};
}

std::optional<Kind> failure(const std::string& address, const std::string& key = "top-secret") {
    try {
        transcribe(modelAt(address, key), little);
        return std::nullopt;
    } catch (const ServerFailure& refusal) {
        EXPECT_THAT(refusal.localizedDescription(), testing::Not(testing::HasSubstr("secret")));
        return refusal.kind();
    }
}

class ServerEngineTest : public testing::Test {
 protected:
    WebServer server{{DORIX_TRANSCRIPTION_SERVER}};
};

TEST_F(ServerEngineTest, TheServerIsGivenTheWholeUtteranceAndWhatItNeedsToKnow) {
    const auto texts = transcribe(modelAt(server.url("understands/")));
    ASSERT_EQ(texts.size(), 1U);
    const auto told = Json::parse(texts.front());
    EXPECT_EQ(told.at("sound"), Json({16000, 1, 2, 24000}));
    EXPECT_EQ(told.at("type"), "audio/wav");
    EXPECT_EQ(told.at("fields"), Json({{"model", "big"}, {"language", "pt"}, {"response_format", "json"}}));
    EXPECT_EQ(told.at("key"), "Bearer top-secret");

    for (const auto* address : {"understands/v1", "understands/v1/audio/transcriptions"}) {
        const auto same = transcribe(modelAt(server.url(address), ""));
        EXPECT_TRUE(Json::parse(same.at(0)).at("key").is_null());
    }
    EXPECT_THAT(transcribe(modelAt(server.url("404")), {}, 0), testing::IsEmpty());  // nobody is asked
}

TEST_F(ServerEngineTest, WhatGoesWrongIsSaidInWords) {
    EXPECT_THAT(failure(server.url("401")), Optional(Kind::badKey));
    EXPECT_THAT(failure(server.url("404")), Optional(Kind::unknownCall));
    EXPECT_THAT(failure(server.url("413")), Optional(Kind::tooLong));
    EXPECT_THAT(failure(server.url("429")), Optional(Kind::tooMany));
    EXPECT_THAT(failure(server.url("500")), Optional(Kind::serverError));
    EXPECT_THAT(failure(server.url("204")), Optional(Kind::badAnswer));
    EXPECT_THAT(failure(server.url("says")), Optional(Kind::badAnswer));
    EXPECT_THAT(failure(server.url("floods")), Optional(Kind::badAnswer));
    EXPECT_THAT(failure(server.url("redirects")), Optional(Kind::refused));
    EXPECT_THAT(failure(server.url("sleeps")), Optional(Kind::timedOut));
    EXPECT_THAT(failure("http://127.0.0.1:1/"), Optional(Kind::unreachable));
    EXPECT_THAT(failure("file:///etc/passwd"), Optional(Kind::badAddress));
    EXPECT_THAT(failure("http://127.example.com"), Optional(Kind::keyInClear));
    EXPECT_THAT(failure(server.url("understands"), "a\r\nX-Other: b"), Optional(Kind::badKey));
    EXPECT_THAT(transcribe(modelAt(server.url("stumbles"))), testing::ElementsAre("hola"));

    const Certificate certificate;
    const WebServer stranger({DORIX_TRANSCRIPTION_SERVER}, &certificate);
    EXPECT_THAT(failure(stranger.url("understands")), Optional(Kind::untrusted));
}

TEST_F(ServerEngineTest, ItNeedsNoMoreThanAJailHas) {
    const auto child = ::fork();
    if (child == 0) {
        Confinement jail{
            .readable = systemLibraries(), .mayConnect = true, .mayStartThreads = true, .memory = 1U << 29U};
        const auto network = networkSettings();
        jail.readable.insert(jail.readable.end(), network.begin(), network.end());
        std::ignore = confine(jail);
        // By a name, which a thread looks up.
        auto address = server.url("understands");
        address.replace(address.find("127.0.0.1"), 9, "localhost");
        ::_exit(transcribe(modelAt(address)).size() == 1 ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

}  // namespace
}  // namespace dorix::recogniser
