#pragma once

#include <QDialog>

#include <functional>

struct Services;

/// A window beside the main one: a register, the ledger, the gauging. It remembers its place, Escape closes the
/// innermost thing, and Enter presses a button that has the focus and no other. It lives until its handlers have
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
    /// Reads what the window shows. Called as a handler when the window has come up: it is modal by then, and reading a
    /// long list lets events run.
    virtual void load() {}
    /// Has Escape send the window off the screen before it closes.
    void slideAwayOnEscape() { m_slidesAway = true; }
    /// True once the window is closed: a handler that has let events run asks before it goes on with the window.
    [[nodiscard]] bool isClosed() const { return m_closed; }
    /// Closes what stands open inside the window, if anything; true when there was something. Escape asks here first.
    virtual bool closeInnermost() { return false; }

    void reject() override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

    const Services& m_services;

private:
    void deleteIfDone();
    void slideAway();

    int m_running = 0;
    bool m_closed = false;
    bool m_deleteWhenClosed = false;
    bool m_slidesAway = false;
    bool m_sliding = false;
};
