#pragma once

#include "recogniser/Engine.h"
#include "recognition/ModelRequest.h"

#include <memory>

namespace dorix::recogniser {

/// Loads the model with the engine that it is for. Throws a std::exception that says why not.
std::unique_ptr<Engine> makeEngine(const ModelRequest& model);

}  // namespace dorix::recogniser
