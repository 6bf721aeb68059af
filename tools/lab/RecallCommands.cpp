#include "Command.h"
#include "base/async/TaskScope.h"
#include "fakes/MemoryUserDefaults.h"
#include "linux/files/LinuxFileTree.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "localdata/HistoryStore.h"
#include "memory/MemoryController.h"
#include "memory/reading/JailedDocumentReader.h"
#include "platform/BackgroundWork.h"

#include <filesystem>
#include <future>

namespace dorix::lab {

namespace {

/// The memory that a program has made, or is making, in a folder of data.
class Memory {
 public:
    Memory(const std::filesystem::path& data, const std::filesystem::path& home)
        : history_(data / "dorix.sqlite"),
          store_(loop_, data / "memory.sqlite"),
          memory_({.executor = loop_,
                   .store = store_,
                   .embedder = embedder_,
                   .indexed = reader_,
                   .asked = reader_,
                   .history = history_,
                   .defaults = defaults_,
                   .files = files_,
                   .background = background_,
                   .messages = nullptr,
                   .home = home,
                   .documentFolders = {}}) {}
    ~Memory() { loop_.stop(); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    /// Waits for both.
    Json ask(const std::string& query, std::size_t limit) {
        std::promise<Json> promise;
        auto answer = promise.get_future();
        loop_.post([&] { tasks_.spawn(tell(query, limit, promise)); });
        return answer.get();
    }

 private:
    Task<void> tell(std::string query, std::size_t limit, std::promise<Json>& promise) {
        try {
            auto hits = Json::array();
            for (const auto& hit : co_await memory_.search(std::move(query), limit)) {
                hits.push_back(
                    {{"path", hit.path}, {"title", hit.title}, {"text", hit.text}, {"kind", hit.kind}});
            }
            const auto recap = co_await memory_.recap();
            promise.set_value({{"hits", hits}, {"recap", recap.text}, {"documents", recap.documents}});
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }

    PollLoop loop_;
    LinuxHelperProcesses processes_{loop_, DORIX_PROGRAM};
    JailedDocumentReader reader_{loop_, processes_, JailedDocumentReader::Pace::awaited};
    NoEmbedder embedder_;
    MemoryUserDefaults defaults_;
    LinuxFileTree files_;
    UnavailableBackgroundWork background_;
    HistoryStore history_;
    MemoryStore store_;
    MemoryController memory_;
    TaskScope tasks_{loop_};
};

Json recall(const Json& input) {
    const AppLanguage language(languageOf(input));
    Memory memory(requiredString(input, "data"), requiredString(input, "home"));
    const auto limit = requiredInteger(input, "limit");
    if (limit < 0) throw BadInput("\"limit\" is below 0");
    return memory.ask(requiredString(input, "query"), static_cast<std::size_t>(limit));
}

}  // namespace

std::vector<Command> recallCommands() {
    return {
        {"recall", R"({"data","home","query","limit","language"?}: "data" is the program's folder of data)",
         R"({"hits":[{"path","title","text","kind"}...],"recap","documents":[path...]})", recall},
    };
}

}  // namespace dorix::lab
