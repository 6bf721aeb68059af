#include "adapters/harness/EventLoop.h"
#include "base/Error.h"
#include "fakes/TemporaryFolder.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "memory/reading/JailedDocumentReader.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace dorix {
namespace {

namespace fs = std::filesystem;

/// The helpers of the real program, of which the last one can be looked at and killed.
class WatchedHelpers final : public HelperProcesses {
 public:
    WatchedHelpers(FdWatcher& watcher, const fs::path& program) : real_(watcher, program) {}

    bool isInstalled(const std::string& name) const override { return real_.isInstalled(name); }
    std::unique_ptr<HelperProcess> launch(const std::string& name, Listener listener) override {
        const auto before = children();
        auto helper = real_.launch(name, std::move(listener));
        for (const auto child : children()) {
            if (std::ranges::find(before, child) == before.end()) process = child;
        }
        ++launched;
        return helper;
    }

    /// Of a process, this one by default.
    static std::vector<pid_t> children(pid_t parent = ::getpid()) {
        const auto id = std::to_string(parent);
        std::ifstream list("/proc/" + id + "/task/" + id + "/children");
        return {std::istream_iterator<pid_t>(list), {}};
    }

    pid_t process = -1;
    int launched = 0;

 private:
    LinuxHelperProcesses real_;
};

/// Also before whoever has inherited it has noticed.
bool hasEnded(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string id;
    std::string name;
    std::string state;
    return !(file >> id >> name >> state) || state == "Z";
}

class ReaderTest : public testing::Test {
 protected:
    using Pace = JailedDocumentReader::Pace;

    fs::path write(const std::string& name, const std::string& text) const {
        std::ofstream(folder.path() / name) << text;
        return folder.path() / name;
    }

    /// "none" where the document has none, "failed" where nothing is known of it.
    static Task<std::string> told(JailedDocumentReader& from, fs::path file) {
        try {
            co_return (co_await from.text(std::move(file), 1000)).value_or("none");
        } catch (const Error&) {
            co_return "failed";
        }
    }
    std::string read(const fs::path& file) { return loop.result(told(reader, file), 60); }

    /// A document that keeps its process busy for as long as that may be.
    fs::path endless() const {
        std::string text = "{\\rtf1 ";
        while (text.size() < 24'000'000) text += "{\\*\\x}\\u1\\'41";
        return write("endless.rtf", text);
    }

    EventLoop loop;
    WatchedHelpers helpers{loop.main, DORIX_PROGRAM};
    JailedDocumentReader reader{loop.main, helpers, Pace::awaited};
    TemporaryFolder folder;
};

TEST_F(ReaderTest, OneHelperReadsWhateverTheNamesAre) {
    for (const std::string name : {"a.txt", "b\xFF\xC3\n.TXT", "ñ.md", "quote'\".json", "-.csv"})
        EXPECT_EQ(read(write(name, name + "!")), name.contains('\xFF') ? "b\u00FF\u00C3\n.TXT!" : name + "!");
    EXPECT_EQ(helpers.launched, 1);
    EXPECT_TRUE(reader.reads("pdf"));
    EXPECT_FALSE(reader.reads("PDF"));
    EXPECT_FALSE(reader.reads("exe"));
}

TEST_F(ReaderTest, OfALongTextComeAsManyCharactersAsAreAskedFor) {
    const std::string character = "e\u0301\u0323";  // of five bytes, which come in pieces of any size
    std::string text;
    std::string first;
    for (int i = 0; i < 100'000; ++i) {
        text.append(character).append(1, '\0');
        if (i < 10'000) first += character;
    }
    EXPECT_EQ(loop.result(reader.text(write("long.txt", text), 10'000), 60), first);
}

TEST_F(ReaderTest, DocumentsAreReadOneAtATimeInTheOrderOfAsking) {
    TaskScope tasks(loop.main);
    std::vector<std::string> order;
    const auto ask = [&](std::string name) -> Task<void> {
        order.push_back(co_await told(reader, folder.path() / (name + ".txt")));
    };
    for (const auto* name : {"one", "two", "three"}) {
        write(std::string(name) + ".txt", name);
        tasks.spawn(ask(name));
    }
    EXPECT_TRUE(loop.runUntil([&] { return order.size() == 3; }, 30));
    EXPECT_EQ(order, (std::vector<std::string>{"one", "two", "three"}));
}

TEST_F(ReaderTest, AHelperThatDiesOrIsAbandonedCostsOneDocument) {
    const auto good = write("good.txt", "good");
    EXPECT_EQ(read(good), "good");
    {
        TaskScope tasks(loop.main);
        const auto task = tasks.spawn(told(reader, endless()));
        ASSERT_TRUE(loop.runUntil([&] { return !WatchedHelpers::children(helpers.process).empty(); }));
        const auto reading = WatchedHelpers::children(helpers.process).front();
        ::kill(helpers.process, SIGKILL);
        EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
        // It does not outlive its helper.
        EXPECT_TRUE(loop.runUntil([&] { return hasEnded(reading); }));
    }
    EXPECT_EQ(read(good), "good");
    EXPECT_EQ(helpers.launched, 2);
    {
        TaskScope tasks(loop.main);
        tasks.spawn(told(reader, endless()));
    }
    EXPECT_EQ(read(good), "good");
    EXPECT_EQ(helpers.launched, 3);
}

TEST_F(ReaderTest, WithoutTheProgramNothingIsKnownOfADocument) {
    LinuxHelperProcesses none(loop.main, folder.path() / "dorix");
    JailedDocumentReader nobody(loop.main, none, Pace::awaited);
    EXPECT_FALSE(nobody.reads("txt"));
    EXPECT_EQ(loop.result(told(nobody, write("good.txt", "good"))), "failed");
}

TEST_F(ReaderTest, AFileThatChangesOrVanishesIsReadOrNot) {
    const auto file = folder.path() / "changing.txt";
    std::atomic<bool> goesOn = true;
    std::thread changes([&] {
        while (goesOn) {
            std::ofstream(file) << std::string(100'000, 'x');
            fs::resize_file(file, 10);
            fs::remove(file);
        }
    });
    for (int i = 0; i < 50; ++i) {
        const auto text = read(file);
        EXPECT_TRUE(text == "none" || text.find_first_not_of('x') == std::string::npos) << text;
    }
    goesOn = false;
    changes.join();
}

TEST_F(ReaderTest, AnIdleOneTakesWhatOthersLeave) {
    JailedDocumentReader idle(loop.main, helpers, Pace::idle);
    for (auto* const each : {&idle, &reader}) {
        TaskScope tasks(loop.main);
        tasks.spawn(told(*each, endless()));
        ASSERT_TRUE(loop.runUntil([&] {
            const auto reading = WatchedHelpers::children(helpers.process);
            return !reading.empty() &&
                   (each == &reader || ::sched_getscheduler(reading.front()) == SCHED_IDLE);
        }));
        const auto reading = WatchedHelpers::children(helpers.process);
        if (each == &reader) EXPECT_EQ(::sched_getscheduler(reading.front()), SCHED_OTHER);
    }
}

}  // namespace
}  // namespace dorix
