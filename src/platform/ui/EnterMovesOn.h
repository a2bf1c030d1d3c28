#pragma once

#include <QObject>

class QWidget;

namespace platform {

/// Enter in the watched widgets moves the focus on like Tab, by a Tab keystroke: leaving a box does what Tab would do.
/// A drop-down list that is open keeps its Enter.
class EnterMovesOn : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void watch(QWidget* widget);
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace platform
