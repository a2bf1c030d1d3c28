#include "platform/ui/ComboBox.h"

#include <QWheelEvent>

#include <utility>

namespace platform {

ComboBox::ComboBox(QWidget* parent)
    : QComboBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QComboBox::currentIndexChanged, this, [this] {
        m_hasChanged = true;
        Q_EMIT Click();
    });
    connect(this, &QComboBox::activated, this, [this] {
        if (!std::exchange(m_hasChanged, false))
            Q_EMIT Click();
    });
}

void ComboBox::showPopup()
{
    m_hasChanged = false;
    QComboBox::showPopup();
}

void ComboBox::keyPressEvent(QKeyEvent* event)
{
    m_hasChanged = false;
    QComboBox::keyPressEvent(event);
}

void ComboBox::wheelEvent(QWheelEvent* event)
{
    m_hasChanged = false;
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

} // namespace platform
