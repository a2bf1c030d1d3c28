#pragma once

#include <QTranslator>

namespace platform {

/// The toolkit's own texts that the operator meets, in Portuguese: button texts, edit menus and the print dialogs.
/// Made in memory, so that no catalogue has to be installed beside the program.
class PortugueseTexts : public QTranslator
{
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                                    int n = -1) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace platform
