#include "base/Json.h"
#include "modelserver/ChatAnswer.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

const GenerationSchema schema{"Redaccion", {{"titulo", ""}, {"texto", ""}}};

// What the longest answer that is read may hold up, times what a build without optimisation, the sanitizers
// and the fuzzer's counting cost.
constexpr double mostSeconds = 0.1 * 60;

void require(bool holds) {
    if (!holds) __builtin_trap();
}

/// The text, as events that bring `size` bytes each.
std::string inPieces(std::string_view text, std::size_t size) {
    std::string body;
    for (std::size_t at = 0; at < text.size(); at += size) {
        Json event;
        event["choices"][0]["delta"]["content"] = text.substr(at, size);
        body += "data: " + event.dump() + "\n\n";
    }
    return body + "data: [DONE]\n\n";
}

void requireAllFields(const std::optional<GeneratedContent>& content) {
    if (!content) return;
    for (const auto& field : schema.fields) require(content->contains(field.name));
}

}  // namespace

/// Whatever a server sends is read, soon; and what a model wrote is found as it wrote it, whether it comes
/// whole or in pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto start = std::clock();
    chatText(bytes);
    withoutThought(bytes);
    requireAllFields(contentIn(bytes, schema));
    require(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC < mostSeconds);

    const std::string answer =
        Json{{"texto", bytes}, {"titulo", "x"}}.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (answer.contains("</think>")) return 0;
    const auto whole = contentIn(answer, schema);
    require(whole && whole->at("texto") == Json::parse(answer)["texto"].get<std::string>());
    require(chatText(inPieces(answer, 1 + data[0]))->text == answer);
    return 0;
}
