#pragma once

namespace dorix {

/// Seconds of the steady clock and of the wall clock since 1970. Only executors read them.
double steadySeconds();
double wallSeconds();

}  // namespace dorix
