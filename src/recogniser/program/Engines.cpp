#include "recogniser/program/Engines.h"

#include "base/Error.h"
#include "recogniser/pocketsphinx/PocketsphinxEngine.h"
#include "recogniser/server/ServerEngine.h"
#include "recogniser/sherpa/SherpaEngines.h"

namespace dorix::recogniser {

std::unique_ptr<Engine> makeEngine(const ModelRequest& model) {
    if (model.engine == "pocketsphinx") return std::make_unique<PocketsphinxEngine>(model);
    if (model.engine == "sherpa-onnx") return makeSherpaEngine(model);
    if (model.engine == "server") return std::make_unique<ServerEngine>(model);
    throw MessageError("no engine is called " + model.engine);
}

}  // namespace dorix::recogniser
