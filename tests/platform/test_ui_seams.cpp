#include "platform/ado/Error.h"
#include "platform/print/Printers.h"
#include "platform/ui/Application.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/ComboBox.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/PlainText.h"
#include "platform/ui/RealSeams.h"
#include "platform/ui/TextLabel.h"
#include "platform/ui/WaitCursor.h"
#include "platform/ui/WindowPlacement.h"
#include "platform/vb/Error.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCalendarWidget>
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDir>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLabel>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMenu>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopedValueRollback>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>
#include <QTranslator>
#include <QWheelEvent>

#include <clocale>
#include <memory>
#include <new>
#include <stdexcept>

using platform::DatePicker;
using platform::MsgBoxResult;

namespace {

class NotedMessages : public platform::Messages
{
public:
    QStringList texts;
    bool broken = false;
    MsgBoxResult MsgBox(const QString& prompt, int, const QString&) override
    {
        if (broken)
            throw std::runtime_error("no box");
        texts.append(prompt);
        return MsgBoxResult::Ok;
    }
};

/// Widget that notes which keys come up to it.
class Window : public QWidget
{
public:
    /// On the screen and active.
    void open()
    {
        show();
        activateWindow();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("the window does not become active");
    }
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override { keys.append(event->key()); }
};

/// As the program calls them: with the default arguments of the interface.
platform::Messages& messageBoxes()
{
    static platform::MessageBoxes boxes;
    return boxes;
}

/// Is asked for every text of the toolkit and notes those that stay as they are. "PDF" is in the catalogue with itself.
class MissingTexts : public QTranslator
{
public:
    MissingTexts()
    {
        if (!m_catalogue.load(QStringLiteral("qtbase_pt_BR"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            qFatal("no catalogue");
        QCoreApplication::installTranslator(this);
    }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* comment, int n) const override
    {
        if (m_isAsking)
            return {};
        ++m_asked;
        const QScopedValueRollback asking(m_isAsking, true);
        if (QCoreApplication::translate(context, text, comment, n) == QString::fromUtf8(text) &&
            m_catalogue.translate(context, text, comment, n).isEmpty())
            m_missing.insert(QString::fromUtf8(context) + QLatin1Char(':') + QString::fromUtf8(text));
        return {};
    }
    int asked() const { return m_asked; }
    QStringList missing() const { return m_missing.values(); }

private:
    QTranslator m_catalogue;
    mutable bool m_isAsking = false;
    mutable int m_asked = 0;
    mutable QSet<QString> m_missing;
};

const QDate StartDate(2026, 2, 15);

} // namespace

class TestUiSeams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { platform::prepareApplication(*qApp); }

    void application()
    {
        QCOMPARE(QString::fromUtf8(std::setlocale(LC_NUMERIC, nullptr)), QStringLiteral("C"));
        QCOMPARE(QLocale().name(), QStringLiteral("pt_BR"));
        QCOMPARE(QApplication::applicationName(), QStringLiteral("Planilha de Bombas"));
        QMessageBox box;
        QCOMPARE(box.addButton(QMessageBox::Yes)->text(), QStringLiteral("&Sim"));
        QCOMPARE(box.addButton(QMessageBox::Cancel)->text(), QStringLiteral("Cancelar"));
    }

    void everyTextOfTheToolkitIsPortuguese()
    {
        const MissingTexts texts;
        QPrinter printer;
        QPrintDialog print(&printer);
        print.show();
        QFileDialog file(nullptr, {}, QDir::tempPath());
        file.setOption(QFileDialog::DontUseNativeDialog);
        file.setAcceptMode(QFileDialog::AcceptSave);
        file.show();
        QLineEdit line;
        const std::unique_ptr<QMenu> menu(line.createStandardContextMenu());
        QMessageBox box(QMessageBox::Warning, {}, {}, QMessageBox::StandardButtons(0x0FFFFC00));
        QColorDialog color;
        color.setOption(QColorDialog::DontUseNativeDialog);
        QCoreApplication::processEvents();
        QVERIFY2(texts.asked() > 100, qPrintable(QString::number(texts.asked())));
        QCOMPARE(texts.missing().join(u'\n'), QString());
        QCOMPARE(QCoreApplication::translate("QPrintDialog",
                                             "File %1 is not writable.\nPlease choose a different file name."),
                 QStringLiteral("O arquivo %1 não é gravável.\nEscolha um nome diferente."));
    }

