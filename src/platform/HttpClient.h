#pragma once

#include "base/Error.h"
#include "base/async/Task.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

/// Names and values in their order; the names of an answer are in lower case.
using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

/// Some bytes of what an address holds, counted from 0; up to its end without a last one.
struct HttpRange {
    std::uint64_t first = 0;
    std::optional<std::uint64_t> last;
};

struct HttpRequest {
    enum class Method { get, post };
    enum class Redirects { refuse, follow };

    Method method = Method::get;
    std::string url;  // "http:" or "https:"
    HttpHeaders headers;
    std::string body;  // of a post
    /// Seconds. A whole answer must be there by then; one that is streamed or goes to a file may not pause
    /// for longer.
    double timeout = 60;
    std::optional<HttpRange> range = std::nullopt;
    /// Followed up to five times, never from https to http; and never with an "authorization" header: then
    /// the redirection itself is the answer.
    Redirects redirects = Redirects::refuse;
    /// The largest body that is taken whole, in bytes.
    std::size_t largestBody = 16UZ * 1024 * 1024;
};

/// How an answer begins.
struct HttpHead {
    int status = 0;
    HttpHeaders headers;

    /// The value of the first header of that name, which is in lower case.
    std::optional<std::string_view> header(std::string_view name) const;
};

struct HttpResponse : HttpHead {
    std::string body;
};

/// An exchange that came to no end, told in the system's or the library's words, which hold nothing of what
/// was sent but the server's name.
class HttpError : public MessageError {
 public:
    enum class Kind {
        badRequest,   // it was not even sent: no web address, or a header that is none
        unreachable,  // no connection
        untrusted,    // the server is not who it says
        timedOut,
        tooLarge,
        broken,  // the answer ended too early, or is none
        disk,    // the file could not be written
    };

    HttpError(Kind kind, std::string words) : MessageError(std::move(words)), kind_(kind) {}
    Kind kind() const { return kind_; }

 private:
    Kind kind_;
};

/// The body of an answer while it arrives. Letting go of it ends the transfer at once. What nobody takes is
/// left with the server, but for some megabytes.
class HttpBody {
 public:
    virtual ~HttpBody() = default;

    /// All that has come since the last call, waiting for it while there is nothing; nothing after the end.
    /// One task at a time. Throws HttpError when the end did not come.
    virtual Task<std::optional<std::string>> next() = 0;
};

/// All of a body that is no longer than `largest`; the body must outlive the task. Throws HttpError.
Task<std::string> wholeBody(HttpBody& body, std::size_t largest);

struct HttpStream : HttpHead {
    std::unique_ptr<HttpBody> body;
};

/// A file that an answer goes to.
struct HttpDownload {
    std::filesystem::path file;
    /// Whether the body of a 200 or 206 is what is meant to be in the file; where it is not, that answer
    /// leaves the file as it is and comes whole, like any other. Where the task runs.
    std::function<bool(const HttpHead& head)> accepts = nullptr;
    /// Sees each piece before it is written, and where in the file it is going to stand; after a 200 that is
    /// the beginning, whatever the file holds. What it throws ends the transfer. On a thread of the client's,
    /// one call after the other, all of them before the task ends; one may still be under way when a task is
    /// cancelled or destroyed.
    std::function<void(std::uint64_t at, std::string_view piece)> onPiece = nullptr;
    /// The bytes that the file has, and how many it is to have, where the server says so. Where the task
    /// runs.
    std::function<void(std::uint64_t held, std::optional<std::uint64_t> whole)> onProgress = nullptr;
};

/// The web, for the whole program: connections are kept and shared, servers must prove who they are, and the
/// proxies of the session are used, but not for this computer. Any thread; the tasks run on their own
/// executor and never block it, and what they are cancelled or destroyed before ends at once. Any status is
/// an answer; what is none throws HttpError. What is under way when the client goes fails.
class HttpClient {
 public:
    virtual ~HttpClient() = default;

    /// Opens a connection to the server of that address, for a request that is about to come, and sends
    /// nothing over it. Does nothing where one is at rest already. Returns at once; a failure is silent, as
    /// the request will tell.
    virtual void connect(std::string url) = 0;

    /// The answer, whole.
    virtual Task<HttpResponse> send(HttpRequest request) = 0;

    /// The answer as soon as it begins.
    virtual Task<HttpStream> open(HttpRequest request) = 0;

    /// Writes the body of a 200 to the file, in place of what that holds, and of a 206 behind what it holds,
    /// which must be as much as the range leaves out. Any other answer, and one that is not accepted, leaves
    /// the file as it is and comes whole. A transfer that breaks leaves in the file what had come. Folders on
    /// the way must be there.
    virtual Task<HttpResponse> download(HttpRequest request, HttpDownload to) = 0;
};

}  // namespace dorix
