#pragma once

#include <exception>
#include <string>
#include <utility>

namespace dorix {

/// A failure at the boundary of a subsystem. Its words are meant for the user, in the app's language.
class Error : public std::exception {
 public:
    /// The user-facing words.
    virtual std::string localizedDescription() const = 0;

    /// For logs that catch std::exception.
    const char* what() const noexcept override { return "dorix::Error"; }
};

/// A failure that comes with its words, from the system or a library.
class MessageError : public Error {
 public:
    explicit MessageError(std::string message) : message_(std::move(message)) {}
    std::string localizedDescription() const override { return message_; }
    const char* what() const noexcept override { return message_.c_str(); }

 private:
    std::string message_;
};

/// The words of whatever was thrown: those of an Error, what() of anything else.
std::string localizedDescription(const std::exception_ptr& error);

}  // namespace dorix
