#pragma once

#include "Platform/Appearance.h"

namespace orvanta {

class FakeAppearance final : public Appearance {
public:
    ColorScheme scheme = ColorScheme::light;
    bool still = false;

    ColorScheme colorScheme() const override { return scheme; }
    bool reducesMotion() const override { return still; }
    void become(ColorScheme other) {
        scheme = other;
        Q_EMIT changed();
    }
};

} // namespace orvanta
