#include "ui/PdfExport.h"
#include "base/Error.h"
#include "support/Await.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;

namespace {

ChatMessage message(ChatRole role, const QString& content)
{
    return {.id = QUuid::createUuid(),
            .role = role,
            .content = content,
            .thinking = {},
            .createdAt = Instant(std::chrono::seconds(1'790'000'000)),
            .backend = role == ChatRole::Assistant ? QStringLiteral("llama3.2") : QString(),
            .duration = {}};
}

ChatSession conversation(std::vector<ChatMessage> messages)
{
    ChatSession session;
    session.title = QStringLiteral("On tides");
    session.messages = std::move(messages);
    return session;
}

QString reply(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60'000) || process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program), process.readAllStandardError().constData());
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString withoutSpace(QString text)
{
    static const QRegularExpression space(QStringLiteral("\\s"));
    return text.remove(space);
}

/// What the kernel says of a folder: whether anything in it was opened.
class OpenWatch
{
public:
    explicit OpenWatch(const QString& folder)
        : m_descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        if (inotify_add_watch(m_descriptor, qPrintable(folder), IN_OPEN | IN_ACCESS) < 0)
            qFatal("the folder cannot be watched");
    }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;
    OpenWatch(OpenWatch&&) = delete;
    OpenWatch& operator=(OpenWatch&&) = delete;
    ~OpenWatch() { close(m_descriptor); }

    bool sawAny() const
    {
        std::array<char, 4096> events{};
        return read(m_descriptor, events.data(), events.size()) > 0;
    }

private:
    int m_descriptor;
};

} // namespace

class PdfExportTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    Worker m_worker;

    QString path() const { return m_folder.filePath(QStringLiteral("tides.pdf")); }

    void write(const ChatSession& session, ExportedThinking thinking = ExportedThinking::Omitted,
               QPageSize size = QPageSize(QPageSize::A4))
    {
        PdfOptions options;
        options.thinking = thinking;
        options.pageSize = std::move(size);
        options.timeZone = QTimeZone::utc();
        await(exportPdf(&m_worker, session, path(), options, {}), std::chrono::minutes(2));
    }
    QString text() const
    {
        return reply(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path(), QStringLiteral("-")});
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext is not here; scripts/setup installs it");
    }

    void aConversationIsReadable()
    {
        ChatMessage answer = message(
            ChatRole::Assistant, QStringLiteral("# The moon\nIt *pulls*, see [here](https://e.org/a) and "
                                                "![map](http://e.org/m.png).\n\n- [x] ebb\n- [ ] flood\n\n"
                                                "3. third\n\n> quoted\n\n```cpp\nint a;\n```\n\n"
                                                "|p|q|\n|-|-:|\n|left|right|"));
        answer.thinking = QStringLiteral("Hm, water.");
        answer.duration = 2.25;
        ChatSession session = conversation({message(ChatRole::User, QStringLiteral("Why *tides*?")), answer});
        session.systemPrompt = QStringLiteral("Be brief.");
        write(session);
        const QString plain = text();
        for (const char* expected :
             {"On tides", "System prompt", "Be brief.", "You · 2026-09-21 14:13", "Why *tides*?",
              "Assistant · llama3.2 · 2026-09-21 14:13 · 2.3 s", "The moon", "It pulls, see here and map.",
              "ebb", "flood", "3. third", "quoted", "cpp", "int a;", "right"})
            QVERIFY2(plain.contains(QString::fromUtf8(expected)),
                     qPrintable(QString::fromUtf8(expected) + plain));
        QVERIFY(!plain.contains(QStringLiteral("water")));
        QVERIFY(!plain.contains(QStringLiteral("```")));
        write(session, ExportedThinking::Quoted);
        QVERIFY(text().contains(QStringLiteral("Hm, water.")));
        const QString facts = reply(QStringLiteral("pdfinfo"), {path()});
        QVERIFY(facts.contains(QRegularExpression(QStringLiteral("Title: +On tides"))));
        const QString links = reply(QStringLiteral("pdfinfo"), {QStringLiteral("-url"), path()});
        QVERIFY2(links.contains(QStringLiteral("https://e.org/a")), qPrintable(links));
    }

