#include "recogniser/server/TranscriptionCall.h"

#include "base/Json.h"
#include "base/Log.h"
#include "base/text/Text.h"
#include "base/text/Url.h"
#include "recogniser/server/ServerFailure.h"

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>

namespace dorix::recogniser {

namespace {

using Kind = ServerFailure::Kind;

constexpr std::size_t longestAnswer = 1UZ << 20U;

struct Release {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_mime* form) const { curl_mime_free(form); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

template <typename T>
Owned<T> owned(T* made) {
    if (made == nullptr) throw std::bad_alloc();
    return Owned<T>(made);
}

/// Servers are named with and without the begin of the path, or by the whole call.
std::string urlOfCall(std::string address) {
    constexpr std::string_view call = "/audio/transcriptions";
    while (address.ends_with('/')) address.pop_back();
    if (address.ends_with(call)) return address;
    return address + (address.ends_with("/v1") ? "" : "/v1") + std::string(call);
}

/// What would begin another header, or end the text.
bool isPlain(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

Kind kindOf(CURLcode result) {
    switch (result) {
        case CURLE_OPERATION_TIMEDOUT:
            return Kind::timedOut;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
            return Kind::untrusted;
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return Kind::badAddress;
        case CURLE_WRITE_ERROR:
            return Kind::badAnswer;
        default:
            return Kind::unreachable;
    }
}

std::size_t takeAnswer(const char* data, std::size_t size, std::size_t count, void* answer) {
    auto& body = *static_cast<std::string*>(answer);
    if (body.size() + size * count > longestAnswer) return 0;
    body.append(data, size * count);
    return size * count;
}

void addField(curl_mime* form, const char* name, const std::string& value) {
    if (value.empty()) return;
    auto* part = curl_mime_addpart(form);
    curl_mime_name(part, name);
    curl_mime_data(part, value.data(), value.size());
}

Owned<curl_mime> formOf(CURL* curl, const std::string& wave, const std::string& model,
                        const std::string& language) {
    auto form = owned(curl_mime_init(curl));
    auto* file = curl_mime_addpart(form.get());
    curl_mime_name(file, "file");
    curl_mime_data(file, wave.data(), wave.size());
    curl_mime_filename(file, "audio.wav");
    curl_mime_type(file, "audio/wav");
    addField(form.get(), "model", model);
    addField(form.get(), "language", language);
    addField(form.get(), "response_format", "json");
    return form;
}

Owned<curl_slist> headersWith(const std::string& key) {
    // Or the library would wait a second for servers that do not know the question.
    auto headers = owned(curl_slist_append(nullptr, "Expect:"));
    const auto authorization = "Authorization: Bearer " + key;
    if (!key.empty() && curl_slist_append(headers.get(), authorization.c_str()) == nullptr)
        throw std::bad_alloc();
    return headers;
}

void setPatience(CURL* curl, const ServerPatience& patience, double seconds) {
    const auto whole = patience.answering + patience.perSecondSpoken * seconds;
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(patience.connecting * 1000));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(whole * 1000));
}

/// The log is told no more than that.
[[noreturn]] void fail(Kind kind, const std::string& how) {
    logLine("transcription server: " + how);
    throw ServerFailure(kind);
}

void perform(CURL* curl) {
    const auto result = curl_easy_perform(curl);
    if (result != CURLE_OK) fail(kindOf(result), curl_easy_strerror(result));
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (const auto kind = ServerFailure::kindOfStatus(status)) fail(*kind, "HTTP " + std::to_string(status));
}

std::string textIn(const std::string& answer) {
    const auto json = Json::parse(answer, nullptr, false);
    if (!json.is_object() || !json.contains("text") || !json["text"].is_string()) {
        throw ServerFailure(Kind::badAnswer);
    }
    return std::string(text::trim(json["text"].get_ref<const std::string&>()));
}

}  // namespace

TranscriptionCall::TranscriptionCall(const ModelRequest::Server& server, const std::string& language,
                                     ServerPatience patience)
    : server_(server), language_(language), url_(urlOfCall(server.address)), patience_(patience) {
    const auto host = hostOf(url_);
    if (!isWebAddress(url_) || !host || !isPlain(url_)) throw ServerFailure(Kind::badAddress);
    if (!isPlain(server_.key)) throw ServerFailure(Kind::badKey);
    isThisComputer_ = isThisComputer(*host);
    const bool isSecret = schemeOf(url_) == "https" || isThisComputer_;
    if (!server_.key.empty() && !isSecret) throw ServerFailure(Kind::keyInClear);
}

std::string TranscriptionCall::text(const std::string& wave, double seconds) const {
    const auto curl = owned(curl_easy_init());
    const auto form = formOf(curl.get(), wave, server_.model, language_);
    const auto headers = headersWith(server_.key);
    std::string answer;
    curl_easy_setopt(curl.get(), CURLOPT_URL, url_.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    if (isThisComputer_) curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(curl.get(), CURLOPT_MIMEPOST, form.get());
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, takeAnswer);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
    setPatience(curl.get(), patience_, seconds);
    perform(curl.get());
    return textIn(answer);
}

}  // namespace dorix::recogniser
