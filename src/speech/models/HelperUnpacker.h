#pragma once

#include "base/async/Executor.h"
#include "platform/ArchiveUnpacker.h"
#include "platform/HelperProcess.h"

namespace dorix {

/// Has archives unpacked by the recogniser's program, in a process of its own that can reach nothing but the
/// archive and the folder. Main executor.
class HelperUnpacker final : public ArchiveUnpacker {
 public:
    /// Both must outlive it.
    HelperUnpacker(Executor& main, HelperProcesses& processes) : main_(main), processes_(processes) {}

    /// Takes two minutes at most.
    Task<void> unpack(UnpackRequest request) override;

 private:
    Executor& main_;
    HelperProcesses& processes_;
};

}  // namespace dorix
