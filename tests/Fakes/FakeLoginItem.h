#pragma once

#include "Platform/LoginItem.h"

namespace orvanta {

class FakeLoginItem final : public LoginItem {
public:
    Status current = Status::notRegistered;
    /// What registering and unregistering lead to.
    Status afterRegistering = Status::enabled;
    std::optional<QString> problem;
    int registrations = 0;
    int unregistrations = 0;
    int settingsOpened = 0;

    Status status() const override { return current; }
    std::optional<QString> registerItem() override {
        ++registrations;
        if (!problem) {
            current = afterRegistering;
        }
        return problem;
    }
    std::optional<QString> unregisterItem() override {
        ++unregistrations;
        if (!problem) {
            current = Status::notRegistered;
        }
        return problem;
    }
    void openSystemSettingsLoginItems() override { ++settingsOpened; }
};

} // namespace orvanta
