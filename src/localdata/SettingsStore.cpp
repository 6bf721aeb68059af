#include "localdata/SettingsStore.h"

#include "base/Error.h"
#include "base/Log.h"
#include "localdata/Language.h"

#include <algorithm>

namespace dorix {

namespace {

constexpr std::string_view localEngine = "local";
constexpr std::string_view automaticEngine = "auto";

PushToTalkKey storedKey(const UserDefaults& defaults) {
    const auto name = defaults.string("pttKey");
    return (name ? pushToTalkKey(*name) : std::nullopt).value_or(PushToTalkKey::rightOption);
}

WritingEngine storedEngine(const UserDefaults& defaults) {
    return defaults.string("engine") == localEngine ? WritingEngine::local : WritingEngine::automatic;
}

/// The strings of an object; what else it holds is passed over.
std::map<std::string, std::string> storedNames(const UserDefaults& defaults, std::string_view key) {
    std::map<std::string, std::string> names;
    const auto object = defaults.value(key).value_or(Json());
    if (!object.is_object()) return names;
    for (const auto& [name, value] : object.items()) {
        if (value.is_string()) names[name] = value.get<std::string>();
    }
    return names;
}

std::string defaultLanguage(const SystemLanguages& languages) {
    const std::string code = languages.currentLanguageCode.value_or("es");
    const auto* row = std::ranges::find_if(
        dictationLanguages, [&](const auto& language) { return language.id.starts_with(code); });
    return std::string(row == dictationLanguages.end() ? dictationLanguages.front().id : row->id);
}

}  // namespace

SettingsStore::SettingsStore(UserDefaults& defaults, LoginItem& loginItem, const SystemLanguages& languages)
    : pushToTalkKey(storedKey(defaults)),
      language(defaults.string("language").value_or(defaultLanguage(languages))),
      appLanguage(currentAppLanguage()),
      engine(storedEngine(defaults)),
      adaptTone(defaults.boolean("adaptTone").value_or(true)),
      playSounds(defaults.boolean("playSounds").value_or(true)),
      signatureName(defaults.string("signatureName").value_or("")),
      styleNotes(defaults.string("styleNotes").value_or("")),
      paused(defaults.boolean("paused").value_or(false)),
      onboardingDone(defaults.boolean("onboardingDone").value_or(false)),
      speechModels(storedNames(defaults, "speechModels")),
      speechMirrors(storedNames(defaults, "speechMirrors")),
      microphone(defaults.string("microphone").value_or("")),
      microphoneName(defaults.string("microphoneName").value_or("")),
      speechServer(defaults.string("speechServer").value_or("")),
      speechServerModel(defaults.string("speechServerModel").value_or("whisper-1")),
      speechServerTold(defaults.string("speechServerTold").value_or("")),
      modelServer(defaults.string("modelServer").value_or("")),
      modelServerModel(defaults.string("modelServerModel").value_or("")),
      modelServerEmbedder(defaults.string("modelServerEmbedder").value_or("")),
      modelServerTold(defaults.string("modelServerTold").value_or("")),
      defaults_(defaults),
      loginItem_(loginItem),
      languageObserver_{.code = Observable<std::string>(appLanguage.get())} {
    const auto asIs = [](const auto& value) { return Json(value); };
    writeThrough(pushToTalkKey, "pttKey", [](PushToTalkKey key) { return Json(storedName(key)); });
    writeThrough(language, "language", asIs);
    writeThrough(appLanguage, "appLanguage", asIs);
    writeThrough(engine, "engine", [](WritingEngine value) {
        return Json(value == WritingEngine::local ? localEngine : automaticEngine);
    });
    writeThrough(adaptTone, "adaptTone", asIs);
    writeThrough(playSounds, "playSounds", asIs);
    writeThrough(signatureName, "signatureName", asIs);
    writeThrough(styleNotes, "styleNotes", asIs);
    writeThrough(paused, "paused", asIs);
    writeThrough(onboardingDone, "onboardingDone", asIs);
    writeThrough(speechModels, "speechModels", asIs);
    writeThrough(speechMirrors, "speechMirrors", asIs);
    writeThrough(microphone, "microphone", asIs);
    writeThrough(microphoneName, "microphoneName", asIs);
    writeThrough(speechServer, "speechServer", asIs);
    writeThrough(speechServerModel, "speechServerModel", asIs);
    writeThrough(speechServerTold, "speechServerTold", asIs);
    writeThrough(modelServer, "modelServer", asIs);
    writeThrough(modelServerModel, "modelServerModel", asIs);
    writeThrough(modelServerEmbedder, "modelServerEmbedder", asIs);
    writeThrough(modelServerTold, "modelServerTold", asIs);
    subscriptions_.push_back(defaults.observe("appLanguage", [this] { adoptLanguage(); }));
}

/// Texts are translated by what the defaults hold, also when another process has written that: whoever shows
/// them has to hear of it. The other settings hold as they were read.
void SettingsStore::adoptLanguage() {
    appLanguage.set(currentAppLanguage());
    languageObserver_.code.set(appLanguage.get());
}

template <typename T, typename ToJson>
void SettingsStore::writeThrough(Observable<T>& field, std::string_view key, ToJson toJson) {
    subscriptions_.push_back(
        field.subscribe([this, key, toJson](const T& value) { defaults_.set(key, toJson(value)); }));
}

void SettingsStore::setAppLanguage(const std::string& code) {
    if (code == appLanguage.get()) return;
    appLanguage.set(code);
    languageObserver_.code.set(code);
    language.set(code == "en" ? "en-US" : "es-ES");
}

std::expected<void, std::string> SettingsStore::setLaunchAtLogin(bool enabled) {
    try {
        enabled ? loginItem_.registerApplication() : loginItem_.unregisterApplication();
    } catch (const Error& error) {
        logLine("no se pudo cambiar el inicio automático: " + describedIn(LogLanguage::spanish, error));
        return std::unexpected(error.localizedDescription());
    }
    return {};
}

}  // namespace dorix
