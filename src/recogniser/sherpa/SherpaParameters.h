#pragma once

#include "recognition/ModelRequest.h"

#include <string>

namespace dorix::recogniser {

/// What may be said of a model for sherpa-onnx, under "parameters". With values that it does not know the
/// library ends the process, so that nothing is passed on that is not named here.
struct SherpaParameters {
    /// Throws MessageError for a name or a value that is none.
    explicit SherpaParameters(const ModelRequest& model);

    std::string modelType;   // "model_type", as the library calls it; empty: it finds out
    float blankPenalty = 0;  // "blank_penalty"
    // "paddingSeconds": of silence behind the end, without which its last words are lost.
    double paddingSeconds = 0;
    double longestPart = 0;  // seconds that are understood at once, of models that take a whole
};

}  // namespace dorix::recogniser
