#pragma once

#include "app/DiagnosticsLog.h"
#include "engine/AppModel.h"
#include "store/Preferences.h"
#include "support/MemorySecretStore.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>

namespace varnel::test {

/// What a model works with, in a temporary folder: preferences, data, log, secrets and an environment of the
/// test's own. Models made of it one after the other are the program started again.
struct ModelProfile
{
    explicit ModelProfile(const Clock& time)
        : clock(time)
    {}

    AppModel::Services services() const
    {
        return {.preferences = preferences,
                .clock = clock,
                .secrets = secrets,
                .log = log,
                .environment =
                    [variables = m_variables](const char* name) {
                        const auto found = variables->constFind(QByteArray(name));
                        return found == variables->constEnd() ? std::nullopt : std::optional(*found);
                    },
                .location = LibraryLocation{.url = QUrl::fromLocalFile(dataFolder())},
                .programs = programs};
    }

    QString dataFolder() const { return folder.filePath(QStringLiteral("data")); }

    /// The lines of the diagnostics log without their time stamps.
    QStringList logged() const
    {
        QFile file(log.file());
        QStringList lines;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QString& line :
                 QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
                lines.push_back(line.section(QLatin1Char(' '), 1));
        }
        return lines;
    }

    /// Leads the model to a server by its URL.
    void connectTo(const QUrl& url)
    {
        ConnectionSettings connection;
        connection.mode = ConnectionMode::Direct;
        connection.directURL = url.toString();
        preferences.setConnection(connection);
    }

private:
    // Shared, because a look-up that is slow is left behind and may outlive the profile.
    std::shared_ptr<QMap<QByteArray, QByteArray>> m_variables =
        std::make_shared<QMap<QByteArray, QByteArray>>();

public:
    const Clock& clock;
    QTemporaryDir folder;
    mutable Preferences preferences{folder.filePath(QStringLiteral("preferences.ini"))};
    DiagnosticsLog log{folder.filePath(QStringLiteral("log")), clock};
    std::shared_ptr<MemorySecretStore> secrets = std::make_shared<MemorySecretStore>();
    QMap<QByteArray, QByteArray>& environment = *m_variables;
    TunnelController::Programs programs;
};

} // namespace varnel::test
