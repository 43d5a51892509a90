#pragma once

#include <QDialog>
#include <QString>

#include <functional>

class QDialogButtonBox;
class QLabel;

namespace orvanta {

/// Asks the person whether the sites of one browser may be identified, and says what is left to do.
///
/// Waits for nobody and takes the focus from nothing. Closed without an answer, it has decided
/// nothing.
class PermissionPrompt final : public QDialog {
    Q_OBJECT

public:
    /// What agreeing led to.
    struct Preparation {
        enum class Next {
            Nothing,   ///< the browser connects by itself
            Restart,   ///< the browser must be started anew
            Confirm,   ///< the browser, started anew, asks in its turn
            Unpacked,  ///< the person must load `folder` by hand, as Chromium calls it unpacked
            Temporary, ///< the same, as Firefox calls it temporary
            Failed     ///< `problem` says why
        };
        Next next = Next::Nothing;
        QString folder;
        QString problem;
    };
    struct Actions {
        /// Stores the decision and puts into the browser what it needs.
        std::function<Preparation()> agree;
        std::function<void()> refuse;
    };

    /// `browser` is its name. The dialogue deletes itself when it is closed.
    PermissionPrompt(const QString& browser, Actions actions);

    /// Goes on as if the person had agreed just now: says what is left to do.
    void conclude();

private:
    void say(const QString& text, const QString& detail);
    /// `steps` has %1 where the folder is named.
    void sayByHand(const QString& folder, const QString& steps);

    QString browser_;
    Actions actions_;
    QLabel* text_;
    QLabel* detail_;
    QDialogButtonBox* buttons_;
};

} // namespace orvanta
