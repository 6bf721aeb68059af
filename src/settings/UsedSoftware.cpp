#include "settings/UsedSoftware.h"

#include <array>

namespace dorix {

namespace {

constexpr std::array software{
    UsedSoftware{"Boost", "BSL-1.0"},
    UsedSoftware{"Compact Language Detector 2", "Apache-2.0"},
    UsedSoftware{"curl", "curl"},
    UsedSoftware{"GLib", "LGPL-2.1-or-later"},
    UsedSoftware{"Highway", "Apache-2.0 OR BSD-3-Clause"},
    UsedSoftware{"ICU", "Unicode-3.0"},
    UsedSoftware{"Inter", "OFL-1.1"},
    UsedSoftware{"libarchive", "BSD-2-Clause"},
    UsedSoftware{"libjpeg-turbo", "BSD-3-Clause AND IJG"},
    UsedSoftware{"libpq", "PostgreSQL"},
    UsedSoftware{"libsamplerate", "BSD-2-Clause"},
    UsedSoftware{"libseccomp", "LGPL-2.1-only"},
    UsedSoftware{"libsecret", "LGPL-2.1-or-later"},
    UsedSoftware{"libsystemd", "LGPL-2.1-or-later"},
    UsedSoftware{"Material Design Icons", "OFL-1.1"},
    UsedSoftware{"MD4C", "MIT"},
    UsedSoftware{"nlohmann/json", "MIT"},
    UsedSoftware{"ONNX Runtime", "MIT"},
    UsedSoftware{"OpenSSL", "Apache-2.0"},
    UsedSoftware{"PocketSphinx", "BSD-2-Clause"},
    UsedSoftware{"pugixml", "MIT"},
    UsedSoftware{"PulseAudio", "LGPL-2.1-or-later"},
    UsedSoftware{"Qt", "LGPL-3.0-only"},
    UsedSoftware{"RE2", "BSD-3-Clause"},
    UsedSoftware{"sherpa-onnx", "Apache-2.0"},
    UsedSoftware{"SQLite", "blessing"},
    UsedSoftware{"XCB", "MIT"},
    UsedSoftware{"xkbcommon", "MIT"},
};

}  // namespace

std::span<const UsedSoftware> usedSoftware() { return software; }

}  // namespace dorix
