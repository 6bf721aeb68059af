#pragma once

#include "recognition/ModelRequest.h"

#include <string>

namespace dorix::recogniser {

/// How long a server may take, in seconds.
struct ServerPatience {
    double connecting = 5;
    double answering = 15;       // in all, and
    double perSecondSpoken = 1;  // for every second of the sound
};

/// The call "v1/audio/transcriptions", as many servers know it, below the address of one of them. Blocks; one
/// thread.
class TranscriptionCall {
 public:
    /// Throws ServerFailure when the address is none, or the key must not be sent there.
    TranscriptionCall(const ModelRequest::Server& server, const std::string& language,
                      ServerPatience patience);

    /// The text of a WAV file that lasts so many seconds. Throws ServerFailure.
    std::string text(const std::string& wave, double seconds) const;

 private:
    ModelRequest::Server server_;
    std::string language_;
    std::string url_;
    bool isThisComputer_;
    ServerPatience patience_;
};

}  // namespace dorix::recogniser
