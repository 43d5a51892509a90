#include "Platform/AppleEvent.h"

#include <utility>

namespace orvanta {

namespace {

template <typename Map>
const EventDescriptor* find(const Map& map, FourCharCode keyword) {
    const auto found = map.find(keyword);
    return found == map.end() ? nullptr : &found->second;
}

} // namespace

EventDescriptor::EventDescriptor(FourCharCode type, Value value)
    : type_(type)
    , value_(std::move(value)) {}

EventDescriptor EventDescriptor::null() {
    return {fourCharCode("null"), {}};
}

EventDescriptor EventDescriptor::int32(std::int32_t value) {
    return {fourCharCode("long"), value};
}

EventDescriptor EventDescriptor::typeCode(FourCharCode value) {
    return {fourCharCode("type"), value};
}

EventDescriptor EventDescriptor::enumCode(FourCharCode value) {
    return {fourCharCode("enum"), value};
}

EventDescriptor EventDescriptor::text(const QString& value) {
    return {fourCharCode("utxt"), value};
}

EventDescriptor EventDescriptor::processIdentifier(std::int32_t value) {
    return {fourCharCode("kpid"), value};
}

EventDescriptor EventDescriptor::record() {
    return {fourCharCode("reco"), Fields()};
}

void EventDescriptor::setDescriptor(const EventDescriptor& value, FourCharCode keyword) {
    if (auto* fields = std::get_if<Fields>(&value_)) {
        fields->insert_or_assign(keyword, value);
    }
}

const EventDescriptor* EventDescriptor::descriptor(FourCharCode keyword) const {
    const auto* fields = std::get_if<Fields>(&value_);
    return fields ? find(*fields, keyword) : nullptr;
}

EventDescriptor EventDescriptor::coerced(FourCharCode type) const {
    return {type, value_};
}

std::optional<std::int32_t> EventDescriptor::int32Value() const {
    const auto* value = std::get_if<std::int32_t>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<FourCharCode> EventDescriptor::codeValue() const {
    const auto* value = std::get_if<FourCharCode>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<QString> EventDescriptor::stringValue() const {
    const auto* value = std::get_if<QString>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

const EventDescriptor* AppleEvent::parameter(FourCharCode keyword) const {
    return find(parameters, keyword);
}

} // namespace orvanta
