#include "Model/PropertyList.h"

#include "Model/ModelError.h"

#include <QByteArrayView>
#include <QtEndian>

#include <plist/plist.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace orvanta {

namespace {

constexpr QByteArrayView binaryMagic("bplist00");

// libplist builds, copies and frees a tree by recursion.
constexpr int maximumDepth = 128;
// Objects of a binary list may be shared, and each use becomes a node of its own: a few hundred
// bytes can describe a tree that fills the memory. A node counts with what libplist spends on it.
constexpr qint64 maximumExpandedSize = 4 * PropertyList::maximumSize;
constexpr qint64 nodeSize = 256;
// XML shares nothing and nests no deeper than it has tags, but libplist moves the whole rest of a
// text at each entity in it.
constexpr qsizetype maximumXmlSize = 1 << 20;
constexpr qsizetype maximumTagsAndEntities = 20'000;

/// Follows a binary list as libplist does, but within bounds, before libplist itself may.
///
/// Layout: the magic, the objects, a table of their offsets, a trailer of 32 bytes (6 unused, the
/// width of an offset, the width of a reference, then in 8 bytes each the number of objects, the
/// index of the root, the position of the table). All numbers are big-endian.
class BinaryWalk {
public:
    explicit BinaryWalk(const QByteArray& bytes)
        : bytes_(bytes)
        , size_(static_cast<quint64>(bytes.size())) {}

    bool isSound() {
        constexpr quint64 trailerSize = 32;
        if (size_ < static_cast<quint64>(binaryMagic.size()) + trailerSize) {
            return false;
        }
        const quint64 trailer = size_ - trailerSize;
        offsetWidth_ = number(trailer + 6, 1);
        referenceWidth_ = number(trailer + 7, 1);
        count_ = number(trailer + 8, 8);
        table_ = number(trailer + 24, 8);
        return offsetWidth_ >= 1 && offsetWidth_ <= 8 && referenceWidth_ >= 1 &&
               referenceWidth_ <= 8 && table_ <= trailer &&
               count_ <= (trailer - table_) / offsetWidth_ && visit(number(trailer + 16, 8), 0);
    }

private:
    quint64 number(quint64 at, quint64 width) const {
        quint64 value = 0;
        for (quint64 i = 0; i < width; ++i) {
            value = value << 8 | static_cast<quint8>(bytes_[static_cast<qsizetype>(at + i)]);
        }
        return value;
    }

    bool visit(quint64 index, int depth) {
        if (index >= count_ || depth > maximumDepth) {
            return false;
        }
        quint64 at = number(table_ + index * offsetWidth_, offsetWidth_);
        if (at < static_cast<quint64>(binaryMagic.size()) || at >= table_) {
            return false;
        }
        const quint64 marker = number(at++, 1);
        const quint64 kind = marker >> 4;
        quint64 length = marker & 0xf;
        const bool isContainer = kind == 0xa || kind == 0xc || kind == 0xd;
        if (length == 0xf && (isContainer || (kind >= 4 && kind <= 6))) {
            // The length did not fit: an integer object with it follows.
            const quint64 lengthMarker = at < table_ ? number(at++, 1) : 0;
            const quint64 width = quint64(1) << (lengthMarker & 0xf);
            if (lengthMarker >> 4 != 1 || width > 8 || width > table_ - at) {
                return false;
            }
            length = number(at, width);
            at += width;
        }
        if (length > size_) {
            return false;
        }

        quint64 references = 0;
        quint64 size = 0;
        switch (kind) {
        case 0x0: // null and the booleans
            break;
        case 0x1: // integer
        case 0x2: // real
        case 0x3: // date
            size = quint64(1) << length;
            break;
        case 0x4: // data
        case 0x5: // text in ASCII
            size = length;
            break;
        case 0x6: // text in UTF-16
            size = 2 * length;
            break;
        case 0x8: // identifier
            size = length + 1;
            break;
        case 0xa: // array
        case 0xc: // set
            references = length;
            break;
        case 0xd: // dictionary: the keys, then the values
            references = 2 * length;
            break;
        default:
            return false;
        }
        size += references * referenceWidth_;
        budget_ -= nodeSize + static_cast<qint64>(size);
        if (size > table_ - at || budget_ < 0) {
            return false;
        }
        if ((kind == 0x5 || kind == 0x6) && !isText(at, length, kind == 0x5 ? 1 : 2)) {
            return false;
        }
        for (quint64 i = 0; i < references; ++i) {
            if (!visit(number(at + i * referenceWidth_, referenceWidth_), depth + 1)) {
                return false;
            }
        }
        return true;
    }

