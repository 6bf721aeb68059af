#pragma once

#include "dictation/AppState.h"
#include "localdata/PushToTalkKey.h"

#include <string>
#include <utility>
#include <vector>

/// The panel's own words, in the app language; keys and computer are named as the source texts do it. Any
/// thread.
namespace dorix::paneltext {

/// What stands in place of an empty list; `query` is the search text.
std::string emptyList(PanelSection section, const std::string& query, PushToTalkKey holdKey);

/// The hold key as it is named inside a sentence.
std::string holdKeyName(PushToTalkKey key);

/// What stands in the panel whatever it shows, by the names that its view has for it.
std::vector<std::pair<const char*, std::string>> words();

/// Of the composer's microphone.
std::string micButton(bool recording);

/// What shows while no item is selected.
struct Welcome {
    std::string title;
    std::vector<std::string> steps;  // in their order
    std::string aside;
    std::string sample;
};
Welcome welcome(PushToTalkKey holdKey);

}  // namespace dorix::paneltext
