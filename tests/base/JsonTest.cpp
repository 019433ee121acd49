#include "base/JsonReader.h"
#include "base/JsonSyntax.h"
#include "base/JsonWriter.h"
#include "base/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QTest>

#include <array>
#include <cmath>
#include <limits>

using namespace varnel;

namespace {

std::string_view view(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

QString problemOf(const QByteArray& text)
{
    try {
        JsonParser parser;
        static_cast<void>(parser.parse(view(text)));
        return QString();
    } catch (const DecodeError& error) {
        return error.message();
    }
}

constexpr std::array validTexts{
    R"({"a":[1,-2.5e3,"x\ud83d\ude00\né",{"b":null}],"c":true,"d":{}})",
    R"([0,-0,0.0,-0.0e+00,1E-7,12345678901234567,0.1e1])",
    R"(["","\u0000","\"\\\/\b\f\n\r\t","\ud800","\udc00\ud800"])",
    " \t\r\n[ true , false,\n null ]\n ",
    "{\"\":{\"\":[[[[]]]]},\"\":1}",
    "[\"\xc2\x80\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf\"]",
    R"([{"id":"0123ABCD-89AB-CDEF-0123-456789ABCDEF","messages":[],"temperature":0.7}])",
    R"("text")",
    "-12.5",
    "null",
};

/// What is worth putting anywhere.
const QByteArrayList telling{",",
                             ":",
                             "[",
                             "]",
                             "{",
                             "}",
                             "\"",
                             "\\",
                             "\\u12",
                             "0",
                             "-",
                             "+",
                             ".",
                             "e",
                             "NaN",
                             "Infinity",
                             "//",
                             "/**/",
                             "'",
                             "\t",
                             "\x01",
                             "\x7f",
                             "\xc0\xaf",
                             "\xed\xa0\x80",
                             "\xef\xbb\xbf",
                             "\xc2\xa0",
                             "\xe2\x80\xa8"};

/// What Python says of each text: 'y' or 'n'; null where there is none. It would take NaN, infinities and
/// whole numbers of any size, which are refused here on purpose.
QByteArray verdictsOf(const QByteArrayList& texts)
{
    static const QString judge = QStringLiteral(R"(
import json, math, sys
def refuse(text): raise ValueError
def real(text):
    return float(text) if math.isfinite(float(text)) else refuse(text)
def whole(text):
    return int(text) if -2**63 <= int(text) < 2**64 else refuse(text)
def verdict(line):
    try:
        json.loads(bytes.fromhex(line).decode(), parse_constant=refuse, parse_float=real, parse_int=whole)
        return 'y'
    except ValueError:
        return 'n'
print(''.join(verdict(line[:-1]) for line in sys.stdin), end='')
)");
    QTemporaryFile input;
    if (!input.open())
        return {};
    for (const QByteArray& text : texts)
        input.write(text.toHex() + '\n');
    input.flush();
    QProcess python;
    python.setStandardInputFile(input.fileName());
    python.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), judge});
    return python.waitForFinished() && python.exitCode() == 0 ? python.readAllStandardOutput() : QByteArray();
}

struct Person
{
    QString name;
    std::vector<qint64> ages;
};

Person decodePerson(JsonValue value)
{
    const JsonObject person = value.object();
    return {person.required("name", &JsonValue::string),
            person.required("ages", listOf(&JsonValue::integer))};
}

} // namespace

class JsonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void brokenTextsNameThePlace_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("problem"); // empty: valid
        const auto at = [](const char* place, const char* what) {
            return QStringLiteral("not valid JSON (%1: %2)").arg(QLatin1String(place), QLatin1String(what));
        };
        QTest::newRow("valid") << QByteArray(R"({"a":[1,-0.5e+3,true,null,"\u00e9\n"]})") << QString();
        QTest::newRow("empty") << QByteArray() << at("line 1, column 1", "the text is empty");
        QTest::newRow("HTML") << QByteArray("<html>")
                              << at("line 1, column 1", "expected a value, found \"<\"");
        QTest::newRow("second line") << QByteArray("{\"ä\": 1,\n \"é\" 2}")
                                     << at("line 2, column 6", "expected \":\", found \"2\"");
        QTest::newRow("cut") << QByteArray("[1,2")
                             << at("line 1, column 5", "expected \",\" or \"]\", found the end");
        QTest::newRow("cut string") << QByteArray("[\"ab")
                                    << at("line 1, column 5", "the string does not end");
        QTest::newRow("trailing comma")
            << QByteArray("[1,]") << at("line 1, column 4", "expected a value, found \"]\"");
        QTest::newRow("rest") << QByteArray("{} x")
                              << at("line 1, column 4", "expected nothing more, found \"x\"");
        QTest::newRow("control") << QByteArray("[\"a\tb\"]")
                                 << at("line 1, column 4", "a control character inside a string");
        QTest::newRow("escape") << QByteArray("[\"\\x\"]") << at("line 1, column 4", "an unknown escape");
        QTest::newRow("leading zero")
            << QByteArray("[01]") << at("line 1, column 3", "expected \",\" or \"]\", found \"1\"");
        QTest::newRow("NaN") << QByteArray("[NaN]")
                             << at("line 1, column 2", "expected a value, found \"N\"");
        QTest::newRow("not UTF-8") << QByteArray("[\"ab\xff\"]")
                                   << at("line 1, column 5", "bytes that are not UTF-8");
        QTest::newRow("encoded surrogate")
            << QByteArray("[\"\xed\xa0\x80\"]") << at("line 1, column 3", "bytes that are not UTF-8");
        QTest::newRow("deep") << QByteArray(100000, '[') << at("line 1, column 1025", "nested too deeply");
    }
    void brokenTextsNameThePlace()
    {
        QFETCH(QByteArray, text);
        QTEST(problemOf(text), "problem");
    }

    // Another reader has the last word on what is valid: what is read and what is refused must be the same.
    void everyCutAndEveryFlippedByteIsReadOrRefused()
    {
        QByteArrayList texts;
        QRandomGenerator random(20261121);
        const auto place = [&random](const QByteArray& text) {
            return static_cast<qsizetype>(random.bounded(quint32(text.size())));
        };
        for (const char* const valid : validTexts) {
            const QByteArray text(valid);
            for (qsizetype length = 0; length <= text.size(); ++length)
                texts.append(text.first(length));
            for (int round = 0; round < 1500; ++round) {
                QByteArray mutated = text;
                mutated[place(mutated)] = char(random.bounded(256));
                if (round % 3 == 1)
                    mutated.insert(place(mutated), telling[random.bounded(quint32(telling.size()))]);
                if (round % 3 == 2)
                    mutated.remove(place(mutated), 1 + random.bounded(3));
                texts.append(mutated);
            }
        }
        const QByteArray verdicts = verdictsOf(texts);
        if (verdicts.isNull())
            QSKIP("there is no other reader here");
        QCOMPARE(verdicts.size(), texts.size());
        for (qsizetype i = 0; i < texts.size(); ++i) {
            const QString problem = problemOf(texts[i]);
            QVERIFY2(problem.isEmpty() == (verdicts[i] == 'y'),
                     texts[i] + ' ' + texts[i].toHex() + ' ' + problem.toUtf8());
        }
        QVERIFY(verdicts.count('y') > 1000);
    }

    void decodeErrorsNameThePath_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("wrong top") << QByteArray("{}") << "expected an array, found an object";
        QTest::newRow("missing") << QByteArray(R"([{"ages":[]}])") << "[0].name: missing";
        QTest::newRow("null") << QByteArray(R"([{"name":null,"ages":[]}])") << "[0].name: must not be null";
        QTest::newRow("deep") << QByteArray(R"([{"name":"a","ages":[]},{"name":"b","ages":[1,"x"]}])")
                              << "[1].ages[1]: expected a whole number, found a string";
        QTest::newRow("fraction") << QByteArray(R"([{"name":"a","ages":[1.5]}])")
                                  << "[0].ages[0]: expected a whole number, found a number";
        QTest::newRow("whole double") << QByteArray(R"([{"name":"a","ages":[1.0,9e3],"extra":{}}])") << "";
        QTest::newRow("too big") << QByteArray(R"([{"name":"a","ages":[1e19]}])")
                                 << "[0].ages[0]: expected a whole number, found a number";
    }
    void decodeErrorsNameThePath()
    {
        QFETCH(QByteArray, text);
        QString message;
        try {
            JsonParser parser;
            static_cast<void>(parser.parse(view(text)).list(&decodePerson));
        } catch (const DecodeError& error) {
            message = error.message();
        }
        QTEST(message, "message");
    }

    void loneSurrogatesBecomeReplacementCharacters()
    {
        const auto read = [](const QByteArray& text) {
            JsonParser parser;
            return parser.parse(view(text)).string();
        };
        QCOMPARE(read(R"("\ud83d\ude00")"), QString::fromUtf8("\xf0\x9f\x98\x80"));
        QCOMPARE(read(R"("a\ud83db")"), QString::fromUtf8("a\xef\xbf\xbd"
                                                          "b"));
        QCOMPARE(read(R"("\ude00\ud83d")"), QString::fromUtf8("\xef\xbf\xbd\xef\xbf\xbd"));
        QCOMPARE(read(R"("\ud83d\ud83d\ude00\\ud83d")"),
                 QString::fromUtf8("\xef\xbf\xbd\xf0\x9f\x98\x80\\ud83d"));

        const QString broken = QString(QChar(0xd83d)) + QLatin1Char('x') + QChar(0xde00);
        QCOMPARE(wellFormed(broken), QString::fromUtf8("\xef\xbf\xbdx\xef\xbf\xbd"));
        QCOMPARE(read(compactJson([&](JsonWriter& writer) { writer.string(broken); })), wellFormed(broken));
    }

    void whatIsWrittenReadsBack()
    {
        QString text;
        for (char16_t unit = 0; unit < 0x3000; ++unit)
            text += QChar(unit);
        text += QString::fromUtf8("\xf0\x9f\x98\x80");
        const QByteArray bytes(300'000, '\x9c');
        const QJsonObject nested{{QStringLiteral("big"), Q_INT64_C(9007199254740993)},
                                 {QStringLiteral("list"), QJsonArray{1.5, true, QJsonValue(), text}}};
        const QByteArray json = compactJson([&](JsonWriter& writer) {
            writer.beginArray();
            writer.string(text);
            writer.number(0.1);
            writer.number(std::numeric_limits<double>::denorm_min());
            writer.integer(std::numeric_limits<qint64>::min());
            writer.base64(bytes);
            writer.value(nested);
            writer.endArray();
        });
        const QJsonArray read = QJsonDocument::fromJson(json).array();
        QCOMPARE(read[0].toString(), text);
        QCOMPARE(read[1].toDouble(), 0.1);
        QCOMPARE(read[2].toDouble(), std::numeric_limits<double>::denorm_min());
        QCOMPARE(read[3].toInteger(), std::numeric_limits<qint64>::min());
        QCOMPARE(QByteArray::fromBase64(read[4].toString().toLatin1()), bytes);
        QCOMPARE(read[5].toObject(), nested);

        const QString marked = QStringLiteral(u"\uFEFF\uFEFFa\uFEFF");
        JsonParser parser;
        const QByteArray markedJson = compactJson([&](JsonWriter& writer) { writer.string(marked); });
        QCOMPARE(parser.parse(view(markedJson)).string(), marked);
    }

    // The writer looks at several units at a time and takes long texts in pieces.
    void writingDoesNotDependOnThePlace()
    {
        const QStringList specials{QStringLiteral("\n"),
                                   QStringLiteral("\""),
                                   QStringLiteral("\\\x01"),
                                   QStringLiteral("\u00fc"),
                                   QString::fromUtf8("\xf0\x9f\x98\x80"),
                                   QString(QChar(0xd83d)),
                                   QString(QChar(0xde00))};
        for (const QString& special : specials) {
            for (const qsizetype base : {qsizetype(0), qsizetype(8180)}) {
                for (qsizetype at = base; at < base + 40; ++at) {
                    const QString text = QString(at, u'a') + special + QString(20, u'b') + special;
                    const QByteArray json = compactJson([&](JsonWriter& writer) { writer.string(text); });
                    JsonParser parser;
                    QCOMPARE(parser.parse(view(json)).string(), wellFormed(text));
                }
            }
        }
    }

    void prettyTextsAreStreamed()
    {
        QByteArray text;
        qsizetype largest = 0;
        JsonWriter writer(JsonWriter::Style::Pretty, [&](std::string_view piece) {
            largest = std::max(largest, qsizetype(piece.size()));
            text.append(piece.data(), qsizetype(piece.size()));
        });
        writer.beginArray();
        writer.beginObject();
        writer.key("a");
        writer.string(u"x/\"y\"");
        writer.key("b");
        writer.beginArray();
        writer.endArray();
        writer.key("c");
        writer.beginObject();
        writer.endObject();
        writer.endObject();
        writer.string(QString(1'000'000, QLatin1Char('z')));
        writer.endArray();
        writer.finish();
        QVERIFY(text.startsWith(
            "[\n  {\n    \"a\": \"x/\\\"y\\\"\",\n    \"b\": [],\n    \"c\": {}\n  },\n  \"zzz"));
        QVERIFY(text.endsWith("z\"\n]\n"));
        QVERIFY(largest < 256 * 1024);
    }

    void numbersThatAreNotFiniteAreRefused()
    {
        for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL})
            QVERIFY_THROWS_EXCEPTION(Error,
                                     compactJson([value](JsonWriter& writer) { writer.number(value); }));
    }
};

QTEST_GUILESS_MAIN(JsonTest)
#include "JsonTest.moc"