    /// libplist cuts a text at a NUL, and aborts when it is asked for such a key; it cannot read an
    /// empty UTF-16 text, and cuts a text at a byte that is not ASCII when it writes it again.
    bool isText(quint64 at, quint64 length, quint64 width) const {
        for (quint64 i = 0; i < length; ++i) {
            const quint64 unit = number(at + i * width, width);
            if (unit == 0 || (width == 1 && unit > 0x7f)) {
                return false;
            }
        }
        return length > 0 || width == 1;
    }

    const QByteArray& bytes_;
    quint64 size_;
    quint64 offsetWidth_ = 0;
    quint64 referenceWidth_ = 0;
    quint64 count_ = 0;
    quint64 table_ = 0;
    qint64 budget_ = maximumExpandedSize;
};

QByteArray binaryOf(plist_t node) {
    // Both must be empty: libplist 2.2 does nothing otherwise.
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    QByteArray result(bytes, static_cast<qsizetype>(length));
    std::free(bytes); // Its own function for that has another name in each version.
    return result;
}

plist_t fromBinary(const QByteArray& bytes) {
    plist_t node = nullptr;
    plist_from_bin(bytes.constData(), static_cast<uint32_t>(bytes.size()), &node);
    return node;
}

// libplist keeps a date as a double, but its functions take and give 32 bits of seconds and some
// microseconds, and lose the sign of a fraction. The binary format has the double itself, so a date
// goes in and out as a list of that one object.

double secondsOf(plist_t date) {
    const QByteArray list = binaryOf(date);
    return std::bit_cast<double>(
        qFromBigEndian<quint64>(list.constData() + binaryMagic.size() + 1));
}

plist_t newDate(double seconds) {
    constexpr char dateMarker = 0x33;
    QByteArray list = binaryMagic.toByteArray();
    const char objectOffset = static_cast<char>(list.size());
    list.append(dateMarker);
    const auto append = [&list](quint64 number) {
        const quint64 bigEndian = qToBigEndian(number);
        list.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
    };
    append(std::bit_cast<quint64>(seconds));
    const auto table = static_cast<quint64>(list.size());
    list.append(objectOffset);
    list.append(6, '\0').append(1, '\1').append(1, '\1');
    append(1);
    append(0);
    append(table);
    return fromBinary(list);
}

QString textOf(plist_t node) {
    uint64_t length = 0;
    const char* bytes = plist_get_string_ptr(node, &length);
    return QString::fromUtf8(bytes, static_cast<qsizetype>(length));
}

plist_t newText(const QString& text) {
    return plist_new_string(text.toUtf8().constData());
}

} // namespace

void PropertyList::Free::operator()(void* node) const {
    plist_free(node);
}

PropertyList::PropertyList()
    : root_(plist_new_dict()) {}

PropertyList::PropertyList(const PropertyList& other)
    : root_(plist_copy(other.root_.get())) {}

PropertyList::PropertyList(Node root)
    : root_(std::move(root)) {}

PropertyList& PropertyList::operator=(PropertyList other) noexcept {
    root_.swap(other.root_);
    return *this;
}

std::optional<PropertyList> PropertyList::parse(const QByteArray& bytes) {
    Node root;
    if (bytes.size() > maximumSize) {
        // Stays without a root.
    } else if (bytes.startsWith(binaryMagic)) {
        if (BinaryWalk(bytes).isSound()) {
            root.reset(fromBinary(bytes));
        }
    } else if (bytes.size() <= maximumXmlSize && bytes.isValidUtf8() &&
               bytes.count('<') + bytes.count('&') <= maximumTagsAndEntities) {
        plist_t node = nullptr;
        plist_from_xml(bytes.constData(), static_cast<uint32_t>(bytes.size()), &node);
        root.reset(node);
        // What we take in we must be able to read again once it is written.
        if (root && !BinaryWalk(binaryOf(node)).isSound()) {
            root.reset();
        }
    }
    if (!root) {
        throw ModelError(
            ModelError::propertyListDomain, 0,
            QStringLiteral("Os dados não são uma lista de propriedades que se possa ler."));
    }
    if (plist_get_node_type(root.get()) != PLIST_DICT) {
        return std::nullopt;
    }
    return PropertyList(std::move(root));
}

