#include "linux/curl/CurlTransfer.h"

#include "base/text/Text.h"
#include "base/text/Url.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t roomForBody = 4UZ * 1024 * 1024;  // untaken, before the server has to wait
constexpr std::size_t roomForHeaders = 256UZ * 1024;
constexpr long mostRedirects = 5;

using Kind = HttpError::Kind;

/// What would begin another line, or end the text, is no part of a header.
bool isPlain(std::string_view text) { return text.find_first_of(std::string_view("\r\n\0", 3)) == text.npos; }

/// Programs that we start do not get our connections.
curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) {
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

/// After a rest of the computer, or on another network, a connection that was kept may be dead without a
/// word. Whoever sends over it learns that after these milliseconds, and is given a new one while there is
/// time.
int giveUpSoon(void*, curl_socket_t socket, curlsocktype) {
    const unsigned patience = 4000;
    ::setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &patience, sizeof patience);
    return CURL_SOCKOPT_OK;
}

Kind kindOf(CURLcode result) {
    switch (result) {
        case CURLE_OPERATION_TIMEDOUT:
            return Kind::timedOut;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
            return Kind::untrusted;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
        case CURLE_SSL_CONNECT_ERROR:
            return Kind::unreachable;
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return Kind::badRequest;
        default:
            return Kind::broken;
    }
}

std::string rangeText(const HttpRange& range) {
    return std::to_string(range.first) + "-" + (range.last ? std::to_string(*range.last) : "");
}

}  // namespace

BodyBuffer::Put BodyBuffer::put(std::string_view bytes) {
    std::optional<Completion<void>> news;
    {
        const std::scoped_lock lock(mutex_);
        if (bytes_.size() >= roomForBody) {
            refused_ = true;
            return Put::full;
        }
        bytes_ += bytes;
        news.swap(news_);
    }
    if (news) news->complete();
    return Put::taken;
}

void BodyBuffer::end(std::exception_ptr error) {
    std::optional<Completion<void>> news;
    {
        const std::scoped_lock lock(mutex_);
        hasEnded_ = true;
        error_ = std::move(error);
        news.swap(news_);
    }
    if (news) news->complete();
}

BodyBuffer::Taken BodyBuffer::take() {
    const std::scoped_lock lock(mutex_);
    if (!bytes_.empty()) {
        return {.bytes = std::exchange(bytes_, {}), .madeRoom = std::exchange(refused_, false)};
    }
    if (error_) std::rethrow_exception(error_);
    if (hasEnded_) return {.isEnd = true};
    return {.news = news_.emplace()};
}

CurlTransfer::CurlTransfer(HttpRequest request, Answer answer, const Executor& clock, std::string authorities)
    : request_(std::move(request)),
      answer_(answer),
      clock_(clock),
      authorities_(std::move(authorities)),
      lastMove_(clock.now()) {}

CURL* CurlTransfer::prepare() {
    if (!isWebAddress(request_.url) || !hostOf(request_.url)) {
        throw HttpError(Kind::badRequest, "not a web address");
    }
    handle_.reset(curl_easy_init());
    if (!handle_) throw std::bad_alloc();
    setOptions();
    setTrust();
    setBody();
    setHeaders();
    return handle();
}

void CurlTransfer::setOptions() {
    auto* curl = handle();
    curl_easy_setopt(curl, CURLOPT_URL, request_.url.c_str());
    curl_easy_setopt(curl, CURLOPT_PRIVATE, this);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, words_.data());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    // A name that is still looked up must not hold up the thread when its transfer is given up.
    curl_easy_setopt(curl, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    curl_easy_setopt(curl, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_2TLS);
    curl_easy_setopt(curl, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (isThisComputer(*hostOf(request_.url))) {
        // Never by way of a proxy: it would be given what is meant for this computer.
        curl_easy_setopt(curl, CURLOPT_PROXY, "");
    } else {
        curl_easy_setopt(curl, CURLOPT_SOCKOPTFUNCTION, giveUpSoon);
    }
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
    if (request_.range) curl_easy_setopt(curl, CURLOPT_RANGE, rangeText(*request_.range).c_str());
    if (answer_ == Answer::none) askNothing();
    if (!follows()) return;
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, mostRedirects);
}

/// The library opens a connection that can be used later for a request only, and gives it away for good where
/// it is told to do no more than connect. So it gets a request that it finds it cannot write once it is
/// connected, with a time that no header holds: as nothing has gone over it the connection is kept.
void CurlTransfer::askNothing() {
    curl_easy_setopt(handle(), CURLOPT_TIMECONDITION, static_cast<long>(CURL_TIMECOND_IFMODSINCE));
    curl_easy_setopt(handle(), CURLOPT_TIMEVALUE_LARGE, std::numeric_limits<curl_off_t>::max());
}

