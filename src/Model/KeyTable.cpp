#include "Model/KeyTable.h"

namespace orvanta {

KeyId KeyTable::intern(const QString& key) {
    const auto found = ids_.constFind(key);
    if (found != ids_.cend()) {
        return *found;
    }
    const KeyId id{static_cast<std::uint32_t>(texts_.size())};
    texts_.push_back(key);
    ids_.insert(key, id);
    return id;
}

std::optional<KeyId> KeyTable::find(const QString& key) const {
    const auto found = ids_.constFind(key);
    return found == ids_.cend() ? std::nullopt : std::optional(*found);
}

} // namespace orvanta
