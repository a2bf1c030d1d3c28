#include "platform/ui/Application.h"

#include "platform/ui/InputQueue.h"
#include "platform/ui/PlainText.h"
#include "platform/ui/VisibleFocus.h"

#include <QApplication>
#include <QFont>
#include <QLibraryInfo>
#include <QLocale>
#include <QPalette>
#include <QTranslator>

#include <clocale>

namespace platform {

namespace {

constexpr int fontPoints = 9;

QPalette calmPalette()
{
    const QColor window(0xF1, 0xF3, 0xF5);
    const QColor text(0x1F, 0x2A, 0x33);
    const QColor mark(0x2B, 0x6C, 0xA3);
    QPalette palette(QColor(0xE4, 0xE9, 0xED), window);
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            palette.setColor(group, role, text);
    }
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xF7, 0xF9, 0xFA));
    palette.setColor(QPalette::Highlight, mark);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(0xFF, 0xFF, 0xF0));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0x76, 0x80, 0x88));
    const QColor faded(0x8A, 0x93, 0x9B);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faded);
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    return palette;
}

/// The toolkit moved its names of folders and drives to another class; its catalogue has them under the old one.
class Catalogue : public QTranslator
{
public:
    using QTranslator::QTranslator;
    [[nodiscard]] QString translate(const char* context, const char* text, const char* comment, int n) const override
    {
        const QString found = QTranslator::translate(context, text, comment, n);
        return found.isNull() && qstrcmp(context, "QAbstractFileIconProvider") == 0
                   ? QTranslator::translate("QFileDialog", text, comment, n)
                   : found;
    }
};

/// The toolkit's own texts (button texts, edit menus, print and file dialogs) from its Portuguese catalogue, where the
/// toolkit lies or, packed with the program, in "translations" beside it. Without it they are English.
void installPortugueseTexts(QApplication& application)
{
    auto* texts = new Catalogue(&application);
    for (const QString& folder : {QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                                  QApplication::applicationDirPath() + QStringLiteral("/translations")}) {
        if (texts->load(QStringLiteral("qtbase_pt_BR"), folder)) {
            QApplication::installTranslator(texts);
            return;
        }
    }
    qWarning("No catalogue qtbase_pt_BR.qm: the buttons of the toolkit are in English.");
}

} // namespace

void prepareApplication(QApplication& application)
{
    // The database drivers read and write numbers with the C library, which must see the point as decimal sign.
    std::setlocale(LC_NUMERIC, "C");
    QLocale::setDefault(QLocale(QLocale::Portuguese, QLocale::Brazil));
    // Not the display name: that would be added to every window title.
    application.setApplicationName(QStringLiteral("Planilha de Bombas"));
    installPortugueseTexts(application);

    InputQueue::install(application);
    new PlainTexts(application); // Owned by the application.
    QApplication::setStyle(new VisibleFocus);
    QApplication::setPalette(calmPalette());
    // A plain, narrow face: the grids show all their columns on a small screen.
    QFont font = QApplication::font();
    font.setFamilies({QStringLiteral("Segoe UI"), QStringLiteral("Noto Sans"), QStringLiteral("Liberation Sans"),
                      QStringLiteral("Arial"), font.family()});
    font.setPointSize(fontPoints);
    QApplication::setFont(font);
}

} // namespace platform
