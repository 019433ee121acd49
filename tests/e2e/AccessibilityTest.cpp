#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/WindowRun.h"

#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// The lines of the first list that are missing from the second one in this order, as a text.
QString missingFrom(const QStringList& wanted, const QStringList& lines)
{
    qsizetype from = 0;
    for (const QString& line : wanted) {
        const qsizetype place = lines.indexOf(line, from);
        if (place < 0)
            return line + QStringLiteral("\nis not there in\n") + lines.join(u"\n");
        from = place + 1;
    }
    return {};
}

/// What can be focused without saying what it is. The frames of sheets and menus get the keyboard before
/// what is in them does.
QStringList nameless(const QStringList& lines)
{
    QStringList found;
    for (const QString& line : lines.filter(QStringLiteral(" |  | "))) {
        const bool isFrame =
            line.startsWith(QLatin1String("dialog")) || line.startsWith(QLatin1String("popup menu"));
        if (line.contains(QLatin1String("focus")) && !isFrame)
            found.append(line);
    }
    return found;
}

} // namespace

/// The window as assistive programs find it: over the accessibility bus, from another process, which can also
/// press what it finds.
class AccessibilityTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 2ms}};
    std::unique_ptr<WindowRun> m_window;

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = WindowRun::missing(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        m_host.listen();
        m_window = std::make_unique<WindowRun>();
        m_window->program().setPreferences(windowPreferences(m_host.url()));
        QVERIFY(m_window->open());
    }

    void everythingThatShowsHasARoleAndAName()
    {
        QVERIFY(m_window->shows(QStringLiteral("text | Message | focusable focused")));
        const QStringList lines = m_window->tree();
        const QString missing =
            missingFrom({QStringLiteral("frame | New conversation | "),
                         QStringLiteral("text | Search conversations | focusable"),
                         QStringLiteral("list | Conversations | focusable"),
                         QStringLiteral("push button | Menu | focusable"),
                         QStringLiteral("heading | What shall we work on? | "),
                         QStringLiteral("text | Message | focusable focused"),
                         QStringLiteral("push button | Send with practice-chat:70b | focusable")},
                        lines);
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        QCOMPARE(nameless(lines).join(u"\n"), QString());
    }

    void aFinishedReplyIsToldOnce()
    {
        m_window->type(QStringLiteral("Tell me of lighthouses"));
        m_window->heard();
        m_window->key("Return");
        QStringList replies;
        QVERIFY(waitUntil([&] {
            replies += m_window->heard().filter(QStringLiteral("| list item | Reply:"));
            return !replies.isEmpty();
        }));
        QVERIFY2(replies.last().contains(QLatin1String("Tell me of lighthouses")), qPrintable(replies[0]));
        QVERIFY(m_window->shows(QStringLiteral("push button | Regenerate")));
        replies += m_window->heard().filter(QStringLiteral("| list item | Reply:"));
        QCOMPARE(replies.size(), 1);
    }

    void theTranscriptIsReadWithWhatCanBeDone()
    {
        const QStringList lines = m_window->tree();
        QStringList wanted = {QStringLiteral("list | Conversation | focusable"),
                              QStringLiteral("list item | You: Tell me of lighthouses | ")};
        for (const char* const name :
             {"Copy", "Edit", "More", "Copy", "Regenerate", "Hand off", "Save", "More"})
            wanted.append(QStringLiteral("push button | %1 | focusable").arg(QLatin1String(name)));
        wanted.append(QStringLiteral("text | Message | focusable focused"));
        const QString missing = missingFrom(wanted, lines);
        QVERIFY2(missing.isEmpty(), qPrintable(missing));
        QCOMPARE(nameless(lines).join(u"\n"), QString());
        QCOMPARE(lines.filter(QStringLiteral("list item | Reply: This is a practice reply")).size(), 1);
    }

    void menusAreOpenedReadAndChosenFrom()
    {
        QVERIFY(m_window->press("Menu"));
        QVERIFY(m_window->shows(QStringLiteral("menu item | Colours of the system | focusable checked")));
        QVERIFY(m_window->shows(QStringLiteral("menu item | Dark | focusable")));
        QCOMPARE(nameless(m_window->tree()).join(u"\n"), QString());
        QVERIFY(m_window->press("Dark"));
        QVERIFY(m_window->showsNoMore(QStringLiteral("menu item")));
        QVERIFY(m_window->press("Menu"));
        QVERIFY(m_window->shows(QStringLiteral("menu item | Dark | focusable checked")));
        QVERIFY(m_window->press("Settings…"));
    }

    void sheetsAreReadPageByPage()
    {
        QVERIFY(m_window->shows(QStringLiteral("dialog | Settings")));
        QVERIFY(m_window->shows(QStringLiteral("radio button | URL | focusable checked")));
        QVERIFY(m_window->shows(QStringLiteral("radio button | SSH tunnel | focusable")));
        QVERIFY(m_window->press("SSH tunnel"));
        QVERIFY(m_window->shows(QStringLiteral("radio button | SSH tunnel | focusable checked")));
        QVERIFY(m_window->press("URL"));
        for (const char* const page : {"Models", "Files", "About", "Providers"}) {
            QVERIFY(m_window->press(page));
            QVERIFY(m_window->shows(QStringLiteral("panel | ") + QLatin1String(page)));
            QCOMPARE(nameless(m_window->tree()).join(u"\n"), QString());
        }
        const QString passthrough = QStringLiteral("check box | Remote passthrough | focusable");
        QVERIFY(m_window->press("Remote passthrough"));
        QVERIFY(m_window->shows(passthrough + QStringLiteral(" checked")));
        QVERIFY(waitUntil([this] {
            return m_window->stored(QStringLiteral("preferences.ini")).contains("varnel.passthrough=true");
        }));
        m_window->key("Escape");
        QVERIFY(m_window->showsNoMore(QStringLiteral("dialog")));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
