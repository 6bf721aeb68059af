#include "adapters/harness/OtherProgram.h"
#include "base/async/ManualExecutor.h"
#include "fakes/TemporaryFolder.h"
#include "linux/xdg/AtomicFile.h"
#include "linux/xdg/AutostartLoginItem.h"
#include "linux/xdg/Environment.h"
#include "linux/xdg/JsonUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class XdgTest : public testing::Test {
 protected:
    static std::string read(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void write(const fs::path& path, std::string_view text) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    std::ptrdiff_t filesBeside() const {
        return std::distance(fs::directory_iterator(file.parent_path()), {}) - 1;
    }

    const TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    const fs::path file = folder / "dorix/defaults.json";
    ManualExecutor main;
};

TEST_F(XdgTest, KeepsWhatWasSetAcrossRuns) {
    {
        JsonUserDefaults defaults(main, file);
        EXPECT_EQ(defaults.value("pttKey"), std::nullopt);
        defaults.set("pttKey", "fn");
        defaults.set("paused", true);
        defaults.set("gone", 1);
        defaults.remove("gone");
        defaults.set("nombre", "Begoña\xFF");
    }
    JsonUserDefaults again(main, file);
    EXPECT_EQ(again.string("pttKey"), "fn");
    EXPECT_EQ(again.boolean("paused"), true);
    EXPECT_EQ(again.boolean("pttKey"), std::nullopt) << "another type counts as absent";
    EXPECT_EQ(again.value("gone"), std::nullopt);
    EXPECT_EQ(again.string("nombre"), "Begoña\uFFFD");
    EXPECT_EQ(filesBeside(), 0) << "no temporary file is left";
    struct stat status{};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(XdgTest, TellsObserversOnTheMainExecutor) {
    JsonUserDefaults defaults(main, file);
    int told = 0;
    const auto subscription = defaults.observe("a", [&] { ++told; });
    defaults.set("a", 1);
    EXPECT_EQ(told, 0);
    main.runPosted();
    defaults.set("a", 1);
    defaults.set("b", 1);
    main.runPosted();
    EXPECT_EQ(told, 1);
}

TEST_F(XdgTest, SetsADamagedFileAside) {
    const auto isReplaced = [this] {
        JsonUserDefaults defaults(main, file);
        EXPECT_EQ(defaults.value("a"), std::nullopt);
        defaults.set("b", 1);
    };
    const auto deep = "{\"a\":\"[{\\\"\",\"b\":" + std::string(1'000'000, '[');
    for (const std::string_view damaged : {"{\"a\":", "[1]", "\xFF\xFE", "", deep.c_str()}) {
        write(file, damaged);
        isReplaced();
    }
    fs::resize_file(file, 100'000'000);
    isReplaced();
    EXPECT_EQ(filesBeside(), 6) << "each under a name of its own";
    EXPECT_EQ(JsonUserDefaults(main, file).value("b"), 1);
}

TEST_F(XdgTest, WhatCannotBeReadIsLeftAsItIs) {
    const auto isLeft = [this] {
        const auto type = fs::symlink_status(file).type();
        testing::internal::CaptureStderr();
        {
            JsonUserDefaults defaults(main, file);
            defaults.set("b", 1);
            EXPECT_EQ(defaults.value("b"), 1);
        }
        EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("DORIX: "));
        EXPECT_EQ(fs::symlink_status(file).type(), type);
        EXPECT_EQ(filesBeside(), 0);
        fs::remove(file);
    };
    fs::create_directories(file);
    isLeft();
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    isLeft();
    fs::create_symlink("/proc/self/mem", file);  // fails to read as a broken disk does
    isLeft();

    fs::create_symlink("/proc/self/mem", file);
    JsonUserDefaults defaults(main, file);
    defaults.set("a", 1);
    write(folder / "whole", "{\"kept\": 2}");
    fs::rename(folder / "whole", file);
    defaults.set("b", 1);
    ASSERT_TRUE(eventually([&] { return Json::parse(read(file), nullptr, false).contains("b"); }));
    EXPECT_EQ(Json::parse(read(file)), Json::parse(R"({"a": 1, "b": 1, "kept": 2})"));
}

TEST_F(XdgTest, AHomeThatCannotBeWrittenCostsOnlyTheSaving) {
    write(folder / "dorix", "not a folder");  // refuses root as well
    testing::internal::CaptureStderr();
    {
        JsonUserDefaults defaults(main, file);
        defaults.set("a", 1);
        EXPECT_EQ(defaults.value("a"), 1);
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("DORIX: "));
}

TEST_F(XdgTest, WritesThroughASymbolicLink) {
    const fs::path real = folder / "dotfiles" / "defaults.json";
    write(real, "{}");
    fs::create_directories(file.parent_path());
    fs::create_symlink(real, file);
    {
        JsonUserDefaults(main, file).set("a", 1);
    }
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(Json::parse(read(real)).at("a"), 1);
}

TEST_F(XdgTest, AKilledWriterLeavesAWholeFile) {
    const std::string small = "{\"size\":\"small\"}";
    const std::string large = "{\"size\":\"" + std::string(300'000, 'x') + "\"}";
    ASSERT_FALSE(replaceFile(file, small));
    for (int round = 0; round < 20; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            while (true) {
                if (replaceFile(file, large) || replaceFile(file, small)) ::_exit(1);
            }
        }
        ::usleep(static_cast<useconds_t>(500 + round * 700));  // where the kill falls is chance, on purpose
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        const auto contents = read(file);
        ASSERT_TRUE(contents == small || contents == large) << contents.size();
    }
}

