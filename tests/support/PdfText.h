#pragma once

#include "support/OutsideProgram.h"

#include <QFile>
#include <QRectF>
#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

// What a reader that we did not write finds in a PDF file (poppler's command line tools).
namespace support {

struct PdfWord
{
    int page = 0; ///< From 1.
    QRectF box;   ///< Points from the page's upper left corner.
    QString text;
};

inline bool hasPdfTools()
{
    return !outsideProgram(QStringLiteral("pdftotext")).isEmpty();
}

inline QString runPdfTool(const QString& tool, const QStringList& arguments)
{
    const Outcome outcome = runOutside(tool, arguments);
    if (!outcome.succeeded())
        qFatal("%s failed", qPrintable(tool));
    return QString::fromUtf8(outcome.output);
}

/// Words with their places, in the order of the pages.
inline QList<PdfWord> pdfWords(const QString& file)
{
    QXmlStreamReader xml(runPdfTool(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), file, QStringLiteral("-")}));
    QList<PdfWord> words;
    int page = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QStringLiteral("page"))
            ++page;
        if (xml.name() != QStringLiteral("word"))
            continue;
        const auto at = [&](const char* name) { return xml.attributes().value(QLatin1String(name)).toDouble(); };
        const QRectF box(QPointF(at("xMin"), at("yMin")), QPointF(at("xMax"), at("yMax")));
        words.append({page, box, xml.readElementText()});
    }
    if (xml.hasError())
        qFatal("pdftotext -bbox: %s", qPrintable(xml.errorString()));
    return words;
}

/// Every page is A4, every font embedded and readable as text, no word over another or outside the paper's margins.
inline void checkPaper(const QString& file, const QList<PdfWord>& words)
{
    const QString info = runPdfTool(QStringLiteral("pdfinfo"), {file});
    QVERIFY2(info.contains(QStringLiteral("(A4)")), qPrintable(info));
    const QStringList fonts = runPdfTool(QStringLiteral("pdffonts"), {file}).split(u'\n', Qt::SkipEmptyParts).mid(2);
    QVERIFY(!fonts.isEmpty());
    const QRegularExpression embeddedWithText(QStringLiteral(" yes +(yes|no) +yes +\\d+ +\\d+$"));
    for (const QString& font : fonts) // columns: emb sub uni object ID
        QVERIFY2(font.contains(embeddedWithText), qPrintable(font));

    const QRectF paper = QRectF(0, 0, 595, 842).adjusted(14, 14, -14, -14);
    for (qsizetype i = 0; i < words.size(); ++i) {
        QVERIFY2(paper.contains(words[i].box), qPrintable(words[i].text));
        for (qsizetype j = i + 1; j < words.size() && words[j].page == words[i].page; ++j) {
            const QRectF common = words[i].box & words[j].box;
            // Boxes are as high as a line, so neighbours in a column touch; letters that overlap share far more.
            QVERIFY2(common.width() < 1 || common.height() < 2, qPrintable(words[i].text + u' ' + words[j].text));
        }
    }
}

} // namespace support
