#pragma once

#include "platform/ProcessWatcher.h"
#include "platform/ProgramLauncher.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// Processes that end when the test says so.
class FakeProcessWatcher final : public ProcessWatcher {
 public:
    Token watchExit(std::int32_t process, std::function<void()> onExit) override {
        if (!running.contains(process)) return nullptr;
        auto watch = std::make_shared<std::function<void()>>(std::move(onExit));
        watches_[process] = watch;
        return watch;
    }

    void end(std::int32_t process) {
        running.erase(process);
        if (const auto watch = watches_[process].lock()) (*watch)();
    }

    std::set<std::int32_t> running;

 private:
    std::map<std::int32_t, std::weak_ptr<std::function<void()>>> watches_;
};

/// Writes down what it is asked to start.
class FakeProgramLauncher final : public ProgramLauncher {
 public:
    std::int32_t ownProcessIdentifier() const override { return 42; }
    std::string bundlePath() const override { return "/opt/dorix"; }
    std::unique_ptr<ChildProcess> launchSelf(const std::vector<std::string>& arguments) override {
        std::string line = "launch";
        for (const auto& argument : arguments) line += " " + argument;
        log.push_back(line);
        return canLaunch ? std::make_unique<Child>(*this) : nullptr;
    }
    bool open(const std::string& path) override {
        log.push_back("open " + path);
        return canLaunch;
    }

    bool canLaunch = true;
    std::vector<std::string> log;

 private:
    class Child final : public ChildProcess {
     public:
        explicit Child(FakeProgramLauncher& launcher) : launcher_(launcher) {}
        void terminate() override { launcher_.log.emplace_back("terminate"); }

     private:
        FakeProgramLauncher& launcher_;
    };
};

}  // namespace dorix
