#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The engines that other computers run for the user, as the history names them: it says of any but these and
/// the service that what they wrote never left this computer. Pure functions, any thread.
namespace dorix {

inline constexpr std::string_view farEnginePrefix = "servidor ";

/// The name of the engine on a host.
inline std::string farEngine(const std::string& host) { return std::string(farEnginePrefix) + host; }

/// The host; none where the engine is no such one.
inline std::optional<std::string> hostOfEngine(std::string_view engine) {
    if (!engine.starts_with(farEnginePrefix)) return std::nullopt;
    return std::string(engine.substr(farEnginePrefix.size()));
}

}  // namespace dorix
