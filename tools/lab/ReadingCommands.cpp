#include "Command.h"
#include "base/async/TaskScope.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "memory/reading/JailedDocumentReader.h"

#include <future>
#include <memory>

namespace dorix::lab {

namespace {

/// The program's reader of documents, in its process.
class Extractor {
 public:
    ~Extractor() { loop_.stop(); }

    /// Waits for it. Throws what the reader throws.
    std::optional<std::string> text(const std::filesystem::path& file, std::size_t limit) {
        std::promise<std::optional<std::string>> promise;
        auto text = promise.get_future();
        loop_.post([&] { tasks_.spawn(answer(file, limit, promise)); });
        return text.get();
    }

 private:
    Task<void> answer(std::filesystem::path file, std::size_t limit,
                      std::promise<std::optional<std::string>>& promise) {
        try {
            promise.set_value(co_await reader_.text(std::move(file), limit));
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }

    PollLoop loop_;
    LinuxHelperProcesses processes_{loop_, DORIX_PROGRAM};
    JailedDocumentReader reader_{loop_, processes_, JailedDocumentReader::Pace::awaited};
    TaskScope tasks_{loop_};
};

Json extract(Extractor& extractor, const Json& input) {
    const auto limit = requiredInteger(input, "limit");
    if (limit < 0) throw BadInput("\"limit\" is below 0");
    const auto text = extractor.text(requiredString(input, "file"), static_cast<std::size_t>(limit));
    return {{"text", text ? Json(*text) : Json(nullptr)}};
}

}  // namespace

std::vector<Command> readingCommands() {
    const auto extractor = std::make_shared<Extractor>();
    return {
        {"extract", R"({"file","limit"})", R"({"text"}: null where there is none)",
         [extractor](const Json& input) { return extract(*extractor, input); }},
    };
}

}  // namespace dorix::lab
