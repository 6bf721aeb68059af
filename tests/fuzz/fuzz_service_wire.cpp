#include "service/accounts/Email.h"
#include "service/http/Address.h"
#include "service/model/ModelEvents.h"
#include "service/model/ModelUrl.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace dorix::service;

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

std::string readIn(std::string_view bytes, std::size_t piece) {
    ModelEvents events;
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        for (const auto& read : events.read(bytes.substr(at, piece))) text += read;
    }
    return text;
}

}  // namespace

/// What others send to the service apart from bodies: events of a model, addresses of people and of machines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    require(readIn(bytes, std::size_t{data[0]} % 16 + 1) == readIn(bytes, bytes.size() + 1));
    textOfAnswer(bytes);
    parseModelUrl(bytes);
    if (const auto email = cleanEmail(bytes)) {
        require(cleanEmail(*email) == email);
        require(email->find_first_of("\r\n<> ,") == std::string::npos);
    }
    callerAddress("10.0.0.1", bytes, {"10.0.0.1"});
    callerAddress(std::string(bytes), {}, {});
    return 0;
}
