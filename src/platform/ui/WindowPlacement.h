#pragma once

#include <QObject>

class QWidget;

namespace platform {

/// Remembers size and position of a window under its objectName, in a settings file of the user. Belongs to the window:
/// make it when the window is laid out and before it is shown. A place that no screen shows any more is not used. Does
/// nothing when the environment variable PLANILHA_NO_PLACEMENT is set and
/// for a window without a name.
class WindowPlacement : public QObject
{
    Q_OBJECT

public:
    explicit WindowPlacement(QWidget* window);

    /// Notes the place of a window now; for a window that moves before it closes. Its closing then notes nothing.
    static void keep(const QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void restore();
    void save();

    QWidget& m_window;
    const bool m_active;
    bool m_saved = false;
};

} // namespace platform
