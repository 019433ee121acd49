#include "support/XDisplay.h"

#include "support/Await.h"

#include <QHash>
#include <QStandardPaths>

#include <stdexcept>

namespace varnel::test {

XDisplay::XDisplay()
{
    // Without -noreset the server begins anew, and drops who is just connecting, when its last client goes.
    m_server.setProcessChannelMode(QProcess::SeparateChannels);
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("1120x760x24"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-noreset")});
    QByteArray number;
    const bool started = waitUntil([&] {
        number += m_server.readAllStandardOutput();
        return number.endsWith('\n') || m_server.error() == QProcess::FailedToStart;
    });
    if (!started || number.isEmpty())
        throw std::runtime_error("Xvfb did not start");
    m_name = QLatin1Char(':') + QString::fromLatin1(number.trimmed());
}

XDisplay::~XDisplay()
{
    m_server.terminate();
    waitUntil([this] { return m_server.state() == QProcess::NotRunning; });
}

QStringList XDisplay::missingPrograms()
{
    QStringList missing;
    for (const QString& program :
         {QStringLiteral("Xvfb"), QStringLiteral("xdotool"), QStringLiteral("import")}) {
        if (QStandardPaths::findExecutable(program).isEmpty())
            missing.append(program);
    }
    return missing;
}

QByteArray XDisplay::run(const QString& program, const QStringList& arguments, bool* succeeded) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_name);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool ended = waitUntil([&] { return process.state() == QProcess::NotRunning; });
    if (succeeded)
        *succeeded = ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return process.readAllStandardOutput();
}

QString XDisplay::windowOf(qint64 process) const
{
    const QByteArray windows =
        run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                        QStringLiteral("--pid"), QString::number(process)});
    return QString::fromLatin1(windows.trimmed().split('\n').constLast());
}

bool XDisplay::focusWindow(qint64 process) const
{
    const QString window = windowOf(process);
    if (!window.isEmpty())
        run(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
    return !window.isEmpty();
}

qint64 XDisplay::focusedProcess() const
{
    return run(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus"), QStringLiteral("getwindowpid")})
        .trimmed()
        .toLongLong();
}

QRect XDisplay::placeOf(qint64 process) const
{
    const QString window = windowOf(process);
    if (window.isEmpty())
        return {};
    QHash<QByteArray, int> figures;
    const QList<QByteArray> lines = run(QStringLiteral("xdotool"), {QStringLiteral("getwindowgeometry"),
                                                                    QStringLiteral("--shell"), window})
                                        .split('\n');
    for (const QByteArray& line : lines)
        figures.insert(line.left(line.indexOf('=')), line.mid(line.indexOf('=') + 1).toInt());
    return {figures["X"], figures["Y"], figures["WIDTH"], figures["HEIGHT"]};
}

void XDisplay::place(qint64 process, const QRect& place) const
{
    const QString window = windowOf(process);
    run(QStringLiteral("xdotool"), {QStringLiteral("windowsize"), window, QString::number(place.width()),
                                    QString::number(place.height()), QStringLiteral("windowmove"), window,
                                    QString::number(place.x()), QString::number(place.y())});
}

void XDisplay::moveTo(QPoint place) const
{
    run(QStringLiteral("xdotool"),
        {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
}

void XDisplay::pressButton() const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mousedown"), QStringLiteral("1")});
}

void XDisplay::releaseButton() const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("mouseup"), QStringLiteral("1")});
}

void XDisplay::key(const QString& keys) const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("key"), keys});
}

void XDisplay::type(const QString& text) const
{
    run(QStringLiteral("xdotool"),
        {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("4"), text});
}

void XDisplay::click(QPoint place, int button, int times) const
{
    run(QStringLiteral("xdotool"),
        {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
         QStringLiteral("click"), QStringLiteral("--repeat"), QString::number(times),
         QString::number(button)});
}

QImage XDisplay::picture(const QRect& area) const
{
    const QString crop =
        QStringLiteral("%1x%2+%3+%4").arg(area.width()).arg(area.height()).arg(area.x()).arg(area.y());
    return QImage::fromData(run(QStringLiteral("import"),
                                {QStringLiteral("-silent"), QStringLiteral("-window"), QStringLiteral("root"),
                                 QStringLiteral("-crop"), crop, QStringLiteral("png:-")}));
}

QImage XDisplay::pictureAtRest(const QRect& area) const
{
    QImage before;
    QImage now = picture(area);
    waitUntil([&] {
        before = std::exchange(now, picture(area));
        return before == now;
    });
    return now;
}

QByteArray windowPreferences(const QUrl& server)
{
    return "[General]\nvarnel.connection=\"@ByteArray({\\\"directURL\\\": \\\"" + server.toString().toUtf8() +
           "\\\", \\\"localPort\\\": 11434, \\\"mode\\\": \\\"direct\\\", \\\"remoteBind\\\": "
           "\\\"127.0.0.1:11434\\\", \\\"sshHost\\\": \\\"\\\", \\\"sshUser\\\": \\\"\\\"})\"\n"
           "varnel.defaultModel=practice-chat:70b\nvarnel.onboardingComplete=true\n";
}

} // namespace varnel::test
