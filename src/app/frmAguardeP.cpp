#include "app/frmAguardeP.h"
#include "ui_frmAguardeP.h"

frmAguardeP::frmAguardeP(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen)
    , m_ui(std::make_unique<Ui::frmAguardeP>())
{
    m_ui->setupUi(this);
}

frmAguardeP::~frmAguardeP() = default;
