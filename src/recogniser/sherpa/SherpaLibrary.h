#pragma once

#include "base/Error.h"
#include "recogniser/sherpa/SherpaDeclarations.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

namespace dorix::recogniser {

/// sherpa-onnx, loaded from a folder. It stays loaded until the process ends.
class SherpaLibrary {
 public:
    /// Throws MessageError when the libraries in the folder are not those that the declarations were made
    /// for, or are damaged; none of their code has run then unless it is the version that differs.
    explicit SherpaLibrary(const std::filesystem::path& folder);

    /// Calls one of the functions. Whatever it throws comes out as MessageError.
    template <typename Function, typename... Arguments>
    static auto call(Function* function, Arguments... arguments) {
        try {
            return function(arguments...);
        } catch (const std::exception& error) {
            throw MessageError(std::string("sherpa-onnx: ") + error.what());
        } catch (...) {
            throw MessageError("sherpa-onnx: failed");
        }
    }

    const sherpa::Functions& functions() const { return functions_; }

 private:
    sherpa::Functions functions_;
};

/// Something of the library's, which it frees with one of its functions.
template <typename T>
class SherpaHandle {
 public:
    using Destroy = void (*)(const T*);

    SherpaHandle() = default;
    SherpaHandle(const T* handle, Destroy destroy) : handle_(handle), destroy_(destroy) {
        if (handle_ == nullptr) throw MessageError("sherpa-onnx: refused");
    }
    SherpaHandle(SherpaHandle&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)), destroy_(other.destroy_) {}
    SherpaHandle& operator=(SherpaHandle other) noexcept {
        std::swap(handle_, other.handle_);
        std::swap(destroy_, other.destroy_);
        return *this;
    }
    ~SherpaHandle() { reset(); }

    const T* get() const { return handle_; }
    const T* operator->() const { return handle_; }

    void reset() noexcept {
        if (handle_ == nullptr) return;
        try {
            destroy_(std::exchange(handle_, nullptr));
        } catch (...) {  // NOLINT(bugprone-empty-catch): what it held is lost, and the process goes on
        }
    }

 private:
    const T* handle_ = nullptr;
    Destroy destroy_ = nullptr;
};

}  // namespace dorix::recogniser
