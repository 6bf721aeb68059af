#include "platform/UserDefaults.h"

namespace dorix {

std::optional<bool> UserDefaults::boolean(std::string_view key) const {
    const auto found = value(key);
    if (!found || !found->is_boolean()) return std::nullopt;
    return found->get<bool>();
}

std::optional<double> UserDefaults::number(std::string_view key) const {
    const auto found = value(key);
    if (!found || !found->is_number()) return std::nullopt;
    return found->get<double>();
}

std::optional<std::string> UserDefaults::string(std::string_view key) const {
    const auto found = value(key);
    if (!found || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

}  // namespace dorix
