#pragma once

#include "service/net/Awaitable.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>

/// What the server and the model's client call by its short name. For .cpp files, and headers that only these
/// include.
namespace dorix::service {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::redirect_error;
using asio::use_awaitable;
using boost::system::error_code;

using PlainStream = beast::tcp_stream;
using SecureStream = beast::ssl_stream<beast::tcp_stream>;

}  // namespace dorix::service
