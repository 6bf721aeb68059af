#include "base/Error.h"

namespace dorix {

std::string localizedDescription(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const Error& known) {
        return known.localizedDescription();
    } catch (const std::exception& other) {
        return other.what();
    } catch (...) {
        return "unknown error";
    }
}

}  // namespace dorix
