#include "Linux/BrowserBridge/Message.h"

#include "Linux/BrowserBridge/FrameReader.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <limits>

namespace orvanta {

namespace {

constexpr int protocolVersion = 1;

// RFC 1035, 2.3.4, less the two bytes that never show in a name's text.
constexpr qsizetype longestHost = 253;

constexpr std::u16string_view nameParts =
    u"!\"$&'()*+,-.0123456789;=_`abcdefghijklmnopqrstuvwxyz{}~";
constexpr std::u16string_view addressParts = u"0123456789abcdef:.";

bool consistsOf(QStringView text, std::u16string_view characters) {
    return std::all_of(text.begin(), text.end(), [characters](QChar c) {
        return characters.find(c.unicode()) != std::u16string_view::npos;
    });
}

/// As browsers write a host (WHATWG's URL Standard, "Host serializing"): a name or an IPv4 address
/// in lower-case ASCII without its forbidden code points, or an IPv6 address in brackets. A port, a
/// user or a path has characters that none of these has.
bool isHost(QStringView host) {
    if (host.isEmpty() || host.size() > longestHost) {
        return false;
    }
    if (host.startsWith(u'[') && host.endsWith(u']')) {
        const QStringView address = host.mid(1).chopped(1);
        return address.contains(u':') && consistsOf(address, addressParts);
    }
    return consistsOf(host, nameParts);
}

bool isOrigin(QStringView text) {
    for (const QStringView scheme : {u"http://", u"https://"}) {
        if (text.startsWith(scheme)) {
            return isHost(text.mid(scheme.size()));
        }
    }
    return false;
}

/// The number if it is whole and at least 1; otherwise 0.
int questionNumber(const QJsonValue& value) {
    const double number = value.toDouble(0);
    if (!(number >= 1 && number <= std::numeric_limits<int>::max())) {
        return 0;
    }
    const int whole = static_cast<int>(number);
    return whole == number ? whole : 0;
}

MessageError error(const char* reason) {
    return {QString::fromLatin1(reason)};
}

QByteArray frame(const QByteArray& what) {
    const QByteArray text = "{\"v\":1," + what + '}';
    const FrameHeader header = frameHeader(static_cast<std::size_t>(text.size()));
    return QByteArray(header.data(), qsizetype(header.size())) + text;
}

} // namespace

std::variant<ExtensionMessage, MessageError> parseMessage(std::string_view json) {
    const QByteArray bytes = QByteArray::fromRawData(json.data(), qsizetype(json.size()));
    QJsonParseError syntax{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &syntax);
    if (syntax.error != QJsonParseError::NoError) {
        return MessageError{QStringLiteral("not JSON: ") + syntax.errorString()};
    }
    if (!document.isObject()) {
        return error("not a JSON object");
    }
    const QJsonObject object = document.object();
    if (object.value(QLatin1String("v")) != QJsonValue(protocolVersion)) {
        return error("not version 1");
    }

    ExtensionMessage message;
    const QJsonValue origin = object.value(QLatin1String("origin"));
    if (origin.isString()) {
        message.origin = origin.toString();
        if (!isOrigin(*message.origin)) {
            return error("the origin is not http or https and a host alone");
        }
    } else if (!origin.isNull()) {
        return error("the origin is neither text nor null");
    }

    const QJsonValue focused = object.value(QLatin1String("focused"));
    if (!focused.isBool()) {
        return error("\"focused\" is not true or false");
    }
    message.focused = focused.toBool();

    const QJsonValue answer = object.value(QLatin1String("answer"));
    if (!answer.isUndefined()) {
        message.answer = questionNumber(answer);
        if (*message.answer == 0) {
            return error("the answer's number is not one that can be asked");
        }
    }
    return message;
}

QByteArray askFrame(int question) {
    return frame("\"ask\":" + QByteArray::number(question));
}

QByteArray tellFrame(bool tell) {
    return frame(tell ? "\"tell\":true" : "\"tell\":false");
}

} // namespace orvanta
