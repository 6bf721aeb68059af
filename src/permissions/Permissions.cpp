#include "permissions/Permissions.h"

namespace dorix {

namespace {
constexpr double pollInterval = 1.0;
}

Permissions::Permissions(Executor& executor, PrivacyGrants& grants) : grants_(grants), timer_(executor) {
    refresh();
}

void Permissions::refresh() {
    microphone.set(grants_.microphoneStatus());
    speech.set(grants_.speechStatus());
    accessibility.set(grants_.isProcessTrusted());
    screen.set(grants_.preflightScreenCaptureAccess());
}

Json Permissions::missing() const {
    Json names = Json::array();
    if (microphone.get() != AuthorizationStatus::authorized) names.push_back("Privacy_Microphone");
    if (speech.get() == SpeechAuthorizationStatus::denied ||
        speech.get() == SpeechAuthorizationStatus::restricted)
        names.push_back("Privacy_SpeechRecognition");
    if (!accessibility.get()) names.push_back("Privacy_Accessibility");
    return names;
}

bool Permissions::allRequired() const { return missing().empty(); }

Task<void> Permissions::requestMicrophone() {
    const auto status = grants_.microphoneStatus();
    if (status == AuthorizationStatus::denied || status == AuthorizationStatus::restricted) {
        grants_.openPane("Privacy_Microphone");
        co_return;
    }
    co_await grants_.requestMicrophone();
    refresh();
}

Task<void> Permissions::requestSpeech() {
    const auto status = grants_.speechStatus();
    if (status == SpeechAuthorizationStatus::denied || status == SpeechAuthorizationStatus::restricted) {
        grants_.openPane("Privacy_SpeechRecognition");
        co_return;
    }
    co_await grants_.requestSpeech();
    refresh();
}

void Permissions::requestAccessibility() {
    grants_.promptForTrust();
    grants_.openPane("Privacy_Accessibility");
}

void Permissions::requestScreen() {
    if (!grants_.requestScreenCaptureAccess()) grants_.openPane("Privacy_ScreenCapture");
}

void Permissions::startPolling() {
    timer_.repeat(pollInterval, [this] { refresh(); });
}

}  // namespace dorix
