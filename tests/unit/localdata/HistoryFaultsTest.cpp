#include "fakes/TemporaryFolder.h"
#include "localdata/HistoryStore.h"
#include "unit/localdata/FaultyDisk.h"
#include "unit/localdata/HistoryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <random>
#include <string>
#include <thread>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Persist = HistoryStore::Persist;

class HistoryFaultsTest : public testing::Test {
 protected:
    /// A file that an earlier run left.
    void makeFile() const { HistoryStore(file).add(historyItem("antes", 1), Persist::yes); }

    // What a process has written outlives it wherever it lies; in memory the rounds take less time.
    static inline const fs::path memory = "/dev/shm";
    TemporaryFolder folder{fs::is_directory(memory) ? memory : fs::temp_directory_path()};
    fs::path file = folder.path() / "dorix.sqlite";
};

/// The list goes on without the file.
enum class Holds { nothing, rows };
std::string logOfWorkFromMemory(const fs::path& file, Holds holds) {
    return logOf([&] {
        int told = 0;
        HistoryStore store(file);
        store.onNewItem = [&](const HistoryItem& /*item*/) { ++told; };
        store.add(historyItem("x", 50), Persist::yes);
        store.add(historyItem("y", 40), Persist::yes);
        EXPECT_EQ(told, 2) << "no row is ever found";
        EXPECT_THAT(ids(store.items()), ElementsAre("x", "y"));
        EXPECT_THAT(store.loadAll(), IsEmpty());
        EXPECT_EQ(store.firstDate(), std::nullopt);
        store.remove("x");
        EXPECT_EQ(store.items().size(), 2U) << "what may still be in the file is not shown as gone";
        EXPECT_EQ(store.clear(), holds == Holds::nothing);
        EXPECT_EQ(store.items().empty(), holds == Holds::nothing) << "they would be back";
    });
}

TEST_F(HistoryFaultsTest, WithoutAFileItGoesOnFromMemory) {
    std::ofstream(folder.path() / "no folder") << "x";
    const auto nowhere = folder.path() / "no folder" / "dorix.sqlite";
    EXPECT_EQ(logOfWorkFromMemory(nowhere, Holds::nothing),
              "DORIX: no se pudo abrir la base de datos en " + nowhere.string() +
                  "\n"
                  "DORIX SQLite: bad parameter or other API misuse\n"
                  "DORIX SQLite: bad parameter or other API misuse\n");
}

