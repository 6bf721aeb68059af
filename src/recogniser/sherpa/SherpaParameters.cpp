#include "recogniser/sherpa/SherpaParameters.h"

#include "base/Error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

namespace dorix::recogniser {

namespace {

// By the kind of the model. The first is for models that do not say.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> modelTypes{{
    {"streaming-transducer", ""},  // which costs opening the encoder twice; of some models it is the only way
    {"streaming-transducer", "zipformer2"},
    {"streaming-transducer", "zipformer"},
    {"transducer", "transducer"},
    {"nemo-transducer", "nemo_transducer"},
    {"whisper", "whisper"},
}};

bool isTypeOf(std::string_view kind, std::string_view type) {
    return std::ranges::find(modelTypes, std::pair(kind, type)) != modelTypes.end();
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
    const auto* const row =
        std::ranges::find(modelTypes, model.kind, [](const auto& it) { return it.first; });
    if (row == modelTypes.end()) throw MessageError("sherpa-onnx has no models of the kind " + model.kind);
    modelType = row->second;
    for (const auto& [name, value] : model.parameters) {
        if (name == "model_type" && isTypeOf(model.kind, value)) {
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
