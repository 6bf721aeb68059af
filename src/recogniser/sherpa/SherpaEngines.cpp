#include "recogniser/sherpa/SherpaEngines.h"

#include "recogniser/files/IntactFiles.h"
#include "recogniser/sherpa/OfflineEngine.h"
#include "recogniser/sherpa/SherpaLibrary.h"
#include "recogniser/sherpa/StreamingEngine.h"

#include <utility>

namespace dorix::recogniser {

std::unique_ptr<Engine> makeSherpaEngine(const ModelRequest& model) {
    SherpaParameters parameters(model);
    if (model.kind == "whisper") {
        demandFiles(model, {"encoder", "decoder", "tokens"});
    } else {
        demandFiles(model, {"encoder", "decoder", "joiner", "tokens"});
    }
    const SherpaLibrary library(model.engineFolder);
    if (model.kind == "streaming-transducer") {
        return std::make_unique<StreamingEngine>(model, std::move(parameters), library);
    }
    return std::make_unique<OfflineEngine>(model, std::move(parameters), library);
}

}  // namespace dorix::recogniser