    void nothingIsCutOff_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<QStringList>("parts");
        const QString line = QStringLiteral("auto%1=call(%1);").arg(QString(700, QLatin1Char('w')));
        QTest::newRow("code line") << QStringLiteral("```\n%1\n```").arg(line) << QStringList{line};
        QTest::newRow("word") << line << QStringList{line};
        QString table = QStringLiteral("|a|%1|c|\n|-|-|-|\n|%1|b|%1|").arg(QString(90, QLatin1Char('m')));
        QTest::newRow("wide cells") << table << QStringList{};
        QStringList names;
        QStringList cells;
        for (int i = 100; i < 140; ++i) {
            names += QStringLiteral("name%1").arg(i);
            cells += QStringLiteral("cell%1").arg(i);
        }
        const auto row = [](const QStringList& list) {
            return QStringLiteral("|%1|\n").arg(list.join(QLatin1Char('|')));
        };
        table = row(names) + row(QStringList(40, QStringLiteral("-"))) + row(cells);
        QTest::newRow("many columns") << table << names + cells;
        QTest::newRow("deep quotes") << QString(90, QLatin1Char('>')) + line << QStringList{line};
        QTest::newRow("deep lists") << QStringLiteral("- ").repeated(60) + line << QStringList{line};
        QTest::newRow("tall cell")
            << QStringLiteral("|a|b|\n|-|-|\n|%1 end|x|").arg(QStringLiteral("word ").repeated(2000))
            << QStringList{QStringLiteral("wordend")};
        QTest::newRow("long") << QStringLiteral("A line of its own.\n\n").repeated(200) + line
                              << QStringList{line};
    }
    void nothingIsCutOff()
    {
        QFETCH(QString, content);
        QFETCH(QStringList, parts);
        for (const QPageSize::PageSizeId id : {QPageSize::A4, QPageSize::A6}) {
            write(conversation({message(ChatRole::Assistant, content)}), ExportedThinking::Omitted,
                  QPageSize(id));
            const QString plain =
                withoutSpace(reply(QStringLiteral("pdftotext"), {path(), QStringLiteral("-")}));
            // A page may end within a part; its footer is no part of the text.
            QString joined = plain;
            static const QRegularExpression footer(QStringLiteral("Ontides\\d+"));
            joined.remove(footer);
            for (const QString& part : parts)
                QVERIFY2(joined.contains(part), qPrintable(part + joined));
            const QString boxes =
                reply(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path(), QStringLiteral("-")});
            const QSizeF paper = QPageSize(id).size(QPageSize::Point);
            static const QRegularExpression word(QStringLiteral(
                "<word xMin=\"([-0-9.]+)\" yMin=\"([-0-9.]+)\" xMax=\"([-0-9.]+)\" yMax=\"([-0-9.]+)\""));
            int words = 0;
            for (auto at = word.globalMatch(boxes); at.hasNext(); ++words) {
                const auto match = at.next();
                QVERIFY2(match.captured(1).toDouble() >= 20, qPrintable(match.captured()));
                QVERIFY2(match.captured(3).toDouble() <= paper.width() - 20, qPrintable(match.captured()));
                QVERIFY2(match.captured(4).toDouble() <= paper.height(), qPrintable(match.captured()));
            }
            QVERIFY(words > 0);
        }
    }

    void formulasAreSet()
    {
        write(conversation({message(
            ChatRole::Assistant,
            QStringLiteral(
                "So \\(x_1 \\le 3\\) holds, \\(\\unknown{y}\\) does not.\n\n\\[\\frac{a}{b}\\]\n"))}));
        const QString plain = text();
        QVERIFY2(plain.contains(QStringLiteral("≤")) && !plain.contains(QStringLiteral("frac")),
                 qPrintable(plain));
        QVERIFY2(plain.contains(QStringLiteral("\\unknown{y}")), qPrintable(plain));
    }

    void everyPageIsNumbered()
    {
        write(conversation({message(ChatRole::User, QStringLiteral("Line\n").repeated(300)),
                            message(ChatRole::Assistant, QStringLiteral("Line\n\n").repeated(300))}));
        const QStringList pages = text().split(QLatin1Char('\f'), Qt::SkipEmptyParts);
        QVERIFY(pages.size() > 5);
        for (qsizetype i = 0; i < pages.size(); ++i) {
            const QString last = pages[i].trimmed().section(QLatin1Char('\n'), -1);
            QVERIFY2(last.contains(QStringLiteral("On tides")) && last.endsWith(QString::number(i + 1)),
                     qPrintable(last));
        }
        QCOMPARE(text().count(QStringLiteral("Line")), 600);
    }

    void aHostileConversationOpensNothing()
    {
        QTemporaryDir outside;
        const QString fifo = outside.filePath(QStringLiteral("fifo"));
        QCOMPARE(mkfifo(qPrintable(fifo), 0600), 0);
        QFile picture(outside.filePath(QStringLiteral("p.png")));
        QVERIFY(picture.open(QIODevice::WriteOnly));
        picture.close();
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QString url = QStringLiteral("http://127.0.0.1:%1/x.png").arg(server.serverPort());
        QString hostile =
            QStringLiteral("![i](%1) <img src=\"%1\"> ![f](file://%2) ![p](%2) ![q](file://%3)\n\n"
                           "|![t](%1)|\n|-|\n|<img src='%3'>|\n\n> - # ![h](%3)\n\n"
                           "<style>@import url(%1)</style><link href=\"%2\">\n\n"
                           "[s](javascript:x) [f](file://%3)\n\n\\[\\includegraphics{%3}\\]\n\n")
                .arg(url, fifo, picture.fileName());
        hostile += QStringLiteral("\u202Egnp.exe\u202C\u0001\u001B[31m\u009B ").repeated(50) +
                   QString(20'000, QLatin1Char('[')) + QStringLiteral("\n\n") +
                   QString(20'000, QLatin1Char('>')) + QStringLiteral("\n\n") +
                   QString(100'000, QLatin1Char('x')) + QStringLiteral("\n\n```js\n") +
                   QString(50'000, QLatin1Char('"'));
        ChatSession session =
            conversation({message(ChatRole::User, hostile), message(ChatRole::Assistant, hostile)});
        session.title = hostile.first(300);
        session.messages[1].thinking = hostile;
        session.messages[1].backend = hostile.first(200);
        const OpenWatch watch(outside.path());
        write(session, ExportedThinking::Quoted);
        QVERIFY(!watch.sawAny());
        QVERIFY(!server.waitForNewConnection(50));
        const QString links = reply(QStringLiteral("pdfinfo"), {QStringLiteral("-url"), path()});
        QVERIFY2(!links.contains(QStringLiteral("file:")) && !links.contains(QStringLiteral("javascript:")),
                 qPrintable(links));
    }

    void aStoppedOrFailedExportLeavesTheOldFile()
    {
        QFile old(path());
        QVERIFY(old.open(QIODevice::WriteOnly | QIODevice::Truncate));
        old.write("old");
        old.close();
        const ChatSession session = conversation(std::vector<ChatMessage>(
            3000, message(ChatRole::Assistant, QStringLiteral("Some *words*.\n\n").repeated(10))));
        std::stop_source stop;
        Task<void> task = exportPdf(&m_worker, session, path(), {}, stop.get_token());
        QVERIFY(waitUntil([&] { return !QDir(m_folder.path()).entryList(QDir::Files).isEmpty(); }));
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(Cancelled, await(std::move(task)));
        QVERIFY(waitUntil([&] { return QDir(m_folder.path()).entryList(QDir::Files).size() == 1; }));
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), "old");
        try {
            await(exportPdf(&m_worker, conversation({}), m_folder.filePath(QStringLiteral("no/such.pdf")), {},
                            {}));
            QFAIL("written into a folder that is not there");
        } catch (const Error& error) {
            QVERIFY2(error.message().contains(QStringLiteral("no/such.pdf")), error.what());
        }
    }
};

QTEST_MAIN(PdfExportTest)
#include "PdfExportTest.moc"
