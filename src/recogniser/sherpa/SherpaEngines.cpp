#include "recogniser/sherpa/SherpaEngines.h"

#include "recogniser/files/IntactFiles.h"
#include "recogniser/sherpa/SherpaLibrary.h"
#include "recogniser/sherpa/StreamingEngine.h"

namespace dorix::recogniser {

std::unique_ptr<Engine> makeSherpaEngine(const ModelRequest& model) {
    const SherpaParameters parameters(model);
    demandFiles(model, {"encoder", "decoder", "joiner", "tokens"});
    return std::make_unique<StreamingEngine>(model, parameters, SherpaLibrary(model.engineFolder));
}

}  // namespace dorix::recogniser
