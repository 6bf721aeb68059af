#pragma once

#include "platform/Accessibility.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace dorix {

/// An element whose answers are set by the test. An attribute that was not set gives `otherwise`.
class FakeElement final : public AXUIElement {
 public:
    template <typename Value>
    using Answers = std::map<std::string, std::expected<Value, AXError>, std::less<>>;

    Answers<AXValue> attributes;
    Answers<bool> settable;
    AXError otherwise = AXError::attributeUnsupported;

    std::expected<AXValue, AXError> copyAttributeValue(std::string_view attribute) const override {
        return answer(attributes, attribute);
    }
    std::expected<bool, AXError> isAttributeSettable(std::string_view attribute) const override {
        return answer(settable, attribute);
    }

 private:
    template <typename Value>
    std::expected<Value, AXError> answer(const Answers<Value>& answers, std::string_view attribute) const {
        const auto found = answers.find(attribute);
        return found == answers.end() ? std::unexpected(otherwise) : found->second;
    }
};

/// Applications by their process. One that was not set up does not answer.
class FakeAccessibility final : public Accessibility {
 public:
    std::map<std::int32_t, std::shared_ptr<FakeElement>> applications;
    std::function<void(double budget)> onLook = [](double) {};

    /// The application's element, made when first named.
    FakeElement& application(std::int32_t processIdentifier) {
        auto& element = applications[processIdentifier];
        if (!element) element = std::make_shared<FakeElement>();
        return *element;
    }

    /// Makes an element with a role and gives the application the focus there.
    std::shared_ptr<FakeElement> focus(std::int32_t processIdentifier, std::string role) {
        auto element = std::make_shared<FakeElement>();
        element->attributes.insert_or_assign("AXRole", AXValue(std::move(role)));
        application(processIdentifier).attributes.insert_or_assign("AXFocusedUIElement", AXValue(element));
        return element;
    }

    AXUIElementRef createApplication(std::int32_t processIdentifier, double budget) override {
        onLook(budget);
        if (const auto found = applications.find(processIdentifier); found != applications.end()) {
            return found->second;
        }
        auto silent = std::make_shared<FakeElement>();
        silent->otherwise = AXError::cannotComplete;
        return silent;
    }
};

}  // namespace dorix
