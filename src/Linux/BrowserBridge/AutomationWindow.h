#pragma once

#include "Linux/BrowserBridge/LinuxAutomationPermission.h"

#include <QDialog>
#include <QString>

#include <functional>
#include <vector>

class QVBoxLayout;

namespace orvanta {

/// The window "Automação": which browsers may say their sites, and what each still lacks.
///
/// Looks anew when it is told to, and when the person comes back to it. Deletes itself when it is
/// closed.
class AutomationWindow final : public QDialog {
    Q_OBJECT

public:
    enum class Missing { Nothing, Extension, Start, Restart };

    struct Row {
        QString identifier;
        QString name; ///< as the person reads it
        LinuxAutomationPermission::Decision decision =
            LinuxAutomationPermission::Decision::Undecided;
        Missing missing = Missing::Nothing; ///< of one that may

        friend bool operator==(const Row&, const Row&) = default;
    };
    struct Actions {
        std::function<std::vector<Row>()> rows;
        std::function<void(const QString& identifier)> allow;
        std::function<void(const QString& identifier)> refuse;
    };

    explicit AutomationWindow(Actions actions);

    void refresh();

protected:
    bool event(QEvent* event) override;

private:
    class RowView;

    Actions actions_;
    QVBoxLayout* list_;
    std::vector<RowView*> views_;
};

} // namespace orvanta
