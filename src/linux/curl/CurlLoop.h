#pragma once

#include "base/async/SerialExecutor.h"
#include "linux/curl/CurlTransfer.h"

#include <curl/curl.h>

#include <map>
#include <memory>
#include <optional>

namespace dorix {

/// The network's thread, on which all transfers run and the connections are kept. At rest it sleeps.
class CurlLoop final : public SerialExecutor {
 public:
    CurlLoop();
    /// What has not come to its end fails.
    ~CurlLoop() override;

    // Any thread.
    void begin(std::shared_ptr<CurlTransfer> transfer);
    /// Ends it at once, if it is not through.
    void drop(std::shared_ptr<CurlTransfer> transfer);
    /// There is room again for its body.
    void resume(std::shared_ptr<CurlTransfer> transfer);

 private:
    struct Release {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    struct Running {
        std::shared_ptr<CurlTransfer> transfer;
        TimerId patience = TimerId::none;
    };

    void wait(std::optional<double> seconds) override;
    void wake() override;

    void add(const std::shared_ptr<CurlTransfer>& transfer);
    void finishEnded();
    void watchPatience(CURL* handle);
    std::shared_ptr<CurlTransfer> remove(CURL* handle);

    const std::unique_ptr<CURLM, Release> multi_;
    std::map<CURL*, Running> running_;  // the thread's own
};

}  // namespace dorix
