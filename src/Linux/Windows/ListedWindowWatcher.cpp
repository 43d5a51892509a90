#include "Linux/Windows/ListedWindowWatcher.h"

#include "Linux/Windows/KWinWindowList.h"
#include "Linux/Windows/WlrWindowList.h"

#include <algorithm>
#include <utility>

namespace orvanta {

ListedWindowWatcher::ListedWindowWatcher(const QByteArray& display)
    : WindowWatcher(State::Waiting)
    , connection_(display) {
    if (!connection_.isOpen()) {
        setState(State::Unsupported);
        return;
    }
    connect(&connection_, &WaylandConnection::ready, this, [this] { start(); });
    connect(&connection_, &WaylandConnection::dispatched, this, [this] { publish(); });
    connect(&connection_, &WaylandConnection::ended, this, [this] { end(State::Ended); });
}

ListedWindowWatcher::~ListedWindowWatcher() = default;

void ListedWindowWatcher::start() {
    list_ = WlrWindowList::open(connection_, *this);
    if (!list_) {
        list_ = KWinWindowList::open(connection_, *this);
    }
    setState(list_ ? State::Watching : State::Unsupported);
}

void ListedWindowWatcher::add(std::unique_ptr<Listed> listed) {
    listed->window.id = ++lastId_;
    windows_.push_back(std::move(listed));
}

void ListedWindowWatcher::setActive(Listed& listed, bool isActive) {
    if (std::exchange(listed.isActive, isActive) == isActive || !isActive) {
        return;
    }
    const auto itself =
        std::ranges::find(windows_, &listed, [](const auto& each) { return each.get(); });
    std::rotate(itself, itself + 1, windows_.end());
}

void ListedWindowWatcher::remove(const Listed& listed) {
    std::erase_if(windows_, [&](const auto& each) { return each.get() == &listed; });
}

void ListedWindowWatcher::publish() {
    const auto found = std::ranges::find_if(windows_.rbegin(), windows_.rend(),
                                            [](const auto& each) { return each->isActive; });
    setActiveWindow(found != windows_.rend() ? std::optional((*found)->window) : std::nullopt);
}

void ListedWindowWatcher::end(State state) {
    if (this->state() == State::Watching || this->state() == State::Waiting) {
        windows_.clear();
        setActiveWindow(std::nullopt);
        setState(state);
    }
}

} // namespace orvanta
