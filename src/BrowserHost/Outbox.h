#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanta {

/// Frames on their way out, of which the reader has taken perhaps a part.
class Outbox {
public:
    /// Holds at most `limit` bytes.
    explicit Outbox(std::size_t limit)
        : limit_(limit) {
        bytes_.reserve(limit);
    }

    /// Adds a frame of this text; false, and nothing is added, if there is no room for it.
    [[nodiscard]] bool add(std::string_view text);

    /// Writes what a descriptor in non-blocking mode takes; false if its reader is gone.
    [[nodiscard]] bool flush(int descriptor);

    bool isEmpty() const { return bytes_.empty(); }
    void clear() { bytes_.clear(); }

private:
    std::size_t limit_;
    std::string bytes_;
};

} // namespace orvanta
