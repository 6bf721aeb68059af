#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "cloud/AccountForm.h"
#include "cloud/AccountStore.h"
#include "cloud/OwnService.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "linux/curl/CurlHttpClient.h"
#include "localdata/Language.h"
#include "platform/CompanionService.h"
#include "platform/Keychain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using Step = AccountForm::Step;

/// A service for several users on a port of its own, which puts its mails into a folder.
class TeamService {
 public:
    explicit TeamService(const fs::path& folder)
        : outbox_(folder / "outbox"),
          log_(folder / "log"),
          program_({"sh", "-c", "exec \"$0\" 2>\"$1\"", DORIX_SERVICE, log_.string()},
                   {{"DORIX_SERVICE_LISTEN", "127.0.0.1:0"},
                    {"DORIX_SERVICE_DATABASE", "sqlite:" + (folder / "service.sqlite").string()},
                    {"DORIX_SERVICE_MAIL", "outbox:" + outbox_.string()}}) {
        eventually([this] { return port() != ""; });
    }

    std::string url() const { return "http://127.0.0.1:" + port(); }

    /// The code of the last of so many mails.
    std::string code(std::size_t mails) const {
        EXPECT_TRUE(eventually([&] { return this->mails().size() == mails; }));
        return found(text(this->mails().back()), std::regex("\\b(\\d{6})\\b\r?\n"));
    }

 private:
    static std::string text(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::string found(const std::string& text, const std::regex& pattern) {
        std::smatch match;
        return std::regex_search(text, match, pattern) ? match[1].str() : "";
    }
    std::string port() const { return found(text(log_), std::regex("event=listening .*port=(\\d+)[^]*\n")); }
    /// In the order in which they were written.
    std::vector<fs::path> mails() const {
        std::vector<fs::path> files;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(outbox_, error))
            if (entry.path().extension() == ".eml") files.push_back(entry.path());
        std::ranges::sort(files, {}, [](const auto& file) { return fs::last_write_time(file); });
        return files;
    }

    const fs::path outbox_;
    const fs::path log_;
    OtherProgram program_;
};

/// The account as the program has it, up to the network.
class AccountOverTheWireTest : public testing::Test {
 protected:
    AccountOverTheWireTest() { installLanguage(defaults, {}); }
    ~AccountOverTheWireTest() override { uninstallLanguage(); }

    /// Until the service has answered what was asked for last.
    void wait() {
        ASSERT_TRUE(loop.runUntil([this] { return !form.busy.get(); }));
    }
    std::optional<std::string> kept() { return loop.result(keychain.read("session-token")); }
    bool refreshes() {
        TaskScope scope(loop.main);
        const auto done = scope.spawn(account.refresh());
        return loop.runUntil([&] { return done.isDone(); }) && account.loggedIn.get();
    }

    const TemporaryFolder folder;
    EventLoop loop;
    MemoryUserDefaults defaults;
    MemoryKeychain keychain;
    CurlHttpClient http;
    UnavailableCompanionService none;
    DorixAPI api{loop.main, http, keychain, std::nullopt};
    AccountStore account{loop.main, api, keychain, defaults, "Mesa"};
    OwnService own{loop.main, http, none, api, account};
    AccountForm form{loop.main, api, account, own, defaults};
};

TEST_F(AccountOverTheWireTest, SomebodySignsInToATeamsServiceAndOut) {
    const TeamService team(folder.path());
    form.useServer("http://dorix.example");
    EXPECT_NE(form.error.get(), "") << "in the clear over a network";
    api.useServer(team.url());

    form.begin();
    form.sendCode("ana@example.org");
    wait();
    ASSERT_EQ(form.step.get(), Step::code) << form.error.get();
    const auto first = team.code(1);
    form.verify(first == "000000" ? "000001" : "000000");
    wait();
    EXPECT_EQ(form.error.get(), "El código no es correcto o ha caducado. Pide uno nuevo.");
    EXPECT_EQ(form.step.get(), Step::code);
    form.resendCode();
    wait();
    EXPECT_EQ(form.error.get(), "");
    EXPECT_EQ(form.notice.get(), "Te hemos enviado otro código.");
    const auto second = team.code(2);
    form.verify(" " + second.substr(0, 3) + "\u00a0" + second.substr(3) + "\n");
    wait();
    ASSERT_EQ(form.step.get(), Step::signedIn) << form.error.get();
    EXPECT_EQ(form.email.get(), "ana@example.org");
    EXPECT_TRUE(refreshes());
    const auto token = kept();
    ASSERT_TRUE(token);

    form.signOut();
    wait();
    EXPECT_EQ(form.step.get(), Step::email);
    EXPECT_FALSE(account.loggedIn.get());
    EXPECT_EQ(kept(), std::nullopt);
    TaskScope scope(loop.main);
    scope.spawn(SessionToken(keychain).keep(*token, api.baseURL()));
    EXPECT_FALSE(refreshes()) << "the service does not know it any more";
}

TEST_F(AccountOverTheWireTest, TooManyCodesAreRefusedInTheUsersLanguage) {
    const TeamService team(folder.path());
    api.useServer(team.url());
    form.sendCode("ana@example.org");
    wait();
    for (int more = 0; more < 4; ++more) {
        form.resendCode();
        wait();
        EXPECT_EQ(form.error.get(), "");
    }
    form.resendCode();
    wait();
    EXPECT_EQ(form.error.get(), "Has pedido demasiados códigos. Espera unos minutos y vuelve a intentarlo.");
    EXPECT_EQ(form.notice.get(), "");
    EXPECT_EQ(form.step.get(), Step::code) << "those that were sent are still good";
    defaults.set("appLanguage", "en");
    form.resendCode();
    wait();
    EXPECT_EQ(form.error.get(), "You’ve asked for too many codes. Wait a few minutes and try again.");
}

}  // namespace
}  // namespace dorix
