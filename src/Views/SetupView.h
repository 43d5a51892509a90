#pragma once

#include "Setup/Setup.h"

#include <QWidget>

#include <functional>
#include <vector>

QT_BEGIN_NAMESPACE
class QScrollArea;
QT_END_NAMESPACE

namespace orvanta {

class Appearance;
class SetupHeader;
class SetupStepRow;
class TextBand;

/// What the person still has to allow, step by step. It has the size of the panel, in whose place
/// it stands until the required steps are done.
class SetupView final : public QWidget {
    Q_OBJECT

public:
    /// `setup` and `appearance` outlive the view.
    SetupView(Setup& setup, const Appearance& appearance, std::function<void()> quit,
              QWidget* parent = nullptr);

private:
    void refresh();
    void rebuild(const std::vector<Setup::Step>& required,
                 const std::vector<Setup::Step>& optional);

    Setup& setup_;
    const Appearance& appearance_;
    SetupHeader* header_;
    TextBand* title_;
    QScrollArea* scrollArea_;
    std::vector<SetupStepRow*> rows_; ///< the required ones, then the optional ones
};

} // namespace orvanta
