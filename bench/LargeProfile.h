// A model on a large profile, for the benchmarks, and how long its thread is busy at a stretch.
#pragma once

#include "Measure.h"
#include "SampleConversations.h"

#include "app/DiagnosticsLog.h"
#include "engine/AppModel.h"
#include "store/Preferences.h"
#include "store/SessionStore.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

namespace varnel::bench {

class NoSecrets final : public SecretStore
{
protected:
    std::optional<QByteArray> find(const QString&, Unlocking) override { return std::nullopt; }
    void add(const QString&, const QByteArray&) override {}
    void erase(const QString&) override {}
};

/// Ticks as often as the event loop lets it, and keeps the longest wait.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout([this] { look(); });
        m_timer.start(1);
    }
    /// Milliseconds since the last reset.
    double longest()
    {
        look();
        return m_longest;
    }
    void reset()
    {
        m_last = now();
        m_longest = 0;
    }

private:
    void look()
    {
        const double time = now();
        m_longest = std::max(m_longest, time - m_last);
        m_last = time;
    }

    QTimer m_timer;
    double m_last = now();
    double m_longest = 0;
};

inline void turnUntil(const std::function<bool()>& condition, int seconds = 60)
{
    const QDeadlineTimer limit(std::chrono::seconds{seconds});
    while (!condition()) {
        if (limit.hasExpired()) {
            std::fprintf(stderr, "something did not come to its end\n");
            std::exit(1);
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
}

inline void turnFor(int milliseconds)
{
    const QDeadlineTimer limit(milliseconds);
    turnUntil([&limit] { return limit.hasExpired(); });
}

/// Fills a data folder with conversations of about this size together.
inline void fill(const QString& dataFolder, double mebibytes, int count)
{
    QDir().mkpath(dataFolder);
    SessionStore store(dataFolder);
    static_cast<void>(store.load());
    static_cast<void>(store.save(conversations(mebibytes, count)));
}

/// What a model works with, in a folder that goes with it.
struct Profile
{
    Profile(double mebibytes, const std::string& server, int count = 0)
    {
        fill(folder.filePath(QStringLiteral("data")), mebibytes, count > 0 ? count : int(mebibytes * 5));
        ConnectionSettings connection;
        connection.mode = ConnectionMode::Direct;
        connection.directURL = QString::fromStdString(server);
        preferences.setConnection(connection);
        preferences.setOnboardingComplete(true);
    }
    AppModel::Services services()
    {
        return {.preferences = preferences,
                .clock = clock,
                .secrets = std::make_shared<NoSecrets>(),
                .log = log,
                .environment = [](const char*) { return std::optional<QByteArray>(); },
                .location =
                    LibraryLocation{.url = QUrl::fromLocalFile(folder.filePath(QStringLiteral("data")))}};
    }

    QTemporaryDir folder;
    SystemClock clock;
    Preferences preferences{folder.filePath(QStringLiteral("preferences.ini"))};
    DiagnosticsLog log{folder.filePath(QStringLiteral("log")), clock};
};

} // namespace varnel::bench
