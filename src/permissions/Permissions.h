#pragma once

#include "base/Json.h"
#include "base/Observable.h"
#include "base/async/Timer.h"
#include "platform/PrivacyGrants.h"

namespace dorix {

/// The four grants that the system gives or withholds, as they were when last read. Main executor.
class Permissions {
 public:
    /// Both must outlive it. Reads the grants once.
    Permissions(Executor& executor, PrivacyGrants& grants);
    Permissions(const Permissions&) = delete;
    Permissions& operator=(const Permissions&) = delete;

    Observable<AuthorizationStatus> microphone;
    Observable<SpeechAuthorizationStatus> speech;
    Observable<bool> accessibility;
    Observable<bool> screen;

    void refresh();

    /// Whether dictation has all it needs; the screen is optional.
    bool allRequired() const;

    /// The grants of those that are missing, by their names in the settings of the system: an array of
    /// strings.
    Json missing() const;

    /// Each asks the user, or opens the system's settings when the answer was no; then reads anew.
    Task<void> requestMicrophone();
    Task<void> requestSpeech();
    void requestAccessibility();
    void requestScreen();

    /// False where the system has no such page.
    bool openPane(std::string_view name) { return grants_.openPane(name); }

    bool hasPane(std::string_view name) const { return grants_.hasPane(name); }

    /// Reads the grants every second while a window shows them.
    void startPolling();
    void stopPolling() { timer_.stop(); }

 private:
    PrivacyGrants& grants_;
    Timer timer_;
};

}  // namespace dorix
