#include "base/text/CodeFence.h"
#include "base/text/Text.h"
#include "service/ai/Extraction.h"
#include "service/ai/ModelAnswer.h"
#include "service/ai/Prompts.h"
#include "service/ai/Requests.h"
#include "service/ai/Transforms.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace dorix;
using namespace dorix::service;

namespace {

constexpr auto boundary = "4f1c09aa7be2d3354f1c09aa7be2d335";

void require(bool holds) {
    if (!holds) __builtin_trap();
}

/// Orders and material stay two messages, and nothing of a request gets among the orders.
void checkMessages(const Json& messages, const Json& harmless) {
    require(messages.size() == 2 && messages[0].at("role") == "system" && messages[1].at("role") == "user");
    // The boundary may have grown, by as many bytes in each of its places.
    const auto size = messages[0].at("content").get_ref<const std::string&>().size();
    const auto expected = harmless[0].at("content").get_ref<const std::string&>().size();
    require(size >= expected && (size - expected) % 2 == 0);
    messages.dump(-1, ' ', false, Json::error_handler_t::strict);
}

/// An answer shows as text, whatever it quotes.
void extract(const AskRequest& request) {
    const auto answer = answerByExtraction(request, Language::english);
    require(!answer || !answer->empty());
    if (answer) require(answer->find("![") == std::string::npos && answer->find("](") == std::string::npos);
}

void answer(const AskRequest& request) {
    extract(request);
    checkMessages(askMessages(request, Language::spanish, boundary, Pictures::sent),
                  askMessages({.mode = request.mode}, Language::spanish, boundary, Pictures::sent));
}

}  // namespace

/// Whatever body or answer comes over the wire is read, refused or answered without a fault.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    if (const auto request = parseWriteRequest(input)) {
        checkMessages(writeMessages(*request, boundary, Pictures::sent),
                      writeMessages({.tone = request->tone, .allowAsk = request->allowAsk}, boundary,
                                    Pictures::leftOut));
    }
    if (const auto request = parseAskRequest(input)) answer(*request);
    if (const auto request = parseTransformRequest(input)) {
        transformByRules(*request);
        checkMessages(transformMessages(*request, boundary), transformMessages({}, boundary));
    }
    if (const auto written = readWriteAnswer(input)) {
        require(written->accion == WriteAnswer::ask || !text::trim(written->texto).empty());
    }
    text::withoutFence(input, input);

    // The same bytes as material.
    const std::string material(input.substr(0, input.size() / 2));
    const std::string question(input.substr(input.size() / 2));
    extract({.question = question, .selection = material});
    for (const auto* mode : {"meeting_summary", "meeting_live"})
        extract({.mode = mode,
                 .transcript = material,
                 .memory = {{.n = 1, .title = question, .text = question}}});
    transformByRules({.instruction = material.substr(0, material.find('\n')), .selection = material});
    return 0;
}
