#pragma once

#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <variant>

namespace orvanta {

/// Four characters as one number, the first of them in the highest byte (Apple's `FourCharCode`).
using FourCharCode = std::uint32_t;

constexpr FourCharCode fourCharCode(const char (&text)[5]) {
    FourCharCode code = 0;
    for (int i = 0; i < 4; ++i) {
        code = code << 8 | static_cast<unsigned char>(text[i]);
    }
    return code;
}

/// A value in an Apple event, or a record of them by keyword: Apple's `NSAppleEventDescriptor`, as
/// far as object specifiers need it.
class EventDescriptor {
public:
    static EventDescriptor null();
    static EventDescriptor int32(std::int32_t value);
    static EventDescriptor typeCode(FourCharCode value);
    static EventDescriptor enumCode(FourCharCode value);
    static EventDescriptor text(const QString& value);
    static EventDescriptor processIdentifier(std::int32_t value);
    static EventDescriptor record();

    /// "null", "long", "type", "enum", "utxt", "kpid", "reco", or what a record was coerced to.
    FourCharCode type() const { return type_; }

    /// Only for a record.
    void setDescriptor(const EventDescriptor& value, FourCharCode keyword);
    /// Null when there is none.
    const EventDescriptor* descriptor(FourCharCode keyword) const;
    /// The same values under another type.
    EventDescriptor coerced(FourCharCode type) const;

    std::optional<std::int32_t> int32Value() const;
    std::optional<FourCharCode> codeValue() const;
    std::optional<QString> stringValue() const;

    friend bool operator==(const EventDescriptor&, const EventDescriptor&) = default;

private:
    using Fields = std::map<FourCharCode, EventDescriptor>;
    using Value = std::variant<std::monostate, std::int32_t, FourCharCode, QString, Fields>;
    EventDescriptor(FourCharCode type, Value value);

    FourCharCode type_;
    Value value_;
};

/// A request to an application or its reply: Apple's Apple event.
struct AppleEvent {
    static constexpr std::int16_t autoGenerateReturnID = -1;
    static constexpr std::int32_t anyTransactionID = 0;
    static constexpr FourCharCode directObject = fourCharCode("----");
    static constexpr FourCharCode errorNumber = fourCharCode("errn");

    FourCharCode eventClass = 0;
    FourCharCode eventID = 0;
    EventDescriptor target = EventDescriptor::null();
    std::int16_t returnID = autoGenerateReturnID;
    std::int32_t transactionID = anyTransactionID;
    std::map<FourCharCode, EventDescriptor> parameters = {};

    /// Null when there is none.
    const EventDescriptor* parameter(FourCharCode keyword) const;

    friend bool operator==(const AppleEvent&, const AppleEvent&) = default;
};

} // namespace orvanta
