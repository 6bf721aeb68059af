#include "service/settings/Settings.h"

#include "base/text/Text.h"
#include "service/settings/SettingsTable.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <system_error>
#include <utility>

namespace dorix::service {

namespace {

using Values = std::map<std::string, std::string, std::less<>>;
using Faults = std::vector<std::string>;

bool isKnown(std::string_view name) {
    return std::ranges::any_of(settingsTable(), [&](const auto& row) { return row.name == name; });
}

/// A value may stand in double quotes, as in a file that systemd reads.
std::string unquoted(std::string_view value) {
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        value = value.substr(1, value.size() - 2);
    return std::string(value);
}

void readLine(std::string_view line, const std::string& place, Values& values, Faults& faults) {
    line = text::trim(line);
    if (line.empty() || line.starts_with('#')) return;
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) {
        faults.push_back(place + ": a line is NAME=value, or a comment that begins with #");
        return;
    }
    const std::string name(text::trim(line.substr(0, equals)));
    if (!isKnown(name)) {
        faults.push_back(place + ": there is no setting " + name);
    } else if (!values.emplace(name, unquoted(text::trim(line.substr(equals + 1)))).second) {
        faults.push_back(place + ": " + name + " is there twice");
    }
}

Values readFile(const std::filesystem::path& file, Faults& faults) {
    Values values;
    std::ifstream stream(file);
    if (!stream) faults.push_back(file.string() + ": cannot be read");
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        readLine(line, file.string() + ":" + std::to_string(number), values, faults);
    }
    return values;
}

/// Where the service keeps what is its own: what systemd gives it, or the user's data.
std::filesystem::path dataFolder(const Environment& environment) {
    if (const auto given = environment("STATE_DIRECTORY"); given && !given->empty()) return *given;
    if (const auto data = environment("XDG_DATA_HOME"); data && data->starts_with('/')) {
        return std::filesystem::path(*data) / "dorix-service";
    }
    return std::filesystem::path(environment("HOME").value_or("/")) / ".local/share/dorix-service";
}

Faults contradictions(const Settings& settings) {
    Faults faults;
    if (settings.tlsCertificate.empty() != settings.tlsKey.empty()) {
        faults.emplace_back("DORIX_SERVICE_TLS_CERTIFICATE and DORIX_SERVICE_TLS_KEY: one needs the other");
    }
    if (!settings.listen.isLoopback && !settings.hasTls() && settings.trustedProxies.empty()) {
        faults.emplace_back(
            "DORIX_SERVICE_LISTEN: beyond this machine it takes TLS (DORIX_SERVICE_TLS_CERTIFICATE), or a "
            "proxy "
            "that has it (DORIX_SERVICE_TRUSTED_PROXIES)");
    }
    if (!settings.modelUrl.empty() && settings.model.empty()) {
        faults.emplace_back(
            "DORIX_SERVICE_MODEL: DORIX_SERVICE_MODEL_URL is set, so a model has to be named");
    }
    return faults;
}

bool canBeRead(const std::filesystem::path& file) { return static_cast<bool>(std::ifstream(file)); }

std::optional<std::string> folderFault(const std::filesystem::path& folder) {
    if (folder.empty()) return std::nullopt;  // the one that the service is started in
    std::error_code error;
    if (std::filesystem::create_directories(folder, error)) {
        // What is in it, and when it came, is nobody else's business.
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
    }
    if (!error && std::filesystem::is_directory(folder, error)) return std::nullopt;
    return "the folder " + folder.string() + " cannot be made" + (error ? ": " + error.message() : "");
}

}  // namespace

SettingsOrFaults readSettings(const Environment& environment,
                              const std::optional<std::filesystem::path>& file) {
    Faults faults;
    const auto written = file ? readFile(*file, faults) : Values{};
    Settings settings;
    for (const auto& row : settingsTable()) {
        const std::string name(row.name);
        auto value = environment(name);
        if (const auto found = written.find(name); !value && found != written.end()) value = found->second;
        const auto complaint = row.read(settings, value.value_or(std::string(row.defaultValue)));
        if (!complaint.empty()) faults.push_back(name + ": " + complaint);
    }
    const auto folder = dataFolder(environment);
    if (settings.database.empty()) settings.database = "sqlite:" + (folder / "service.sqlite").string();
    if (settings.mail.empty()) settings.mail = "outbox:" + (folder / "outbox").string();
    std::ranges::move(contradictions(settings), std::back_inserter(faults));
    if (!faults.empty()) return std::unexpected(std::move(faults));
    return settings;
}

std::vector<std::string> faultsOnThisMachine(const Settings& settings) {
    Faults faults;
    if (settings.hasTls() && !canBeRead(settings.tlsCertificate)) {
        faults.push_back("DORIX_SERVICE_TLS_CERTIFICATE: " + settings.tlsCertificate.string() +
                         " cannot be read");
    }
    if (settings.hasTls() && !canBeRead(settings.tlsKey)) {
        faults.push_back("DORIX_SERVICE_TLS_KEY: " + settings.tlsKey.string() + " cannot be read");
    }
    if (settings.database.starts_with("sqlite:")) {
        const std::filesystem::path database(settings.database.substr(7));
        if (auto fault = folderFault(database.parent_path()))
            faults.push_back("DORIX_SERVICE_DATABASE: " + *fault);
    }
    if (settings.mail.starts_with("outbox:")) {
        if (auto fault = folderFault(settings.mail.substr(7)))
            faults.push_back("DORIX_SERVICE_MAIL: " + *fault);
    }
    return faults;
}

std::string settingsHelp() {
    std::string help;
    for (const auto& row : settingsTable()) {
        help.append("  ").append(row.name);
        if (!row.defaultValue.empty()) help.append("  (").append(row.defaultValue).append(")");
        help.append("\n      ").append(row.meaning).append("\n");
    }
    return help;
}

bool mayHaveAccount(const Settings& settings, std::string_view email) {
    if (settings.emails.empty()) return true;
    return std::ranges::any_of(settings.emails, [&](const std::string& allowed) {
        return allowed.starts_with('@') ? email.ends_with(allowed) : email == allowed;
    });
}

}  // namespace dorix::service
