#pragma once

#include "base/Json.h"
#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "cloud/APIError.h"
#include "cloud/EventStreamReader.h"
#include "cloud/SessionToken.h"
#include "cloud/WireCoding.h"
#include "platform/HttpClient.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

class Keychain;
class UserDefaults;

/// The one door to the cloud service. Main executor, which no call blocks; several may be under way at once.
/// Calls fail with APIError, or with DecodingError when the answer is not what was asked for. None is tried
/// again.
class DorixAPI {
 public:
    /// Where the service answers when nobody names another place.
    static constexpr std::string_view developmentURL = "http://127.0.0.1:8787";

    /// The user's default that names another place.
    static constexpr const char* serverKey = "DORIXServerURL";

    enum class Session { none, required };
    using OnText = EventStreamReader::OnText;
    using OnFailure = std::function<void(const APIError&)>;

    /// All but the address must outlive it. An address that is none gives `developmentURL`.
    DorixAPI(const Executor& executor, HttpClient& http, Keychain& keychain,
             std::optional<std::string> address);
    DorixAPI(const DorixAPI&) = delete;
    DorixAPI& operator=(const DorixAPI&) = delete;

    const std::string& baseURL() const { return baseURL_; }
    /// Calls go there from now on. The session of another place must have ended before.
    void useServer(std::optional<std::string> address);
    /// The page of instructions, in the app language.
    std::string manualURL() const;

    /// Called when the session turns out to be none, before the call fails.
    OnFailure onFailure = [](const APIError&) {};

    /// Whether whoever is meant answers at the address. Asked before each call; without them it fails as
    /// offline, and nothing is sent.
    std::function<bool()> isAnswered = [] { return true; };

    /// `timeout` is in seconds, for all of the exchange.
    template <Decodable T>
    Task<T> post(std::string path, Json body, Session session, double timeout) {
        const auto answer = co_await call(postRequest(path, body, timeout), session);
        co_return decoded<T>(answer, decoder());
    }

    /// With a session always.
    template <Decodable T>
    Task<T> get(std::string path) {
        const auto answer = co_await call(getRequest(path), Session::required);
        co_return decoded<T>(answer, decoder());
    }

    /// The whole of a text that arrives piece by piece, with a session always; `onText` gets all that has
    /// come so far each time. What breaks the connection on the way is thrown as HttpError.
    Task<std::string> stream(std::string path, Json body, OnText onText = nullptr);

    /// Has a connection to the service open by the time of the next call, and sends nothing.
    void connect();

    /// To read records with that were stored as the service sent them.
    Decoder decoder() const { return {executor_.date()}; }

 private:
    HttpRequest getRequest(std::string_view path) const;
    HttpRequest postRequest(std::string_view path, const Json& body, double timeout) const;
    Task<std::string> call(HttpRequest request, Session session);
    Task<std::string> usableToken();
    Task<APIError> refusal(int status, std::string body, std::string usedToken);

    const Executor& executor_;
    HttpClient& http_;
    SessionToken token_;
    std::string baseURL_;
};

/// Whether paths can be appended to it: an address of the web with a host, and neither query nor fragment.
bool isServerAddress(const std::string& address);

/// The service's address: the user's, by the key "DORIXServerURL", or else the one that the program came
/// with.
std::optional<std::string> configuredServer(const UserDefaults& defaults,
                                            const std::optional<std::string>& packaged);

}  // namespace dorix
