#pragma once

#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"

#include <filesystem>

namespace dorix {

/// Chooses among the installed models, which outlive the choice. `engines` is the folder of the engines that
/// are loaded at run time, with a folder each.
LocalRecognition::ChooseModel modelChoice(const SpeechModels& models, std::filesystem::path engines);

}  // namespace dorix