TEST_F(XdgTest, ASourceThatGivesUpLeavesTheOldFileAlone) {
    AtomicFileReplacer files;
    const std::string piece(100'000, 'x');
    ASSERT_FALSE(files.replace(file, [&](const auto& sink) { return sink(piece) && sink("fin"); }));
    EXPECT_EQ(read(file), piece + "fin");
    const auto givesUp = [&](const auto& sink) { return sink(piece) && sink(piece) && false; };
    EXPECT_EQ(files.replace(file, givesUp), std::errc::operation_canceled);
    EXPECT_EQ(read(file), piece + "fin");
    EXPECT_EQ(filesBeside(), 0) << "nothing lies beside it";
}

TEST_F(XdgTest, TwoProcessesDoNotUndoEachOther) {
    int told = 0;
    {
        JsonUserDefaults defaults(main, file);
        const auto subscription = defaults.observe("theirs", [&] { ++told; });
        defaults.set("gone", 1);
        defaults.set("mine", 1);
        ASSERT_TRUE(eventually([&] { return fs::exists(file); }));
        {
            JsonUserDefaults other(main, file);
            other.set("theirs", 2);
            other.set("mine", 0);
        }
        JsonUserDefaults(main, file).remove("gone");
        defaults.set("mine", 3);
        ASSERT_TRUE(eventually([&] { return defaults.value("theirs").has_value(); }));
        main.runPosted();
        EXPECT_EQ(told, 1);
        EXPECT_EQ(defaults.value("gone"), std::nullopt);
    }
    EXPECT_EQ(Json::parse(read(file)), Json::parse(R"({"mine": 3, "theirs": 2})"));
}

TEST_F(XdgTest, ManyProcessesLoseNothing) {
    constexpr int processes = 4;
    constexpr int rounds = 25;
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
        children.push_back(::fork());
        if (children.back() != 0) continue;
        for (int round = 0; round < rounds; ++round) {
            JsonUserDefaults(main, file).set(std::to_string(i) + "-" + std::to_string(round), true);
        }
        ::_exit(0);
    }
    for (const auto child : children) ::waitpid(child, nullptr, 0);
    EXPECT_EQ(Json::parse(read(file)).size(), static_cast<std::size_t>(processes * rounds));
}

TEST_F(XdgTest, TheFileMayGoOrBreakWhileItIsUsed) {
    for (const bool broken : {false, true}) {
        JsonUserDefaults defaults(main, file);
        defaults.set("first", broken);
        ASSERT_TRUE(eventually([&] { return fs::exists(file); }));
        fs::remove(file);
        if (broken) write(file, "{");
        defaults.set("second", broken);
        ASSERT_TRUE(eventually([&] { return fs::exists(file) && Json::accept(read(file)); }));
        EXPECT_EQ(Json::parse(read(file)).at("first"), broken);
    }
}

TEST_F(XdgTest, AStoppedProcessDoesNotHoldTheOthersUp) {
    fs::create_directories(file.parent_path());
    const auto held = lockFolder(file.parent_path());
    JsonUserDefaults(main, file).set("a", 1);
    EXPECT_EQ(Json::parse(read(file)).at("a"), 1);
}

TEST_F(XdgTest, TheLoginItemIsAnAutostartEntry) {
    const auto program = folder / "a \"b\" $c 100%" / "dorix";
    const auto entry = folder / "autostart" / "es.pelmora.dorix.desktop";
    fs::create_directories(program.parent_path());
    std::ofstream(program) << "#!/bin/sh\n";
    fs::permissions(program, fs::perms::owner_all);
    AutostartLoginItem item(folder, {folder / "system"}, program);
    EXPECT_FALSE(item.isRegistered());
    item.registerApplication();
    EXPECT_TRUE(item.isRegistered());
    const auto at = folder.string();
    EXPECT_THAT(read(entry), testing::HasSubstr("\nTryExec=" + at + "/a \"b\" $c 100%/dorix\nExec=\"" + at +
                                                "/a \\\\\"b\\\\\" \\\\$c 100%%/dorix\"\n"));
    fs::remove(program);
    EXPECT_FALSE(item.isRegistered()) << "a desktop passes it over";
    item.unregisterApplication();
    item.unregisterApplication();
    EXPECT_FALSE(item.isRegistered() || fs::exists(entry));

    fs::create_directories(folder / "system" / "autostart");
    std::ofstream(folder / "system" / "autostart" / entry.filename()) << "[Desktop Entry]\nExec=/bin/true\n";
    EXPECT_TRUE(item.isRegistered());
    item.unregisterApplication();
    EXPECT_FALSE(item.isRegistered());
    EXPECT_THAT(read(entry), testing::HasSubstr("\nHidden=true\n")) << "or the system's would start it";
}

SystemLanguages languagesOf(std::map<std::string, std::string> environment) {
    return systemLanguages([environment](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    });
}

TEST(LocaleEnvironmentTest, ReadsTheVariablesAsTheSystemDoes) {
    const auto plain = languagesOf({{"LANG", "es_ES.UTF-8"}});
    EXPECT_THAT(plain.preferred, ElementsAre("es-ES"));
    EXPECT_EQ(plain.currentLanguageCode, "es");
    const auto list = languagesOf({{"LANGUAGE", "en_GB:ca@valencia::es"}, {"LANG", "it_IT@euro"}});
    EXPECT_THAT(list.preferred, ElementsAre("en-GB", "ca", "es", "it-IT"));
    EXPECT_EQ(list.currentLanguageCode, "it");
    const auto posix = languagesOf({{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", "es"}, {"LANG", "fr_FR"}});
    EXPECT_THAT(posix.preferred, ElementsAre("en-US-POSIX"));
    EXPECT_EQ(posix.currentLanguageCode, "en");
    EXPECT_EQ(languagesOf({}).preferred, posix.preferred);
}

}  // namespace
}  // namespace dorix
