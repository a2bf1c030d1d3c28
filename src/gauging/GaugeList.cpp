#include "gauging/GaugeList.h"

#include <QFont>
#include <QKeyEvent>

namespace {

/// A longer pause between two digits begins a new depth.
constexpr qint64 PauseMilliseconds = 1500;

} // namespace

GaugeList::GaugeList(QWidget* parent)
    : QListWidget(parent)
{
    QFont fixedWidth(QStringLiteral("Courier New"));
    fixedWidth.setStyleHint(QFont::Monospace);
    fixedWidth.setPointSize(font().pointSize() + 1); // looks as large as the other texts
    setFont(fixedWidth);
    setUniformItemSizes(true);
}

QString GaugeList::selectedLine() const
{
    const QList<QListWidgetItem*> selected = selectedItems();
    return selected.isEmpty() ? QString() : selected.first()->text();
}

void GaugeList::keyboardSearch(const QString& search)
{
    if (!m_sinceLastKey.isValid() || m_sinceLastKey.hasExpired(PauseMilliseconds))
        m_typed.clear();
    m_sinceLastKey.start();
    for (const QChar character : search) {
        if (character >= u'0' && character <= u'9')
            m_typed += character;
        else if (character == u',' || character == u'.')
            m_typed += u',';
    }
    for (int row = 0; row < count() && !m_typed.isEmpty(); ++row) {
        if (item(row)->text().startsWith(m_typed)) {
            setCurrentRow(row);
            return;
        }
    }
}

void GaugeList::keyPressEvent(QKeyEvent* event)
{
    // The focus marks the first line without selecting it; the first step down selects it.
    if (event->key() == Qt::Key_Down && selectedItems().isEmpty() && count() > 0) {
        setCurrentRow(qMax(0, currentRow()));
        event->accept();
        return;
    }
    QListWidget::keyPressEvent(event);
}

void GaugeList::focusInEvent(QFocusEvent* event)
{
    m_typed.clear();
    QListWidget::focusInEvent(event);
}
