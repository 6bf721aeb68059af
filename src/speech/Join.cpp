#include "speech/Join.h"

#include "base/text/Text.h"

namespace dorix {

std::string join(std::string_view a, std::string_view b) {
    const auto left = text::trim(a);
    const auto right = text::trim(b);
    if (left.empty()) return std::string(right);
    if (right.empty()) return std::string(left);
    return std::string(left) + " " + std::string(right);
}

}  // namespace dorix
