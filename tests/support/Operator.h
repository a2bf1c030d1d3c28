#pragma once

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>

namespace support {

/// Acts on the windows of the start-up one after another, as an operator would: the n-th step runs when a window of
/// its name is up.
class Operator : public QObject
{
public:
    Operator()
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, &Operator::look);
        m_timer.start();
    }
    void when(const char* window, std::function<void(QWidget&)> act)
    {
        m_steps.emplace_back(QString::fromLatin1(window), std::move(act));
    }
    void types(const char* password)
    {
        when("frmsenha", [password](QWidget& prompt) {
            auto* const box = prompt.findChild<QLineEdit*>(QStringLiteral("Text1"));
            box->setText(QString::fromLatin1(password));
            QTest::keyClick(box, Qt::Key_Return);
        });
    }
    [[nodiscard]] bool isDone() const { return m_steps.empty(); }

private:
    void look()
    {
        if (m_steps.empty())
            return;
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->objectName() == m_steps.front().first) {
                const auto act = std::move(m_steps.front().second);
                m_steps.pop_front();
                act(*window);
                return;
            }
        }
    }

    QTimer m_timer;
    std::deque<std::pair<QString, std::function<void(QWidget&)>>> m_steps;
};

} // namespace support
