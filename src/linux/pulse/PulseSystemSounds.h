#pragma once

#include "platform/SystemSounds.h"

#include <map>
#include <memory>
#include <string>

namespace dorix {

class PulseConnection;

/// The program's own sounds, "Tink" and "Pop", on the server's default sink. To the desktop they are event
/// sounds, which it may have a volume of its own for. Nothing is heard of a sound while there is no server.
class PulseSystemSounds final : public SystemSounds {
 public:
    explicit PulseSystemSounds(std::shared_ptr<PulseConnection> connection);
    ~PulseSystemSounds() override;

    void play(std::string_view name, double volume) override;

 private:
    class Playback;

    const std::shared_ptr<PulseConnection> connection_;
    std::map<std::string, std::unique_ptr<Playback>, std::less<>> playbacks_;
};

}  // namespace dorix
