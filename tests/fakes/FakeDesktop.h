#pragma once

#include "base/Error.h"
#include "base/async/Completion.h"
#include "platform/InputEvents.h"
#include "platform/LoginItem.h"
#include "platform/PrivacyGrants.h"
#include "platform/Processes.h"
#include "platform/StatusItem.h"
#include "platform/SystemSounds.h"
#include "platform/UserFiles.h"
#include "platform/Workspace.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

class FakeApplication final : public Application {
 public:
    void terminate() override { ++terminations; }
    void relaunch() override { ++relaunches; }

    int terminations = 0;
    int relaunches = 0;
};

/// A mouse that the test clicks with in other applications.
class FakeMouseEventMonitors final : public MouseEventMonitors {
 public:
    Subscription addGlobalMonitor(GlobalHandler handler) override {
        return monitors_.add(std::move(handler));
    }

    bool isMonitored() const { return !monitors_.isEmpty(); }
    void click() { monitors_.notify(); }

 private:
    Observers<> monitors_;
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

class FakeFolderPanel final : public FolderPanel {
 public:
    Task<Answer> run(Request wanted) override {
        request = std::move(wanted);
        answer = {};
        co_return co_await answer;
    }

    Request request;
    Completion<Answer> answer;
};

class FakeStatusItem final : public StatusItem {
 public:
    void show(std::function<void()> whenClicked, MenuBuilder) override { clicked = std::move(whenClicked); }
    void setToolTip(const std::string&) override {}

    std::function<void()> clicked;
};

/// Starts nothing, and sees nothing end.
class FakeProcesses final : public Processes {
 public:
    std::int32_t ownProcessIdentifier() const override { return 42; }
    std::string bundlePath() const override { return "/opt/dorix"; }
    Terminate launchSelf(const std::vector<std::string>&) override { return nullptr; }
    bool open(const std::string&) override { return false; }
    Subscription watchParentExit(std::int32_t, std::function<void()>) override { return {}; }
};

/// Grants as the test sets them; everything is granted at first.
class FakePrivacyGrants final : public PrivacyGrants {
 public:
    AuthorizationStatus microphone = AuthorizationStatus::authorized;
    SpeechAuthorizationStatus speech = SpeechAuthorizationStatus::authorized;
    bool trusted = true;
    bool screen = true;
    bool hasPanes = true;
    std::vector<std::string> log;

    AuthorizationStatus microphoneStatus() const override { return microphone; }
    SpeechAuthorizationStatus speechStatus() const override { return speech; }
    bool isProcessTrusted() const override { return trusted; }
    bool preflightScreenCaptureAccess() const override { return screen; }
    Task<void> requestMicrophone() override {
        log.emplace_back("request microphone");
        microphone = AuthorizationStatus::authorized;
        co_return;
    }
    Task<void> requestSpeech() override {
        log.emplace_back("request speech");
        speech = SpeechAuthorizationStatus::authorized;
        co_return;
    }
    void promptForTrust() override { log.emplace_back("prompt for trust"); }
    bool requestScreenCaptureAccess() override {
        log.emplace_back("request screen");
        return screen;
    }
    bool openPane(std::string_view name) override {
        log.push_back("open " + std::string(name));
        return true;
    }
    bool hasPane(std::string_view /*name*/) const override { return hasPanes; }
};

class FakeWorkspace final : public Workspace {
 public:
    std::optional<RunningApplication> frontmost;
    std::string own = "es.pelmora.dorix";
    std::vector<RunningApplication> activated;
    Observers<> activations;

    std::optional<RunningApplication> frontmostApplication() const override { return frontmost; }
    Subscription observeActivations(std::function<void()> callback) override {
        return activations.add(std::move(callback));
    }
    bool isFrontmost(const RunningApplication& app) const override {
        return frontmost && frontmost->processIdentifier == app.processIdentifier &&
               frontmost->windowNumber == app.windowNumber;
    }
    bool isSameApplication(const RunningApplication& one, const RunningApplication& other) const override {
        return one.processIdentifier == other.processIdentifier;
    }
    std::string tableIdentifier(const std::string& identifier) const override { return identifier; }
    std::string ownBundleIdentifier() const override { return own; }
    void activate(const RunningApplication& app) override {
        activated.push_back(app);
        frontmost = app;
    }
};

class RecordingSystemSounds final : public SystemSounds {
 public:
    void play(std::string_view name, double volume) override {
        played.push_back(std::string(name) + " " + std::to_string(volume).substr(0, 4));
    }

    std::vector<std::string> played;
};

class FakeUrlOpener final : public UrlOpener {
 public:
    bool open(const std::string& url) override {
        opened.push_back(url);
        return true;
    }

    std::vector<std::string> opened;
};

class FakeLoginItem final : public LoginItem {
 public:
    bool registered = false;
    bool refuses = false;

    void registerApplication() override { set(true); }
    void unregisterApplication() override { set(false); }
    bool isRegistered() const override { return registered; }

 private:
    void set(bool value) {
        if (refuses) throw MessageError("refused");
        registered = value;
    }
};

}  // namespace dorix
