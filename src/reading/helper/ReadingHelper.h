#pragma once

#include "base/async/Executor.h"
#include "base/async/Timer.h"
#include "base/async/Turns.h"
#include "platform/HelperProcess.h"
#include "reading/Messages.h"

#include <memory>
#include <string>

namespace dorix {

/// The program's end of dorix-reader, which reads one thing at a time, each in a process of its own that can
/// reach nothing else: whatever that does costs that one alone. It is started when it is needed and goes
/// after half a minute of rest. Main executor; must outlive the tasks that it gives.
class ReadingHelper {
 public:
    /// Both must outlive it. Looks at the disk.
    ReadingHelper(Executor& main, HelperProcesses& processes);
    ~ReadingHelper();
    ReadingHelper(const ReadingHelper&) = delete;
    ReadingHelper& operator=(const ReadingHelper&) = delete;

    bool isInstalled() const { return isInstalled_; }

    /// The answer to an order, which is the bytes of a message; one that says so when there is none within
    /// `patience` seconds. Throws an Error when it cannot be asked, or dies of it.
    Task<ReadAnswer> answer(std::string order, double patience);

 private:
    struct Helper;
    class UnderWay;

    void start();

    Executor& main_;
    HelperProcesses& processes_;
    const bool isInstalled_;
    std::unique_ptr<Helper> helper_;
    Timer rest_;
    Turns turns_;
};

}  // namespace dorix
