#include "reading/helper/ReadingHelper.h"

#include "base/Error.h"
#include "base/async/Completion.h"

#include <exception>
#include <utility>

namespace dorix {

namespace {

constexpr auto program = "dorix-reader";
constexpr double longestRest = 30;  // seconds
constexpr std::size_t longestAnswer = mostBytes(~std::size_t{0}) + 1;

std::string wordsFor(const std::string& failure) { return std::string(program) + ": " + failure; }

std::exception_ptr failure(const std::string& why) {
    return std::make_exception_ptr(MessageError(wordsFor(why)));
}

}  // namespace

/// The process, and the answer that it owes.
struct ReadingHelper::Helper {
    void take(std::string_view bytes) {
        messages.take(bytes);
        const auto body = messages.next();
        const auto answer = body ? readAnswerIn(*body) : std::nullopt;
        if (answer) {
            owed.complete(*answer);
        } else if (body || messages.isBroken()) {
            owed.fail(failure("dice algo que no se entiende"));
        }
    }
    void end(const std::string& how) {
        hasEnded = true;
        owed.fail(failure(how));
    }

    MessageReader messages{longestAnswer};
    Completion<ReadAnswer> owed;
    bool hasEnded = false;
    std::unique_ptr<HelperProcess> process;
};

/// A helper that is not through with its order when nobody waits any more is done with.
class ReadingHelper::UnderWay {
 public:
    explicit UnderWay(ReadingHelper& helper) : helper_(helper) { helper_.rest_.stop(); }
    ~UnderWay() {
        if (isAnswered_) {
            helper_.rest_.once(longestRest, [&helper = helper_] { helper.helper_.reset(); });
        } else {
            helper_.helper_.reset();
        }
    }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;

    void answered() { isAnswered_ = true; }

 private:
    ReadingHelper& helper_;
    bool isAnswered_ = false;
};

ReadingHelper::ReadingHelper(Executor& main, HelperProcesses& processes)
    : main_(main), processes_(processes), isInstalled_(processes.isInstalled(program)), rest_(main) {}

ReadingHelper::~ReadingHelper() = default;

void ReadingHelper::start() {
    helper_ = std::make_unique<Helper>();
    helper_->process = processes_.launch(
        program, {.onBytes = [&helper = *helper_](std::string_view bytes) { helper.take(bytes); },
                  .onEnd = [&helper = *helper_](const std::string& how) { helper.end(how); }});
    if (!helper_->process) throw MessageError(wordsFor("no se pudo iniciar"));
}

Task<ReadAnswer> ReadingHelper::answer(std::string order, double patience) {
    const auto turn = co_await turns_.next();
    UnderWay underWay(*this);
    if (!helper_ || helper_->hasEnded) start();
    const auto owed = helper_->owed = Completion<ReadAnswer>();
    helper_->process->send(std::move(order));
    bool isLate = false;
    Timer tooLong(main_);
    tooLong.once(patience, [owed, &isLate] {
        isLate = true;
        owed.complete({.outcome = ReadAnswer::Outcome::late, .words = wordsFor("no responde")});
    });
    auto answer = co_await owed;
    if (!isLate) underWay.answered();
    co_return answer;
}

}  // namespace dorix
