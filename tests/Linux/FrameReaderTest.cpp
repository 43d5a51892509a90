#include "Linux/BrowserBridge/FrameReader.h"

#include "Testing.h"

#include <bit>

namespace orvanta {

namespace {

std::string frame(std::string_view text) {
    const FrameHeader header = frameHeader(text.size());
    return std::string(header.data(), header.size()).append(text);
}

/// Gives the reader the bytes up to each of the cuts in turn, and returns the texts it finds.
std::vector<std::string> read(FrameReader& reader, std::string_view bytes,
                              std::vector<std::size_t> cuts) {
    cuts.push_back(bytes.size());
    std::vector<std::string> texts;
    std::size_t from = 0;
    for (const std::size_t to : cuts) {
        // A copy of exactly this piece, so that reading beyond it is seen by a sanitizer.
        const std::vector<char> piece(bytes.begin() + long(from), bytes.begin() + long(to));
        std::string_view rest(piece.data(), piece.size());
        while (const auto text = reader.next(rest)) {
            texts.emplace_back(*text);
        }
        if (reader.error() == FrameReader::Error::None) {
            EXPECT_TRUE(rest.empty());
        }
        from = to;
    }
    return texts;
}

} // namespace

TEST(FrameReader, FindsTheSameFramesHoweverTheBytesAreCut) {
    const std::vector<std::string> texts{"{}", std::string(1, '\0'), std::string(300, 'x'), "last"};
    std::string bytes;
    std::vector<std::size_t> everywhere;
    for (const std::string& text : texts) {
        bytes += frame(text);
    }
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        everywhere.push_back(first);
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            FrameReader reader;
            ASSERT_EQ(read(reader, bytes, {first, second}), texts) << first << ", " << second;
        }
    }
    FrameReader reader;
    EXPECT_EQ(read(reader, bytes, everywhere), texts);
}

TEST(FrameReader, EndsAtALengthThatNoFrameHas) {
    for (const std::uint32_t length : {0U, 4097U, 0x7b226f72U, 0xffffffffU}) {
        const auto header = std::bit_cast<FrameHeader>(length);
        const std::string before(longestFrame, 'b');
        const std::string bytes =
            frame(before) + std::string(header.data(), header.size()) + frame("behind");
        for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
            FrameReader reader;
            EXPECT_EQ(read(reader, bytes, {cut}), std::vector{before});
            EXPECT_EQ(reader.error(),
                      length == 0 ? FrameReader::Error::Empty : FrameReader::Error::TooLong);
            EXPECT_FALSE(reader.errorText().empty());
            // Also what would be a frame is none any more.
            EXPECT_TRUE(read(reader, frame("later"), {}).empty());
        }
    }
}

} // namespace orvanta
