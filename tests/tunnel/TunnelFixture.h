#pragma once

#include "base/Clock.h"
#include "base/ProcessRunner.h"
#include "base/Worker.h"
#include "support/Await.h"
#include "support/MemorySecretStore.h"
#include "tunnel/TunnelController.h"

#include <cerrno>
#include <sys/wait.h>

namespace varnel::test {

/// A controller with real services around it, and what it reported.
struct TunnelFixture
{
    std::shared_ptr<SecretStore> secrets = std::make_shared<MemorySecretStore>();
    SystemProcessRunner runner;
    SystemClock clock;
    Worker worker; // one thread, so that nothing new is opened when two pieces of work meet
    int reports = 0;
    int status = -1;
    QString output;
    TunnelController controller;

    explicit TunnelFixture(const QString& ssh, const QString& own = QStringLiteral("/bin/true"),
                           std::shared_ptr<SecretStore> store = std::make_shared<MemorySecretStore>())
        : secrets(std::move(store))
        , controller({.secrets = secrets, .runner = runner, .worker = worker, .clock = clock},
                     {.ssh = ssh, .own = own})
    {
        controller.setOnExit([this](int exitStatus, const QString& text) {
            ++reports;
            status = exitStatus;
            output = text;
        });
    }

    void start(const ConnectionSettings& settings) { await(controller.start(settings, {})); }
    bool waitForReport()
    {
        return waitUntil([this] { return reports > 0; }, std::chrono::seconds(20));
    }
    /// Waits until the tunnel can be used; false if ssh ends before.
    bool opens()
    {
        while (controller.isRunning()) {
            if (await(controller.isListening({})))
                return true;
            await(clock.sleepFor(std::chrono::milliseconds(20), {}));
        }
        return false;
    }
};

/// Whether this process has no children at all, neither running nor waiting to be collected, of any kind.
inline bool hasNoChildren()
{
    siginfo_t information{};
    return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT | __WALL) == -1 && errno == ECHILD;
}

} // namespace varnel::test
