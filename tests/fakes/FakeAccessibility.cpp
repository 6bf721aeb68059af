#include "fakes/FakeAccessibility.h"

namespace dorix {

std::expected<AXValue, AXError> FakeElement::copyAttributeValue(std::string_view attribute) const {
    const auto found = attributes.find(attribute);
    if (found == attributes.end()) return std::unexpected(otherwise);
    return found->second;
}

std::expected<bool, AXError> FakeElement::isAttributeSettable(std::string_view attribute) const {
    const auto found = settable.find(attribute);
    if (found == settable.end()) return std::unexpected(otherwise);
    return found->second;
}

FakeElement& FakeAccessibility::application(std::int32_t processIdentifier) {
    auto& element = applications[processIdentifier];
    if (!element) element = std::make_shared<FakeElement>();
    return *element;
}

std::shared_ptr<FakeElement> FakeAccessibility::focus(std::int32_t processIdentifier, std::string role) {
    auto element = std::make_shared<FakeElement>();
    element->attributes.insert_or_assign("AXRole", AXValue(std::move(role)));
    application(processIdentifier).attributes.insert_or_assign("AXFocusedUIElement", AXValue(element));
    return element;
}

AXUIElementRef FakeAccessibility::createApplication(std::int32_t processIdentifier, double) {
    if (const auto found = applications.find(processIdentifier); found != applications.end()) {
        return found->second;
    }
    auto silent = std::make_shared<FakeElement>();
    silent->otherwise = AXError::cannotComplete;
    return silent;
}

}  // namespace dorix
