#include "platform/ui/WindowPlacement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QWidget>

namespace platform {

namespace {

/// Part of a window's top strip that a screen must show for the operator to be able to grip it.
constexpr QSize grip(80, 24);

QString settingsFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/planilha-de-bombas/janelas.ini");
}

const QScreen* screenThatShows(const QRect& place)
{
    const QRect top(place.topLeft(), QSize(place.width(), grip.height()));
    for (const QScreen* const screen : QGuiApplication::screens()) {
        const QRect seen = screen->availableGeometry() & top;
        if (seen.width() >= grip.width() && seen.height() >= grip.height())
            return screen;
    }
    return nullptr;
}

} // namespace

WindowPlacement::WindowPlacement(QWidget* window)
    : QObject(window)
    , m_window(*window)
    , m_active(!window->objectName().isEmpty() && !qEnvironmentVariableIsSet("PLANILHA_NO_PLACEMENT"))
{
    if (!m_active)
        return;
    restore();
    window->installEventFilter(this);
}

void WindowPlacement::restore()
{
    const QSettings settings(settingsFile(), QSettings::IniFormat);
    const QRect place = settings.value(m_window.objectName() + QStringLiteral("/place")).toRect();
    const QScreen* const screen = place.isValid() ? screenThatShows(place) : nullptr;
    if (!screen)
        return;
    m_window.resize(place.size().boundedTo(screen->availableGeometry().size()).expandedTo(m_window.minimumSize()));
    m_window.move(place.topLeft());
    if (settings.value(m_window.objectName() + QStringLiteral("/maximized")).toBool())
        m_window.setWindowState(m_window.windowState() | Qt::WindowMaximized);
}

void WindowPlacement::keep(const QWidget& window)
{
    if (auto* const placement = window.findChild<WindowPlacement*>(QString(), Qt::FindDirectChildrenOnly))
        placement->save();
}

void WindowPlacement::save()
{
    if (m_saved || !m_active || !screenThatShows(m_window.frameGeometry()))
        return;
    m_saved = true;
    QSettings settings(settingsFile(), QSettings::IniFormat);
    const QRect normal = m_window.isMaximized() ? m_window.normalGeometry() : QRect(m_window.pos(), m_window.size());
    settings.setValue(m_window.objectName() + QStringLiteral("/place"), normal);
    settings.setValue(m_window.objectName() + QStringLiteral("/maximized"), m_window.isMaximized());
}

bool WindowPlacement::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_window) {
        if (event->type() == QEvent::Close)
            save();
        else if (event->type() == QEvent::Show)
            m_saved = false;
    }
    return false;
}

} // namespace platform
