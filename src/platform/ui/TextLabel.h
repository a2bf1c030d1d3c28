#pragma once

#include <QLabel>

namespace platform {

/// Shows a text of the database, in one line or wrapped. A long one ends in an ellipsis and asks for no more room than
/// some forty letters, so that it never widens its window, and one of megabytes costs no more than a screenful.
class TextLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRect room() const;
    [[nodiscard]] QString shown() const;
};

} // namespace platform