/// The library's own patience would end connecting sooner than the request allows, so it gets none of its
/// own.
void CurlTransfer::setTrust() {
    auto* curl = handle();
    const bool isSecure = request_.url.starts_with("https:");
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https");
    if (!authorities_.empty()) curl_easy_setopt(curl, CURLOPT_CAINFO, authorities_.c_str());
}

void CurlTransfer::setBody() {
    if (request_.method != HttpRequest::Method::post) return;
    auto* curl = handle();
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request_.body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
}

void CurlTransfer::setHeaders() {
    for (const auto& [name, value] : request_.headers) {
        if (!isPlain(name) || !isPlain(value)) throw HttpError(Kind::badRequest, "not a header");
        addHeader(value.empty() ? name + ";" : std::string(name).append(": ").append(value));
    }
    // Or the library would wait a second for servers that do not know the question.
    addHeader("Expect:");
    curl_easy_setopt(handle(), CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::addHeader(const std::string& line) {
    auto* longer = curl_slist_append(headers_.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    std::ignore = headers_.release();
    headers_.reset(longer);
}

bool CurlTransfer::follows() const {
    const bool hasCredentials = std::ranges::any_of(request_.headers, [](const auto& header) {
        return text::lowercase(header.first) == "authorization";
    });
    return request_.redirects == HttpRequest::Redirects::follow && !hasCredentials;
}

std::size_t CurlTransfer::onHeader(const char* data, std::size_t size, std::size_t count, void* transfer) {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    self.moved();
    self.headerBytes_ += size * count;
    if (self.headerBytes_ > roomForHeaders) {
        self.refusal_.emplace(Kind::tooLarge, "the headers of the answer are too long");
        return 0;
    }
    self.takeHeaderLine({data, size * count});
    return size * count;
}

void CurlTransfer::takeHeaderLine(std::string_view line) {
    if (hasHead_) return;  // what comes behind the body
    line = text::trimAny(line, "\r\n");
    if (line.empty()) {
        headIsThere();
    } else if (line.starts_with("HTTP/")) {
        response_.headers.clear();  // those of an answer that another one follows
    } else if (const auto colon = line.find(':'); colon != std::string_view::npos) {
        response_.headers.emplace_back(text::lowercase(line.substr(0, colon)),
                                       text::trimAny(line.substr(colon + 1), " \t"));
    }
}

void CurlTransfer::headIsThere() {
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    response_.status = static_cast<int>(status);
    const bool leadsOn = follows() && status >= 300 && status < 400 && response_.header("location");
    if (status < 200 || leadsOn) return;
    hasHead_ = true;
    if (answer_ == Answer::streamed) head.complete(HttpHead(response_));
}

std::size_t CurlTransfer::onBody(const char* data, std::size_t size, std::size_t count, void* transfer) {
    return static_cast<CurlTransfer*>(transfer)->takeBody({data, size * count});
}

std::size_t CurlTransfer::takeBody(std::string_view bytes) {
    moved();
    if (answer_ == Answer::streamed) {
        isHeldBack_ = body.put(bytes) == BodyBuffer::Put::full;
        return isHeldBack_ ? CURL_WRITEFUNC_PAUSE : bytes.size();
    }
    if (bytes.size() > request_.largestBody - response_.body.size()) {
        refusal_.emplace(Kind::tooLarge, "the answer is too long");
        return 0;
    }
    response_.body += bytes;
    return bytes.size();
}

/// A whole answer has its time, however it comes.
void CurlTransfer::moved() {
    if (answer_ == Answer::streamed) lastMove_ = clock_.now();
}

void CurlTransfer::resume() {
    moved();
    isHeldBack_ = false;
    curl_easy_pause(handle(), CURLPAUSE_CONT);
}

double CurlTransfer::patience() {
    if (answer_ == Answer::streamed) {
        curl_off_t sent = 0;
        curl_easy_getinfo(handle(), CURLINFO_SIZE_UPLOAD_T, &sent);
        if (std::exchange(sent_, sent) != sent || isHeldBack_) moved();
    }
    return lastMove_ + request_.timeout - clock_.now();
}

void CurlTransfer::finish(CURLcode result) {
    if (result != CURLE_OK || !hasHead_) return fail(errorFor(result));
    if (answer_ == Answer::streamed) {
        body.end(nullptr);
    } else {
        whole.complete(std::move(response_));
    }
}

HttpError CurlTransfer::errorFor(CURLcode result) const {
    if (refusal_) return *refusal_;
    if (result == CURLE_OK) return {Kind::broken, "no answer"};
    const bool isTold = words_[0] != '\0';
    return {kindOf(result), isTold ? words_.data() : curl_easy_strerror(result)};
}

void CurlTransfer::fail(const HttpError& error) {
    const auto thrown = std::make_exception_ptr(error);
    whole.fail(thrown);
    head.fail(thrown);
    body.end(thrown);
}

}  // namespace dorix
