// A program that holds conversations until it is killed: varnel-test-turner FOLDER URL. It types into the
// draft, sends it, lets the reply come and stops some of them. Whatever it shows it prints at once, as a line
// of "role identifier time length", the time in milliseconds of the monotonic clock.

#include "app/DiagnosticsLog.h"
#include "engine/AppModel.h"
#include "store/Preferences.h"

#include <QCoreApplication>

#include <cstdio>

using namespace varnel;

namespace {

/// A store without any secret.
class NoSecrets final : public SecretStore
{
protected:
    std::optional<QByteArray> find(const QString&, Unlocking) override { return std::nullopt; }
    void add(const QString&, const QByteArray&) override {}
    void erase(const QString&) override {}
};

class Turner
{
public:
    explicit Turner(AppModel& model)
        : m_model(model)
    {
        QObject::connect(&model, &AppState::messageChanged, &model, [this] { report(); });
        QObject::connect(&model, &AppState::messagesChanged, &model, [this] { report(); });
        m_timer.callOnTimeout([this] { act(); });
        m_timer.start(50);
    }

private:
    void act()
    {
        ++m_step;
        if (!m_model.isBusy()) {
            m_model.setDraft(QStringLiteral("prompt %1").arg(m_step));
            m_model.send();
        } else if (m_step % 37 == 0) {
            m_model.stop();
        } else if (m_step % 11 == 0) {
            m_model.setDraft(QStringLiteral("draft %1").arg(m_step));
        }
    }

    void report() const
    {
        for (const ChatMessage& message : m_model.selectedSession()->messages) {
            if (&message != &m_model.selectedSession()->messages.back() &&
                message.role == ChatRole::Assistant)
                continue;
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            std::printf(
                "%s %s %lld %lld\n", rawValue(message.role).data(), message.id.toByteArray().constData(),
                static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()),
                static_cast<long long>(message.content.size()));
        }
        std::fflush(stdout);
    }

    AppModel& m_model;
    QTimer m_timer;
    int m_step = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QString folder = QCoreApplication::arguments().value(1);
    const SystemClock clock;
    Preferences preferences(folder + QStringLiteral("/preferences.ini"));
    const DiagnosticsLog log(folder + QStringLiteral("/log"), clock);
    ConnectionSettings connection;
    connection.mode = ConnectionMode::Direct;
    connection.directURL = QCoreApplication::arguments().value(2);
    preferences.setConnection(connection);
    AppModel model(
        {.preferences = preferences,
         .clock = clock,
         .secrets = std::make_shared<NoSecrets>(),
         .log = log,
         .environment = [](const char*) { return std::optional<QByteArray>(); },
         .location = LibraryLocation{.url = QUrl::fromLocalFile(folder + QStringLiteral("/data"))}});
    if (model.sessions().size() == 1 && model.selectedIsEmpty())
        model.changeSettings(
            [](ChatSession& session) { session.model = QStringLiteral("practice-long:4b"); });
    const Turner turner(model);
    return QCoreApplication::exec();
}