QByteArray PropertyList::toBinary() const {
    return binaryOf(root_.get());
}

QStringList PropertyList::keys() const {
    QStringList result;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(root_.get(), &iterator);
    for (;;) {
        char* key = nullptr;
        plist_dict_next_item(root_.get(), iterator, &key, nullptr);
        if (!key) {
            break;
        }
        result.append(QString::fromUtf8(key));
        std::free(key);
    }
    std::free(iterator);
    return result;
}

void* PropertyList::find(const QString& key) const {
    return plist_dict_get_item(root_.get(), key.toUtf8().constData());
}

void PropertyList::put(const QString& key, void* node) {
    plist_dict_set_item(root_.get(), key.toUtf8().constData(), node);
}

bool PropertyList::contains(const QString& key) const {
    return find(key);
}

std::optional<bool> PropertyList::boolean(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_BOOLEAN(node)) {
        return std::nullopt;
    }
    return plist_bool_val_is_true(node);
}

std::optional<qint64> PropertyList::integer(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_UINT(node)) {
        return std::nullopt;
    }
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<qint64>(value);
}

std::optional<double> PropertyList::real(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_REAL(node)) {
        return std::nullopt;
    }
    double value = 0;
    plist_get_real_val(node, &value);
    return value;
}

std::optional<QString> PropertyList::text(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_STRING(node)) {
        return std::nullopt;
    }
    return textOf(node);
}

std::optional<QByteArray> PropertyList::data(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_DATA(node)) {
        return std::nullopt;
    }
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return QByteArray(bytes, static_cast<qsizetype>(length));
}

std::optional<Date> PropertyList::date(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_DATE(node)) {
        return std::nullopt;
    }
    const double seconds = secondsOf(node);
    return std::isfinite(seconds) ? std::optional(Date{seconds}) : std::nullopt;
}

std::optional<QStringList> PropertyList::texts(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_ARRAY(node)) {
        return std::nullopt;
    }
    QStringList result;
    const uint32_t count = plist_array_get_size(node);
    for (uint32_t i = 0; i < count; ++i) {
        plist_t element = plist_array_get_item(node, i);
        if (!PLIST_IS_STRING(element)) {
            return std::nullopt;
        }
        result.append(textOf(element));
    }
    return result;
}

std::optional<PropertyList> PropertyList::dictionary(const QString& key) const {
    plist_t node = find(key);
    if (!PLIST_IS_DICT(node)) {
        return std::nullopt;
    }
    return PropertyList(Node(plist_copy(node)));
}

void PropertyList::setBoolean(const QString& key, bool value) {
    put(key, plist_new_bool(value));
}

void PropertyList::setInteger(const QString& key, qint64 value) {
    put(key, plist_new_uint(static_cast<uint64_t>(value)));
}

void PropertyList::setText(const QString& key, const QString& value) {
    put(key, newText(value));
}

void PropertyList::setData(const QString& key, const QByteArray& value) {
    put(key, plist_new_data(value.constData(), static_cast<uint64_t>(value.size())));
}

void PropertyList::setDate(const QString& key, Date value) {
    put(key, newDate(value.sinceReference));
}

void PropertyList::setTexts(const QString& key, const QStringList& value) {
    plist_t array = plist_new_array();
    for (const QString& text : value) {
        plist_array_append_item(array, newText(text));
    }
    put(key, array);
}

void PropertyList::setDictionary(const QString& key, const PropertyList& value) {
    put(key, plist_copy(value.root_.get()));
}

bool PropertyList::copyValue(const QString& key, const PropertyList& from) {
    plist_t node = from.find(key);
    if (node) {
        put(key, plist_copy(node));
    }
    return node;
}

} // namespace orvanta
