#pragma once

#include "base/Task.h"
#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// How the server is reached, while it is being typed. What is typed is the connection only when it is
/// applied: a connection ends whenever its settings change, which must not happen with every letter.
class ConnectionEditor : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(Mode mode READ mode WRITE setMode NOTIFY changed)
    Q_PROPERTY(QString sshHost READ sshHost WRITE setSshHost NOTIFY changed)
    Q_PROPERTY(QString sshUser READ sshUser WRITE setSshUser NOTIFY changed)
    Q_PROPERTY(QString localPort READ localPort WRITE setLocalPort NOTIFY changed)
    Q_PROPERTY(QString remoteBind READ remoteBind WRITE setRemoteBind NOTIFY changed)
    Q_PROPERTY(QString url READ url WRITE setUrl NOTIFY changed)
    Q_PROPERTY(QString identityFile READ identityFile WRITE setIdentityFile NOTIFY changed)
    Q_PROPERTY(bool passwordSaved READ passwordSaved NOTIFY passwordChanged)
    Q_PROPERTY(QString passwordProblem READ passwordProblem NOTIFY passwordChanged)
    Q_PROPERTY(QString report READ report NOTIFY reportChanged)
    Q_PROPERTY(QString detail READ detail NOTIFY reportChanged)

public:
    enum Mode { ThisComputer, Tunnel, Url };
    Q_ENUM(Mode)

    /// The model outlives the object.
    explicit ConnectionEditor(AppModel& app, QObject* parent = nullptr);
    static ConnectionEditor* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<ConnectionEditor>(engine);
    }

    Mode mode() const { return static_cast<Mode>(m_typed.mode); }
    const QString& sshHost() const { return m_typed.sshHost; }
    const QString& sshUser() const { return m_typed.sshUser; }
    QString localPort() const { return QString::number(m_typed.localPort); }
    const QString& remoteBind() const { return m_typed.remoteBind; }
    const QString& url() const { return m_typed.directURL; }
    const QString& identityFile() const { return m_typed.sshIdentityFile; }
    /// Of the last look; see readPassword().
    bool passwordSaved() const { return m_passwordSaved; }
    /// Why the password could not be saved or removed; empty if it could.
    const QString& passwordProblem() const { return m_passwordProblem; }
    /// The model's texts, cut to what a screen can show.
    QString report() const;
    QString detail() const;

    /// Applies at once: there is nothing to type.
    void setMode(Mode mode);
    void setSshHost(const QString& text);
    void setSshUser(const QString& text);
    /// A text that is no number changes nothing.
    void setLocalPort(const QString& text);
    void setRemoteBind(const QString& text);
    void setUrl(const QString& text);
    void setIdentityFile(const QString& text);
    Q_INVOKABLE void chooseIdentityFile(const QUrl& file);

    /// Makes what is typed the connection. A URL without a scheme gets one: "gpu:11434" becomes
    /// "http://gpu:11434".
    Q_INVOKABLE void apply();
    /// Applies, then asks the server whether it is there.
    Q_INVOKABLE void test();
    /// Applies, then opens the tunnel where there is one, and asks the server.
    Q_INVOKABLE void open();
    Q_INVOKABLE void openLogs() const;

    /// Looks whether a password is saved; may ask the user to unlock the keyring.
    Q_INVOKABLE void readPassword();
    /// Saves the password exactly as it is typed; an empty one does nothing.
    Q_INVOKABLE void savePassword(const QString& password);
    Q_INVOKABLE void clearPassword();

Q_SIGNALS:
    void changed();
    void passwordChanged();
    void reportChanged();

private:
    void change(QString& member, const QString& text);
    Task<void> followPassword();
    Task<void> followSaving(QString password);
    Task<void> followClearing();
    Task<bool> lookForPassword();
    void showPassword(bool saved, const QString& problem);

    AppModel& m_app;
    ConnectionSettings m_typed;
    bool m_passwordSaved = false;
    QString m_passwordProblem;
    // Last, so that it is gone before anything it uses.
    Task<void> m_password;
};

} // namespace varnel
