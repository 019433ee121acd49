#include "tunnel/TunnelController.h"

#include "base/Clock.h"
#include "base/Error.h"
#include "base/SecretStore.h"
#include "base/StopWakeup.h"
#include "providers/VarnelError.h"
#include "tunnel/TunnelProcess.h"

#include <QFileInfo>
#include <QProcessEnvironment>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace varnel {

namespace {

using namespace std::chrono_literals;

/// How often a child is looked at while one waits for it to prove stable.
constexpr std::chrono::milliseconds pace = 100ms;

/// The longest summary, in characters as the user counts them.
constexpr int summaryLimit = 180;

/// The environment that makes ssh ask `program` instead of a terminal. The password is not in it.
QProcessEnvironment askpassEnvironment(const QString& program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SSH_ASKPASS"), program);
    environment.insert(QStringLiteral("SSH_ASKPASS_REQUIRE"), QStringLiteral("force"));
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral("varnel"));
    environment.insert(QStringLiteral("VARNEL_ASKPASS"), QStringLiteral("1"));
    return environment;
}

bool endsLine(QChar character)
{
    switch (character.unicode()) {
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r': // ssh ends its own lines with CRLF
    case 0x85:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

QStringView withoutBlanks(QStringView text)
{
    const auto isBlank = [](QChar character) { return character == u' ' || character == u'\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

/// The lines that hold more than blanks.
QList<QStringView> linesOf(QStringView text)
{
    QList<QStringView> lines;
    while (!text.isEmpty()) {
        const qsizetype length = std::find_if(text.begin(), text.end(), endsLine) - text.begin();
        if (const QStringView line = withoutBlanks(text.first(length)); !line.isEmpty())
            lines.append(line);
        text = text.sliced(std::min(length + 1, text.size()));
    }
    return lines;
}

/// The beginning of a text, cut between characters.
QString firstCharacters(QStringView text, int count)
{
    // What a server says may be one line of a mebibyte; no character takes this much room.
    QString front = text.first(std::min<qsizetype>(text.size(), 64 * qsizetype(count))).toString();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, front);
    for (int i = 0; i < count; ++i) {
        if (finder.toNextBoundary() < 0)
            return front;
    }
    return front.first(finder.position());
}

} // namespace

TunnelController::TunnelController(Services services, Programs programs)
    : m_services(std::move(services))
    , m_programs(std::move(programs))
{}

TunnelController::~TunnelController()
{
    stop();
}

Task<void> TunnelController::start(ConnectionSettings settings, std::stop_token stop)
{
    sshArguments(settings,
                 SavedPassword::None); // refuses what is not usable before anybody is asked anything
    const qint64 generation = ++m_generation;
    const SavedPassword password = co_await readPassword(stop);
    if (m_generation != generation || stop.stop_requested())
        throw Cancelled();

    launch(settings, password);
    const std::shared_ptr<TunnelProcess> child = m_child;
    const StopHandler onStop(stop, [this, child] { abandon(child); });
    const auto isCancelled = [&] { return m_generation != generation || stop.stop_requested(); };
    try {
        co_await child->launched();
    } catch (const VarnelError&) {
        abandon(child);
        if (isCancelled())
            throw Cancelled();
        throw;
    }
    if (isCancelled()) {
        abandon(child); // another start may still be about to launch the next one
        throw Cancelled();
    }
}

void TunnelController::abandon(const std::shared_ptr<TunnelProcess>& child)
{
    child->forgetHandler();
    if (m_child == child)
        m_child.reset();
    child->terminate();
}

Task<SavedPassword> TunnelController::readPassword(std::stop_token stop)
{
    return m_passwords.run(
        [secrets = m_services.secrets](const std::stop_token&) {
            std::optional<QString> password =
                secrets->read(QStringLiteral("varnel.ssh.password"), Unlocking::MayPrompt);
            if (!password || password->isEmpty())
                return SavedPassword::None;
            password->fill(QChar::Null);
            return SavedPassword::Present;
        },
        std::move(stop));
}

void TunnelController::launch(const ConnectionSettings& settings, SavedPassword password)
{
    std::optional<QProcessEnvironment> environment;
    if (password == SavedPassword::Present) {
        if (!QFileInfo(m_programs.own).isExecutable()) {
            throw VarnelError::api(
                QStringLiteral("Varnel could not find its own executable to supply the SSH password."));
        }
        environment = askpassEnvironment(m_programs.own);
    }
    if (m_child)
        m_child->forgetHandler();
    m_output.clear();
    m_localPort = tunnelLocalPort(settings);
    m_child = std::make_shared<TunnelProcess>(
        m_programs.ssh, sshArguments(settings, password), environment,
        [this](int status, const QString& text) { childEnded(status, text); });
}

void TunnelController::childEnded(int status, const QString& output)
{
    m_output = output;
    m_child.reset();
    // The handler may replace itself or destroy the controller.
    if (const ExitHandler handler = m_onExit)
        handler(status, output);
}

void TunnelController::stop()
{
    if (const std::shared_ptr<TunnelProcess> child = detach())
        child->stop();
}

std::shared_ptr<TunnelProcess> TunnelController::detach()
{
    ++m_generation;
    if (m_child)
        m_child->forgetHandler();
    return std::exchange(m_child, nullptr);
}

bool TunnelController::isRunning() const
{
    return m_child && m_child->isRunning();
}

Task<bool> TunnelController::waitUntilStable(std::chrono::milliseconds duration, std::stop_token stop) const
{
    const auto deadline = m_services.clock.steadyNow() + duration;
    while (isRunning()) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - m_services.clock.steadyNow());
        if (left <= 0ms)
            co_return true;
        co_await m_services.clock.sleepFor(std::min(left, pace), stop);
    }
    // The output is stored in the moment in which the child is no longer running.
    co_return false;
}

Task<bool> TunnelController::isListening(std::stop_token stop) const
{
    if (!isRunning())
        co_return false;
    co_return co_await listensOnLoopback(m_services.runner, m_services.worker, m_child->pid(), m_localPort,
                                         stop);
}

qint64 TunnelController::processId() const
{
    return isRunning() ? m_child->pid() : 0;
}

QString TunnelController::summary(const QString& output)
{
    const QList<QStringView> lines = linesOf(output);
    if (lines.isEmpty())
        return {};
    // This one repeats what the text around the summary says already.
    const QLatin1String repetition("Could not request local forwarding.");
    const auto last = std::find_if(lines.rbegin(), lines.rend(), [&repetition](QStringView line) {
        return line.compare(repetition, Qt::CaseInsensitive) != 0;
    });
    QStringView line = last != lines.rend() ? *last : lines.last();
    if (line.startsWith(QLatin1String("ssh:"), Qt::CaseInsensitive))
        line = withoutBlanks(line.sliced(4));
    return firstCharacters(line, summaryLimit);
}

} // namespace varnel
