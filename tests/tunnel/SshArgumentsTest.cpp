#include "tunnel/SshArguments.h"
#include "providers/VarnelError.h"
#include "tunnel/SshCommandLine.h"
#include "tunnel/TunnelController.h"
#include "tunnel/TunnelPort.h"

#include <QDir>
#include <QTest>

#include <limits>

using namespace varnel;

Q_DECLARE_METATYPE(varnel::SshCommandLine)

namespace {

ConnectionSettings usableSettings()
{
    ConnectionSettings settings;
    settings.sshHost = QStringLiteral("gpu-box");
    settings.sshUser = QStringLiteral("me");
    return settings;
}

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

/// What ssh is told, and what is read out of other command lines and of what it says.
class SshArgumentsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsAreExact_data()
    {
        QTest::addColumn<qint64>("port");
        QTest::addColumn<QString>("identity");
        QTest::addColumn<bool>("password");
        QTest::addColumn<QString>("expected");
        const QString start = QStringLiteral("-N -o ExitOnForwardFailure=yes -o ServerAliveInterval=30 ");
        const QString batch = QStringLiteral("-o BatchMode=yes ");
        const QString asking =
            QStringLiteral("-o BatchMode=no -o NumberOfPasswordPrompts=1 -o "
                           "PreferredAuthentications=publickey,password,keyboard-interactive ");
        const QString end = QStringLiteral(":127.0.0.1:11434 me@gpu-box");
        const qint64 port = 11434;
        QTest::newRow("plain") << port << "" << false << start + batch + QLatin1String("-L 11434") + end;
        QTest::newRow("password") << port << "" << true << start + asking + QLatin1String("-L 11434") + end;
        QTest::newRow("identity") << port << " /keys/a " << true
                                  << start + asking +
                                         QLatin1String("-i /keys/a -o IdentitiesOnly=yes -L 11434") + end;
        QTest::newRow("home") << port << "~/.ssh/id" << false
                              << start + batch + QLatin1String("-i ") + QDir::homePath() +
                                     QLatin1String("/.ssh/id -o IdentitiesOnly=yes -L 11434") + end;
        for (const char* const identity : {"  ", "-oProxyCommand=x", "a\nb"})
            QTest::newRow(identity) << port << identity << false
                                    << start + batch + QLatin1String("-L 11434") + end;
        QTest::newRow("port 0") << qint64(0) << "" << false << start + batch + QLatin1String("-L 1") + end;
        QTest::newRow("lowest port") << std::numeric_limits<qint64>::min() << "" << false
                                     << start + batch + QLatin1String("-L 1") + end;
        QTest::newRow("port 70000") << qint64(70000) << "" << false
                                    << start + batch + QLatin1String("-L 65535") + end;
    }
    void argumentsAreExact()
    {
        QFETCH(qint64, port);
        QFETCH(QString, identity);
        QFETCH(bool, password);
        QFETCH(QString, expected);
        ConnectionSettings settings = usableSettings();
        settings.sshHost = QStringLiteral("\t gpu-box\n");
        settings.localPort = port;
        settings.sshIdentityFile = identity;
        settings.remoteBind += QLatin1Char(' ');
        QCOMPARE(sshArguments(settings, password ? SavedPassword::Present : SavedPassword::None)
                     .join(QLatin1Char(' ')),
                 expected);
    }

