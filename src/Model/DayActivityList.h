#pragma once

#include "Model/Day.h"
#include "Model/KeyTable.h"

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace orvanta {

/// The day records of a store: seconds by day and key.
///
/// Ten years are some 180,000 of them, so a record is a key number and its seconds in two columns,
/// days in order of time.
class DayActivityList {
public:
    std::size_t size() const;

    /// The seconds of this day and key; absent when there is no such record.
    std::optional<double> seconds(Day day, KeyId key) const;

    /// Makes the record if there is none.
    void setSeconds(Day day, KeyId key, double seconds);
    void add(Day day, KeyId key, double seconds);

    /// Forgets every record, also those that were never read, and has the next save erase them all.
    void clear();

    /// Grows with every change, so that whoever derives something from the records can tell what it
    /// has not seen yet: the days whose `generation` is later.
    quint64 generation() const { return generation_; }
    /// When records were last taken away: what was derived up to then may stand for none.
    quint64 replacedAt() const { return replacedAt_; }

    /// The records of one day.
    struct OneDay {
        Day day;
        quint64 generation; ///< of the last change
        std::span<const KeyId> keys;
        std::span<const double> seconds;
    };
    /// How many days have records; they count from the oldest, 0.
    std::size_t dayCount() const;
    OneDay oneDay(std::size_t index) const;

    /// Whether there are changes that the store does not have.
    bool hasChanges() const { return cleared_ || !changed_.empty(); }

    /// Whether the store still has to erase all it has, before the records below are written.
    bool isCleared() const { return cleared_; }

    /// Which record: there is one of a day and key.
    struct Place {
        Day day;
        KeyId key;
        friend constexpr auto operator<=>(Place, Place) = default;
    };
    /// The records with changes, by day, for writing them.
    const std::set<Place>& pending() const { return changed_; }
    /// Whether this one was made here since the last save. Should the store have it all the same,
    /// which it does if it could not be read, then these seconds come on top of the store's.
    bool isNew(Place place) const { return new_.contains(place); }

    /// The store has everything now.
    void settle() {
        changed_.clear();
        new_.clear();
        cleared_ = false;
    }

    struct Stored {
        Day day;
        KeyId key;
        double seconds;
    };
    /// Replaces everything by the records of the store, in the order in which it has them. Of two
    /// records of the same day and key the first is kept.
    void load(std::vector<Stored> records);

    /// As `load`, with the records from the day `since` on; the older ones, which a process seldom
    /// needs in its first seconds, are asked of `older` when something asks for them.
    void loadRecent(std::vector<Stored> records, Day since,
                    std::function<std::vector<Stored>()> older);

    /// Reads what `loadRecent` left for later. Does nothing when nothing is left.
    void complete() const;

private:
    struct Group {
        Day day;
        std::uint32_t first; // Of the columns below; it ends where the next one begins.
        quint64 generation;
    };
    void build(std::vector<Stored> records) const;
    std::vector<Group>::const_iterator groupAt(Day day) const;
    std::size_t endOf(std::vector<Group>::const_iterator group) const;
    std::optional<std::size_t> find(Day day, KeyId key) const;
    void set(Day day, KeyId key, std::optional<std::size_t> index, double seconds);
    void insert(Day day, KeyId key, double seconds);

    // Whoever asks does not see whether the older records were there or have just been read.
    mutable std::vector<Group> days_;
    mutable std::vector<KeyId> recordKeys_;
    mutable std::vector<double> seconds_;
    mutable std::function<std::vector<Stored>()> older_;
    mutable quint64 generation_ = 0;
    quint64 replacedAt_ = 0;
    Day since_;
    bool cleared_ = false;
    std::set<Place> changed_; ///< in one order: rows are numbered in it
    std::set<Place> new_;     ///< those of them that were made
};

} // namespace orvanta
