#pragma once

#include <boost/asio/awaitable.hpp>

namespace dorix::service {

/// What the service's coroutines give; they run on the network thread.
template <typename T>
using Awaitable = boost::asio::awaitable<T>;

}  // namespace dorix::service
