#include "websearch/PageText.h"
#include "websearch/PageCharset.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <array>

using namespace varnel;

namespace {

/// The reduction as it is defined: one regular expression after the other.
QString reducedByExpressions(QString text)
{
    using Expression = QRegularExpression;
    const auto replace = [&text](const char* pattern, const char* replacement,
                                 Expression::PatternOptions options = Expression::NoPatternOption) {
        text.replace(Expression(QString::fromLatin1(pattern), options), QString::fromLatin1(replacement));
    };
    replace("<head[\\s\\S]*?</head>", "", Expression::CaseInsensitiveOption);
    replace("<script[\\s\\S]*?</script>", " ", Expression::CaseInsensitiveOption);
    replace("<style[\\s\\S]*?</style>", " ", Expression::CaseInsensitiveOption);
    replace("<[^>]+>", " ");
    replace("\\s+", " ", Expression::UseUnicodePropertiesOption);
    if (text.startsWith(u' '))
        text.remove(0, 1);
    if (text.endsWith(u' '))
        text.chop(1);
    return firstCharacters(text, 12'000);
}

/// Words that make and break the elements the reduction looks for.
QString generatedPage(QRandomGenerator& random)
{
    static const std::array words = {
        u"<head",     u"<HEAD>",    u"</head>",  u"</HeAd>",
        u"</head",    u"<header>",  u"<script",  u"<SCRIPT src='a'>",
        u"</script>", u"</ſcript>", u"<ſcript>", u"<style>",
        u"</STYLE>",  u"</style >", u"<sty",     u"le>",
        u"<p>",       u"<",         u">",        u"<>",
        u"</>",       u"< >",       u"<a\nb>",   u"<!-- > -->",
        u" ",         u"\n\t",      u"\u00a0",   u"\u2028",
        u"\u180e",    u"\u3000",    u"text",     u"ü€",
        u"😀",        u"e\u0301",   u"&nbsp;",   u"\u0085",
        u"\v",        u"<title>",   u"ipt>",     u"<scr",
    };
    QString page;
    const int count = random.bounded(60);
    for (int i = 0; i < count; ++i)
        page += QString::fromUtf16(words.at(static_cast<std::size_t>(random.bounded(int(words.size())))));
    return page;
}

} // namespace

class PageTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scannersAgreeWithTheExpressions()
    {
        QRandomGenerator random(20261121);
        for (int i = 0; i < 8'000; ++i) {
            const QString page = generatedPage(random);
            const QString reduced = reducePage(page).text;
            const QString expected = reducedByExpressions(page);
            QVERIFY2(reduced == expected,
                     qPrintable(QStringLiteral("%1\n%2\n%3").arg(page, reduced, expected)));
        }
        // Long enough to be cut, at every place relative to a character made of several.
        for (int i = 0; i < 40; ++i) {
            const QString page =
                QStringLiteral("<p>") + QString(i, u'x') + QStringLiteral("a<b> 😀e\u0301").repeated(3000);
            QCOMPARE(reducePage(page).text, reducedByExpressions(page));
        }
    }

