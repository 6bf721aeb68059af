#pragma once

#include "platform/PrivacyGrants.h"

#include <string>
#include <vector>

namespace dorix {

/// Grants as the test sets them; everything is granted at first.
class FakePrivacyGrants final : public PrivacyGrants {
 public:
    AuthorizationStatus microphone = AuthorizationStatus::authorized;
    SpeechAuthorizationStatus speech = SpeechAuthorizationStatus::authorized;
    bool trusted = true;
    bool screen = true;
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
    void openPane(std::string_view name) override { log.push_back("open " + std::string(name)); }
};

}  // namespace dorix
