#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// Something that the program needs, in the app language: how it stands, and what can be done about it.
struct OnboardingRow {
    enum class Tone { plain, good, warning, wrong };
    struct Button {
        std::string id;
        std::string label;
        bool isChief = false;

        bool operator==(const Button&) const = default;
    };

    std::string id;
    std::string label;
    std::string description;
    std::string status;
    Tone tone = Tone::plain;         // of the status
    std::optional<double> progress;  // 0 to 1 while something goes on
    std::vector<Button> buttons;

    bool operator==(const OnboardingRow&) const = default;
};

/// One of a few, in the app language.
struct OnboardingChoice {
    struct Option {
        std::string id;
        std::string label;

        bool operator==(const Option&) const = default;
    };

    std::string label;
    std::string status;
    std::vector<Option> options;
    std::string chosen;

    bool operator==(const OnboardingChoice&) const = default;
};

}  // namespace dorix
