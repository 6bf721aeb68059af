#include "Command.h"

#include <algorithm>

namespace dorix::lab {

std::string requiredString(const Json& input, const char* field) {
    auto value = optionalString(input, field);
    if (!value) throw BadInput(std::string("missing field \"") + field + "\"");
    return *std::move(value);
}

std::optional<std::string> optionalString(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || found->is_null()) return std::nullopt;
    if (!found->is_string()) throw BadInput(std::string("field \"") + field + "\" must be a string");
    return found->get<std::string>();
}

std::optional<bool> optionalBoolean(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || found->is_null()) return std::nullopt;
    if (!found->is_boolean()) throw BadInput(std::string("field \"") + field + "\" must be true or false");
    return found->get<bool>();
}

Json optionalObject(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || found->is_null()) return nullptr;
    if (!found->is_object()) throw BadInput(std::string("field \"") + field + "\" must be an object");
    return *found;
}

bool isSecond(const Json& input, const char* field, const std::array<std::string, 2>& names) {
    const auto value = optionalString(input, field).value_or(names[0]);
    const auto* const found = std::ranges::find(names, value);
    if (found == names.end()) throw BadInput(std::string("unknown ") + field + " \"" + value + '"');
    return found != names.begin();
}

double requiredNumber(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end()) throw BadInput(std::string("missing field \"") + field + "\"");
    if (!found->is_number()) throw BadInput(std::string("field \"") + field + "\" must be a number");
    return found->get<double>();
}

std::int64_t requiredInteger(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || !found->is_number_integer()) {
        throw BadInput(std::string("field \"") + field + "\" must be a whole number");
    }
    return found->get<std::int64_t>();
}

AppLanguage::AppLanguage(const std::string& code) {
    if (code != "es" && code != "en") throw BadInput(R"(field "language" must be "es" or "en")");
    defaults_.set("appLanguage", code);
    installLanguage(defaults_, {});
}

std::string languageOf(const Json& input) { return optionalString(input, "language").value_or("es"); }

std::string bytesOf(const char* field, std::string_view base64) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (base64.ends_with('=')) base64.remove_suffix(1);
    std::string bytes;
    unsigned held = 0;
    unsigned bits = 0;
    for (const char character : base64) {
        const auto digit = digits.find(character);
        if (digit == std::string_view::npos)
            throw BadInput(std::string("field \"") + field + "\" must be base64");
        held = (held << 6U) | static_cast<unsigned>(digit);
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes += static_cast<char>((held >> bits) & 0xFFU);
    }
    return bytes;
}

}  // namespace dorix::lab
