#pragma once

#include "Platform/MainLoop.h"
#include "Views/Text/Listing.h"

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

/// Which listing is shown: the activities, unless the pointer looks at another one by its button,
/// or a click has pinned one.
class ListingSwitch {
public:
    /// `mainLoop` outlives it; `changed` is called after every change of `listing()`.
    ListingSwitch(MainLoop& mainLoop, std::function<void()> changed);

    Listing listing() const { return listing_; }
    std::optional<Listing> pinned() const { return pinned_; }

    /// Pins what the button stands for, or lets go of it.
    void click(Listing target);
    void enterButton(Listing target);
    /// The pointer left a button or the content: back to what rests there, unless it comes again
    /// soon.
    void leave();
    /// A return that is under way does not happen: the pointer is on the content, or something else
    /// begins.
    void cancelDismissal() { dismissal_.reset(); }

private:
    Listing resting() const { return pinned_.value_or(Listing::activities); }
    void show(Listing listing);

    MainLoop& mainLoop_;
    std::function<void()> changed_;
    Listing listing_ = Listing::activities;
    std::optional<Listing> pinned_;
    std::unique_ptr<MainLoopTimer> dismissal_;
};

} // namespace orvanta
