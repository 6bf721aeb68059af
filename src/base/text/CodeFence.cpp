#include "base/text/CodeFence.h"

#include "base/text/Text.h"

namespace dorix::text {

std::string_view withoutFence(std::string_view answer, std::string_view original) {
    constexpr std::string_view fence = "```";
    const auto trimmed = trim(answer);
    const auto firstLine = trimmed.find('\n');
    const bool isFenced = trimmed.starts_with(fence) && trimmed.ends_with(fence) &&
                          firstLine != std::string_view::npos && firstLine < trimmed.size() - fence.size();
    if (!isFenced || trim(original).starts_with(fence)) return answer;
    const auto inside = trimmed.substr(firstLine + 1, trimmed.size() - fence.size() - firstLine - 1);
    return inside.ends_with('\n') ? inside.substr(0, inside.size() - 1) : inside;
}

}  // namespace dorix::text
