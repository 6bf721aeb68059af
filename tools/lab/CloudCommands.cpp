#include "Command.h"
#include "base/Error.h"
#include "cloud/EventStreamReader.h"

#include <cstddef>
#include <string_view>

namespace dorix::lab {

namespace {

/// What the base64 text stands for.
std::string bytesOf(std::string_view base64) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (base64.ends_with('=')) base64.remove_suffix(1);
    std::string bytes;
    unsigned held = 0;
    unsigned bits = 0;
    for (const char character : base64) {
        const auto digit = digits.find(character);
        if (digit == std::string_view::npos) throw BadInput(R"(field "bytes" must be base64)");
        held = (held << 6U) | static_cast<unsigned>(digit);
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes += static_cast<char>((held >> bits) & 0xFFU);
    }
    return bytes;
}

/// The bytes, cut at the places that the input names.
std::vector<std::string_view> pieces(std::string_view bytes, const Json& input) {
    std::vector<std::string_view> all;
    std::size_t from = 0;
    for (const auto& cut : input.value("cuts", Json::array())) {
        const auto at = cut.is_number_unsigned() ? cut.get<std::size_t>() : std::string_view::npos;
        if (at < from || at > bytes.size()) {
            throw BadInput(R"(field "cuts" must name places in the bytes, in order)");
        }
        all.push_back(bytes.substr(from, at - from));
        from = at;
    }
    all.push_back(bytes.substr(from));
    return all;
}

Json stream(const Json& input) {
    const AppLanguage language(languageOf(input));
    const auto bytes = bytesOf(requiredString(input, "bytes"));
    Json output{{"texts", Json::array()}};
    EventStreamReader reader([&](std::string_view text) { output["texts"].push_back(text); });
    try {
        for (const auto piece : pieces(bytes, input)) reader.read(piece);
        output["result"] = reader.finish();
    } catch (const Error& error) {
        output["error"] = error.localizedDescription();
    }
    return output;
}

}  // namespace

std::vector<Command> cloudCommands() {
    return {{"stream", R"({"bytes","cuts"?,"language"?})", R"({"texts","result"|"error"})", stream}};
}

}  // namespace dorix::lab
