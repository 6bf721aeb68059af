#include "linux/process/PidFd.h"

#include <sys/syscall.h>

namespace dorix {

FileDescriptor openProcess(pid_t process) {
    return FileDescriptor(
        static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));  // close-on-exec by itself
}

}  // namespace dorix
