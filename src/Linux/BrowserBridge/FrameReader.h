#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanta {

/// A frame is the length of a text, four bytes in the machine's byte order, and then the text. It
/// is the format of the browsers' native messaging (developer.chrome.com, "Native messaging"), and
/// is kept on the socket between the browser host and Orvanta.
using FrameHeader = std::array<char, sizeof(std::uint32_t)>;

/// The longest text of a frame in bytes. No message comes near it.
inline constexpr std::size_t longestFrame = 4096;

/// What stands before a text of `length` bytes, 1 to `longestFrame`.
FrameHeader frameHeader(std::size_t length);

/// Cuts a stream of bytes into frames, however the bytes are split. Holds at most one frame.
///
///     while (const auto text = reader.next(bytes)) { ... }
///     if (reader.error() != FrameReader::Error::None) { close the connection }
class FrameReader {
public:
    enum class Error { None, Empty, TooLong };

    /// Takes bytes off the front of `bytes` up to the end of a frame and returns its text, which is
    /// valid until the next call. Absent when more bytes are needed, all given ones then being
    /// taken, and from the first error on, when nothing is taken any more: the stream has lost its
    /// frames.
    std::optional<std::string_view> next(std::string_view& bytes);

    Error error() const { return error_; }

    /// The error in words, for whoever reads a log; empty without one.
    std::string_view errorText() const;

private:
    void take(std::string_view& bytes, char* target, std::size_t wanted);

    Error error_ = Error::None;
    std::size_t filled_ = 0; // Bytes of the frame so far, its header included.
    FrameHeader header_{};
    std::array<char, longestFrame> text_{};
};

} // namespace orvanta
