#pragma once

#include "base/async/Task.h"

#include <string_view>

namespace dorix {

enum class AuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };
enum class SpeechAuthorizationStatus { notDetermined = 0, denied = 1, restricted = 2, authorized = 3 };

/// What the system lets this program do. Main executor; the questions answer at once from what is known, the
/// requests may wait for the user.
class PrivacyGrants {
 public:
    virtual ~PrivacyGrants() = default;

    virtual AuthorizationStatus microphoneStatus() const = 0;
    virtual SpeechAuthorizationStatus speechStatus() const = 0;
    virtual bool isProcessTrusted() const = 0;
    virtual bool preflightScreenCaptureAccess() const = 0;

    virtual Task<void> requestMicrophone() = 0;
    virtual Task<void> requestSpeech() = 0;
    virtual void promptForTrust() = 0;
    /// Asks for the right to capture the screen; whether it is there now.
    virtual bool requestScreenCaptureAccess() = 0;

    /// Opens the system's settings at one of "Privacy_Microphone", "Privacy_SpeechRecognition",
    /// "Privacy_Accessibility", "Privacy_ScreenCapture"; false where the system has no such place.
    virtual bool openPane(std::string_view name) = 0;
    /// Whether it has one of that name at all.
    virtual bool hasPane(std::string_view name) const = 0;
};

}  // namespace dorix
