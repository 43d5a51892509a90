#pragma once

#include "Views/Band.h"

namespace orvanta {

/// The cell of a row with an activity's name and time, and a place for a button right after the
/// name.
class NameCell final : public Band {
    Q_OBJECT

public:
    /// `buttonWidth` is 0 for none.
    NameCell(const Appearance& appearance, int buttonWidth, QWidget* parent = nullptr);

    struct Content {
        QString name = {};
        QString duration = {};
        bool isMuted = false;
        bool isTimed = false; ///< counts right now

        friend bool operator==(const Content&, const Content&) = default;
    };
    void setContent(const Content& content);

    /// Where the button begins.
    int buttonX() const;

protected:
    void paintContent(QPainter& painter, const Palette& palette) override;

private:
    int durationX() const;
    int nameSpace() const;

    int buttonWidth_;
    Content content_;
    QString name_; ///< as much of it as there is room for
};

} // namespace orvanta
