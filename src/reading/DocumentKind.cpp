#include "reading/DocumentKind.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr std::array<std::pair<std::string_view, DocumentKind>, 12> kinds{{
    {"pdf", DocumentKind::pdf},
    {"docx", DocumentKind::rich},
    {"doc", DocumentKind::rich},
    {"rtf", DocumentKind::rich},
    {"rtfd", DocumentKind::bundle},
    {"odt", DocumentKind::rich},
    {"txt", DocumentKind::plain},
    {"md", DocumentKind::plain},
    {"markdown", DocumentKind::plain},
    {"csv", DocumentKind::plain},
    {"json", DocumentKind::plain},
    {"text", DocumentKind::plain},
}};

}  // namespace

std::optional<DocumentKind> documentKind(std::string_view extension) {
    const auto* const found =
        std::ranges::find(kinds, extension, &std::pair<std::string_view, DocumentKind>::first);
    if (found == kinds.end()) return std::nullopt;
    return found->second;
}

}  // namespace dorix
