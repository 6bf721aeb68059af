#pragma once

#include "base/async/Completion.h"
#include "base/async/Executor.h"
#include "platform/HttpClient.h"

#include <curl/curl.h>

#include <array>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace dorix {

/// The bytes of a body between the network's thread, which puts them in, and the task that takes them out.
class BodyBuffer {
 public:
    enum class Put { taken, full };

    /// `full`: nothing was taken, and somebody is told when there is room again.
    Put put(std::string_view bytes);
    void end(std::exception_ptr error);

    struct Taken {
        std::string bytes;
        bool isEnd = false;
        bool madeRoom = false;                 // bytes were refused before
        std::optional<Completion<void>> news;  // completed when there is more, where there is nothing yet
    };
    /// Throws what the body ended with, if there is nothing before that.
    Taken take();

 private:
    std::mutex mutex_;
    std::string bytes_;
    bool hasEnded_ = false;
    bool refused_ = false;
    std::exception_ptr error_;
    std::optional<Completion<void>> news_;  // somebody waits for it
};

/// One exchange, as libcurl carries it through. Made by who waits for it; then the network's thread has it,
/// but for the members that say otherwise.
class CurlTransfer {
 public:
    /// `none`: only the connection is opened.
    enum class Answer { whole, streamed, none };

    /// `clock` outlives it. Certificates are judged by the authorities in the file, or by the system's where
    /// none is named.
    CurlTransfer(HttpRequest request, Answer answer, const Executor& clock, std::string authorities);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    // What comes of it. Any thread.
    Completion<HttpResponse> whole;
    Completion<HttpHead> head;  // where it is streamed
    BodyBuffer body;            // likewise

    /// The handle to run, which is the transfer's own. Throws HttpError when this cannot be sent.
    CURL* prepare();
    CURL* handle() const { return handle_.get(); }

    /// It has come to its end, or is not to go on.
    void finish(CURLcode result);
    void fail(const HttpError& error);

    /// Seconds until it has taken too long, by what has happened so far.
    double patience();
    /// There is room again for a body that was held back.
    void resume();

 private:
    struct Release {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    static std::size_t onHeader(const char* data, std::size_t size, std::size_t count, void* transfer);
    static std::size_t onBody(const char* data, std::size_t size, std::size_t count, void* transfer);

    void setOptions();
    void askNothing();
    void setBody();
    void setTrust();
    void setHeaders();
    void addHeader(const std::string& line);
    bool follows() const;
    void moved();
    void takeHeaderLine(std::string_view line);
    void headIsThere();
    std::size_t takeBody(std::string_view bytes);
    HttpError errorFor(CURLcode result) const;

    const HttpRequest request_;
    const Answer answer_;
    const Executor& clock_;
    const std::string authorities_;
    std::unique_ptr<CURL, Release> handle_;
    std::unique_ptr<curl_slist, Release> headers_;
    std::array<char, CURL_ERROR_SIZE> words_{};
    HttpResponse response_;
    std::size_t headerBytes_ = 0;
    bool hasHead_ = false;
    bool isHeldBack_ = false;
    std::optional<HttpError> refusal_;  // why we broke it off ourselves
    double lastMove_;                   // by the clock: the begin, or the last sign of a streamed answer
    curl_off_t sent_ = 0;
};

}  // namespace dorix
