#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "base/async/Task.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the server answers to a command.
struct SsipReply {
    int code = 0;
    std::vector<std::string> lines;  // what it tells, before the line that ends the answer

    bool isOk() const { return code >= 200 && code < 300; }
};

/// What the server tells of its own accord of the messages of a connection, by its codes.
enum class SsipEvent { begin = 701, end = 702, cancel = 703, pause = 704, resume = 705 };

/// A connection to speech-dispatcher, in the protocol that its clients speak (SSIP). Not by its client
/// library: that ends the process over an answer that it does not understand, tells nobody that the server
/// has gone, waits for it without end, and leaves its socket open to other programs. The thread of `watcher`;
/// nothing blocks. Failures are MessageErrors; after one the connection is of no use any more.
class SsipConnection {
 public:
    SsipConnection(FdWatcher& watcher, FileDescriptor socket);
    /// What it has said falls silent, and nothing of it is said any more.
    ~SsipConnection();
    SsipConnection(const SsipConnection&) = delete;
    SsipConnection& operator=(const SsipConnection&) = delete;

    /// The answer to a command, which is one line.
    Task<SsipReply> ask(std::string command);

    /// Has one line of text read aloud, after those before it. Returns when the server has taken it.
    Task<void> say(std::string line);

    /// What becomes of the lines. Fails when the server goes.
    Task<SsipEvent> nextEvent();

 private:
    Completion<SsipReply> send(const std::string& line);
    static Task<SsipReply> answer(Completion<SsipReply> reply);
    void flush();
    void read();
    void take(std::string_view line);
    void fail(const std::string& why);

    FdWatcher& watcher_;
    const FileDescriptor socket_;
    std::string out_;                          // what is still to be written
    std::string in_;                           // the beginning of a line
    SsipReply reply_;                          // as far as it has come
    std::deque<Completion<SsipReply>> asked_;  // in the order of the answers
    AsyncStream<SsipEvent> events_;
    std::string whyLost_;        // empty while the server is there
    bool isInsideText_ = false;  // the server takes what comes for text
    Subscription readable_;
    Subscription writable_;
};

}  // namespace dorix
