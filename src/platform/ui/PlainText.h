#pragma once

#include <QObject>
#include <QString>

class QApplication;

// Texts of the database on the screen: they are shown as they are, never interpreted, and a screenful of them at most.
namespace platform {

/// The text, or the beginning of one that is longer than `most` letters, with an ellipsis.
[[nodiscard]] QString limited(const QString& text, qsizetype most);
/// What would break or bend a line becomes a blank.
[[nodiscard]] QString oneLine(QString text);
/// What a tool tip gets so that it shows the text itself, with its lines, and wraps what is long.
[[nodiscard]] QString toolTipOf(const QString& text);

/// Letters of one text that a label, list or cell shows at most.
inline constexpr qsizetype LongestShown = 1000;

/// Has every label and every tool tip of the application take its text as it is; left alone they guess whether it is
/// HTML, and one with an image in it would load a file or call out.
class PlainTexts : public QObject
{
public:
    explicit PlainTexts(QApplication& application);
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace platform
