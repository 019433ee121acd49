#include "ui/LineDiff.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>

using namespace varnel;
using Kind = DiffLine::Kind;

namespace {

/// One side of a comparison from which nothing is left out.
QString side(const std::vector<DiffLine>& lines, Kind own)
{
    QString text;
    for (const DiffLine& line : lines) {
        if (line.kind == Kind::Same || line.kind == own)
            text += line.text + QLatin1Char('\n');
    }
    return text;
}

qsizetype count(const std::vector<DiffLine>& lines, Kind kind)
{
    return std::ranges::count(lines, kind, &DiffLine::kind);
}

} // namespace

class LineDiffTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothSidesComeBack()
    {
        QRandomGenerator random(7);
        const auto text = [&random] {
            QString lines;
            for (int i = random.bounded(5); i > 0; --i)
                lines += QChar(u'a' + random.bounded(3)) + QStringLiteral("\n");
            return lines;
        };
        for (int round = 0; round < 3000; ++round) {
            const QString before = text();
            const QString after = text();
            const std::vector<DiffLine> lines = lineDiff(before, after);
            if (before == after)
                continue; // is left out as a whole
            QCOMPARE(count(lines, Kind::Left), 0);
            QCOMPARE(side(lines, Kind::Removed), before);
            QCOMPARE(side(lines, Kind::Added), after);
        }
    }

    void aChangeIsShownWithWhatIsAround()
    {
        QStringList before;
        for (int i = 0; i < 100; ++i)
            before.append(QString::number(i));
        QStringList after = before;
        after[50] = QStringLiteral("new");
        const std::vector<DiffLine> lines =
            lineDiff(before.join(QLatin1Char('\n')), after.join(QLatin1Char('\n')));
        QCOMPARE(lines.size(), 10U);
        QCOMPARE(lines.front(), (DiffLine{.kind = Kind::Left, .text = QStringLiteral("47 lines")}));
        QCOMPARE(lines[4], (DiffLine{.kind = Kind::Removed, .text = QStringLiteral("50")}));
        QCOMPARE(lines[5], (DiffLine{.kind = Kind::Added, .text = QStringLiteral("new")}));
        QCOMPARE(lines.back(), (DiffLine{.kind = Kind::Left, .text = QStringLiteral("46 lines")}));
    }

    void itStaysSmallWhateverIsCompared()
    {
        QString before;
        QString after;
        for (int i = 0; i < 20'000; ++i) {
            before += QStringLiteral("old %1\n").arg(i);
            after += QStringLiteral("new %1\n").arg(i);
        }
        const std::vector<DiffLine> lines = lineDiff(before, after);
        QVERIFY(lines.size() < 5000);
        QCOMPARE(lines.back().kind, Kind::Left);
        QCOMPARE(lineDiff({}, QString(1'000'000, QLatin1Char('x'))).front().text.size(), 500);
    }
};

QTEST_GUILESS_MAIN(LineDiffTest)
#include "LineDiffTest.moc"
