#include "support/Doubles.h"

#include <QTest>

namespace support {

void TestMessages::clear()
{
    m_answers.clear();
    m_shown.clear();
}

platform::MsgBoxResult TestMessages::MsgBox(const QString& prompt, int style, const QString& title)
{
    m_shown << Shown{prompt, style, title};
    if (!m_answers.isEmpty()) {
        return m_answers.takeFirst();
    }
    const QString text = QStringLiteral("unexpected message box: ") + prompt;
    QTest::qFail(qPrintable(text), __FILE__, __LINE__);
    switch (style & 15) {
    case platform::vbYesNo:
        return platform::MsgBoxResult::No;
    case platform::vbOKCancel:
        return platform::MsgBoxResult::Cancel;
    default:
        return platform::MsgBoxResult::Ok;
    }
}

void TestPump::DoEvents()
{
    const auto action = m_actions.find(++m_count);
    if (action != m_actions.end()) {
        action->second();
    }
}

} // namespace support
