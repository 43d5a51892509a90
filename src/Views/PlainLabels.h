#pragma once

#include <QObject>

namespace orvanta {

/// Shows every text of the application as it is, while this lives.
///
/// Programs and sites choose the names that are shown. Where a text looks like markup, Qt would
/// render it, and open whatever files the markup names, which can block for ever. Each label,
/// those inside tooltips and message boxes too, learns before its first layout that its text is
/// plain.
class PlainLabels final : public QObject {
public:
    /// The application exists already.
    PlainLabels();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace orvanta
