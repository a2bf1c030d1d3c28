#pragma once

#include <QDate>
#include <QString>

#include <array>

namespace platform {

/// A date dd/mm/aaaa while its digits are being typed: any order of typing is allowed and nothing is judged before
/// result(), so that 31/12 can be typed over a day of February.
class DateTyping
{
public:
    enum Section { Day, Month, Year };

    DateTyping(QDate start, Section section);

    /// The section in which a character position of the shown text lies.
    [[nodiscard]] static Section sectionAt(int position);

    void digit(int value);
    void separator(); ///< Typed after a section that was full, it has already had its effect.
    void backspace();
    void moveTo(Section section);
    void next();
    void previous();

    [[nodiscard]] QString text() const;
    [[nodiscard]] int selectionStart() const;  ///< The caret when nothing is selected.
    [[nodiscard]] int selectionLength() const; ///< The whole section until its first digit comes.

    /// The start date when what is typed is no date, as 31/11. A day that was not typed, and that a typed month or year
    /// does not have, becomes the last one. Two-digit years are 1930 to 2029.
    [[nodiscard]] QDate result() const;
    /// Whether result() is another date than the one typed.
    [[nodiscard]] bool isImpossible() const;

private:
    [[nodiscard]] QString shown(Section section) const;
    [[nodiscard]] int year() const;

    QDate m_start;
    Section m_section;
    std::array<QString, 3> m_digits;
    bool m_dayTyped = false;
    bool m_fresh = true;  ///< The next digit replaces the section.
    bool m_moved = false; ///< By itself, because the section was full.
};

} // namespace platform
