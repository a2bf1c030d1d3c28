#pragma once

#include <QDate>
#include <QString>

#include <functional>

namespace platform {
class FlexGrid;
}

/// The movements of a product over a period, as the ledger's window lists them.
struct LedgerListing
{
    const platform::FlexGrid& grid;
    QString product;
    QDate first;
    QDate last;
    QString totalCredit;
    QString totalDebit;
};

/// Prints a listing. What it raises is told by the window.
using PrintListing = std::function<void(const LedgerListing&)>;
