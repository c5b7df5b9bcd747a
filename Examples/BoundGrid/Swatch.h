#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Interface/ArrayController.h"
#include "Platform/Interface/Cell.h"

#include <QColor>
#include <QString>

/// A colour with a name: the model object of this program.
class Swatch : public platform::Object
{
    ZR_OBJECT(Swatch, platform::Object)

public:
    explicit Swatch(const QString &colorName)
        : name(colorName)
        , color(colorName)
    { }

    const QString name;
    const QColor color;
};

/// All colours that Qt knows by name, each once: first the greys, then around the circle of hues.
QList<platform::ObjectPointer> namedSwatches();

/// What a controller needs to know of its objects to be the model of a list: their texts and icons.
class SwatchController : public platform::ArrayController
{
public:
    using ArrayController::ArrayController;
    QVariant data(const QModelIndex &index, int role) const override;

protected:
    QString displayText(const platform::Object &object) const override;
};

/// A cell of the grid: the colour above its name.
class SwatchCell : public platform::Cell
{
public:
    std::unique_ptr<platform::Cell> clone() const override { return std::make_unique<SwatchCell>(*this); }
    void drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view) override;
    QString accessibleName() const override;
};
