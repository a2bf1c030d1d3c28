#pragma once

#include <QDialog>

#include <exception>
#include <memory>

class SupervisorGate;
struct Emitente;
struct Services;

namespace Ui {
class frmsenha;
}

/// Asks for the supervisor password. The gate's denial flag is its only result.
class frmsenha : public QDialog
{
    Q_OBJECT

public:
    /// What happens to an error of the database while the password is checked: the window tells it and stays, or it
    /// closes and `rethrowError` raises it again, for the start-up, which ends the program.
    enum class OnError { TellAndStay, CloseAndRethrow };

    frmsenha(const Services& services, SupervisorGate& gate, const Emitente& emitente, OnError onError,
             QWidget* parent = nullptr);
    ~frmsenha() override;

    void rethrowError() const;

    void reject() override;

private:
    void verifica();
    void procura();

    std::unique_ptr<Ui::frmsenha> m_ui;
    const Services& m_services;
    SupervisorGate& m_gate;
    OnError m_onError;
    std::exception_ptr m_error;
};
