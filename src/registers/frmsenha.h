#pragma once

#include "shared/SupervisorGate.h"

#include <QDialog>

#include <memory>
#include <optional>

struct Emitente;
struct Services;

namespace Ui {
class frmsenha;
}

/// Asks for the supervisor password.
class frmsenha : public QDialog
{
    Q_OBJECT

public:
    /// Shows the prompt over a window until the right password has been typed or the prompt is closed; there may be any
    /// number of tries. An error of the database is told over the window and the prompt stays. Without a window there
    /// is nothing to go back to, as at the start: the prompt closes and the error is raised.
    [[nodiscard]] static SupervisorAnswer ask(const Services& services, const Emitente& emitente, QWidget* over);

    ~frmsenha() override;

private:
    frmsenha(const Services& services, const Emitente& emitente, QWidget* over);

    /// What has been typed when Enter is pressed; nothing once the window has been closed.
    [[nodiscard]] std::optional<QString> nextTry();
    [[nodiscard]] SupervisorAnswer verifica(const QString& typed);

    std::unique_ptr<Ui::frmsenha> m_ui;
    const Services& m_services;
};
