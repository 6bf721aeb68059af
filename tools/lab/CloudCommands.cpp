#include "Command.h"
#include "base/Error.h"
#include "cloud/EventStreamReader.h"

#include <cstddef>
#include <string_view>

namespace dorix::lab {

namespace {

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
    const auto bytes = bytesOf("bytes", requiredString(input, "bytes"));
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
