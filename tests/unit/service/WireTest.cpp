#include "fakes/TemporaryFolder.h"
#include "service/http/Address.h"
#include "service/mail/MailText.h"
#include "service/model/ModelEvents.h"
#include "service/model/ModelUrl.h"
#include "service/settings/Settings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <numeric>
#include <string>

namespace dorix::service {
namespace {

TEST(ModelEventsTest, TextsAreTheSameHoweverTheBytesAreCut) {
    const std::string stream =
        ": hi\n\ndata: {\"choices\":[{\"delta\":{\"role\":\"assistant\",\"content\":null}}]}\n\n"
        "data:{\"choices\":[{\"delta\":{\"content\":\"ñ\\u00f1\"}}]}\r\n\r\nevent: x\ndata: [1]\ndata: "
        "{\"choices\":[]}\n"
        "data: {\"choices\":[{\"delta\":{\"content\":\" dos\"}}]}\n\ndata: [DONE]\n\ndata: "
        "{\"choices\":[{\"delta\":"
        "{\"content\":\"never\"}}]}\n\n";
    for (std::size_t cut = 1; cut <= stream.size(); ++cut) {
        ModelEvents events;
        std::string text;
        for (std::size_t at = 0; at < stream.size(); at += cut) {
            for (const auto& piece : events.read(std::string_view(stream).substr(at, cut))) text += piece;
        }
        ASSERT_EQ(text, "ññ dos") << cut;
        ASSERT_TRUE(events.isDone() && !events.hasFailed());
    }
}

TEST(ModelEventsTest, AnErrorAndALineWithoutEndFail) {
    ModelEvents told;
    told.read("data: {\"error\":{\"message\":\"x\"}}\n");
    EXPECT_TRUE(told.hasFailed());
    for (const std::string reason : {"stop", "length"}) {
        const bool isWhole = reason == "stop";
        const auto choice = [&](const std::string& part) {
            return R"({"choices":[{")" + part + R"(":{"content":"x"},"finish_reason":")" + reason + "\"}]}";
        };
        ModelEvents ended;
        ended.read("data: " + choice("delta"));
        EXPECT_EQ(ended.finish().size(), 1U);
        EXPECT_EQ(ended.isWhole(), isWhole);
        EXPECT_EQ(ended.hasFailed(), !isWhole);
        EXPECT_EQ(textOfAnswer(choice("message")), isWhole ? "x" : "");
    }
    ModelEvents endless;
    const std::string piece(100'000, 'x');
    int pieces = 0;
    while (!endless.hasFailed() && pieces < 100) {
        endless.read(piece);
        ++pieces;
    }
    EXPECT_LT(pieces, 20);
    EXPECT_EQ(textOfAnswer("{\"choices\":[{\"message\":{\"content\":\"x\"}}]}"), "x");
    for (const std::string wrong : {"", "[]", "{}", "{\"choices\":{}}", "{\"choices\":[1]}"}) {
        EXPECT_EQ(textOfAnswer(wrong), "");
    }
}

TEST(ModelUrlTest, Addresses) {
    EXPECT_EQ(parseModelUrl("https://api.example.org/v1/"),
              (ModelUrl{true, "api.example.org", "443", "/v1"}));
    EXPECT_EQ(parseModelUrl("http://[::1]:8080"), (ModelUrl{false, "::1", "8080", ""}));
    for (const std::string wrong :
         {"", "http://", "http://:80", "http://a:b", "http://u:p@h/", "http://[::1", "x"}) {
        EXPECT_FALSE(parseModelUrl(wrong).has_value()) << wrong;
    }
}

TEST(AddressTest, OnlyTrustedPeersSayWhoCalls) {
    const std::vector<std::string> proxies{"10.0.0.1", "10.0.0.2"};
    EXPECT_EQ(callerAddress("192.0.2.7", "203.0.113.9", proxies), "192.0.2.7");
    EXPECT_EQ(callerAddress("10.0.0.1", "6.6.6.6, 203.0.113.9, 10.0.0.2", proxies), "203.0.113.9");
    EXPECT_EQ(callerAddress("::ffff:10.0.0.1", "nonsense", proxies), "10.0.0.1");
    EXPECT_TRUE(isOneOf(proxies, "::ffff:10.0.0.1"));
    EXPECT_TRUE(isLoopbackAddress("::ffff:127.0.0.1"));
    EXPECT_FALSE(isOneOf(proxies, "::ffff:192.0.2.7") || isLoopbackAddress("::ffff:192.0.2.7"));
    EXPECT_EQ(callerAddress("2001:db8:1:2:3:4:5:6", "", proxies), "2001:db8:1:2::/64");
}

TEST(MailTextTest, TheCodeCanBeReadAndEveryLineIsShortAscii) {
    for (const auto language : {Language::spanish, Language::english}) {
        const auto mail =
            mailText({.to = "a@b.org", .code = "012345", .language = language}, "dorix@b.org", 0);
        EXPECT_NE(mail.find(" 012345\r\n"), std::string::npos) << mail;
        EXPECT_NE(mail.find("Date: Thu, 01 Jan 1970 00:00:00 +0000\r\n"), std::string::npos);
        std::size_t line = 0;
        for (const char character : mail) {
            ASSERT_TRUE((character >= ' ' && character <= '~') || character == '\r' || character == '\n');
            line = character == '\n' ? 0 : line + 1;
            ASSERT_LE(line, 79U);
        }
    }
}

TEST(SettingsTest, TheEnvironmentComesBeforeTheFileWhoseFaultsAreTold) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "settings";
    std::ofstream(file) << "# hello\n\nDORIX_SERVICE_MODEL = \"a model\"\nDORIX_SERVICE_MODEL_URL=http://x/\n"
                           "DORIX_SERVICE_LISTEN=[::1]:90\n";
    std::map<std::string, std::string> variables{{"DORIX_SERVICE_LISTEN", "127.0.0.1:81"},
                                                 {"HOME", "/home/ana"}};
    const Environment environment = [&](const std::string& name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
    const auto settings = readSettings(environment, file).value();
    EXPECT_EQ(settings.listen, (ListenAddress{"127.0.0.1", 81, true}));
    EXPECT_EQ(settings.model, "a model");
    EXPECT_EQ(settings.modelUrl, "http://x");
    EXPECT_EQ(settings.database, "sqlite:/home/ana/.local/share/dorix-service/service.sqlite");
    std::ofstream(file) << "DORIX_SERVICE_MODLE=x\nnonsense\n";
    EXPECT_EQ(readSettings(environment, file).error().size(), 2);
    variables = {{"DORIX_SERVICE_LISTEN", "0.0.0.0:80"}};
    EXPECT_EQ(readSettings(environment, std::nullopt).error().size(), 1);
    variables["DORIX_SERVICE_TRUSTED_PROXIES"] = "10.0.0.1";
    EXPECT_TRUE(readSettings(environment, std::nullopt).has_value());
    variables["DORIX_SERVICE_EMAILS"] = "@Example.org, eve@example.com";
    const auto members = readSettings(environment, std::nullopt).value();
    EXPECT_TRUE(mayHaveAccount(members, "ana@example.org") && mayHaveAccount(members, "eve@example.com"));
    EXPECT_FALSE(mayHaveAccount(members, "ana@badexample.com") || mayHaveAccount(members, "example.org"));
}

}  // namespace
}  // namespace dorix::service
