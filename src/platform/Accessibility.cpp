#include "platform/Accessibility.h"

namespace dorix {

namespace {

template <typename T>
std::expected<T, AXError> as(std::expected<AXValue, AXError> value) {
    if (!value) return std::unexpected(value.error());
    if (auto* typed = std::get_if<T>(&*value)) return std::move(*typed);
    return std::unexpected(AXError::noValue);
}

}  // namespace

std::expected<AXUIElementRef, AXError> AXUIElement::element(std::string_view attribute) const {
    auto found = as<AXUIElementRef>(copyAttributeValue(attribute));
    if (found && !*found) return std::unexpected(AXError::noValue);
    return found;
}

std::expected<std::string, AXError> AXUIElement::string(std::string_view attribute) const {
    return as<std::string>(copyAttributeValue(attribute));
}

}  // namespace dorix
