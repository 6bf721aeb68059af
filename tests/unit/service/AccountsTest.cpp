#include "fakes/TemporaryFolder.h"
#include "service/accounts/Accounts.h"
#include "service/accounts/Email.h"
#include "service/accounts/Secrets.h"
#include "service/storage/Schema.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace dorix::service {
namespace {

constexpr std::int64_t start = 1'800'000'000;  // at the beginning of a quarter of an hour
constexpr std::int64_t day = 86400;
constexpr auto ana = "ana@example.org";

/// Fails in place of one of its statements, as a process that is killed there.
class DyingDatabase final : public Database {
 public:
    DyingDatabase(Database& inner, int lives) : inner_(inner), lives_(lives) {}

    Rows run(std::string_view sql, const Values& values) override {
        if (lives_-- == 0) throw StorageError("killed");
        return inner_.run(sql, values);
    }
    void transaction(Turn turn, const std::function<void()>& body) override {
        inner_.transaction(turn, body);
    }
    bool hasDied() const { return lives_ < 0; }

 private:
    Database& inner_;
    int lives_;
};

class AccountsTest : public testing::Test {
 protected:
    AccountsTest() { migrate(*database_); }

    std::string codeAt(std::int64_t now, const std::string& from = "10.0.0.1") {
        return accounts_.requestCode(*database_, ana, from, now).value().value().code;
    }
    OrRefusal<SignedIn> verify(const std::string& code, std::int64_t now, const std::string& email = ana) {
        return accounts_.verify(*database_, email, code, "pc", "10.0.0.1", now);
    }
    std::string tokenAt(std::int64_t now) { return verify(codeAt(now), now).value().token; }
    bool isKnown(const std::string& token, std::int64_t now) {
        return accounts_.authenticate(*database_, token, now).has_value();
    }

    TemporaryFolder folder_;
    std::unique_ptr<Database> database_ = connect("sqlite:" + (folder_.path() / "s.sqlite").string());
    Accounts accounts_{{.mayHaveAccount = [](std::string_view email) { return email != "eve@example.org"; },
                        .sessionSeconds = 30 * day,
                        .requestsPerDay = 2,
                        .localSecret = ""}};
};

TEST_F(AccountsTest, ACodeIsGoodForTenMinutesAndTheNewestAlone) {
    const auto code = codeAt(start);
    EXPECT_EQ(verify(code, start + 600).error(), Refusal::codeRefused);
    const auto older = codeAt(start + 600);
    const auto newer = codeAt(start + 601);
    if (older != newer) EXPECT_EQ(verify(older, start + 601).error(), Refusal::codeRefused);
    EXPECT_TRUE(verify(" " + newer + "\n", start + 1200).has_value());
}

TEST_F(AccountsTest, LimitsHoldForAQuarterOfAnHour) {
    for (int i = 0; i < 5; ++i) codeAt(start);
    EXPECT_EQ(accounts_.requestCode(*database_, ana, "10.0.0.2", start + 899).error(), Refusal::tooManyCodes);
    codeAt(start + 900);
    for (int i = 0; i < 15; ++i) EXPECT_EQ(verify("x", start + 900).error(), Refusal::codeRefused);
    EXPECT_EQ(verify(codeAt(start + 901), start + 901).error(), Refusal::tooManyTries);
    EXPECT_TRUE(verify(codeAt(start + 1800), start + 1800).has_value());
}

TEST_F(AccountsTest, WhoIsPatientGuessesNoMoreThanThirtyTimesADay) {
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(verify("x", start + 900 * (i / 10)).error(), Refusal::codeRefused);
    }
    EXPECT_EQ(verify(codeAt(start + 3600), start + 3600).error(), Refusal::tooManyTries);
    EXPECT_TRUE(verify(codeAt(start + day), start + day).has_value());
}

TEST_F(AccountsTest, WhoMayNotHaveAnAccountHasNoSessionEither) {
    EXPECT_FALSE(accounts_.requestCode(*database_, "eve@example.org", "10.0.0.3", start).value().has_value());
    EXPECT_FALSE(accounts_.requestCode(*database_, localEmail, "10.0.0.3", start).value().has_value());
    const Accounts open(
        {.mayHaveAccount = [](auto) { return true; }, .sessionSeconds = day, .localSecret = "secret"});
    const auto code = open.requestCode(*database_, "eve@example.org", "10.0.0.3", start).value().value().code;
    EXPECT_EQ(verify(code, start, "eve@example.org").error(), Refusal::codeRefused);
    const auto again =
        open.requestCode(*database_, "eve@example.org", "10.0.0.3", start).value().value().code;
    const auto eve = open.verify(*database_, "eve@example.org", again, "pc", "10.0.0.3", start).value().token;
    const auto local = open.verify(*database_, localEmail, "secret", "pc", "127.0.0.1", start).value().token;
    for (const auto& token : {eve, local}) {
        EXPECT_TRUE(open.authenticate(*database_, token, start).has_value());
        EXPECT_FALSE(isKnown(token, start));
    }
}

