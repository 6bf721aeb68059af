#include "service/accounts/Accounts.h"
#include "service/accounts/Email.h"
#include "service/accounts/Secrets.h"
#include "service/storage/Schema.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace dorix::service;

constexpr std::int64_t now = 1'800'000'000;
constexpr int sessions = 100'000;

/// A database on the disk with many sessions, each of an account of its own.
struct Filled {
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("dorix-accounts-" + randomHex(8));
    std::unique_ptr<Database> database = connect("sqlite:" + (folder / "s.sqlite").string());
    std::vector<std::string> tokens;

    Filled() {
        migrate(*database);
        database->transaction(Database::Turn::beside, [&] {
            for (int i = 0; i < sessions; ++i) {
                const auto id = std::to_string(i);
                tokens.push_back(randomHex(32));
                database->run("INSERT INTO accounts (id, email, created) VALUES ($1, $2, $3)",
                              {id, id + "@example.org", std::to_string(now)});
                database->run(
                    "INSERT INTO sessions (token_hash, id, account, device, created, used) VALUES "
                    "($1, $2, $3, 'pc', $4, $5)",
                    {hashOf(tokens.back()), id, id, std::to_string(now), std::to_string(now)});
            }
        });
    }
    ~Filled() {
        database.reset();
        std::filesystem::remove_all(folder);
    }
};

void verifySession(benchmark::State& state) {
    const Filled filled;
    const Accounts accounts({.mayHaveAccount = [](auto) { return true; }, .sessionSeconds = 86400});
    std::size_t at = 0;
    for (auto _ : state) {
        at = (at + 7919) % filled.tokens.size();
        if (!accounts.authenticate(*filled.database, filled.tokens[at], now)) std::abort();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(verifySession);

}  // namespace
