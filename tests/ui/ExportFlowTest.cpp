#include "ui/ExportFlow.h"

#include "ui/ModelFixture.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace varnel;
using namespace varnel::test;

class ExportFlowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titlesMakeFileNames_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "A story" << "A story";
        QTest::newRow("a path") << "../../etc/passwd" << "-..-etc-passwd";
        QTest::newRow("hidden") << "...profile" << "profile";
        QTest::newRow("controls") << QStringLiteral("a\u202Eb\u0007\nc") << "ab c";
        QTest::newRow("nothing left") << "..." << "Conversation";
        QTest::newRow("long") << QString(500, QLatin1Char('x')) << QString(60, QLatin1Char('x'));
        QTest::newRow("cut within a character")
            << QString(59, QLatin1Char('x')) + QStringLiteral("\U0001F600\U0001F600")
            << QString(59, QLatin1Char('x'));
    }
    void titlesMakeFileNames()
    {
        QFETCH(QString, title);
        QTEST(fileNameOf(title), "name");
    }

    void conversationsAreWrittenWhereTheUserSays_data()
    {
        QTest::addColumn<int>("form");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("beginning");
        QTest::newRow("Markdown") << int(ExportFlow::Markdown) << "a.md" << QByteArray("# hello");
        // As the dialog of Qt Quick hands over what was typed.
        QTest::newRow("a bare path") << int(ExportFlow::Markdown) << "a #1 of 100 %?.md"
                                     << QByteArray("# hello");
        QTest::newRow("PDF") << int(ExportFlow::Pdf) << "a.pdf" << QByteArray("%PDF-");
        QTest::newRow("JSON") << int(ExportFlow::Json) << "a.json" << QByteArray("{");
    }
    void conversationsAreWrittenWhereTheUserSays()
    {
        QFETCH(int, form);
        QFETCH(QString, file);
        QFETCH(QByteArray, beginning);
        ModelFixture fixture;
        ExportFlow flow(fixture.app);
        const QSignalSpy wanted(&flow, &ExportFlow::fileWanted);
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        const QTemporaryDir folder;
        const QString path = folder.filePath(file);
        flow.save(QUrl::fromLocalFile(path)); // nobody asked
        flow.exportCurrent(static_cast<ExportFlow::Form>(form));
        QCOMPARE(wanted.count(), 1);
        const QUuid session = fixture.app.selection();
        QVERIFY(flow.suggestedFile().fileName().startsWith(QStringLiteral("hello.")));
        fixture.app.newConversation(); // meanwhile the user goes elsewhere
        flow.save(QUrl(QStringLiteral("https://example.org/a.md")));
        flow.exportConversation(session.toString(), static_cast<ExportFlow::Form>(form));
        flow.save(file.contains(QLatin1Char('#')) ? QUrl(path) : QUrl::fromLocalFile(path));
        QVERIFY(waitUntil([&] { return fixture.app.statusMessage() == QStringLiteral("Saved ") + path; }));
        QFile written(path);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll().left(beginning.size()), beginning);
        if (form != ExportFlow::Json)
            return;
        flow.importConversation(QUrl::fromLocalFile(path));
        QVERIFY(waitUntil([&] { return fixture.app.selectedTitle() == QStringLiteral("hello"); }));
    }

    void aMessageIsSavedAsItStands()
    {
        ModelFixture fixture;
        ExportFlow flow(fixture.app);
        QVERIFY(fixture.begin(QStringLiteral("hello")));
        const ChatMessage reply = fixture.app.selectedSession()->messages.back();
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("reply.md"));
        flow.saveMessage(reply.id.toString(QUuid::WithoutBraces));
        flow.save(QUrl::fromLocalFile(path));
        QVERIFY(waitUntil([&] { return QFile::exists(path); }));
        QFile written(path);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(written.readAll()).trimmed(), reply.content.trimmed());
    }
};

QTEST_MAIN(ExportFlowTest)
#include "ExportFlowTest.moc"
