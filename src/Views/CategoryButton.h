#pragma once

#include "Model/Category.h"
#include "Views/GridButton.h"

#include <QVariantAnimation>

namespace orvanta {

/// The arrow of a row that gives its activity a category; filled when that is the category it has.
class CategoryButton final : public GridButton {
    Q_OBJECT

public:
    /// `category` is production or consumption.
    CategoryButton(const Appearance& appearance, Category category, QWidget* parent = nullptr);

    Category category() const { return category_; }
    /// Eases from one to the other where `animated`.
    void setSelected(const QString& name, bool selected, bool animated);

protected:
    void paintLabel(QPainter& painter, const Palette& palette) override;

private:
    Category category_;
    QVariantAnimation fill_; ///< 0 for not selected to 1 for selected
};

} // namespace orvanta
