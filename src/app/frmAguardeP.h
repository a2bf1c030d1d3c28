#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class frmAguardeP;
}

/// The notice that stands on the screen while the main window loads.
class frmAguardeP : public QWidget
{
    Q_OBJECT

public:
    explicit frmAguardeP(QWidget* parent = nullptr);
    ~frmAguardeP() override;

private:
    std::unique_ptr<Ui::frmAguardeP> m_ui;
};
