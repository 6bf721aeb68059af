#include "platform/Accessibility.h"

namespace dorix {

namespace {

template <typename T>
std::expected<T, AXError> as(std::expected<AXValue, AXError> value) {
    if (!value) return std::unexpected(value.error());
    if (auto* typed = std::get_if<T>(&*value)) return std::move(*typed);
    return std::unexpected(AXError::noValue);
}

class DisabledElement final : public AXUIElement {
 public:
    std::expected<AXValue, AXError> copyAttributeValue(std::string_view) const override {
        return std::unexpected(AXError::apiDisabled);
    }
    std::expected<bool, AXError> isAttributeSettable(std::string_view) const override {
        return std::unexpected(AXError::apiDisabled);
    }
};

}  // namespace

std::expected<AXUIElementRef, AXError> AXUIElement::element(std::string_view attribute) const {
    auto found = as<AXUIElementRef>(copyAttributeValue(attribute));
    if (found && !*found) return std::unexpected(AXError::noValue);
    return found;
}

std::expected<std::string, AXError> AXUIElement::string(std::string_view attribute) const {
    return as<std::string>(copyAttributeValue(attribute));
}

AXUIElementRef UnavailableAccessibility::createApplication(std::int32_t, double) {
    return std::make_shared<DisabledElement>();
}

}  // namespace dorix
