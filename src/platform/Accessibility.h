#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace dorix {

/// Why an accessibility call gave nothing.
enum class AXError : std::int32_t {
    failure = -25200,
    invalidUIElement = -25202,
    cannotComplete = -25204,
    attributeUnsupported = -25205,
    apiDisabled = -25211,
    noValue = -25212,
};

class AXUIElement;
using AXUIElementRef = std::shared_ptr<const AXUIElement>;
using AXValue = std::variant<AXUIElementRef, std::string, bool>;

/// An object of another application's interface: the application itself, a window, a control. Its attributes
/// are asked of that application, which may be slow or hang: an element and all that is reached from it share
/// one time budget, and once it is spent every call gives cannotComplete at once. Main executor; a call may
/// block up to what is left of the budget.
///
/// Attributes that the product asks for: "AXFocusedWindow", "AXFocusedUIElement", "AXParent" (elements);
/// "AXTitle", "AXRole", "AXValue", "AXSelectedText", "AXDocument", "AXURL" (strings), and
/// "AXTextBeforeCursor", the last two characters at most in front of the cursor or of what is selected, which
/// a place that is no text to write in, and one for secrets, does not tell. Roles are the
/// platform's: "AXTextField", "AXTextArea", "AXComboBox", "AXSearchField", "AXWebArea", "AXList" and so on.
class AXUIElement {
 public:
    virtual ~AXUIElement() = default;

    virtual std::expected<AXValue, AXError> copyAttributeValue(std::string_view attribute) const = 0;
    virtual std::expected<bool, AXError> isAttributeSettable(std::string_view attribute) const = 0;

    /// The attribute if it is an element, not null; otherwise the error, or noValue.
    std::expected<AXUIElementRef, AXError> element(std::string_view attribute) const;
    /// The attribute if it is a string; otherwise the error, or noValue.
    std::expected<std::string, AXError> string(std::string_view attribute) const;
};

class Accessibility {
 public:
    /// What a look at the application in front may cost in all.
    static constexpr double defaultBudget = 0.25;

    virtual ~Accessibility() = default;

    /// The element of an application. Its `budget`, in seconds, runs from this call. Never fails: what cannot
    /// be reached shows when its attributes are asked for. Main executor.
    virtual AXUIElementRef createApplication(std::int32_t processIdentifier,
                                             double budget = defaultBudget) = 0;
};

}  // namespace dorix
