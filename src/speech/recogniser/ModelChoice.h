#pragma once

#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/SpeechServer.h"

#include <filesystem>

namespace dorix {

/// Chooses among the installed models, which outlive the choice. `engines` is the folder of the engines that
/// are loaded at run time, with a folder each.
LocalRecognition::ChooseModel modelChoice(const SpeechModels& models, std::filesystem::path engines);

/// Whether the engine of a model is there: a model that somebody put there by hand may lack it.
SpeechModels::Usable withEngineIn(std::filesystem::path engines);

/// Chooses the user's server where there is one that does not rest, and else as `models` does. The server
/// outlives the choice.
LocalRecognition::ChooseModel serverOr(const SpeechServer& server, LocalRecognition::ChooseModel models);

}  // namespace dorix
