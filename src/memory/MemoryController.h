#pragma once

#include "base/Observable.h"
#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "base/async/Timer.h"
#include "memory/IndexRun.h"
#include "memory/Memory.h"
#include "memory/Retrieval.h"
#include "memory/disk/LooseThreads.h"
#include "memory/indexing/FolderWalks.h"
#include "memory/indexing/Pace.h"
#include "memory/recall/Recap.h"
#include "memory/store/MemoryStore.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

class BackgroundWork;
class DocumentReader;
class Embedder;
class FileTree;
class HistoryStore;
class UserDefaults;

/// The user's memory: keeps the index of their documents and of their history current, in the background, and
/// finds in it. All of it stays on this computer. Main executor, which nothing here blocks.
class MemoryController final : public Memory {
 public:
    /// All outlive it.
    struct Parts {
        Executor& executor;
        MemoryStore& store;
        Embedder& embedder;
        DocumentReader& indexed;  // reads what is indexed, in nobody's way
        DocumentReader& asked;    // reads what a question is about
        const HistoryStore& history;
        UserDefaults& defaults;
        FileTree& files;
        BackgroundWork& background;
        MessageSearch* messages = nullptr;  // null where no workspace can be searched
        std::filesystem::path home;
        std::vector<std::filesystem::path>
            documentFolders;  // which are indexed until the user says otherwise
    };

    explicit MemoryController(const Parts& parts);
    MemoryController(const MemoryController&) = delete;
    MemoryController& operator=(const MemoryController&) = delete;

    Observable<bool> indexing;           // a run is under way
    Observable<std::string> progress;    // one line for the user, in the app language of when it was written
    Observable<std::int64_t> documents;  // that are files
    Observable<std::int64_t> chunks;     // of all documents
    Observable<std::optional<double>> lastIndexed;           // seconds since 1970; of this process
    Observable<bool> available{true};                        // false: what is searched is words alone
    Observable<std::vector<std::filesystem::path>> folders;  // changed by addFolder and removeFolder

    /// The user's choices, kept as soon as they are set. What is switched off leaves the index at the next
    /// run; what is switched on is read two seconds later.
    Observable<bool> indexDocuments;
    Observable<bool> trackActivity;

    /// Called when it starts: whoever notes the activity begins then.
    std::function<void()> onStart = [] {};

    /// Reads the counts, and runs from now on: after a minute, then every half hour. Once.
    void start();
    /// Begins a run, unless one is under way.
    void indexNow();
    /// The same in two seconds.
    void scheduleIndex();
    /// While the user dictates a run waits.
    void pauseWhile(bool isDictating) { pace_.hold(isDictating); }

    /// A folder that is listed already is listed twice, and costs nothing. False, and nothing is added, where
    /// its path is not UTF-8: it could not be kept, and would have gone at the next start.
    bool addFolder(const std::filesystem::path& folder);
    void removeFolder(const std::filesystem::path& folder);

    /// Forgets the documents and the history; the next run reads them again.
    Task<void> clearIndex();
    Task<void> refreshCounts();

    Task<std::vector<MemoryHit>> search(std::string query, std::size_t limit) override;
    Task<Recap> recap() override;
    bool notesActivity() const override { return trackActivity.get(); }
    bool isReadingFirst() const override { return indexing.get() && documents.get() == 0; }
    Task<void> clearActivity();

 private:
    void keepFolders();
    IndexRun::Sources sources() const;
    Task<void> run();
    Task<void> later();

    const Parts parts_;
    std::vector<Subscription> subscriptions_;
    Timer first_;
    Timer repeated_;
    SerialExecutor worker_;
    LooseThreads walkers_;
    FolderWalks walks_;
    Pace pace_;
    Retrieval retrieval_;
    TaskScope tasks_;
};

}  // namespace dorix
