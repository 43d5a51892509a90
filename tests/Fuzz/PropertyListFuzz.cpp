// What is read of a property list is the same after it was written and read again.

#include "Fuzz.h"
#include "Model/ModelError.h"
#include "Model/PropertyList.h"

#include <cmath>

using namespace orvanta;

namespace {

std::optional<PropertyList> read(const QByteArray& bytes) {
    try {
        return PropertyList::parse(bytes);
    } catch (const ModelError&) {
        return std::nullopt;
    }
}

bool isSame(std::optional<double> one, std::optional<double> other) {
    return one == other || (one && other && std::isnan(*one) && std::isnan(*other));
}

} // namespace

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    const auto list = read(QByteArray(data, qsizetype(size)));
    if (!list) {
        return 0;
    }
    const auto again = read(list->toBinary());
    require(again && again->keys() == list->keys());
    for (const QString& key : list->keys()) {
        require(again->boolean(key) == list->boolean(key));
        require(again->integer(key) == list->integer(key));
        require(isSame(again->real(key), list->real(key)));
        require(again->text(key) == list->text(key));
        require(again->data(key) == list->data(key));
        require(again->date(key) == list->date(key));
        require(again->texts(key) == list->texts(key));
        require(again->dictionary(key).has_value() == list->dictionary(key).has_value());
    }
    return 0;
}
