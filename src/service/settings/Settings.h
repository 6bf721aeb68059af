#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What an administrator decides, out of the environment and one file. Main thread, before anything starts.
namespace dorix::service {

/// An address and a port to listen on.
struct ListenAddress {
    std::string host;  // IPv4 or IPv6 in digits, without brackets
    std::uint16_t port = 0;
    bool isLoopback = false;

    bool operator==(const ListenAddress&) const = default;
};

struct Settings {
    ListenAddress listen;
    std::filesystem::path tlsCertificate;  // PEM; both empty for plain HTTP
    std::filesystem::path tlsKey;
    std::string database;      // "sqlite:FILE" or "postgresql://…"
    std::string mail;          // "outbox:FOLDER", "notification", "smtp://…" or "smtps://…"
    std::string mailFrom;      // the sender's address
    std::string mailUser;      // empty: the mail server is spoken to without a login
    std::string mailPassword;  // secret
    std::string modelUrl;      // empty: no language model
    std::string model;
    std::string modelKey;  // secret; may be empty
    bool modelSeesPictures = false;
    std::vector<std::string> emails;          // who may have an account; empty: everybody
    std::vector<std::string> trustedProxies;  // whose X-Forwarded-For is believed
    std::string metricsToken;                 // secret; who shows it may read the metrics from elsewhere
    std::int64_t requestsPerDay = 0;  // of each account, to the model and the rules; 0: as many as it likes
    std::int64_t connections = 0;     // at once
    std::int64_t stopSeconds = 0;     // how long answers under way may take at the end
    std::int64_t sessionDays = 0;     // without use, after which a session ends

    bool hasTls() const { return !tlsCertificate.empty(); }
};

/// Reads a variable; nothing when it is not set.
using Environment = std::function<std::optional<std::string>(const std::string& name)>;

/// What was read, or every fault that was found, a sentence each.
using SettingsOrFaults = std::expected<Settings, std::vector<std::string>>;

/// The environment comes before the file, of "NAME=value" lines, which may be missing. Looks at no file but
/// that one.
SettingsOrFaults readSettings(const Environment& environment,
                              const std::optional<std::filesystem::path>& file);

/// What only shows when the machine is looked at: files that cannot be read, and folders that are missing and
/// cannot be made; those that can, are. A sentence each.
std::vector<std::string> faultsOnThisMachine(const Settings& settings);

/// Every setting with its default and what it means, a paragraph each, for --help.
std::string settingsHelp();

/// Whether somebody with this address, in lower case, may have an account.
bool mayHaveAccount(const Settings& settings, std::string_view email);

}  // namespace dorix::service
