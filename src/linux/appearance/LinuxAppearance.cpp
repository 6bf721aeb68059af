#include "linux/appearance/LinuxAppearance.h"

#include "base/text/Text.h"
#include "linux/xdg/AtomicFile.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <optional>
#include <utility>

namespace dorix {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settings = "org.freedesktop.portal.Settings";
constexpr const char* common = "org.freedesktop.appearance";
constexpr const char* gnome = "org.gnome.desktop.interface";

/// The number or boolean at the message's place, out of however many variants it is wrapped in.
std::optional<std::uint32_t> unwrapped(sd_bus_message* message) {
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT) {
        if (sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents) < 0) return std::nullopt;
    }
    if (type == SD_BUS_TYPE_UINT32) {
        std::uint32_t value = 0;
        if (sd_bus_message_read_basic(message, type, &value) > 0) return value;
    } else if (type == SD_BUS_TYPE_BOOLEAN) {
        int value = 0;
        if (sd_bus_message_read_basic(message, type, &value) > 0) return value != 0 ? 1U : 0U;
    }
    return std::nullopt;
}

bool isTrue(std::string_view value) { return value == "1" || value == "true" || value == "yes"; }

}  // namespace

bool isDarkGtkTheme(std::string_view name) {
    const auto folded = text::lowercase(name);
    return folded.ends_with("-dark") || folded.ends_with(":dark");
}

GtkLook parseGtkSettings(std::string_view text) {
    GtkLook look;
    bool inSection = false;
    for (const auto raw : text::split(text, '\n')) {
        const auto line = text::trim(raw);
        if (line.starts_with('[')) inSection = line == "[Settings]";
        const auto equals = line.find('=');
        if (!inSection || line.starts_with('#') || equals == std::string_view::npos) continue;
        const auto key = text::trim(line.substr(0, equals));
        const auto value = text::trimAny(text::trim(line.substr(equals + 1)), "\"");
        if (key == "gtk-application-prefer-dark-theme" && isTrue(value)) look.prefersDark = true;
        if (key == "gtk-theme-name" && isDarkGtkTheme(value)) look.prefersDark = true;
        if (key == "gtk-enable-animations" && !isTrue(value)) look.reducesMotion = true;
    }
    return look;
}

LinuxAppearance::LinuxAppearance(BusConnection& bus, FdWatcher& watcher,
                                 const std::filesystem::path& configHome)
    : folder_(configHome / "gtk-3.0"),
      bus_(bus),
      changes_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      portal_(bus, portal, [this] { portalChanged(); }, BusService::Start::yes) {
    readFile();
    watchFile(watcher);
    portalChanges_ = portal_.listen(portalPath, settings, "SettingChanged", [this](sd_bus_message* message) {
        const char* group = nullptr;
        const char* key = nullptr;
        if (sd_bus_message_read(message, "ss", &group, &key) > 0) take(group, key, message);
    });
}

void LinuxAppearance::portalChanged() {
    told_ = {};
    update();
    answers_.clear();
    if (portal_.owner().empty()) return;
    read(common, "color-scheme");
    read(common, "reduced-motion");
    read(gnome, "enable-animations");
}

void LinuxAppearance::readFile() {
    file_ = parseGtkSettings(dorix::readFile(folder_ / "settings.ini").value_or(""));
    update();
}

void LinuxAppearance::update() {
    const auto first = [](std::optional<bool> one, std::optional<bool> other, bool last) {
        return one.value_or(other.value_or(last));
    };
    prefersDark.set(first(told_.prefersDark, display_.prefersDark, file_.prefersDark));
    reducesMotion.set(first(told_.reducesMotion, display_.reducesMotion, file_.reducesMotion));
}

void LinuxAppearance::setDisplaySettings(const std::map<std::string, std::string, std::less<>>& told) {
    display_ = {};
    if (const auto theme = told.find("Net/ThemeName"); theme != told.end())
        display_.prefersDark = isDarkGtkTheme(theme->second);
    if (const auto moves = told.find("Gtk/EnableAnimations"); moves != told.end())
        display_.reducesMotion = moves->second == "0";
    update();
}

/// The folder rather than the file, which is replaced when it is written.
void LinuxAppearance::watchFile(FdWatcher& watcher) {
    if (!changes_) return;
    ::inotify_add_watch(changes_.get(), folder_.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE);
    watch_ = watcher.watchReadable(changes_.get(), [this] {
        std::array<char, 4096> events{};
        while (::read(changes_.get(), events.data(), events.size()) > 0) continue;
        readFile();
    });
}

void LinuxAppearance::read(const char* group, const char* key) {
    const auto request = portal_.newCall(portalPath, settings, "Read");
    if (!request || sd_bus_message_append(request.get(), "ss", group, key) < 0) return;
    answers_.push_back(bus_.ask(request, [this, group, key](sd_bus_message* answer) {
        if (answer != nullptr && sd_bus_message_is_method_error(answer, nullptr) == 0)
            take(group, key, answer);
    }));
}

void LinuxAppearance::take(const std::string& group, const std::string& key, sd_bus_message* value) {
    const auto number = unwrapped(value);
    if (!number) return;
    if (group == common && key == "color-scheme") {
        constexpr std::uint32_t noPreference = 0;  // 1 is dark, 2 light
        told_.prefersDark = *number == noPreference ? std::nullopt : std::optional(*number == 1);
    } else if (group == common && key == "reduced-motion") {
        told_.reducesMotion = *number == 1;
    } else if (group == gnome && key == "enable-animations") {
        told_.reducesMotion = *number == 0;
    }
    update();
}

}  // namespace dorix
