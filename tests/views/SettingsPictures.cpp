#include "fakes/settings/SettingsBench.h"
#include "localdata/Language.h"
#include "views/Exhibit.h"
#include "views/Tokens.h"
#include "views/settings/SettingsWindow.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace dorix::testing {

namespace {

/// The settings' window on one of its pages.
class SettingsExhibit final : public Exhibit {
 public:
    explicit SettingsExhibit(const Style& style) : Exhibit(style) {
        executor.runPosted();
        settings.audio.microphones.set(
            {{"usb", "Micrófono USB"}, {"builtin", "Audio interno Estéreo analógico"}});
    }
    ~SettingsExhibit() override { windows.clear(); }

    SettingsForm& form() { return settings.form; }

    void show(const std::string& page) {
        auto window = std::make_unique<SettingsWindow>(context, settings.settings, form());
        window->open();
        form().showSection(page);
        finishMeasuring();
        window_ = std::move(window);
    }
    void hangUp() { hang(std::move(window_), tokens::cardRadius); }

    SettingsBench settings{executor, defaults, "/home/marta/.local/share/DORIX"};

 private:
    /// The disk is looked at on a thread of its own.
    void finishMeasuring() {
        const auto isMeasuring = [this] {
            return std::ranges::any_of(form().rows(), [](const auto& row) {
                return row.label.ends_with("…") && row.label.contains(" · ");
            });
        };
        do {
            executor.runPosted();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        } while (isMeasuring());
    }

    std::unique_ptr<SettingsWindow> window_;
};

Picture picture(std::string name, const char* page, void (*reach)(SettingsExhibit&),
                std::vector<Style> styles) {
    return {.name = std::move(name),
            .show =
                [page, reach](const Style& style) {
                    auto exhibit = std::make_unique<SettingsExhibit>(style);
                    exhibit->show(page);
                    reach(*exhibit);
                    exhibit->hangUp();
                    return exhibit;
                },
            .styles = std::move(styles)};
}

void asItIs(SettingsExhibit&) {}

}  // namespace

std::vector<Picture> settingsPictures() {
    const Style light;
    const Style dark{.dark = true};
    const Style english{.language = "en"};
    const Style englishDark{.language = "en", .dark = true};
    return {picture("settings-general", "general", asItIs, {light, englishDark}),
            picture("settings-writing", "writing", asItIs, {dark}),
            picture("settings-speech", "speech",
                    [](SettingsExhibit& exhibit) {
                        exhibit.form().press("speech.test", "test");
                        exhibit.executor.runPosted();
                        exhibit.settings.speech.level.set(0.6F);
                        exhibit.settings.speech.partial.set("Nos vemos mañana a las diez");
                    },
                    {light}),
            picture("settings-models", "speech",
                    [](SettingsExhibit& exhibit) {
                        exhibit.form().press("speech.model.kroko-es-2025-08-06", "install");
                        exhibit.form().press("speech.model.whisper-base", "install");
                        exhibit.form().search("licencia");
                    },
                    {english}),
            picture("settings-memory", "memory",
                    [](SettingsExhibit& exhibit) {
                        auto& memory = exhibit.settings.memory;
                        memory.documents.set(1284);
                        memory.indexing.set(true);
                        memory.progress.set(formatText(tr("Leyendo %@…"), {"Informe Q3.pdf"}));
                        exhibit.executor.advanceBy(1);
                    },
                    {light, englishDark}),
            picture("settings-forget", "memory",
                    [](SettingsExhibit& exhibit) {
                        exhibit.settings.memory.available.set(false);
                        exhibit.form().press("memory.clear-activity", "clear");
                        exhibit.form().search("borrar");
                    },
                    {dark}),
            picture("settings-account", "account", asItIs, {light}),
            picture("settings-privacy", "privacy",
                    [](SettingsExhibit& exhibit) {
                        HistoryItem item;
                        item.id = "1";
                        exhibit.settings.history.add(item, HistoryStore::Persist::yes);
                        exhibit.form().showSection("about");
                        exhibit.form().showSection("privacy");
                        exhibit.form().press("privacy.history", "clear");
                    },
                    {dark}),
            picture("settings-about", "about", asItIs, {english}),
            picture("settings-found", "general",
                    [](SettingsExhibit& exhibit) { exhibit.form().search("micrófono"); }, {light})};
}

std::vector<Picture> largeSettingsPictures() {
    return {picture("settings-general", "general", asItIs, {Style{}})};
}

}  // namespace dorix::testing
