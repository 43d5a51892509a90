#pragma once

#include "Platform/ColorScheme.h"

#include <QObject>

namespace orvanta {

/// How the person wants things to look.
class Appearance : public QObject {
    Q_OBJECT

public:
    /// As last told; costs nothing.
    virtual ColorScheme colorScheme() const = 0;
    /// Whether things are to change at once instead of moving.
    virtual bool reducesMotion() const = 0;

Q_SIGNALS:
    void changed();

protected:
    Appearance() = default;
};

} // namespace orvanta
