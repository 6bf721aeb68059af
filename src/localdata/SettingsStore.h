#pragma once

#include "base/Observable.h"
#include "localdata/PushToTalkKey.h"
#include "platform/LoginItem.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"

#include <array>
#include <expected>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// How dictations are written: by the best engine at hand, or on this computer only.
enum class WritingEngine { automatic, local };

struct DictationLanguage {
    std::string_view id;
    std::string_view label;
};

inline constexpr std::array dictationLanguages{
    DictationLanguage{"es-ES", "Español"},
    DictationLanguage{"en-US", "English"},
    DictationLanguage{"fr-FR", "Français"},
    DictationLanguage{"it-IT", "Italiano"},
};

/// The app language for views: they rebuild themselves when `code` ("es" or "en") changes.
struct LanguageObserver {
    Observable<std::string> code;
};

/// The user's choices. They are read once, at construction, and each is written to the defaults when it
/// changes. Main executor.
class SettingsStore {
 public:
    /// All three must outlive the store.
    SettingsStore(UserDefaults& defaults, LoginItem& loginItem, const SystemLanguages& languages);
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    Observable<PushToTalkKey> pushToTalkKey;
    Observable<std::string> language;     // a DictationLanguage id
    Observable<std::string> appLanguage;  // "es" or "en"; change it with setAppLanguage
    Observable<WritingEngine> engine;
    Observable<bool> adaptTone;
    Observable<bool> playSounds;
    Observable<std::string> signatureName;
    Observable<std::string> styleNotes;
    Observable<bool> paused;
    Observable<bool> onboardingDone;
    /// Which model recognises a language ("es"), by their ids; where none is chosen, the best that there is.
    Observable<std::map<std::string, std::string>> speechModels;
    /// By what the beginning of a model's address is replaced, where models come from elsewhere.
    Observable<std::map<std::string, std::string>> speechMirrors;

    /// The microphone that is listened to, as the system knows it for good; the system's own choice where it
    /// is empty.
    Observable<std::string> microphone;
    /// What people call it, for while it is not there.
    Observable<std::string> microphoneName;

    /// The address of a server that recognises speech instead of this computer; none where it is empty.
    Observable<std::string> speechServer;
    /// The model that it is asked for.
    Observable<std::string> speechServerModel;
    /// The server of which the user has been told that it hears what they say.
    Observable<std::string> speechServerTold;

    /// The address of a server of language models, which writes where the cloud service does not; where it is
    /// empty one is looked for on this computer.
    Observable<std::string> modelServer;
    /// The model that it is asked for; one of those that it has where it is empty.
    Observable<std::string> modelServerModel;
    /// Its model that makes vectors of texts, likewise.
    Observable<std::string> modelServerEmbedder;
    /// The server of which the user has been told that it reads what they dictate.
    Observable<std::string> modelServerTold;

    LanguageObserver& languageObserver() { return languageObserver_; }

    /// Makes `code` ("es" or "en") the app language; the dictation language follows it.
    void setAppLanguage(const std::string& code);

    /// The system keeps the state.
    bool launchesAtLogin() const { return loginItem_.isRegistered(); }
    /// A failure is logged, and its words are given back.
    std::expected<void, std::string> setLaunchAtLogin(bool enabled);

 private:
    template <typename T, typename ToJson>
    void writeThrough(Observable<T>& field, std::string_view key, ToJson toJson);
    void adoptLanguage();

    UserDefaults& defaults_;
    LoginItem& loginItem_;
    LanguageObserver languageObserver_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