    void messageBox_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("icon");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<int>("key");
        QTest::addColumn<MsgBoxResult>("result");
        const QStringList ok{QStringLiteral("OK")};
        const QStringList okCancel{QStringLiteral("OK"), QStringLiteral("Cancelar")};
        const QStringList yesNo{QStringLiteral("&Sim"), QStringLiteral("&Não")};
        const auto row = [](const char* name, int style, int icon, const QStringList& buttons, int key,
                            MsgBoxResult result) { QTest::newRow(name) << style << icon << buttons << key << result; };
        row("plain, Enter", 0, QMessageBox::NoIcon, ok, Qt::Key_Return, MsgBoxResult::Ok);
        row("plain, Escape", 0, QMessageBox::NoIcon, ok, Qt::Key_Escape, MsgBoxResult::Ok);
        row("critical", 16, QMessageBox::Critical, ok, Qt::Key_Return, MsgBoxResult::Ok);
        row("information", 64, QMessageBox::Information, ok, Qt::Key_Return, MsgBoxResult::Ok);
        row("OK/Cancel, Enter", 49, QMessageBox::Warning, okCancel, Qt::Key_Return, MsgBoxResult::Ok);
        row("OK/Cancel, Escape", 49, QMessageBox::Warning, okCancel, Qt::Key_Escape, MsgBoxResult::Cancel);
        row("yes/no, S", 36, QMessageBox::Question, yesNo, Qt::Key_S, MsgBoxResult::Yes);
        row("yes/no, N", 52, QMessageBox::Warning, yesNo, Qt::Key_N, MsgBoxResult::No);
        row("yes/no, Enter", 4, QMessageBox::NoIcon, yesNo, Qt::Key_Return, MsgBoxResult::Yes);
        row("yes/no, Escape", 4, QMessageBox::NoIcon, yesNo, Qt::Key_Escape, MsgBoxResult::No);
        row("sum of two icons", 84, QMessageBox::Warning, yesNo, Qt::Key_Return, MsgBoxResult::Yes);
        row("second is default", 4 + 256, QMessageBox::NoIcon, yesNo, Qt::Key_Return, MsgBoxResult::No);
    }
    void messageBox()
    {
        QFETCH(int, style);
        QFETCH(int, icon);
        QFETCH(QStringList, buttons);
        QFETCH(int, key);
        QFETCH(MsgBoxResult, result);
        Window window;
        window.open();
        QTimer::singleShot(0, &window, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            QVERIFY(QTest::qWaitForWindowActive(box));
            // Answered first, so that a failure below leaves no box open.
            QTest::keyClick(box->window()->focusWidget(), static_cast<Qt::Key>(key));
            QCOMPARE(box->parentWidget(), static_cast<QWidget*>(&window));
            QCOMPARE(box->windowTitle(), QStringLiteral("Planilha de Bombas"));
            QCOMPARE(box->text(), QStringLiteral("Linha <b>um</b> & \nlinha dois"));
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(static_cast<int>(box->icon()), icon);
            QStringList texts;
            for (const QAbstractButton* const button : box->buttons())
                texts.append(button->text());
            QCOMPARE(texts, buttons);
        });
        QCOMPARE(messageBoxes().MsgBox(QStringLiteral("Linha <b>um</b> & \r\nlinha dois"), style), result);
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }

    void messageBoxOutlivedByNobody()
    {
        auto* const window = new Window;
        window->open();
        QTimer::singleShot(20, qApp, [window] { delete window; });
        QCOMPARE(messageBoxes().MsgBox(QStringLiteral("?"), platform::vbYesNo), MsgBoxResult::No);
    }

    void boundary_data()
    {
        QTest::addColumn<std::function<void()>>("operation");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("noted"); // What is noted where it is passed over; empty where it never is.
        const auto row = [](const char* name, std::function<void()> operation, const char16_t* text,
                            const char16_t* noted) {
            QTest::newRow(name) << std::move(operation) << QString::fromUtf16(text) << QString::fromUtf16(noted);
        };
        row(
            "conversion", [] { throw vb::Error(vb::Error::TypeMismatch); },
            u"Erro em tempo de execução '13':\n\nTipos incompatíveis", u"13 Tipos incompatíveis");
        row(
            "source",
            [] {
                throw ado::Error(1146, QStringLiteral("Não há x"), QStringLiteral("Select x"), QStringLiteral("42S02"));
            },
            u"Erro em tempo de execução '1146':\n\nNão há x", u"1146 [42S02] Não há x Select x");
        row(
            "password",
            [] { throw ado::Error(1064, QStringLiteral("near 'b'"), QStringLiteral("nome = 'S' and senh = 'a'b';")); },
            u"Erro em tempo de execução '1064':\n\nnear 'b'", u"1064 []  nome = 'S' and senh = '...");
        row(
            "printer", [] { throw platform::PrintError(QStringLiteral("A fila não existe.")); },
            u"Erro em tempo de execução '482':\n\nA fila não existe.", u"A fila não existe.");
        row(
            "memory", [] { throw std::bad_alloc(); }, u"Erro em tempo de execução '7':\n\nMemória insuficiente", u"");
        row(
            "other", [] { throw std::runtime_error("abc"); }, u"Erro em tempo de execução '51':\n\nErro interno: abc",
            u"");
        row(
            "no exception class", [] { throw 5; }, u"Erro em tempo de execução '51':\n\nErro interno", u"");
    }
    void boundary()
    {
        QFETCH(std::function<void()>, operation);
        QFETCH(QString, text);
        QFETCH(QString, noted);
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        NotedMessages messages;
        QVERIFY(!platform::tellAndStay(messages, operation));
        QVERIFY(!platform::orEndProgram(messages, operation));
        QCOMPARE(messages.texts, (QStringList{text, text}));
        QVERIFY(platform::tellAndStay(messages, [] {}));
        for (const auto ignore : {platform::carryOn, platform::leaveQuietly}) {
            if (noted.isEmpty()) {
                QVERIFY(!platform::tellAndStay(messages, [&] { ignore(operation); }));
                continue;
            }
            QVERIFY(!ignore(operation)); // By default without a line.
            QLoggingCategory::setFilterRules(QStringLiteral("planilha.erros=true"));
            QTest::ignoreMessage(QtWarningMsg, noted.toUtf8().constData());
            QVERIFY(!ignore(operation));
            QLoggingCategory::setFilterRules(QString());
        }
        messages.broken = true;
        QVERIFY(!platform::tellAndStay(messages, operation));
    }

    void eventsRunNowAndThen()
    {
        platform::ApplicationEvents events;
        int ticks = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&] { ++ticks; });
        timer.start(0);
        QElapsedTimer spent;
        spent.start();
        for (int call = 0; call < 100'000; ++call)
            events.DoEvents();
        QVERIFY2(spent.elapsed() < 1000, qPrintable(QString::number(spent.elapsed())));
        QVERIFY(QTest::qWaitFor([&] { return events.DoEvents(), ticks > 0; }, 1000));
    }

    void typedDateCountsWhenComplete_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("last");
        QTest::addColumn<QDate>("expected");
        QTest::newRow("Enter") << "22112026" << int(Qt::Key_Return) << QDate(2026, 11, 22);
        QTest::newRow("with slashes") << "22/11/2026" << int(Qt::Key_Return) << QDate(2026, 11, 22);
        QTest::newRow("day beyond the month shown") << "31122025" << int(Qt::Key_Return) << QDate(2025, 12, 31);
        QTest::newRow("one-digit parts, short year") << "4/527" << int(Qt::Key_Return) << QDate(2027, 5, 4);
        QTest::newRow("no such day in the month shown") << "31" << int(Qt::Key_Tab) << StartDate;
        QTest::newRow("no such day in the month typed") << "31112025" << int(Qt::Key_Return) << StartDate;
        QTest::newRow("no date") << "00" << int(Qt::Key_Tab) << StartDate;
        QTest::newRow("the same date") << "15022026" << int(Qt::Key_Return) << StartDate;
    }
    void typedDateCountsWhenComplete()
    {
        QFETCH(QString, typed);
        QFETCH(int, last);
        QFETCH(QDate, expected);
        Window window;
        auto* const picker = new DatePicker(&window);
        auto* const next = new QPushButton(&window);
        next->move(0, 60);
        picker->setValue(StartDate);
        window.open();
        picker->setFocus(Qt::TabFocusReason);
        const QSignalSpy changes(picker, &DatePicker::Change);
        QTest::keyClicks(picker, typed);
        QCOMPARE(changes.size(), 0);
        QTest::keyClick(picker, static_cast<Qt::Key>(last));
        QCOMPARE(picker->Value(), expected);
        QCOMPARE(changes.size(), expected == StartDate ? 0 : 1);
        if (last == Qt::Key_Return)
            QCOMPARE(window.keys, QList<int>{last});
        QTest::keyClick(picker, Qt::Key_Return);
        QCOMPARE(changes.size(), expected == StartDate ? 0 : 1);
    }

    void datePickerKeysAndProgram()
    {
        Window window;
        auto* const picker = new DatePicker(&window);
        window.open();
        picker->setFocus();
        const QSignalSpy changes(picker, &DatePicker::Change);
        picker->setValue(QDate(2026, 3, 1));
        picker->setValue(QDate(2026, 3, 1));
        QCOMPARE(changes.size(), 1);
        {
            const QSignalBlocker blocked(picker);
            picker->setValue(QDate(2026, 4, 1));
        }
        QTest::keyClick(picker, Qt::Key_Return);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(picker->text(), QStringLiteral("01/04/2026"));
        QTest::keyClick(picker, Qt::Key_F4);
        QTest::keyClick(picker, Qt::Key_Escape);
        QCOMPARE(window.keys, (QList<int>{Qt::Key_Return, Qt::Key_F4, Qt::Key_Escape}));
        QVERIFY(!picker->calendarWidget()->isVisible());
        QTest::keyClick(picker, Qt::Key_Home);
        QTest::keyClick(picker, Qt::Key_Right);
        QTest::keyClick(picker, Qt::Key_Up); // the month
        QCOMPARE(picker->Value(), QDate(2026, 5, 1));
        QCOMPARE(changes.size(), 2);
        // The day that was not typed follows the month, and it is said.
        picker->setValue(QDate(2026, 5, 31));
        QTest::keyClick(picker, Qt::Key_Home);
        QTest::keyClick(picker, Qt::Key_Right);
        QTest::keyClicks(picker, QStringLiteral("04"));
        QTest::keyClick(picker, Qt::Key_Return);
        QCOMPARE(picker->text(), QStringLiteral("30/04/2026"));
        QVERIFY(QToolTip::text().contains(QStringLiteral("31/04/2026 não existe: fica 30/04/2026")));
        QTest::keyClick(picker, Qt::Key_Down, Qt::AltModifier);
        QVERIFY(QTest::qWaitFor([&] { return picker->calendarWidget()->isVisible(); }));
        QCOMPARE(picker->calendarWidget()->locale().name(), QStringLiteral("pt_BR"));
        picker->calendarWidget()->window()->close();
    }

    void storedTextsAreText()
    {
        const QString stored = QStringLiteral("<img src='http://x/'>\nfim");
        Window window;
        auto* const label = new QLabel(stored, &window);
        window.setToolTip(stored);
        window.open();
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QHelpEvent help(QEvent::ToolTip, {}, window.mapToGlobal(QPoint()));
        QApplication::sendEvent(&window, &help);
        QCOMPARE(QToolTip::text(), platform::toolTipOf(stored));
        QTextDocument shown;
        shown.setHtml(platform::toolTipOf(stored));
        QCOMPARE(shown.toPlainText(), stored);
        // Megabytes cost no more than a screenful, and no text widens its window.
        const QString megabytes(50'000'000, u'<');
        QVERIFY(platform::toolTipOf(megabytes).size() < 10'000);
        for (const bool wraps : {false, true}) {
            platform::TextLabel text;
            text.setTextFormat(Qt::PlainText);
            text.setWordWrap(wraps);
            text.setText(megabytes);
            text.show();
            QVERIFY(QTest::qWaitForWindowExposed(&text));
            QVERIFY(text.sizeHint().width() < 600 && text.minimumSizeHint().width() == 0);
            QVERIFY(!text.grab().isNull());
        }
    }

    void filteredBox()
    {
        // Digits pass, a point becomes a comma, everything else is dropped, Enter and Backspace pass.
        QList<int> codes;
        const auto filter = [&codes](int code) {
            codes.append(code);
            if (code == '.')
                return int(',');
            return code == 8 || code == 13 || code == ',' || (code >= '0' && code <= '9') ? code : 0;
        };
        Window window;
        auto* const box = new QLineEdit(&window);
        new platform::KeyFilter(box, filter);
        window.show();
        const QSignalSpy entered(box, &QLineEdit::returnPressed);
        QTest::keyClicks(box, QStringLiteral("a1b.2%"));
        QCOMPARE(box->text(), QStringLiteral("1,2"));
        QTest::keyClick(box, Qt::Key_Backspace);
        QTest::keyClick(box, Qt::Key_Period, Qt::KeypadModifier);
        QCOMPARE(codes.last(), int(','));
        QCOMPARE(box->text(), QStringLiteral("1,,"));
        QTest::keyClick(box, Qt::Key_Return);
        QCOMPARE(entered.size(), 1);
        QVERIFY(codes.contains(8) && codes.contains(13));
        QTest::keyClick(box, Qt::Key_F4);
        QVERIFY(window.keys.contains(Qt::Key_F4));

        codes.clear();
        QApplication::clipboard()->setText(QStringLiteral("R$ 3.45\n"));
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(box->text(), QStringLiteral("3,45"));
        QCOMPARE(codes.size(), 7);
        QApplication::clipboard()->setText(QStringLiteral("R$ 1.234.567,50"));
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(box->text(), QStringLiteral("1234567,50")); // a figure with thousands points stays that figure
        QApplication::clipboard()->setText(QStringLiteral("R$ 3.45\n"));
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClick(box, Qt::Key_Left);
        QTest::keyClick(box, Qt::Key_Delete);
        QCOMPARE(box->text(), QStringLiteral("3,4"));

        QContextMenuEvent wanted(QContextMenuEvent::Mouse, QPoint(3, 3), box->mapToGlobal(QPoint(3, 3)));
        QApplication::sendEvent(box, &wanted);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        for (QAction* const action : menu->actions()) {
            if (action->text().remove(QLatin1Char('&')).startsWith(QStringLiteral("Colar")))
                action->trigger();
        }
        menu->close();
        QCOMPARE(box->text(), QStringLiteral("3,43,45"));

        // What a filter drops reaches neither the box nor the window, Enter and Backspace included.
        new platform::KeyFilter(box, [](int) { return 0; });
        window.keys.clear();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Backspace, Qt::Key_5})
            QTest::keyClick(box, key);
        QCOMPARE(box->text(), QStringLiteral("3,43,45"));
        QCOMPARE(entered.size(), 1);
        QVERIFY(window.keys.isEmpty());
    }

    void enterMovesOn()
    {
        Window window;
        auto* const box = new QLineEdit(&window);
        auto* const list = new QComboBox(&window);
        auto* const last = new QPushButton(&window);
        platform::EnterMovesOn mover;
        mover.watch(box);
        mover.watch(list);
        window.open();
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Enter);
        QVERIFY(list->hasFocus());
        QTest::keyClick(list, Qt::Key_Return);
        QVERIFY(last->hasFocus());
        QVERIFY(window.keys.isEmpty());
    }

    void dropDownListTellsEveryChoice()
    {
        Window window;
        platform::ComboBox list(&window);
        QLineEdit other(&window);
        list.addItems({QStringLiteral("TANQUE_1"), QStringLiteral("TANQUE_2")});
        window.open();
        const QSignalSpy chosen(&list, &platform::ComboBox::Click);
        const auto chooseInTheList = [&list](std::initializer_list<Qt::Key> keys) {
            list.setFocus();
            list.showPopup();
            QVERIFY(QTest::qWaitFor([&] { return list.view()->isVisible(); }));
            for (const Qt::Key key : keys)
                QTest::keyClick(list.view(), key);
            QVERIFY(QTest::qWaitFor([&] { return !list.view()->isVisible(); }));
        };
        const auto turnTheWheel = [&list] {
            QWheelEvent turn(QPointF(5, 5), list.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, {},
                             Qt::NoScrollPhase, false);
            QApplication::sendEvent(&list, &turn);
        };
        chooseInTheList({Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(chosen.size(), 1);
        list.setCurrentIndex(0); // the program's
        QCOMPARE(chosen.size(), 2);
        chooseInTheList({Qt::Key_Return}); // the same again
        QCOMPARE(chosen.size(), 3);
        other.setFocus();
        turnTheWheel(); // past it
        QCOMPARE(list.currentIndex(), 0);
        QVERIFY(other.hasFocus());
        list.setFocus();
        turnTheWheel();
        QCOMPARE(list.currentIndex(), 1);
        QCOMPARE(chosen.size(), 4);
    }

    void hourglassOnlyForLongWork()
    {
        {
            const platform::WaitCursor wait;
            QTest::qWait(50);
            QVERIFY(!QGuiApplication::overrideCursor());
            QVERIFY(QTest::qWaitFor([&] { return QGuiApplication::overrideCursor() != nullptr; }, 2000));
        }
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void windowPlacement()
    {
        const QTemporaryDir folder;
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
        qunsetenv("PLANILHA_NO_PLACEMENT");
        const auto shown = [](const QRect& placed, bool sliding = false) {
            QWidget window;
            window.setObjectName(QStringLiteral("frmteste"));
            window.setGeometry(50, 60, 300, 200);
            new platform::WindowPlacement(&window);
            window.show();
            const QRect found(window.pos(), window.size());
            window.resize(placed.size());
            window.move(placed.topLeft());
            if (sliding) {
                platform::WindowPlacement::keep(window);
                window.move(700, 500);
            }
            window.close();
            return found;
        };
        const QRect first(110, 90, 420, 310);
        QCOMPARE(shown(first).size(), QSize(300, 200));
        QCOMPARE(shown(QRect(5000, 5000, 100, 100)), first); // off every screen: not remembered
        QCOMPARE(shown(QRect(20, 30, 350, 250), true), first);
        QCOMPARE(shown(first), QRect(20, 30, 350, 250)); // as before it slid away
        qputenv("PLANILHA_NO_PLACEMENT", "1");
        QCOMPARE(shown(first).size(), QSize(300, 200));
    }
};

QTEST_MAIN(TestUiSeams)
#include "test_ui_seams.moc"
