#include "linux/process/BlockedSignals.h"

#include <sys/signalfd.h>

#include <csignal>

namespace dorix {

FileDescriptor blockedSignals(std::initializer_list<int> numbers) {
    sigset_t signals{};
    sigemptyset(&signals);
    for (const int number : numbers) sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC));
}

}  // namespace dorix
