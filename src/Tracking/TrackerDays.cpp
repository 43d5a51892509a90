#include "Model/ActivityList.h"
#include "Model/DayActivityList.h"
#include "Model/ModelContext.h"
#include "Tracking/Tracker.h"

#include <algorithm>

namespace orvanta {

void Tracker::addToDay(const Activity& activity, double seconds) {
    constexpr double secondsPerDay = 86400;
    // Backwards from the present: the stretch has just ended.
    Date end = dateNow_();
    double remaining = seconds;
    while (remaining > 0) {
        Date start = calendar_.startOfDay(end);
        if (start == end) {
            start = calendar_.addingDays(end, -1).value_or(end - secondsPerDay);
        }
        const double portion = std::min(end - start, remaining);
        dayRecords_.add(calendar_.day(start), activity.keyId(), portion);
        remaining -= portion;
        end = start;
    }
}

void Tracker::startNewDayIfNeeded() {
    const Date today = calendar_.startOfDay(dateNow_());
    if (resetDate_ >= today) {
        return;
    }
    transition(accumulator_.focus);
    const Day day = calendar_.day(today);
    for (Activity& activity : activities_) {
        activity.setSeconds(dayRecords_.seconds(day, activity.keyId()).value_or(0));
    }
    setResetDate(today);
    bumpRevision();
    save();
}

void Tracker::save() {
    if (accumulator_.focus) {
        if (Activity* timed = activities_.find(accumulator_.focus->key)) {
            timed->setLastUsedAt(dateNow_());
        }
    }
    if (context_.hasChanges() && saveOr(QStringLiteral("Não foi possível salvar: "))) {
        setStorageError(std::nullopt);
    }
}

bool Tracker::saveOr(const QString& problem) {
    const std::size_t known = activities_.size();
    try {
        context_.save();
        if (activities_.size() != known) { // What the start could not read.
            Q_EMIT activitiesChanged();
        }
        return true;
    } catch (const ModelError& error) {
        setStorageError(problem + error.localizedDescription());
        return false;
    }
}

} // namespace orvanta
