#include "Linux/BrowserBridge/FrameReader.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace orvanta {

FrameHeader frameHeader(std::size_t length) {
    return std::bit_cast<FrameHeader>(static_cast<std::uint32_t>(length));
}

std::optional<std::string_view> FrameReader::next(std::string_view& bytes) {
    if (error_ != Error::None) {
        return std::nullopt;
    }
    if (filled_ < header_.size()) {
        take(bytes, header_.data() + filled_, header_.size() - filled_);
    }
    if (filled_ < header_.size()) {
        return std::nullopt;
    }
    const std::size_t length = std::bit_cast<std::uint32_t>(header_);
    if (length == 0 || length > longestFrame) {
        error_ = length == 0 ? Error::Empty : Error::TooLong;
        return std::nullopt;
    }
    const std::size_t before = filled_ - header_.size();
    take(bytes, text_.data() + before, length - before);
    if (filled_ - header_.size() < length) {
        return std::nullopt;
    }
    filled_ = 0;
    return std::string_view(text_.data(), length);
}

std::string_view FrameReader::errorText() const {
    switch (error_) {
    case Error::None:
        break;
    case Error::Empty:
        return "an empty frame";
    case Error::TooLong:
        return "a frame longer than 4096 bytes";
    }
    return {};
}

void FrameReader::take(std::string_view& bytes, char* target, std::size_t wanted) {
    const std::size_t taken = std::min(wanted, bytes.size());
    if (taken > 0) {
        std::memcpy(target, bytes.data(), taken);
        bytes.remove_prefix(taken);
        filled_ += taken;
    }
}

} // namespace orvanta
