#include "watchdog/WatchdogTask.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace dorix {

namespace {

constexpr std::string_view option = "--watchdog";

std::optional<std::int32_t> parseInteger(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int32_t value = 0;
    const auto [stopped, error] = std::from_chars(text.begin(), text.end(), value);
    if (error != std::errc() || stopped != text.end()) return std::nullopt;
    return value;
}

}  // namespace

std::vector<std::string> WatchdogArguments::commandLine() const {
    return {std::string(option), std::to_string(parent), bundlePath};
}

bool isWatchdog(std::span<const std::string_view> arguments) {
    return std::ranges::find(arguments, option) != arguments.end();
}

std::optional<WatchdogArguments> parseWatchdogArguments(std::span<const std::string_view> arguments) {
    const auto found = std::ranges::find(arguments, option);
    if (arguments.end() - found < 3) return std::nullopt;
    const auto parent = parseInteger(found[1]);
    if (!parent) return std::nullopt;
    return WatchdogArguments{*parent, std::string(found[2])};
}

void WatchdogTask::spawn() {
    const WatchdogArguments arguments{processes_.ownProcessIdentifier(), processes_.bundlePath()};
    terminate_ = processes_.launchSelf(arguments.commandLine());
}

void WatchdogTask::terminate() {
    if (auto asked = std::exchange(terminate_, nullptr)) asked();
}

}  // namespace dorix