    void unusableSettingsAreRefused_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("bind");
        const QString bind = QStringLiteral("127.0.0.1:11434");
        QTest::newRow("no user") << "" << "gpu-box" << bind;
        QTest::newRow("no host") << "me" << " " << bind;
        QTest::newRow("user is an option") << "-oProxyCommand=x" << "gpu-box" << bind;
        QTest::newRow("host is an option") << "me" << " -oProxyCommand=x" << bind;
        QTest::newRow("blank in user") << "m e" << "gpu-box" << bind;
        QTest::newRow("tab in host") << "me" << "gpu\tbox" << bind;
        for (const char16_t blank :
             {u'\u00a0', u'\u1680', u'\u2003', u'\u2028', u'\u3000', u'\u0085', u'\0', u'\x1b'}) {
            const QString host = QStringLiteral("gpu") + QChar(blank) + QStringLiteral("box");
            QTest::addRow("U+%04x in host", unsigned(blank)) << "me" << host << bind;
            QTest::addRow("U+%04x in bind", unsigned(blank))
                << "me" << "gpu-box" << bind + QChar(blank) + QLatin1String("0");
        }
        QTest::newRow("bind without port") << "me" << "gpu-box" << "11434";
        QTest::newRow("blank in bind") << "me" << "gpu-box" << "127.0.0.1: 1";
        QTest::newRow("bind is an option") << "me" << "gpu-box" << "-R:1:1";
        QTest::newRow("empty bind") << "me" << "gpu-box" << "";
    }
    void unusableSettingsAreRefused()
    {
        ConnectionSettings settings;
        QFETCH(QString, user);
        QFETCH(QString, host);
        QFETCH(QString, bind);
        settings.sshUser = user;
        settings.sshHost = host;
        settings.remoteBind = bind;
        try {
            sshArguments(settings, SavedPassword::Present);
            QFAIL("they were taken");
        } catch (const VarnelError& error) {
            QCOMPARE(error.message(), QLatin1String("The SSH host, user, or remote bind is not usable."));
        }
    }

    void commandLinesAreReadAsSshReadsThem_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<SshCommandLine>("expected");
        QTest::newRow("jump") << "-l me -p 22 -W [gpu-box]:22 jump"
                              << SshCommandLine{{}, words("jump"), true};
        QTest::newRow("shared word") << "-qxW gpu-box:22 jump" << SshCommandLine{{}, words("jump"), true};
        QTest::newRow("behind the host") << "jump -Wgpu-box:22" << SshCommandLine{{}, words("jump"), true};
        QTest::newRow("a value with a W") << "-oW=W -i -W -FW box" << SshCommandLine{{}, words("box"), false};
        QTest::newRow("forwards") << "-NL 1:a:2 -L3:b:4 box"
                                  << SshCommandLine{words("1:a:2 3:b:4"), words("box"), false};
        QTest::newRow("after the options") << "-- box -W" << SshCommandLine{{}, words("box -W"), false};
        QTest::newRow("cut off") << "box -L" << SshCommandLine{{QString()}, words("box"), false};
    }
    void commandLinesAreReadAsSshReadsThem()
    {
        QFETCH(QString, line);
        QFETCH(SshCommandLine, expected);
        QVERIFY(parseSshCommandLine(words(line.toUtf8().constData())) == expected);
    }

    void onlyTheSameTunnelIsOurs_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("isOurs");
        const QString own = sshArguments(usableSettings(), SavedPassword::Present).join(QLatin1Char(' '));
        QTest::newRow("ours") << QLatin1String("/usr/bin/ssh ") + own << true;
        QTest::newRow("by hand") << "ssh me@gpu-box -fNL11434:127.0.0.1:11434" << true;
        QTest::newRow("key with blanks")
            << "/usr/bin/ssh -N -i /a key/b c -o IdentitiesOnly=yes -L 11434:127.0.0.1:11434 me@gpu-box"
            << true;
        QTest::newRow("said there") << "ssh -L 11434:127.0.0.1:11434 you@other echo me@gpu-box" << false;
        QTest::newRow("by way of another") << "ssh -L 11434:127.0.0.1:11434 bastion "
                                              "ssh -N -L 11434:127.0.0.1:11434 me@gpu-box"
                                           << false;
        QTest::newRow("longer host") << QLatin1String("/usr/bin/ssh ") + own + QLatin1String("2") << false;
        QTest::newRow("longer user") << "/usr/bin/ssh -L 11434:127.0.0.1:11434 some@gpu-box,xme@gpu-box"
                                     << false;
        QTest::newRow("longer forward") << "/usr/bin/ssh -L 11434:127.0.0.1:114345 me@gpu-box" << false;
        QTest::newRow("jump over it") << "ssh -L 11434:127.0.0.1:11434 -J me@gpu-box you@other" << false;
        QTest::newRow("not forwarded") << "ssh -R 11434:127.0.0.1:11434 me@gpu-box" << false;
        QTest::newRow("another program") << "/usr/bin/sshd -L 11434:127.0.0.1:11434 me@gpu-box" << false;
        QTest::newRow("an editor") << "vi /usr/bin/ssh -L 11434:127.0.0.1:11434 me@gpu-box" << false;
        QTest::newRow("gone") << "" << false;
    }
    void onlyTheSameTunnelIsOurs()
    {
        QFETCH(QString, command);
        QTEST(TunnelPort::isTunnel(command, *sshForward(usableSettings()), *sshDestination(usableSettings())),
              "isOurs");
    }

    void summaryIsTheLastLineThatSaysSomething_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("summary");
        QTest::newRow("nothing") << "" << "";
        QTest::newRow("blanks") << " \t\r\n\n " << "";
        QTest::newRow("refused") << "banner\r\nssh: connect to host x port 22: Connection refused\r\n"
                                 << "connect to host x port 22: Connection refused";
        QTest::newRow("repetition") << "bind: in use\ncould not request LOCAL forwarding.\n"
                                    << "bind: in use";
        QTest::newRow("nothing but repetition") << "Could not request local forwarding.\n\n"
                                                << "Could not request local forwarding.";
        QTest::newRow("prefix alone") << "SSH:\t " << "";
        QTest::newRow("long") << QString(181, QLatin1Char('x')) << QString(180, QLatin1Char('x'));
        QTest::newRow("long, of long characters") << QStringLiteral("👩🏽‍🚀").repeated(200)
                                                  << QStringLiteral("👩🏽‍🚀").repeated(180);
        QTest::newRow("one huge line")
            << QString(1 << 20, QLatin1Char('x')) << QString(180, QLatin1Char('x'));
    }
    void summaryIsTheLastLineThatSaysSomething()
    {
        QFETCH(QString, output);
        QTEST(TunnelController::summary(output), "summary");
    }
};

QTEST_GUILESS_MAIN(SshArgumentsTest)
#include "SshArgumentsTest.moc"
