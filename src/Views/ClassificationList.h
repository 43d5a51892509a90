#pragma once

#include "Model/Category.h"

#include <QListView>

namespace orvanta {

class ClassificationDelegate;

/// Activities, each with a picker of its category that a press on it opens, or Space, Enter, F4 or
/// Alt+Down on the row.
class ClassificationList final : public QListView {
    Q_OBJECT

public:
    explicit ClassificationList(QWidget* parent = nullptr);

Q_SIGNALS:
    void categoryChosen(const QModelIndex& index, Category category);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void openPicker(const QModelIndex& index);

    ClassificationDelegate* delegate_;
};

} // namespace orvanta
