#include "linux/process/LinuxProcessWatcher.h"

#include "linux/process/PidFd.h"

#include <utility>

namespace dorix {

namespace {

struct Watch {
    FileDescriptor process;
    std::function<void()> onExit;
    FdWatcher::Token token;  // goes before the descriptor
};

}  // namespace

ProcessWatcher::Token LinuxProcessWatcher::watchExit(std::int32_t processIdentifier,
                                                     std::function<void()> onExit) {
    auto process = openProcess(processIdentifier);
    if (!process) return nullptr;
    const auto watch = std::make_shared<Watch>(std::move(process), std::move(onExit));
    watch->token = watcher_.watchReadable(watch->process.get(), [weak = std::weak_ptr(watch)] {
        const auto self = weak.lock();
        if (!self) return;
        self->token.reset();  // it stays readable
        self->onExit();
    });
    return watch;
}

}  // namespace dorix
