#pragma once

#include <QComboBox>

namespace platform {

/// A drop-down list that tells each choice, the entry that is already shown chosen again included. Scrolling past it
/// with the wheel changes nothing: that takes the focus.
class ComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ComboBox(QWidget* parent = nullptr);

    void showPopup() override;

Q_SIGNALS:
    /// Another entry, by whatever way, or the same one by the operator.
    void Click();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    bool m_hasChanged = false; ///< Since the operator's last key, click or turn of the wheel began.
};

} // namespace platform