TEST_F(HistoryFaultsTest, AFileThatIsNoDatabaseStaysAsItIs) {
    for (const auto& contents : {std::string("mis notas\n"), std::string(100'000, 'x')}) {
        std::ofstream(file, std::ios::binary) << contents;
        EXPECT_EQ(logOfWorkFromMemory(file, Holds::nothing),
                  "DORIX SQLite: file is not a database\nDORIX SQLite: file is not a database\n");
        EXPECT_EQ(bytes(file), contents);
    }
}

TEST_F(HistoryFaultsTest, OfADamagedDatabaseItShowsWhatCanBeRead) {
    {
        HistoryStore store(file);
        auto item = historyItem("", 0);
        item.answer = std::string(1000, 'r');
        for (; item.createdAt < 100; ++item.createdAt) {
            item.id = std::to_string(item.createdAt);
            store.add(item, Persist::yes);
        }
    }
    const auto whole = bytes(file);
    for (std::size_t at = 4096; at < whole.size(); at += std::size_t{4} * 4096) {
        auto damaged = whole;
        damaged.replace(at, 2000, 2000, '\xff');
        std::ofstream(file, std::ios::binary) << damaged;
        HistoryStore store(file);
        EXPECT_LE(store.items().size(), 100U);
        store.add(historyItem("nuevo", 1000), Persist::yes);
        EXPECT_EQ(store.items().front().id, "nuevo");
        store.remove(store.items().back().id);
    }
}

TEST_F(HistoryFaultsTest, ADatabaseThatAnotherProgramHasLockedIsNotWaitedFor) {
    makeFile();
    {
        const auto other = sqlite::open(file);
        sqlite::exec(other.get(), "PRAGMA journal_mode=DELETE; BEGIN EXCLUSIVE");
        const auto log = logOf([&] {
            HistoryStore store(file);
            store.add(historyItem("x", 50), Persist::yes);
            EXPECT_THAT(ids(store.items()), ElementsAre("x"));
            EXPECT_THAT(store.loadAll(), IsEmpty());
            store.remove("x");
            EXPECT_FALSE(store.clear());
            EXPECT_EQ(store.items().size(), 1U) << "what may still be in the file is not shown as gone";
            sqlite::exec(other.get(),
                         "INSERT INTO history SELECT 'otro', kind, app, NULL, title, 2, '', '', NULL "
                         "FROM history; COMMIT");
            store.add(historyItem("z", 60), Persist::yes);
        });
        EXPECT_EQ(log, "DORIX SQLite: database is locked\nDORIX SQLite: database is locked\n");
    }
    EXPECT_THAT(ids(HistoryStore(file).items()), ElementsAre("z", "otro", "antes"));
}

TEST_F(HistoryFaultsTest, AFaultOfTheDiskCostsOnlyWhatWasBeingWritten) {
    auto item = historyItem("", 2);
    item.answer = std::string(20'000, 'a');  // of several pages
    for (const int lasting : {1, 1'000'000}) {
        int failed = 1;
        for (int good = 0; failed > 0; ++good) {
            SCOPED_TRACE(std::to_string(lasting) + " failures after " + std::to_string(good));
            std::vector<std::string> written{"antes"};
            makeFile();
            {
                const FaultyDisk disk(FaultyDisk::Opens::all, good, lasting);
                HistoryStore store(file);
                for (const auto* id : {"a", "b", "c"}) {
                    item.id = id;
                    ++item.createdAt;
                    const int before = FaultyDisk::failed;
                    store.add(item, Persist::yes);
                    if (FaultyDisk::failed == before) written.insert(written.begin(), id);
                }
                EXPECT_THAT(ids(store.items()), ElementsAre("c", "b", "a", "antes"));
                if (lasting == 1) EXPECT_EQ(ids(store.loadAll()), written);
            }
            failed = FaultyDisk::failed;
            EXPECT_TRUE(isWhole(file));
            EXPECT_THAT(ids(HistoryStore(file).items()), testing::IsSupersetOf(written));
            fs::remove(file);
        }
    }
}

TEST_F(HistoryFaultsTest, WhatTheDiskDoesNotLetGoIsNotToldAsGone) {
    int refused = 0;
    int failed = 1;
    for (int good = 0; failed > 0; ++good) {
        SCOPED_TRACE("all fails after " + std::to_string(good));
        makeFile();
        bool isCleared = false;
        {
            const FaultyDisk disk(FaultyDisk::Opens::all, good, 1'000'000);
            HistoryStore store(file);
            logOf([&] { isCleared = store.clear(); });
            EXPECT_EQ(store.items().empty(), isCleared);
        }
        failed = FaultyDisk::failed;
        EXPECT_EQ(HistoryStore(file).items().empty(), isCleared);
        refused += isCleared ? 0 : 1;
        fs::remove(file);
    }
    EXPECT_GT(refused, 0);
}

TEST_F(HistoryFaultsTest, AReadOnlyFileIsRead) {
    makeFile();
    const auto before = bytes(file);
    {
        const FaultyDisk disk(FaultyDisk::Opens::readOnly);
        HistoryStore store(file);
        store.add(historyItem("ahora", 2), Persist::yes);
        EXPECT_THAT(ids(store.items()), ElementsAre("ahora", "antes"));
        EXPECT_THAT(ids(store.loadAll()), ElementsAre("antes"));
    }
    const FaultyDisk disk(FaultyDisk::Opens::nothingBeside);
    EXPECT_THAT(logOfWorkFromMemory(file, Holds::rows), testing::StartsWith("DORIX SQLite: "))
        << "SQLite needs files beside it";
    EXPECT_EQ(bytes(file), before);
}

// Crashes

constexpr int writes = 2000;

HistoryItem numbered(int number) {
    auto item = historyItem(std::to_string(number), number);
    item.answer = std::string(static_cast<std::size_t>(number % 97) * 10, 'r');
    return item;
}

/// Says the number of each item once `add` has returned.
[[noreturn]] void writeItems(const fs::path& file, int says) {
    HistoryStore store(file);
    for (int number = 0; number < writes; ++number) {
        store.add(numbered(number), Persist::yes);
        if (write(says, &number, sizeof number) != sizeof number) _exit(1);
    }
    while (true) pause();
}

/// How many items a process had written that was killed somewhere around the `last`.
int writtenUntilKilled(const fs::path& file, int last, std::chrono::microseconds after) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return -1;
    const pid_t writer = fork();
    if (writer == 0) writeItems(file, ends[1]);
    close(ends[1]);
    int number = -1;
    while (number < last && read(ends[0], &number, sizeof number) > 0) {
    }
    std::this_thread::sleep_for(after);
    kill(writer, SIGKILL);
    while (read(ends[0], &number, sizeof number) > 0) {
    }
    close(ends[0]);
    waitpid(writer, nullptr, 0);
    return number + 1;
}

void expectHolds(const fs::path& file, int written) {
    EXPECT_TRUE(isWhole(file));
    HistoryStore store(file);
    const auto size = static_cast<int>(store.items().size());
    EXPECT_GE(size, written);
    EXPECT_LE(size, written + 1) << "the write that was under way may have been done";
    int number = size;
    for (const auto& item : store.items()) EXPECT_EQ(item, numbered(--number));
    store.add(historyItem("despues", writes), Persist::yes);
    EXPECT_EQ(store.firstDate(), size == 0 ? writes : 0);
}

TEST_F(HistoryFaultsTest, NoCrashLosesARowThatWasWritten) {
    const auto seed = std::random_device{}();
    std::mt19937 random(seed);
    // A hundred rounds, unless a sanitizer makes them slow.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (int round = 0; round < 100 && std::chrono::steady_clock::now() < end && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(seed));
        const auto crashed = folder.path() / std::to_string(round) / "dorix.sqlite";
        const int last = std::uniform_int_distribution(-1, writes - 1)(random);
        const std::chrono::microseconds after(std::uniform_int_distribution(0, 100)(random));
        expectHolds(crashed, writtenUntilKilled(crashed, last, after));
        fs::remove_all(crashed.parent_path());
    }
}

}  // namespace
}  // namespace dorix
