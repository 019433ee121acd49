#include "ui/ConnectionEditor.h"

#include "app/DiagnosticsLog.h"

#include <QDesktopServices>
#include <QFileInfo>

namespace varnel {

namespace {

/// The account of the one password that is saved for ssh.
const QString passwordAccount = QStringLiteral("varnel.ssh.password");

constexpr qsizetype longestText = 400;

/// What is typed for a URL, with the scheme that people leave out.
QString withScheme(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed.contains(QLatin1String("://")))
        return text;
    return QStringLiteral("http://") + trimmed;
}

} // namespace

ConnectionEditor::ConnectionEditor(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_typed(app.connection())
{
    connect(&app, &AppModel::connectionChanged, this, [this] {
        m_typed = m_app.connection();
        Q_EMIT changed();
    });
    connect(&app, &AppModel::connectionReportChanged, this, &ConnectionEditor::reportChanged);
    connect(&app, &AppModel::connectionDetailChanged, this, &ConnectionEditor::reportChanged);
}

QString ConnectionEditor::report() const
{
    return m_app.connectionReport().left(longestText).simplified();
}

QString ConnectionEditor::detail() const
{
    return m_app.connectionDetail().left(longestText).simplified();
}

void ConnectionEditor::setMode(Mode mode)
{
    if (mode == this->mode())
        return;
    m_typed.mode = static_cast<ConnectionMode>(mode);
    Q_EMIT changed();
    apply();
}

void ConnectionEditor::change(QString& member, const QString& text)
{
    if (member == text)
        return;
    member = text;
    Q_EMIT changed();
}

void ConnectionEditor::setSshHost(const QString& text)
{
    change(m_typed.sshHost, text);
}

void ConnectionEditor::setSshUser(const QString& text)
{
    change(m_typed.sshUser, text);
}

void ConnectionEditor::setLocalPort(const QString& text)
{
    bool isNumber = false;
    const qint64 port = text.trimmed().toLongLong(&isNumber);
    if (!isNumber || port == m_typed.localPort)
        return;
    m_typed.localPort = port;
    Q_EMIT changed();
}

void ConnectionEditor::setRemoteBind(const QString& text)
{
    change(m_typed.remoteBind, text);
}

void ConnectionEditor::setUrl(const QString& text)
{
    change(m_typed.directURL, text);
}

void ConnectionEditor::setIdentityFile(const QString& text)
{
    change(m_typed.sshIdentityFile, text);
}

void ConnectionEditor::chooseIdentityFile(const QUrl& file)
{
    if (!file.isLocalFile())
        return;
    setIdentityFile(file.toLocalFile());
    apply();
}

void ConnectionEditor::apply()
{
    setUrl(withScheme(m_typed.directURL));
    if (m_typed != m_app.connection())
        m_app.setConnection(ConnectionSettings(m_typed));
}

void ConnectionEditor::test()
{
    apply();
    m_app.checkConnection();
}

void ConnectionEditor::open()
{
    apply();
    m_app.openConnection();
}

void ConnectionEditor::openLogs() const
{
    const DiagnosticsLog& log = m_app.diagnosticsLog();
    const QString file = log.file();
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo::exists(file) ? file : log.folder()));
}

void ConnectionEditor::readPassword()
{
    m_password = followPassword();
}

void ConnectionEditor::savePassword(const QString& password)
{
    if (!password.isEmpty())
        m_password = followSaving(password);
}

void ConnectionEditor::clearPassword()
{
    m_password = followClearing();
}

Task<bool> ConnectionEditor::lookForPassword()
{
    try {
        co_return co_await m_app.credentials().holds(passwordAccount);
    } catch (const Cancelled&) {
        co_return false;
    }
}

Task<void> ConnectionEditor::followPassword()
{
    showPassword(co_await lookForPassword(), {});
}

Task<void> ConnectionEditor::followSaving(QString password)
{
    QString problem;
    try {
        co_await m_app.credentials().saveExactly(passwordAccount, std::move(password));
    } catch (const Cancelled&) {
        co_return;
    } catch (const Error& error) {
        problem = error.message();
    }
    // What is there now, also after a failure: the old one may be gone.
    showPassword(co_await lookForPassword(), problem);
}

Task<void> ConnectionEditor::followClearing()
{
    QString problem;
    try {
        if (!co_await m_app.credentials().remove(passwordAccount))
            problem = tr("The password could not be removed from the Keychain.");
    } catch (const Cancelled&) {
        co_return;
    }
    showPassword(co_await lookForPassword(), problem);
}

void ConnectionEditor::showPassword(bool saved, const QString& problem)
{
    m_passwordSaved = saved;
    m_passwordProblem = problem;
    Q_EMIT passwordChanged();
}

} // namespace varnel
