#include "base/text/Url.h"
#include "context/AppContext.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace dorix;

namespace {

void require(bool holds) {
    if (!holds) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view url(reinterpret_cast<const char*>(data), size);
    if (const auto host = hostOf(url)) {
        require(!host->empty());
        require(host->find_first_of("/\\?#@[] \t\r\n") == std::string::npos);
        require(url.contains("//"));
        const std::string plain =
            host->contains(':') ? "https://[" + *host + "]/" : "https://" + *host + ":443/";
        require(hostOf(plain) == host);
    }
    isAIChat(std::nullopt, std::nullopt, std::string(url));
    return 0;
}
