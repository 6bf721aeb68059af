#pragma once

#include "platform/Accessibility.h"

#include <map>
#include <set>
#include <string>

namespace dorix {

/// An element whose answers are set by the test. An attribute that was not set gives `otherwise`.
class FakeElement final : public AXUIElement {
 public:
    std::map<std::string, std::expected<AXValue, AXError>, std::less<>> attributes;
    std::map<std::string, std::expected<bool, AXError>, std::less<>> settable;
    AXError otherwise = AXError::attributeUnsupported;

    std::expected<AXValue, AXError> copyAttributeValue(std::string_view attribute) const override;
    std::expected<bool, AXError> isAttributeSettable(std::string_view attribute) const override;
};

/// Applications by their process. One that was not set up does not answer.
class FakeAccessibility final : public Accessibility {
 public:
    std::map<std::int32_t, std::shared_ptr<FakeElement>> applications;

    /// The application's element, made when first named.
    FakeElement& application(std::int32_t processIdentifier);

    /// Makes an element with a role and gives the application the focus there.
    std::shared_ptr<FakeElement> focus(std::int32_t processIdentifier, std::string role);

    AXUIElementRef createApplication(std::int32_t processIdentifier, double budget) override;
};

}  // namespace dorix
