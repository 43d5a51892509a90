#include "Platform/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace orvanta {

struct NotificationCenter::Observer {
    Token token;
    Notification name;
    Handler handler;
    bool removed = false;
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

NotificationCenter::Token NotificationCenter::addObserver(Notification name, Handler handler) {
    const Token token{++lastToken_};
    observers_.push_back(std::make_shared<Observer>(Observer{token, name, std::move(handler)}));
    return token;
}

void NotificationCenter::removeObserver(Token token) {
    const auto found = std::ranges::find(observers_, token, [](const auto& o) { return o->token; });
    if (found == observers_.end()) {
        return;
    }
    (*found)->removed = true; // A post under way may still hold it.
    observers_.erase(found);
}

void NotificationCenter::post(Notification name) {
    const auto observers = observers_;
    for (const auto& observer : observers) {
        if (observer->name == name && !observer->removed) {
            observer->handler();
        }
    }
}

} // namespace orvanta
