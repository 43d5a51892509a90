// The way of bytes from the browser's socket into Orvanta.

#include "Fuzz.h"
#include "Linux/BrowserBridge/FrameReader.h"
#include "Linux/BrowserBridge/Message.h"

#include <string>
#include <vector>

using namespace orvanta;

namespace {

void checkMessage(std::string_view text) {
    const auto parsed = parseMessage(text);
    if (const auto* error = std::get_if<MessageError>(&parsed)) {
        require(!error->reason.isEmpty());
        return;
    }
    const auto& message = std::get<ExtensionMessage>(parsed);
    require(!message.answer || *message.answer >= 1);
    if (message.origin) {
        const qsizetype host = message.origin->indexOf(QStringLiteral("://")) + 3;
        require(message.origin->startsWith(QStringLiteral("http")) && host <= 8);
        require(message.origin->size() > host && message.origin->size() <= host + 253);
        for (const QChar forbidden : QStringLiteral("/@?#\\ %")) {
            require(!QStringView(*message.origin).mid(host).contains(forbidden));
        }
    }
}

} // namespace

/// The first byte says how the others are handed to the reader; they are also read as one message.
int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view bytes(data + 1, size - 1);
    const std::size_t step = static_cast<unsigned char>(data[0]) + std::size_t{1};
    FrameReader whole;
    std::vector<std::string> frames;
    std::string_view rest = bytes;
    while (const auto text = whole.next(rest)) {
        require(!text->empty() && text->size() <= longestFrame);
        frames.emplace_back(*text);
        checkMessage(*text);
    }

    FrameReader stepwise;
    std::size_t found = 0;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        std::string_view piece = bytes.substr(at, step);
        while (const auto text = stepwise.next(piece)) {
            require(found < frames.size() && frames[found++] == *text);
        }
    }
    require(found == frames.size() && stepwise.error() == whole.error());

    checkMessage(bytes);
    return 0;
}
