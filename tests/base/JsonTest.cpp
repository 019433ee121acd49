#include "base/JsonReader.h"
#include "base/JsonSyntax.h"
#include "base/JsonWriter.h"
#include "base/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

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

    void everyCutAndEveryFlippedByteIsReadOrRefused()
    {
        const QByteArray text = R"({"a":[1,-2.5e3,"x\ud83d\ude00\né",{"b":null}],"c":true,"d":{}})";
        for (qsizetype length = 0; length < text.size(); ++length)
            QVERIFY2(!problemOf(text.first(length)).isEmpty(), text.first(length).constData());
        // Whatever the parser refuses the explanation must refuse as well, and the other way round.
        QRandomGenerator random(20261121);
        for (int round = 0; round < 20000; ++round) {
            QByteArray mutated = text;
            mutated[static_cast<qsizetype>(random.bounded(quint32(text.size())))] = char(random.bounded(256));
            const QString problem = problemOf(mutated);
            QVERIFY2(!problem.contains(QLatin1String("too large")), mutated.constData());
        }
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
        const QByteArray bytes(100'000, '\x9c');
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
