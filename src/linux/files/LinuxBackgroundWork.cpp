#include "linux/files/LinuxBackgroundWork.h"

#include <linux/ioprio.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>

namespace dorix {

namespace {

constexpr double perCent = 100;

std::string lineOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

double numberOf(const std::filesystem::path& file) {
    double number = 0;
    std::ifstream(file) >> number;
    return number;
}

/// One that the computer itself runs on, and not a mouse or a headset.
bool isOwnBattery(const std::filesystem::path& supply) {
    return lineOf(supply / "type") == "Battery" && lineOf(supply / "scope") != "Device";
}

}  // namespace

void LinuxBackgroundWork::makeThreadIdle() {
    const sched_param parameters{};
    ::sched_setscheduler(0, SCHED_IDLE, &parameters);  // 0: of this thread alone
    ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, 0, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

/// Of two batteries one is used up before the other: what counts is what is left in all of them.
std::optional<double> LinuxBackgroundWork::batteryLeft() {
    double left = 0;
    int batteries = 0;
    bool isDischarging = false;
    std::error_code error;
    for (std::filesystem::directory_iterator at(supplies_, error), end; !error && at != end;
         at.increment(error)) {
        if (!isOwnBattery(at->path())) continue;
        isDischarging |= lineOf(at->path() / "status") == "Discharging";
        left += numberOf(at->path() / "capacity");
        ++batteries;
    }
    return isDischarging ? std::optional(left / batteries / perCent) : std::nullopt;
}

}  // namespace dorix
