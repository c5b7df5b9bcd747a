#include "NumberBox.h"

#include "ZRCommon/ZRLocalizedString.h"

#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

NumberBox::NumberBox(QWidget *parent)
    : QDoubleSpinBox(parent)
{
    connect(this, &QDoubleSpinBox::valueChanged, this, &NumberBox::take);
}

void NumberBox::setNumbers(double least, double most)
{
    m_least = least;
    setRange(least, most);
}

void NumberBox::showNumber(double number)
{
    const QSignalBlocker silent(this);
    m_isSeveral = false;
    setMinimum(m_least);
    setSpecialValueText({});
    setValue(number);
}

// A value below the least number stands for that.
void NumberBox::showSeveral(double first)
{
    const QSignalBlocker silent(this);
    m_isSeveral = true;
    m_first = first;
    setMinimum(m_least - 1);
    setSpecialValueText(ZRLocalizedString("Several"));
    setValue(minimum());
}

void NumberBox::take(double number)
{
    if (number < m_least)
        return showSeveral(m_first); // typed, while several were shown
    m_isSeveral = false;
    Q_EMIT numberChanged(number);
}

void NumberBox::stepBy(int steps)
{
    const double next = (m_isSeveral ? m_first : value()) + steps * singleStep();
    setValue(m_cycle > 0 ? std::fmod(std::fmod(next, m_cycle) + m_cycle, m_cycle) : std::max(next, m_least));
    selectAll();
}

NumberBox::StepEnabled NumberBox::stepEnabled() const
{
    return m_cycle > 0 || m_isSeveral ? StepUpEnabled | StepDownEnabled : QDoubleSpinBox::stepEnabled();
}
