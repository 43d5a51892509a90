#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>

namespace orvanta {

/// Keeps from Qt that a window of ours has the X11 focus, which it has only by a grab of the
/// keyboard: Qt would take the application for active, and when the grab ends for deactivated, and
/// close its popups.
class X11FocusFilter final : public QAbstractNativeEventFilter {
public:
    X11FocusFilter() = default;
    ~X11FocusFilter() override;
    X11FocusFilter(const X11FocusFilter&) = delete;
    X11FocusFilter& operator=(const X11FocusFilter&) = delete;

    /// From now on, and for this window only. Needs a QGuiApplication.
    void apply(std::uint32_t window);

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    std::uint32_t window_ = 0;
};

} // namespace orvanta
