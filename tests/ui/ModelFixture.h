#pragma once

#include "engine/AppModel.h"
#include "practice_host/PracticeHost.h"
#include "store/Preferences.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QTemporaryDir>

namespace varnel::test {

/// A practice host and preferences that lead to it, in a profile of their own.
struct ProfileFixture
{
    explicit ProfileFixture(practice::PracticePace pace)
        : host(pace)
    {
        host.listen();
        ConnectionSettings connection;
        connection.mode = ConnectionMode::Direct;
        connection.directURL = host.url().toString();
        preferences.setConnection(connection);
        preferences.setDefaultModel(QStringLiteral("practice-chat:70b"));
    }

    QTemporaryDir profile;
    practice::PracticeHost host;
    Preferences preferences{profile.filePath(QStringLiteral("preferences.ini"))};
};

/// A model that talks with a practice host.
struct ModelFixture : ProfileFixture
{
    explicit ModelFixture(practice::PracticePace pace = {.piece = std::chrono::milliseconds(0)})
        : ProfileFixture(pace)
    {}

    /// Sends a prompt in the selected conversation and waits for the end of the reply; whether it came.
    bool say(const QString& prompt)
    {
        app.setDraft(prompt);
        app.send();
        return waitUntil([this] { return !app.isStreaming(); });
    }
    /// Begins a conversation with a prompt that is answered.
    bool begin(const QString& prompt)
    {
        app.newConversation();
        return say(prompt);
    }

    ManualClock clock;
    AppModel app{{preferences, clock}};
};

} // namespace varnel::test
