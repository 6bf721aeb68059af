#include "cloud/AccountForm.h"

#include "base/Error.h"
#include "base/text/Text.h"
#include "base/text/Url.h"
#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "cloud/OwnService.h"
#include "localdata/Language.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t codeLength = 6;
constexpr double codeLasts = 600;  // seconds

/// What a mail program may put between digits or around them: blanks, hyphens, and marks without width.
constexpr auto separators = std::to_array<std::string_view>(
    {" ", "\t", "\n", "\r", "-", "\u00a0", "\u2007", "\u2009", "\u200b", "\u200c", "\u200d", "\u200e",
     "\u200f", "\u2010", "\u2011", "\u2013", "\u202f", "\u2060", "\ufeff"});

/// As it was sent, from a text that it was copied out of.
std::optional<std::string> codeIn(std::string code) {
    for (const auto separator : separators) code = text::replaceAll(code, separator, "");
    const bool isCode =
        code.size() == codeLength && std::ranges::all_of(code, [](char c) { return c >= '0' && c <= '9'; });
    return isCode ? std::optional(code) : std::nullopt;
}

/// A token is not sent over a network in the clear.
bool isSafeServer(const std::string& address) {
    return isServerAddress(address) && (address.starts_with("https://") || isThisComputer(*hostOf(address)));
}

}  // namespace

AccountForm::AccountForm(Executor& executor, DorixAPI& api, AccountStore& account, OwnService& own,
                         UserDefaults& defaults)
    : api_(api), account_(account), own_(own), defaults_(defaults), tasks_(executor) {
    subscriptions_.push_back(account.loggedIn.subscribe([this](bool) {
        if (!busy.get() && step.get() != Step::server) begin();
    }));
    subscriptions_.push_back(own.hasBadSettings.subscribe([this](bool) {
        if (step.get() == Step::thisComputer) show(Step::thisComputer);
    }));
    subscriptions_.push_back(account.profile.subscribe([this](const auto& profile) {
        if (profile) email.set(profile->email);
    }));
}

std::string AccountForm::server() const {
    return own_.isResponsible() || api_.baseURL() == DorixAPI::developmentURL ? std::string()
                                                                              : api_.baseURL();
}

AccountForm::Step AccountForm::firstStep() const {
    if (own_.isResponsible()) return Step::thisComputer;
    if (account_.loggedIn.get()) return Step::signedIn;
    // Whoever fetches the code from their mail comes back to enter it.
    const bool isAwaited = codeSentAt_ && tasks_.executor().now() - *codeSentAt_ < codeLasts;
    return isAwaited ? Step::code : Step::email;
}

/// With what there is to say about it from the beginning.
void AccountForm::show(Step next) {
    const bool isBroken = next == Step::thisComputer && own_.hasBadSettings.get();
    error.set(isBroken ? tr("El servicio de este ordenador no puede empezar: en su configuración (variables "
                            "DORIX_SERVICE_…) hay un error. El registro de DORIX dice cuál.")
                       : "");
    notice.set("");
    step.set(next);
}

void AccountForm::begin() {
    const auto first = firstStep();
    const auto& profile = account_.profile.get();
    if (first != Step::code) email.set(profile ? profile->email : "");
    show(first);
}

void AccountForm::complain(const std::string& words) {
    notice.set("");
    error.set(words);
}

void AccountForm::begin(Task<void> work, std::optional<Step> after, std::string done) {
    if (busy.get()) return;
    busy.set(true);
    complain("");
    tasks_.spawn(attempt(std::move(work), after, std::move(done)));
}

/// Without a step it is the one that there is to begin with. `done` is the notice of it.
Task<void> AccountForm::attempt(Task<void> work, std::optional<Step> after, std::string done) {
    std::string words;
    try {
        co_await std::move(work);
    } catch (const Error& failure) {
        words = failure.localizedDescription();
    }
    busy.set(false);
    if (!words.empty()) co_return error.set(words);
    show(after.value_or(firstStep()));
    notice.set(done);
}

void AccountForm::sendCode(const std::string& to) {
    const std::string address(text::trim(to));
    const auto at = address.find('@');
    if (at == std::string::npos || at == 0 || at + 1 == address.size())
        return complain(tr("Escribe una dirección de email."));
    email.set(address);
    begin(askForCode(address), Step::code);
}

void AccountForm::resendCode() {
    begin(askForCode(email.get()), Step::code, tr("Te hemos enviado otro código."));
}

Task<void> AccountForm::askForCode(std::string address) {
    co_await account_.requestCode(std::move(address));
    codeSentAt_ = tasks_.executor().now();
}

void AccountForm::verify(const std::string& text) {
    const auto code = codeIn(text);
    if (!code) return complain(tr("El código tiene 6 cifras."));
    begin(account_.verify(email.get(), *code), Step::signedIn);
}

void AccountForm::changeEmail() {
    codeSentAt_.reset();
    show(Step::email);
}

void AccountForm::signOut() { begin(account_.logout(), Step::email); }

void AccountForm::chooseServer() { show(Step::server); }

void AccountForm::useServer(const std::string& address) {
    const std::string url(text::trim(address));
    if (!isSafeServer(url)) return complain(tr("Escribe la dirección entera, con https://"));
    begin(goOverTo(url), std::nullopt);
}

void AccountForm::useThisComputer() { begin(goOverTo(std::string(DorixAPI::developmentURL)), std::nullopt); }

Task<void> AccountForm::goOverTo(std::string address) {
    // The session is not given up for an address that was mistyped.
    if (!OwnService::isOwn(address) && !co_await own_.isServiceAt(address)) throw APIError::offline();
    co_await account_.leave();
    codeSentAt_.reset();
    defaults_.set(DorixAPI::serverKey, address);
    api_.useServer(std::move(address));
    own_.start();
    co_await own_.settled();
}

}  // namespace dorix