TEST_F(AccountsTest, ASessionEndsWhenItIsLongUnused) {
    const auto token = tokenAt(start);
    EXPECT_TRUE(isKnown(token, start + 20 * day));
    EXPECT_TRUE(isKnown(token, start + 50 * day));
    accounts_.tidy(*database_, start + 80 * day);
    EXPECT_TRUE(isKnown(token, start + 80 * day));
    EXPECT_FALSE(isKnown(token, start + 111 * day));
    accounts_.tidy(*database_, start + 111 * day);
    EXPECT_TRUE(database_->run("SELECT id FROM sessions").empty());
    EXPECT_TRUE(database_->run("SELECT subject FROM counters").empty());
}

TEST_F(AccountsTest, AnAccountKeepsItsNewestSessionsAndADaysQuota) {
    const auto first = tokenAt(start);
    const Accounts local({.mayHaveAccount = {}, .sessionSeconds = day, .localSecret = "secret"});
    for (int i = 0; i < 105; ++i) {
        ASSERT_TRUE(local.verify(*database_, localEmail, "secret", "pc", "127.0.0.1", start + i).has_value());
    }
    const auto listed = database_->run("SELECT id FROM sessions");
    EXPECT_EQ(listed.size(), 101);
    const auto session = accounts_.authenticate(*database_, first, start).value();
    EXPECT_TRUE(accounts_.countRequest(*database_, session, start).has_value());
    EXPECT_TRUE(accounts_.countRequest(*database_, session, start).has_value());
    EXPECT_EQ(accounts_.countRequest(*database_, session, start).error(), Refusal::dayUsedUp);
    EXPECT_TRUE(accounts_.countRequest(*database_, session, start + day).has_value());
}

TEST_F(AccountsTest, ASignInThatDiesLeavesTheCodeOrTheSession) {
    for (int lives = 0;; ++lives) {
        const auto now = start + 900 * lives;
        const auto code = codeAt(now);
        const auto before = database_->run("SELECT id FROM sessions").size();
        DyingDatabase dying(*database_, lives);
        try {
            ASSERT_TRUE(accounts_.verify(dying, ana, code, "pc", "10.0.0.1", now).has_value());
        } catch (const StorageError&) {
        }
        const auto sessions = database_->run("SELECT id FROM sessions").size() - before;
        const bool isGood = verify(code, now).has_value();
        EXPECT_EQ(sessions + (isGood ? 1 : 0), 1) << "after " << lives << " statements";
        if (!dying.hasDied()) break;
    }
}

TEST(SchemaTest, AChangeThatDiesIsMadeWholeByTheNextStart) {
    const TemporaryFolder folder;
    bool hasDied = true;
    for (int lives = 0; hasDied; ++lives) {
        const auto file = folder.path() / std::to_string(lives);
        {
            const auto database = connect("sqlite:" + file.string());
            DyingDatabase dying(*database, lives);
            try {
                migrate(dying);
            } catch (const StorageError&) {
            }
            hasDied = dying.hasDied();
        }
        const auto database = connect("sqlite:" + file.string());
        migrate(*database);
        EXPECT_TRUE(database->run("SELECT id FROM accounts").empty());
    }
    const auto database = connect("sqlite:" + (folder.path() / "0").string());
    database->run("UPDATE schema_version SET version = 1000");
    EXPECT_THROW(migrate(*database), StorageError);
}

TEST(SecretsTest, CodesAndTokensAreOfTheirForm) {
    std::set<std::string> codes;
    for (int i = 0; i < 1000; ++i) codes.insert(randomCode());
    EXPECT_GT(codes.size(), 980);
    for (const auto& code : codes)
        EXPECT_TRUE(code.size() == 6 && code.find_first_not_of("0123456789") == code.npos);
    EXPECT_EQ(hashOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_NE(randomHex(32), randomHex(32));
    EXPECT_FALSE(isSameSecret("abc", "abd"));
}

TEST(EmailTest, OnlyWhatMailCanBeSentTo) {
    EXPECT_EQ(cleanEmail(" Ana.B+x@Example.ORG\n"), "ana.b+x@example.org");
    for (const std::string wrong :
         {"", "@", "a@", "@b", "a@b@c", "a b@c", "a@b\r\nBcc: d@e", "a@b>", "a..b@c", ".a@b", "a@.b", "a@b.",
          "\"a\"@b", "ana@ejemplo.españa", "<a@b"}) {
        EXPECT_FALSE(cleanEmail(wrong).has_value()) << wrong;
    }
    EXPECT_FALSE(cleanEmail(std::string(250, 'a') + "@b.org").has_value());
}

}  // namespace
}  // namespace dorix::service
