#pragma once

#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ModelProfile.h"

namespace varnel::test {

/// A practice host and a profile that leads to it.
struct ProfileFixture
{
    explicit ProfileFixture(practice::PracticePace pace)
        : host(pace)
    {
        host.listen();
        profile.connectTo(host.url());
        profile.preferences.setDefaultModel(QStringLiteral("practice-chat:70b"));
        profile.preferences.setOnboardingComplete(true);
    }

    ManualClock clock;
    practice::PracticeHost host;
    ModelProfile profile{clock};
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
        return waitUntil([this] { return !app.isBusy(); });
    }
    /// Begins a conversation with a prompt that is answered.
    bool begin(const QString& prompt)
    {
        app.newConversation();
        return say(prompt);
    }

    AppModel app{profile.services()};
};

} // namespace varnel::test
