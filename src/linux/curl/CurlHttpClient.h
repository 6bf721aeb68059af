#pragma once

#include "base/async/SerialExecutor.h"
#include "linux/curl/CurlLoop.h"
#include "platform/HttpClient.h"

#include <filesystem>
#include <memory>
#include <string>

namespace dorix {

/// The web by libcurl. All exchanges share one thread, which starts with the first, and downloads another one
/// that writes their files.
class CurlHttpClient final : public HttpClient {
 public:
    /// Servers are believed by the authorities that the system trusts, or by those in `authorities`.
    explicit CurlHttpClient(std::filesystem::path authorities = {});
    /// Ends what is under way and joins the threads.
    ~CurlHttpClient() override = default;
    CurlHttpClient(const CurlHttpClient&) = delete;
    CurlHttpClient& operator=(const CurlHttpClient&) = delete;

    void connect(std::string url) override;
    Task<HttpResponse> send(HttpRequest request) override;
    Task<HttpStream> open(HttpRequest request) override;
    Task<HttpResponse> download(HttpRequest request, HttpDownload to) override;

 private:
    class Hold;
    class Body;

    Hold begin(HttpRequest request, CurlTransfer::Answer answer);
    Task<void> write(HttpStream& stream, HttpDownload to, std::uint64_t start);

    const std::string authorities_;
    const std::shared_ptr<CurlLoop> loop_ = std::make_shared<CurlLoop>();
    SerialExecutor files_;
};

}  // namespace dorix
