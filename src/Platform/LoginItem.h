#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// The application as something that starts when the person logs in.
class LoginItem {
public:
    /// With the values of Apple's `SMAppServiceStatus`.
    enum class Status {
        notRegistered = 0,
        enabled = 1,
        requiresApproval = 2, ///< registered, but the person or the desktop has turned it off
        notFound = 3,         ///< there is no program to start
    };

    virtual ~LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;

    /// As it is now. Costs a few file operations; nothing is kept.
    virtual Status status() const = 0;

    /// Both answer what went wrong, in the system's words, and nothing on success. Registering
    /// leaves alone what the person has turned off, and that is a success too.
    virtual std::optional<QString> registerItem() = 0;
    virtual std::optional<QString> unregisterItem() = 0;

    /// Shows the person where applications that start at login are managed.
    virtual void openSystemSettingsLoginItems() = 0;

protected:
    LoginItem() = default;
};

} // namespace orvanta
