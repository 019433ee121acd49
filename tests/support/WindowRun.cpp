#include "support/WindowRun.h"

#include "support/Await.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <stdexcept>

namespace varnel::test {

namespace {

const QString python = QStringLiteral("/usr/bin/python3"); // the system's, which has its packages
const QString busProgram = QStringLiteral("/usr/bin/dbus-run-session");

} // namespace

WindowRun::WindowRun()
{
    m_bus.setVariable("DISPLAY", m_display.name());
    m_bus.setVariable("NO_AT_BRIDGE", QStringLiteral("0"));
    m_bus.startProgram(busProgram,
                       {QStringLiteral("--"), QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                        QStringLiteral("echo \"$DBUS_SESSION_BUS_ADDRESS\"; exec \"$@\""),
                        QStringLiteral("session"), python, QStringLiteral(VARNEL_ACCESSIBLE_WINDOW)});
    if (!waitUntil([this] { return m_bus.output().endsWith("ready\n"); }))
        throw std::runtime_error("the accessibility bus did not start: " + m_bus.errors().toStdString());
    m_address = QString::fromLatin1(m_bus.output().left(m_bus.output().indexOf('\n')));
    m_program.setVariable("DBUS_SESSION_BUS_ADDRESS", m_address);
    m_program.setVariable("DISPLAY", m_display.name());
    m_program.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
    m_program.setVariable("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", QStringLiteral("1"));
    // While somebody listens, Qt makes notes about controls that are going and never frees them. What is ours
    // to free is looked for by the tests in which nobody listens.
    m_program.setVariable("ASAN_OPTIONS",
                          qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":detect_leaks=0"));
    // A question about something that has just gone is a matter of course here.
    m_program.setVariable("QT_LOGGING_RULES", QStringLiteral("qt.accessibility.*=false"));
    m_program.setVariable("LANG", QStringLiteral("C.UTF-8"));
}

WindowRun::~WindowRun()
{
    if (m_program.process().state() != QProcess::NotRunning) {
        m_program.process().kill();
        m_program.wait();
    }
    // The session ends with its reader, and takes the bus and what the bus has started with it; a session
    // that is killed leaves them behind.
    m_bus.process().closeWriteChannel();
    m_bus.wait();
}

QString WindowRun::missing()
{
    QStringList missing = XDisplay::missingPrograms();
    for (const QString& file : {python, QStringLiteral("/usr/lib/python3/dist-packages/pyatspi"),
                                QStringLiteral("/usr/libexec/at-spi-bus-launcher"), busProgram}) {
        if (!QFileInfo::exists(file))
            missing.append(file);
    }
    return missing.isEmpty()
               ? QString()
               : QStringLiteral("not installed: %1; scripts/setup does").arg(missing.join(u", "));
}

bool WindowRun::open()
{
    m_program.start({});
    return waitUntil([this] { return m_display.focusWindow(m_program.process().processId()); });
}

bool WindowRun::quit()
{
    key("ctrl+q");
    const bool ended = m_program.wait();
    if (ended && m_program.process().exitStatus() == QProcess::NormalExit &&
        m_program.process().exitCode() == 0 && m_program.errors().isEmpty())
        return true;
    qWarning("the program %s: %s", ended ? "ended badly" : "did not end", m_program.errors().constData());
    return false;
}

void WindowRun::key(const char* keys, int times) const
{
    for (int i = 0; i < times; ++i)
        m_display.key(QString::fromLatin1(keys));
}

bool WindowRun::press(const char* name)
{
    return waitUntil([&] { return !ask(QStringLiteral("press ") + QString::fromUtf8(name)).isEmpty(); });
}

bool WindowRun::focus(const char* name)
{
    return waitUntil([&] { return !ask(QStringLiteral("focus ") + QString::fromUtf8(name)).isEmpty(); });
}

bool WindowRun::tabTo(const QString& line)
{
    constexpr int farthest = 40;
    const QString focused = line + QStringLiteral(" | focusable focused");
    for (int stop = 0; stop < farthest; ++stop) {
        key("Tab");
        const QStringList lines = tree();
        if (std::any_of(lines.begin(), lines.end(),
                        [&focused](const QString& each) { return each.startsWith(focused); }))
            return true;
    }
    return false;
}

bool WindowRun::shows(const QString& line)
{
    return waitUntil([&] {
        const QStringList lines = tree();
        return std::any_of(lines.begin(), lines.end(),
                           [&line](const QString& each) { return each.startsWith(line); });
    });
}

bool WindowRun::showsNoMore(const QString& line)
{
    return waitUntil([&] {
        const QStringList lines = tree();
        return !lines.isEmpty() && std::none_of(lines.begin(), lines.end(), [&line](const QString& each) {
            return each.startsWith(line);
        });
    });
}

QByteArray WindowRun::stored(const QString& name) const
{
    QDirIterator found(m_program.folder(), {name}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    QFile file(found.hasNext() ? found.next() : QString());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<QJsonObject> WindowRun::conversations() const
{
    QList<QJsonObject> conversations;
    for (const QJsonValue each : QJsonDocument::fromJson(stored(QStringLiteral("sessions.json"))).array())
        conversations.append(each.toObject());
    return conversations;
}

QStringList WindowRun::ask(const QString& order)
{
    const qsizetype before = m_bus.output().size();
    m_bus.process().write(order.toUtf8() + '\n');
    const bool answered = waitUntil([&] {
        const QByteArray answer = m_bus.output().sliced(before);
        return answer == ".\n" || answer.endsWith("\n.\n");
    });
    if (!answered)
        throw std::runtime_error("the accessibility bus does not answer: " + m_bus.errors().toStdString());
    return QString::fromUtf8(m_bus.output().sliced(before).chopped(2))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace varnel::test
