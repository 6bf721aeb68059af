#pragma once

#include "base/async/Completion.h"
#include "platform/Application.h"
#include "platform/MouseEventMonitors.h"
#include "platform/ProgramLauncher.h"
#include "platform/SavePanel.h"
#include "platform/StatusItem.h"

#include <utility>

namespace dorix {

class FakeApplication final : public Application {
 public:
    void terminate() override { ++terminations; }
    void relaunch() override { ++relaunches; }

    int terminations = 0;
    int relaunches = 0;
};

/// A mouse that the test clicks with in other applications. It holds one monitor at a time.
class FakeMouseEventMonitors final : public MouseEventMonitors {
 public:
    Token addGlobalMonitor(GlobalHandler handler) override {
        auto monitor = std::make_shared<GlobalHandler>(std::move(handler));
        monitor_ = monitor;
        return monitor;
    }

    bool isMonitored() const { return !monitor_.expired(); }
    void click() {
        if (const auto monitor = monitor_.lock()) (*monitor)();
    }

 private:
    std::weak_ptr<GlobalHandler> monitor_;
};

/// A dialog that the test answers.
class FakeSavePanel final : public SavePanel {
 public:
    Task<std::optional<std::filesystem::path>> run(Request wanted) override {
        request = std::move(wanted);
        answer = {};
        co_return co_await answer;
    }

    Request request;
    Completion<std::optional<std::filesystem::path>> answer;
};

class FakeStatusItem final : public StatusItem {
 public:
    void show(std::function<void()> whenClicked, MenuBuilder builder) override {
        clicked = std::move(whenClicked);
        menu = std::move(builder);
    }
    void setToolTip(const std::string& text) override { toolTip = text; }

    std::function<void()> clicked;
    MenuBuilder menu;
    std::string toolTip;
};

/// Starts nothing.
class FakeProgramLauncher final : public ProgramLauncher {
 public:
    std::int32_t ownProcessIdentifier() const override { return 42; }
    std::string bundlePath() const override { return "/opt/dorix"; }
    std::unique_ptr<ChildProcess> launchSelf(const std::vector<std::string>&) override { return nullptr; }
    bool open(const std::string&) override { return false; }
};

}  // namespace dorix
