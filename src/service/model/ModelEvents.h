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
    /// The same for what the bytes ended with, which may lack its line end.
    std::vector<std::string> finish() { return read("\n"); }

    /// Nothing more is to be read.
    bool isDone() const { return isDone_; }
    /// The model said that it is through with all of its answer.
    bool isWhole() const { return isWhole_; }
    /// The model said that it failed or had no room left, or sent a line beyond all measure.
    bool hasFailed() const { return hasFailed_; }

 private:
    void readLine(std::string_view line, std::vector<std::string>& texts);

    std::string line_;  // the beginning of one that is not whole yet
    bool isDone_ = false;
    bool isWhole_ = false;
    bool hasFailed_ = false;
};

/// The text of an answer that is not streamed ("chat.completion"); empty when there is none, or only a part
/// of one, as when the model had no room left.
std::string textOfAnswer(std::string_view body);

}  // namespace dorix::service
