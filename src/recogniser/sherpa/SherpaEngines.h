#pragma once

#include "recogniser/Engine.h"
#include "recognition/ModelRequest.h"

#include <memory>

namespace dorix::recogniser {

/// Loads the library and a model for it, both looked through first. Throws MessageError. With a model that is
/// not what it says it is the library may end the process instead.
std::unique_ptr<Engine> makeSherpaEngine(const ModelRequest& model);

}  // namespace dorix::recogniser
