#pragma once

namespace orvanta {

/// Seconds of CLOCK_MONOTONIC: since some moment before the start of this process, never going
/// back, standing still while the machine is suspended.
double systemUptime();

} // namespace orvanta
