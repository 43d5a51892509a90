#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>
#include <variant>

namespace orvanta {

/// What the extension tells of its browser profile, version 1:
/// `{"v":1,"origin":"https://example.org","focused":true,"answer":7}`.
struct ExtensionMessage {
    /// "http://" or "https://" and a host name, in lower case, never more. Absent for the browser's
    /// own pages and where there is no tab.
    std::optional<QString> origin;
    /// Whether one of the profile's windows has the focus. Private windows are not among them.
    bool focused = false;
    /// The question that this answers; absent when the browser speaks up by itself.
    std::optional<int> answer;

    bool operator==(const ExtensionMessage&) const = default;
};

/// Why a text is no message: in English, for a log, and without anything of the text itself.
struct MessageError {
    QString reason;
};

/// Reads the text of one frame. Keys that it does not know are left aside.
std::variant<ExtensionMessage, MessageError> parseMessage(std::string_view json);

/// The whole frame that asks the extension for its state. `question` is 1 or more, and comes back
/// as the answer's number.
QByteArray askFrame(int question);

/// The whole frame that tells the extension whether it may speak: `{"v":1,"tell":true}`. Until it
/// is told so on a connection, it says nothing there.
QByteArray tellFrame(bool tell);

} // namespace orvanta
