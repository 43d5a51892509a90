#pragma once

#include <QWidget>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

namespace orvanta {

class Appearance;
struct Palette;

/// A part of the panel that is only read. To a screen reader it is a text, its accessible name.
class Band : public QWidget {
    Q_OBJECT

public:
    /// Where lines separate it from its neighbours.
    Band(const Appearance& appearance, const QSize& size, Qt::Edges rules,
         QWidget* parent = nullptr);

protected:
    const Appearance& appearance() const { return appearance_; }

    virtual void paintContent(QPainter& painter, const Palette& palette) = 0;
    void paintEvent(QPaintEvent* event) final;

private:
    const Appearance& appearance_;
    Qt::Edges rules_;
};

/// A band with a text at each side, the first of which gives way where they do not fit.
class TextBand final : public Band {
    Q_OBJECT

public:
    enum class Tone { foreground, muted };

    TextBand(const Appearance& appearance, const QSize& size, Qt::Edges rules, Tone tone,
             QWidget* parent = nullptr);

    void setTexts(const QString& leading, const QString& trailing = {});

protected:
    void paintContent(QPainter& painter, const Palette& palette) override;

private:
    Tone tone_;
    QString leading_;
    QString trailing_;
};

} // namespace orvanta
