#include "markdown/MarkdownStream.h"
#include "markdown/Markdown.h"

#include <QRandomGenerator>
#include <QTest>

using namespace varnel;

namespace {

/// A text of random pieces, most of which mean something at the place they come to.
QString randomText(QRandomGenerator& random, bool withDefinitions)
{
    static const QStringList pieces = {QStringLiteral("- "),      QStringLiteral("  "),
                                       QStringLiteral("    "),    QStringLiteral("> "),
                                       QStringLiteral("\n"),      QStringLiteral("\n\n"),
                                       QStringLiteral("\r\n"),    QStringLiteral("\r"),
                                       QStringLiteral("```"),     QStringLiteral("``` py\n"),
                                       QStringLiteral("\n```\n"), QStringLiteral("~~~~\n"),
                                       QStringLiteral("1. "),     QStringLiteral("2) "),
                                       QStringLiteral("# "),      QStringLiteral("\n===\n"),
                                       QStringLiteral("\n---\n"), QStringLiteral("*"),
                                       QStringLiteral("**"),      QStringLiteral("\t"),
                                       QStringLiteral("a b"),     QStringLiteral("word "),
                                       QStringLiteral("`"),       QStringLiteral("|"),
                                       QStringLiteral("a|b\n"),   QStringLiteral("\n-|-\n"),
                                       QStringLiteral("$$\n"),    QStringLiteral("$x$"),
                                       QStringLiteral("\\[\n"),   QStringLiteral("\n\\]"),
                                       QStringLiteral("[ ] "),    QStringLiteral("[x](http://y)"),
                                       QStringLiteral("\\"),      QStringLiteral("&amp;"),
                                       QStringLiteral("<b>"),     QStringLiteral("日😀"),
                                       QStringLiteral("www.a.b"), QStringLiteral("\n[r]: u\n"),
                                       QStringLiteral("[r]")};
    const int usable = static_cast<int>(pieces.size()) - (withDefinitions ? 0 : 2);
    QString text;
    for (int count = random.bounded(4, 40); count > 0; --count)
        text += pieces[random.bounded(usable)];
    return text;
}

} // namespace

class MarkdownStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPrefixIsWhatTheWholeParseGives()
    {
        QRandomGenerator random(20'240'917);
        for (int round = 0; round < 600; ++round) {
            const bool withDefinitions = round % 4 == 0;
            const QString text = randomText(random, withDefinitions);
            MarkdownStream stream;
            QList<MarkdownBlock> finished;
            std::vector<quint64> revisions;
            for (qsizetype at = 0; at < text.size();) {
                const qsizetype length = random.bounded(1, 8);
                stream.append(QStringView(text).sliced(at).left(length));
                at += length;
                if (random.bounded(3) == 0)
                    continue; // several pieces between two looks
                if (!withDefinitions && stream.blocks() != parseMarkdown(text.left(at)))
                    QFAIL(qPrintable(QStringLiteral("differs after ") + text.left(at)));
                for (qsizetype index = 0; index < finished.size(); ++index) {
                    QCOMPARE(stream.blocks()[index], finished[index]);
                    QCOMPARE(stream.revision(index), revisions[static_cast<std::size_t>(index)]);
                }
                for (qsizetype index = finished.size(); index < stream.finishedCount(); ++index) {
                    finished.append(stream.blocks()[index]);
                    revisions.push_back(stream.revision(index));
                }
            }
            stream.finish();
            QCOMPARE(stream.finishedCount(), stream.blocks().size());
            if (stream.blocks() != parseMarkdown(text))
                QFAIL(qPrintable(QStringLiteral("differs at the end of ") + text));
        }
    }

    void blocksAreFinishedAsSoonAsTheyCanBe()
    {
        MarkdownStream stream;
        stream.append(u"# a\n\nb\n");
        QCOMPARE(stream.finishedCount(), 1);
        stream.append(u"\n- c\n\n- d\n\n");
        QCOMPARE(stream.finishedCount(), 2); // another item may follow
        stream.append(u"e\n```\nf\n");
        QCOMPARE(stream.finishedCount(), 4);
        QCOMPARE(stream.blocks().size(), 5);
        stream.append(u"``");
        QVERIFY(!std::get<MarkdownCode>(stream.blocks().last().content).closed);
        stream.append(u"`");
        QVERIFY(std::get<MarkdownCode>(stream.blocks().last().content).closed);
        QCOMPARE(stream.finishedCount(), 4); // the line may go on
        stream.append(u"\n");
        QCOMPARE(stream.finishedCount(), 5);
    }

    void revisionsTellWhatChanged()
    {
        MarkdownStream stream;
        stream.append(u"a\n\n```\nb");
        QCOMPARE(stream.blocks().size(), 2);
        const quint64 first = stream.revision(0);
        const quint64 second = stream.revision(1);
        stream.append(u"c\nd");
        QCOMPARE(stream.blocks().size(), 2);
        QCOMPARE(stream.revision(0), first);
        QVERIFY(stream.revision(1) != second);

        // A text that begins anew keeps the revision of what stays the same.
        const quint64 third = stream.revision(1);
        stream.setText(QStringLiteral("a\n\n```\nbc\nd\n```\n\n*e*"));
        QCOMPARE(stream.blocks().size(), 3);
        QVERIFY(stream.revision(1) != third);
        stream.setText(QStringLiteral("a\n\nother"));
        QCOMPARE(stream.blocks(), parseMarkdown(u"a\n\nother"));
        QCOMPARE(stream.revision(0), first);
        stream.setText(QString());
        QVERIFY(stream.blocks().isEmpty());
    }

    void laterDefinitionsServeEarlierTextAtTheEnd()
    {
        const QString text = QStringLiteral("see [a]\n\nand [b]\n\n[a]: http://x\n");
        MarkdownStream stream;
        stream.append(text);
        QVERIFY(stream.blocks() != parseMarkdown(text));
        const quint64 unaffected = stream.revision(1);
        stream.finish();
        QCOMPARE(stream.blocks(), parseMarkdown(text));
        QCOMPARE(stream.revision(1), unaffected);
        stream.append(u"more"); // after all
        QCOMPARE(stream.blocks().size(), 3);
    }

    void nullCharactersAndCutPairsAreTaken()
    {
        MarkdownStream stream;
        const QString text = QString::fromUtf8("a\0*😀*\n", 9);
        for (const QChar unit : text)
            stream.append(QStringView(&unit, 1));
        QCOMPARE(stream.blocks(), parseMarkdown(text));
        QCOMPARE(std::get<MarkdownParagraph>(stream.blocks().first().content).text.text,
                 QString::fromUtf8("a\ufffd😀"));
    }
};

QTEST_GUILESS_MAIN(MarkdownStreamTest)
#include "MarkdownStreamTest.moc"
