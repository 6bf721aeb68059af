#pragma once

#include "dictation/AppState.h"

#include <string>
#include <utility>
#include <vector>

/// The panel's own words, in the app language; keys and computer are named as the source texts do it. Any
/// thread.
namespace dorix::paneltext {

/// What stands in place of an empty list, by the section, the search text and what works here.
std::string emptyList(const AppState& state);

/// What stands in the panel whatever it shows, by the names that its view has for it.
std::vector<std::pair<const char*, std::string>> words(const Abilities& abilities);

/// Of the composer's microphone.
std::string micButton(bool recording);

/// Of the button by which the window of `app` goes with the question.
std::string screenButton(bool isOn, const std::string& app);

/// What shows while no item is selected.
struct Welcome {
    std::string title;
    std::vector<std::string> steps;  // in their order
    std::string aside;               // may be empty
    std::string sample;
};
Welcome welcome(const AppState& state);

}  // namespace dorix::paneltext
