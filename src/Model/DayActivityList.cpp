#include "Model/DayActivityList.h"

#include <algorithm>
#include <utility>

namespace orvanta {

std::size_t DayActivityList::size() const {
    complete();
    return seconds_.size();
}

std::size_t DayActivityList::dayCount() const {
    complete();
    return days_.size();
}

std::optional<double> DayActivityList::seconds(Day day, KeyId key) const {
    const auto index = find(day, key);
    return index ? std::optional(seconds_[*index]) : std::nullopt;
}

void DayActivityList::setSeconds(Day day, KeyId key, double seconds) {
    set(day, key, find(day, key), seconds);
}

void DayActivityList::add(Day day, KeyId key, double seconds) {
    const auto index = find(day, key);
    set(day, key, index, (index ? seconds_[*index] : 0) + seconds);
}

void DayActivityList::set(Day day, KeyId key, std::optional<std::size_t> index, double seconds) {
    if (index) {
        seconds_[*index] = seconds;
    } else {
        insert(day, key, seconds);
        new_.insert({day, key});
    }
    days_[static_cast<std::size_t>(groupAt(day) - days_.cbegin())].generation = ++generation_;
    changed_.insert({day, key});
}

DayActivityList::OneDay DayActivityList::oneDay(std::size_t index) const {
    const auto group = days_.begin() + static_cast<std::ptrdiff_t>(index);
    const std::size_t count = endOf(group) - group->first;
    return {group->day, group->generation, std::span(recordKeys_).subspan(group->first, count),
            std::span(seconds_).subspan(group->first, count)};
}

void DayActivityList::load(std::vector<Stored> records) {
    older_ = nullptr;
    settle();
    build(std::move(records));
    replacedAt_ = generation_;
}

void DayActivityList::clear() {
    load({});
    cleared_ = true;
}

void DayActivityList::loadRecent(std::vector<Stored> records, Day since,
                                 std::function<std::vector<Stored>()> older) {
    load(std::move(records));
    since_ = since;
    older_ = std::move(older);
}

void DayActivityList::complete() const {
    if (!older_) {
        return;
    }
    std::vector<Stored> records = std::exchange(older_, nullptr)();
    for (auto group = days_.cbegin(); group != days_.cend(); ++group) {
        for (std::size_t index = group->first; index < endOf(group); ++index) {
            records.push_back({group->day, recordKeys_[index], seconds_[index]});
        }
    }
    build(std::move(records));
}

void DayActivityList::build(std::vector<Stored> records) const {
    // Nearly always they are sorted, and sorting takes as much memory again.
    if (!std::ranges::is_sorted(records, {}, &Stored::day)) {
        std::ranges::stable_sort(records, {}, &Stored::day);
    }

    ++generation_;
    days_ = std::vector<Group>(); // Ten years that were erased leave no room behind.
    recordKeys_ = std::vector<KeyId>();
    seconds_ = std::vector<double>();
    // With room for some months, so that the next record does not move ten years of them.
    constexpr std::size_t room = 8192;
    recordKeys_.reserve(records.size() + room);
    seconds_.reserve(records.size() + room);

    std::vector<Day> lastDayOfKey;
    for (const Stored& record : records) {
        const auto key = static_cast<std::size_t>(record.key);
        if (key >= lastDayOfKey.size()) {
            lastDayOfKey.resize(key + 1, Day{-1, 0, 0});
        }
        if (lastDayOfKey[key] == record.day) {
            continue;
        }
        lastDayOfKey[key] = record.day;
        if (days_.empty() || days_.back().day != record.day) {
            days_.push_back({record.day, static_cast<std::uint32_t>(seconds_.size()), generation_});
        }
        recordKeys_.push_back(record.key);
        seconds_.push_back(record.seconds);
    }
}

std::vector<DayActivityList::Group>::const_iterator DayActivityList::groupAt(Day day) const {
    // Nearly always today is asked for, the last one.
    if (!days_.empty() && days_.back().day <= day) {
        return days_.back().day == day ? days_.end() - 1 : days_.end();
    }
    return std::ranges::lower_bound(days_, day, {}, &Group::day);
}

std::size_t DayActivityList::endOf(std::vector<Group>::const_iterator group) const {
    return group + 1 == days_.end() ? seconds_.size() : (group + 1)->first;
}

std::optional<std::size_t> DayActivityList::find(Day day, KeyId key) const {
    if (day < since_) {
        complete();
    }
    const auto group = groupAt(day);
    if (group == days_.end() || group->day != day) {
        return std::nullopt;
    }
    const auto begin = recordKeys_.begin() + group->first;
    const auto end = recordKeys_.begin() + static_cast<std::ptrdiff_t>(endOf(group));
    const auto found = std::find(begin, end, key);
    return found == end ? std::nullopt
                        : std::optional(static_cast<std::size_t>(found - recordKeys_.begin()));
}

void DayActivityList::insert(Day day, KeyId key, double seconds) {
    const auto place = days_.begin() + (groupAt(day) - days_.cbegin());
    if (place == days_.end() || place->day != day) {
        const auto first =
            place == days_.end() ? static_cast<std::uint32_t>(seconds_.size()) : place->first;
        const auto added = days_.insert(place, {day, first, generation_});
        return insert(added->day, key, seconds);
    }
    const auto end = static_cast<std::ptrdiff_t>(endOf(place));
    recordKeys_.insert(recordKeys_.begin() + end, key);
    seconds_.insert(seconds_.begin() + end, seconds);
    for (auto later = place + 1; later != days_.end(); ++later) {
        ++later->first;
    }
}

} // namespace orvanta
