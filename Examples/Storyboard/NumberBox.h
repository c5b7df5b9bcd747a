#pragma once

#include <QDoubleSpinBox>

/// A number that several items may have. Shows it, or says that they differ until another one is set.
class NumberBox : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit NumberBox(QWidget *parent = nullptr);

    void setNumbers(double least, double most);
    /// For numbers that begin anew when they are stepped through, such as angles.
    /// @param end the first one that is 0 again
    void setCycle(double end) { m_cycle = end; }

    // These tell nobody.
    void showNumber(double number);
    /// @param first where the arrows begin
    void showSeveral(double first);

    void stepBy(int steps) override;

Q_SIGNALS:
    /// A person has set it, to one of its numbers.
    void numberChanged(double number);

protected:
    StepEnabled stepEnabled() const override;

private:
    void take(double number);

    double m_least = 0;
    double m_cycle = 0; // 0 for none
    double m_first = 0;
    bool m_isSeveral = false;
};