    void hostilePagesAreReducedToo_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("text"); // how it begins
        constexpr int size = 4 * 1024 * 1024;
        const auto filled = [](const QString& pattern) { return pattern.repeated(size / pattern.size()); };
        QTest::newRow("unclosed tags") << filled(QStringLiteral("<a ")) << QStringLiteral("<a <a");
        QTest::newRow("empty tags") << filled(QStringLiteral("<>")) << QStringLiteral("<><>");
        QTest::newRow("opened heads") << filled(QStringLiteral("<head")) << QStringLiteral("<head<head");
        QTest::newRow("closed scripts") << filled(QStringLiteral("<script></script>")) << QString();
        QTest::newRow("long head") << QStringLiteral("<head>") + QString(size, u'x') +
                                          QStringLiteral("</head>text")
                                   << QStringLiteral("text");
        QTest::newRow("titles") << filled(QStringLiteral("<titles")) << QStringLiteral("<titles<titles");
        QTest::newRow("blanks") << QString(size, u' ') << QString();
        QTest::newRow("one endless character")
            << QStringLiteral("a") + QString(size, QChar(0x0301)) << QStringLiteral("a");
    }
    void hostilePagesAreReducedToo()
    {
        QFETCH(QString, page);
        QFETCH(QString, text);
        const QString reduced = reducePage(page).text;
        QVERIFY(reduced.startsWith(text));
        QCOMPARE(reduced.isEmpty(), text.isEmpty());
        QVERIFY(reduced.size() <= 12'000);
    }

    void titlesAreOneLine_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("title");
        const auto row = [](const char* page, const QString& title) {
            QTest::addRow("%s", page) << QString::fromUtf8(page) << title;
        };
        row("<head><TITLE lang=de>\n A  b </Title></head>", QStringLiteral("A b"));
        row("<titles>no</titles><title>yes</title><title>no</title>", QStringLiteral("yes"));
        row("<title>never closed", QString());
        row("<p>none", QString());
        row("<title", QString());
        QTest::newRow("long") << QStringLiteral("<title>%1</title>").arg(QString(5000, u'x'))
                              << QString(300, u'x');
    }
    void titlesAreOneLine()
    {
        QFETCH(QString, page);
        QTEST(reducePage(page).title, "title");
    }

    void cutsKeepCharactersWhole()
    {
        const QString family = QStringLiteral("👩\u200d👧e\u0301");
        QCOMPARE(firstCharacters(family, 5), family);
        QCOMPARE(firstCharacters(family, 4), QStringLiteral("👩\u200d👧"));
        QCOMPARE(firstCharacters(QStringLiteral("ab") + family, 4), QStringLiteral("ab"));
        QCOMPARE(firstCharacters(QStringLiteral("x\r\ny"), 2), QStringLiteral("x"));
        QCOMPARE(firstCharacters(QStringLiteral("😀😀"), 1), QStringLiteral("😀"));
    }

    void charactersAreReadAsDeclared_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("contentType");
        QTest::addColumn<QString>("text");
        const QByteArray japanese = QByteArray::fromHex("836583588367");
        const QString test = QStringLiteral("テスト");
        const auto meta = [](const QByteArray& declaration) { return "<meta " + declaration + ">"; };
        const QByteArray sjis = "charset=\"Shift_JIS\"";
        QTest::newRow("header") << japanese << QByteArray("text/html; Charset = \"shift_jis\"") << test;
        QTest::newRow("meta") << meta(sjis) + japanese << QByteArray("text/html")
                              << QString::fromLatin1(meta(sjis)) + test;
        QTest::newRow("header before meta")
            << meta("charset=koi8-r") + japanese << QByteArray("text/html;charset=x-sjis")
            << QStringLiteral("<meta charset=koi8-r>") + test;
        const QByteArray oldMeta = meta("http-equiv=Content-Type content='text/html; charset=windows-1251'");
        QTest::newRow("old meta") << oldMeta + "\xcf\xf0" << QByteArray()
                                  << QString::fromLatin1(oldMeta) + QStringLiteral("Пр");
        QTest::newRow("unknown name")
            << QByteArray("\xc3\xbc") << QByteArray("text/html; charset=none-such") << QStringLiteral("ü");
        QTest::newRow("mark before header") << QByteArray("\xef\xbb\xbf\xc3\xbc")
                                            << QByteArray("text/html; charset=koi8-r") << QStringLiteral("ü");
        QTest::newRow("UTF-16 mark") << QByteArray("\xff\xfe\xfc\x00", 4) << QByteArray("text/html")
                                     << QStringLiteral("ü");
        QTest::newRow("impossible meta") << meta("charset=utf-16") + "\xc3\xbc" << QByteArray()
                                         << QStringLiteral("<meta charset=utf-16>ü");
        QTest::newRow("Latin 1 means Windows")
            << QByteArray("\x80") << QByteArray("text/plain;charset=iso-8859-1") << QStringLiteral("€");
        QTest::newRow("nothing, UTF-8")
            << QByteArray("\xe2\x82\xac") << QByteArray("text/html") << QStringLiteral("€");
        QTest::newRow("nothing, not UTF-8")
            << QByteArray("\x93x\x94") << QByteArray("text/html") << QStringLiteral("“x”");
        QTest::newRow("cut character")
            << QByteArray("a\xe2\x82") << QByteArray("text/html") << QStringLiteral("a");
        QTest::newRow("lone surrogate")
            << QByteArray("\xff\xfe\x00\xd8\x41\x00", 6) << QByteArray() << QStringLiteral("\uFFFDA");
    }
    void charactersAreReadAsDeclared()
    {
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, contentType);
        QTEST(decodePage(body, contentType), "text");
    }
};

QTEST_GUILESS_MAIN(PageTextTest)
#include "PageTextTest.moc"
