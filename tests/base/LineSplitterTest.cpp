#include "base/LineSplitter.h"

#include <QTest>

#include <vector>

using namespace varnel;

namespace {

std::vector<std::string> split(const std::vector<std::string>& pieces, std::size_t limit = 1000)
{
    LineSplitter splitter(limit);
    std::vector<std::string> lines;
    const auto drain = [&] {
        while (const auto line = splitter.next())
            lines.push_back(line->tooLong ? std::string("(too long)") : std::string(line->text));
    };
    for (const std::string& piece : pieces) {
        splitter.append(QByteArrayView(piece.data(), qsizetype(piece.size())));
        drain();
    }
    splitter.finish();
    drain();
    return lines;
}

} // namespace

class LineSplitterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesDoNotDependOnTheCuts()
    {
        const std::string text = "one\ntwo\r\nthree\rfour\r\n\r\n\n\r\rfi\xe2\x80\xa8ve\n\xc3\xa9\rlast";
        const std::vector<std::string> expected{
            "one", "two", "three", "four", "", "", "", "", "fi\xe2\x80\xa8ve", "\xc3\xa9", "last"};
        QCOMPARE(split({text}), expected);
        for (std::size_t first = 0; first <= text.size(); ++first) {
            for (std::size_t second = first; second <= text.size(); ++second)
                QCOMPARE(
                    split({text.substr(0, first), text.substr(first, second - first), text.substr(second)}),
                    expected);
        }
        std::vector<std::string> bytes;
        for (const char byte : text)
            bytes.emplace_back(1, byte);
        QCOMPARE(split(bytes), expected);
    }

    void endsOfText()
    {
        QCOMPARE(split({}), std::vector<std::string>{});
        QCOMPARE(split({"a\n"}), std::vector<std::string>{"a"});
        QCOMPARE(split({"a\r", "\n"}), std::vector<std::string>{"a"});
        QCOMPARE(split({"a\r"}), std::vector<std::string>{"a"});
    }

    void longLinesAreReportedOnceAndEndTheStream()
    {
        const std::string fits(10, 'x');
        QCOMPARE(split({fits + "\n", fits, "\r\n"}, 10), (std::vector<std::string>{fits, fits}));
        QCOMPARE(split({"a\n" + fits + "y\nb\n", "c\n"}, 10), (std::vector<std::string>{"a", "(too long)"}));
        QCOMPARE(split({fits, "y", fits, "\nb\n"}, 10), std::vector<std::string>{"(too long)"});
    }
};

QTEST_GUILESS_MAIN(LineSplitterTest)
#include "LineSplitterTest.moc"
