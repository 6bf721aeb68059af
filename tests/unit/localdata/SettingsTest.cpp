#include "base/Log.h"
#include "fakes/FakeDesktop.h"
#include "fakes/MemoryUserDefaults.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dorix {
namespace {

class SettingsTest : public testing::Test {
 protected:
    ~SettingsTest() override { uninstallLanguage(); }

    void system(SystemLanguages languages) {
        languages_ = std::move(languages);
        installLanguage(defaults, languages_);
    }
    SettingsStore store() { return {defaults, loginItem, languages_}; }

    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;

 private:
    SystemLanguages languages_;
};

TEST_F(SettingsTest, TheSystemDecidesTheLanguageUntilTheUserDoes) {
    EXPECT_EQ(currentAppLanguage(), "es") << "before anything is installed";
    system({.preferred = {"EN-GB", "es"}});
    EXPECT_EQ(currentAppLanguage(), "en");
    system({.preferred = {"ca-ES", "en"}});
    EXPECT_EQ(currentAppLanguage(), "es");
    defaults.set("appLanguage", "en");
    EXPECT_EQ(currentAppLanguage(), "en");
    EXPECT_EQ(appLocaleIdentifier(), "en_US");
    defaults.set("appLanguage", "fr");
    EXPECT_EQ(currentAppLanguage(), "es") << "a language that the app does not speak counts as no choice";
}

TEST_F(SettingsTest, TranslatesFillsAndGroups) {
    system({});
    EXPECT_EQ(tr("Pregunta"), "Pregunta");
    EXPECT_EQ(formatNumber(1234567), "1.234.567");
    defaults.set("appLanguage", "en");
    EXPECT_EQ(tr("Pregunta"), "Question");
    EXPECT_EQ(tr("Ask Screen"), "Ask Screen");
    EXPECT_EQ(tr(" y "), " and ");
    EXPECT_EQ(formatNumber(999), "999");
    EXPECT_EQ(formatNumber(-1000), "-1,000");
    EXPECT_EQ(formatText("%d de %@: 100 %%", {3, std::string("%@")}), "3 de %@: 100 %");
    EXPECT_EQ(formatText("%@ y %@", {std::string("uno")}), "uno y %@");
}

TEST_F(SettingsTest, StartsWithDefaultsForWhatIsAbsentOrOfTheWrongType) {
    const auto odd = Json::parse(R"({"pttKey": "leftShift", "engine": 3, "adaptTone": "no", "playSounds": 0,
                                     "signatureName": false, "paused": "yes",
                                     "speechModels": {"es": 3, "en": "kroko-en"}, "speechMirrors": ["x"]})");
    for (const auto& [key, value] : odd.items()) defaults.set(key, value);
    system({.preferred = {"it"}, .currentLanguageCode = "it"});
    const auto settings = store();
    EXPECT_EQ(settings.pushToTalkKey.get(), PushToTalkKey::rightOption);
    EXPECT_EQ(settings.engine.get(), WritingEngine::automatic);
    EXPECT_TRUE(settings.adaptTone.get());
    EXPECT_TRUE(settings.playSounds.get());
    EXPECT_EQ(settings.signatureName.get(), "");
    EXPECT_FALSE(settings.paused.get());
    EXPECT_EQ(settings.language.get(), "it-IT");
    EXPECT_EQ(settings.speechModels.get(), (std::map<std::string, std::string>{{"en", "kroko-en"}}));
    EXPECT_TRUE(settings.speechMirrors.get().empty());
    EXPECT_EQ(settings.appLanguage.get(), "es");
    EXPECT_EQ(defaults.value("language"), std::nullopt) << "a default is not written until it is chosen";
}

TEST_F(SettingsTest, WritesEveryChangeAndReadsItBack) {
    system({.currentLanguageCode = "ca"});
    {
        auto settings = store();
        EXPECT_EQ(settings.language.get(), "es-ES");
        settings.pushToTalkKey.set(PushToTalkKey::fn);
        settings.engine.set(WritingEngine::local);
        settings.adaptTone.set(false);
        settings.styleNotes.set("tuteo");
        settings.paused.set(true);
        settings.speechModels.set({{"es", "kroko-es"}});
    }
    EXPECT_EQ(defaults.string("pttKey"), "fn");
    const auto again = store();
    EXPECT_EQ(again.pushToTalkKey.get(), PushToTalkKey::fn);
    EXPECT_EQ(again.engine.get(), WritingEngine::local);
    EXPECT_TRUE(again.paused.get() && !again.adaptTone.get());
    EXPECT_EQ(again.styleNotes.get(), "tuteo");
    EXPECT_EQ(again.speechModels.get().at("es"), "kroko-es");
}

TEST_F(SettingsTest, TheDictationLanguageFollowsTheAppLanguageThatIsChosenHere) {
    defaults.set("language", "fr-FR");
    system({.currentLanguageCode = "es"});
    auto settings = store();
    std::vector<std::string> seen;
    const auto subscription = settings.languageObserver().code.subscribe(
        [&](const std::string& code) { seen.push_back(code + " " + tr("Hoy")); });
    settings.setAppLanguage("es");
    EXPECT_EQ(settings.language.get(), "fr-FR") << "nothing changed";
    settings.setAppLanguage("en");
    EXPECT_EQ(defaults.string("language"), "en-US");
    defaults.set("appLanguage", "es");  // by another process
    EXPECT_EQ(settings.appLanguage.get(), "es");
    EXPECT_EQ(settings.language.get(), "en-US") << "it has a key of its own";
    EXPECT_EQ(seen, (std::vector<std::string>{"en Today", "es Hoy"})) << "with the language in force";
}

TEST_F(SettingsTest, ALoginItemThatTheSystemRefusesIsOnlyLogged) {
    system({});
    auto settings = store();
    settings.setLaunchAtLogin(true);
    EXPECT_TRUE(loginItem.registered);
    loginItem.refuses = true;
    testing::internal::CaptureStderr();
    settings.setLaunchAtLogin(false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "DORIX: no se pudo cambiar el inicio automático: refused\n");
}

}  // namespace
}  // namespace dorix
