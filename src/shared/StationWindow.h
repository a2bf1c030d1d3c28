#pragma once

#include <QDialog>

#include <functional>

struct Services;

/// A window beside the main one: a register, the ledger, the gauging. It remembers its place, Escape closes the
/// innermost thing, and Enter never presses a button that does not have the focus. It lives until its handlers have
/// returned, even when it is closed while one of them lets events run.
class StationWindow : public QDialog
{
    Q_OBJECT

public:
    StationWindow(const Services& services, QWidget* parent);

    /// For a window that is not run modally: it deletes itself once it is closed and its handlers have returned.
    void deleteWhenClosed() { m_deleteWhenClosed = true; }

Q_SIGNALS:
    /// The window has closed, whichever way.
    void closed();

protected:
    /// Call at the end of the constructor, when the form is laid out.
    void laidOut();
    /// Runs a handler: an error's text is shown and the operation stops there. Every handler goes through here.
    void handle(const std::function<void()>& operation);
    /// True once the window is closed: a handler that has let events run asks before it goes on with the window.
    [[nodiscard]] bool isClosed() const { return m_closed; }
    /// Closes what stands open inside the window, if anything; true when there was something. Escape asks here first.
    virtual bool closeInnermost() { return false; }

    void reject() override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

    const Services& m_services;

private:
    void deleteIfDone();

    int m_running = 0;
    bool m_closed = false;
    bool m_deleteWhenClosed = false;
};
