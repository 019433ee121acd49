#include "support/Await.h"
#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QFileInfo>
#include <QTest>

using namespace varnel::test;

namespace {

const QString python = QStringLiteral("/usr/bin/python3"); // the system's, which has its packages

QStringList missingPrograms()
{
    QStringList missing = XDisplay::missingPrograms();
    for (const QString& file :
         {python, QStringLiteral("/usr/lib/python3/dist-packages/pyatspi"),
          QStringLiteral("/usr/libexec/at-spi-bus-launcher"), QStringLiteral("/usr/bin/dbus-run-session")}) {
        if (!QFileInfo::exists(file))
            missing.append(file);
    }
    return missing;
}

} // namespace

/// The window as assistive programs find it: over the accessibility bus, from another process.
class AccessibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingThatShowsHasARoleAndAName()
    {
        const QStringList missing = missingPrograms();
        if (!missing.isEmpty())
            QSKIP(
                qPrintable(QStringLiteral("not installed: %1; scripts/setup does").arg(missing.join(u", "))));

        const XDisplay display;
        ProgramRun session;
        session.setPreferences("[General]\nvarnel.onboardingComplete=true\n");
        session.setVariable("DISPLAY", display.name());
        session.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        session.setVariable("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", QStringLiteral("1"));
        session.setVariable("NO_AT_BRIDGE", QStringLiteral("0"));
        session.startProgram(
            QStringLiteral("/usr/bin/dbus-run-session"),
            {QStringLiteral("--"), QStringLiteral("/bin/sh"), QStringLiteral("-c"),
             QStringLiteral("\"$1\" & window=$!; \"$2\" \"$3\"; status=$?; kill $window; wait $window; "
                            "exit $status"),
             QStringLiteral("session"), programPath(QStringLiteral("varnel")), python,
             QStringLiteral(VARNEL_E2E_SOURCES "/accessible_tree.py")});
        QVERIFY(session.wait(std::chrono::seconds(30)));
        QVERIFY2(session.process().exitCode() == 0, session.errors().constData());

        QStringList lines = QString::fromUtf8(session.output()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        const QStringList expected = {
            QStringLiteral("frame | New conversation | "),
            QStringLiteral("text | Search conversations | focusable"),
            QStringLiteral("list | Conversations | focusable"),
            QStringLiteral("push button | Menu | focusable"),
            QStringLiteral("heading | What shall we work on? | "),
            QStringLiteral("text | Message | focusable focused"),
        };
        for (const QString& line : expected)
            QVERIFY2(lines.contains(line),
                     qPrintable(line + QStringLiteral("\nis not in\n") + lines.join(u"\n")));
        const QStringList unnamed = lines.filter(QStringLiteral("|  |"));
        // A frame of layout has nothing to say; whatever can be focused or read has.
        for (const QString& line : unnamed)
            QVERIFY2(!line.contains(QStringLiteral("focus")), qPrintable(line));
    }
};

QTEST_GUILESS_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
