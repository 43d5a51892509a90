#pragma once

#include <QByteArray>

#include <cstdlib>

/// What a harness does with the bytes that libFuzzer makes up. Whatever is required ends the
/// process where it does not hold, and libFuzzer keeps the bytes.
extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size);

namespace orvanta {

inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace orvanta
