#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// Reads the events of a streamed chat answer ("chat.completion.chunk"), however their bytes are cut. Linear
/// in the bytes. No thread of its own.
class ModelEvents {
 public:
    /// Takes bytes as they arrive, and gives the texts that are whole by now, in order.
    std::vector<std::string> read(std::string_view bytes);

    /// The model said that it is through.
    bool isDone() const { return isDone_; }
    /// The model said that it failed, or sent a line beyond all measure.
    bool hasFailed() const { return hasFailed_; }

 private:
    void readLine(std::string_view line, std::vector<std::string>& texts);

    std::string line_;  // the beginning of one that is not whole yet
    bool isDone_ = false;
    bool hasFailed_ = false;
};

/// The text of an answer that is not streamed ("chat.completion"); empty when there is none.
std::string textOfAnswer(std::string_view body);

}  // namespace dorix::service
