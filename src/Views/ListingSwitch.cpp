#include "Views/ListingSwitch.h"

#include <utility>

namespace orvanta {

namespace {

constexpr MainLoop::Duration dismissalDelay{0.35};

} // namespace

ListingSwitch::ListingSwitch(MainLoop& mainLoop, std::function<void()> changed)
    : mainLoop_(mainLoop)
    , changed_(std::move(changed)) {}

void ListingSwitch::click(Listing target) {
    cancelDismissal();
    pinned_ = pinned_ == target ? std::nullopt : std::optional(target);
    show(resting());
}

void ListingSwitch::enterButton(Listing target) {
    cancelDismissal();
    if (!pinned_) {
        show(target);
    }
}

void ListingSwitch::leave() {
    cancelDismissal();
    if (listing_ != resting()) {
        dismissal_ = mainLoop_.once(dismissalDelay, [this] { show(resting()); });
    }
}

void ListingSwitch::show(Listing listing) {
    if (listing != listing_) {
        listing_ = listing;
        changed_();
    }
}

} // namespace orvanta
