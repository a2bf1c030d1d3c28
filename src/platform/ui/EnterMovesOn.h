#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace platform {

/// Enter in the watched widgets moves the focus on like Tab, by a Tab keystroke: leaving a box does what Tab would do.
/// A drop-down list that is open keeps its Enter.
class EnterMovesOn : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void watch(QWidget* widget);
    /// The same, but the focus goes to a given widget.
    void watch(QWidget* widget, QWidget* next);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QHash<QObject*, QPointer<QWidget>> m_next;
};

} // namespace platform
