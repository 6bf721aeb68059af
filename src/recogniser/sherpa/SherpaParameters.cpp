#include "recogniser/sherpa/SherpaParameters.h"

#include "base/Error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace dorix::recogniser {

namespace {

struct Kind {
    std::string_view name;
    std::vector<std::string_view> modelTypes;  // the first is for models that do not say
    double paddingSeconds;
    double longestPart;
};

const Kind& kindOf(const ModelRequest& model) {
    // Of streaming models the padding is a chunk of the slowest. That the library finds out the type costs
    // opening the encoder twice, and is the only way for some.
    static const std::array<Kind, 4> kinds{{
        {"streaming-transducer", {"", "zipformer2", "zipformer"}, 1.5, 0},
        {"transducer", {"transducer"}, 0.5, 60},
        {"nemo-transducer", {"nemo_transducer"}, 0.5, 60},
        {"whisper", {"whisper"}, 0, 28},
    }};
    const auto* const found = std::ranges::find(kinds, model.kind, &Kind::name);
    if (found == kinds.end()) throw MessageError("sherpa-onnx has no models of the kind " + model.kind);
    return *found;
}

[[noreturn]] void refuse(const std::string& name, const std::string& value) {
    throw MessageError("sherpa-onnx: a model cannot have the parameter " + name + " = " + value);
}

double number(const std::string& name, const std::string& value, double least, double most) {
    double number = 0;
    const auto* end = value.data() + value.size();
    const auto read = std::from_chars(value.data(), end, number);
    // Written this way no NaN gets through.
    if (read.ec == std::errc() && read.ptr == end && number >= least && number <= most) return number;
    refuse(name, value);
}

}  // namespace

SherpaParameters::SherpaParameters(const ModelRequest& model) {
    const auto& kind = kindOf(model);
    modelType = kind.modelTypes.front();
    paddingSeconds = kind.paddingSeconds;
    longestPart = kind.longestPart;
    for (const auto& [name, value] : model.parameters) {
        if (name == "model_type" && std::ranges::count(kind.modelTypes, value) > 0) {
            modelType = value;
        } else if (name == "blank_penalty") {
            blankPenalty = static_cast<float>(number(name, value, 0, 10));
        } else if (name == "paddingSeconds") {
            paddingSeconds = number(name, value, 0, 10);
        } else {
            refuse(name, value);
        }
    }
}

}  // namespace dorix::recogniser
