#pragma once

#include <QElapsedTimer>
#include <QListWidget>

/// List of a gauge table's lines. Typed digits jump to the first line whose centimetres begin so.
class GaugeList : public QListWidget
{
    Q_OBJECT

public:
    explicit GaugeList(QWidget* parent = nullptr);

    /// Text of the selected line, empty when there is none. A line may have the focus frame without being selected.
    [[nodiscard]] QString selectedLine() const;

    void keyboardSearch(const QString& search) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    QString m_typed;
    QElapsedTimer m_sinceLastKey;
};
