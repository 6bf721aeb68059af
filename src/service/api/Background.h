#pragma once

#include "service/storage/Database.h"

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// What would hold the network thread up runs on threads of its own.
namespace dorix::service {

/// Runs the function on a thread of the pool, and gives its result, or throws what it threw, back on the
/// executor of whoever awaits. It runs to its end also when that is cancelled.
template <typename F>
boost::asio::awaitable<std::invoke_result_t<F>> runOn(boost::asio::thread_pool& pool, F function) {
    namespace asio = boost::asio;
    using Result = std::invoke_result_t<F>;
    struct State {
        F function;
        std::optional<Result> result{};
        std::exception_ptr failure{};
    };
    auto state = std::make_shared<State>(State{.function = std::move(function)});
    auto start = [&pool, state](auto handler) {
        auto back = asio::get_associated_executor(handler);
        auto guard = asio::make_work_guard(back);
        asio::post(pool, [handler = std::move(handler), guard = std::move(guard), back, state]() mutable {
            try {
                state->result.emplace(state->function());
            } catch (...) {
                state->failure = std::current_exception();
            }
            state.reset();
            asio::post(back, std::move(handler));
        });
    };
    co_await asio::async_initiate<const asio::use_awaitable_t<>&, void()>(std::move(start),
                                                                          asio::use_awaitable);
    if (state->failure) std::rethrow_exception(state->failure);
    co_return std::move(*state->result);
}

/// The database's connections, each used by one thread at a time.
class StorageThreads {
 public:
    /// Opens the connections. Throws StorageError.
    explicit StorageThreads(const std::string& address);
    /// Waits for the calls under way.
    ~StorageThreads();

    /// As runOn.
    template <typename F>
    boost::asio::awaitable<std::invoke_result_t<F, Database&>> run(F function) {
        return runOn(pool_, [this, function = std::move(function)] {
            const Borrowed connection(*this);
            return function(*connection.database);
        });
    }

 private:
    struct Borrowed {
        explicit Borrowed(StorageThreads& owner);
        ~Borrowed();
        Borrowed(const Borrowed&) = delete;
        Borrowed& operator=(const Borrowed&) = delete;
        StorageThreads& owner;
        std::unique_ptr<Database> database;
    };

    std::mutex mutex_;
    std::vector<std::unique_ptr<Database>> free_;  // as many as there are threads
    boost::asio::thread_pool pool_;
};

}  // namespace dorix::service
