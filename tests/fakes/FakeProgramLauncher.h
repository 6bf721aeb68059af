#pragma once

#include "platform/ProgramLauncher.h"

#include <string>
#include <vector>

namespace dorix {

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
