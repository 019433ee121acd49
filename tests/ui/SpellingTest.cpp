#include "ui/ComposerFixture.h"
#include "ui/SpellMarks.h"
#include "ui/SpelledWords.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

bool hasDictionary()
{
    return !systemSpellChecker({QStringLiteral("en_US")})->isRight(QStringLiteral("wrold"));
}

} // namespace

class SpellingTest : public QObject
{
    Q_OBJECT

public:
    /// Before anything asks for the languages of the user.
    static void initMain() { qputenv("LANGUAGE", "en_US"); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_ownWords.isValid());
        qputenv("ENCHANT_CONFIG_DIR", m_ownWords.path().toUtf8());
    }

    void onlyProseIsLookedAt_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("words");
        const auto row = [](const char* name, const char* text, const QStringList& words) {
            QTest::newRow(name) << QString::fromUtf8(text) << words;
        };
        const auto words = [](const char* text) { return QString::fromUtf8(text).split(QLatin1Char(' ')); };
        row("a sentence", "He said: \"Don\u2019t go!\" (twice)", words("He said Don\u2019t go twice"));
        row("addresses", "see www.exmaple.org or https://exmaple.org/a?b=c or me@exmaple.org too",
            words("see or or too"));
        row("paths and names", "open src/mian.cpp, my_vlaue and myVlaue in USA", words("open and in"));
        row("digits", "take 3rd x86 v2b now", words("take now"));
        row("a span of code", "run `git psuh now` once", words("run once"));
        row("a fenced block", "before\n```cpp\nwrold\n~~~\n````\nafter", words("before after"));
        row("a fence that stays open", "before\n  ~~~\nwrold", words("before"));
        row("three marks in a line are no fence", "```wrold``` is\nafter", words("is after"));
        row("another script", "\u041f\u0440\u0438\u0432\u0435\u0442 my \u4e16\u754c caf\u00e9",
            words("my caf\u00e9"));
    }
    void onlyProseIsLookedAt()
    {
        QFETCH(QString, text);
        QStringList found;
        int fence = 0;
        for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
            for (const WordRange& word : wordsToSpell(paragraph, {QChar::Script_Latin}, fence))
                found.append(paragraph.mid(word.start, word.length));
        }
        QTEST(found, "words");
    }

    void theDictionariesOfTheDesktopAreAsked()
    {
        const auto nobody = systemSpellChecker({QStringLiteral("xx_XX")});
        QVERIFY(nobody->isRight(QStringLiteral("wrold")));
        QCOMPARE(nobody->suggestions(QStringLiteral("wrold")), QStringList());
        nobody->add(QStringLiteral("wrold"));
        if (!hasDictionary())
            QSKIP("there is no English dictionary; scripts/setup installs hunspell-en-us");
        const auto checker = systemSpellChecker({QStringLiteral("xx"), QStringLiteral("en_US")});
        QVERIFY(checker->isRight(QStringLiteral("don't")));
        QVERIFY(checker->suggestions(QStringLiteral("wrold")).contains(QStringLiteral("world")));
        QVERIFY(!checker->isRight(QStringLiteral("varneling")));
        checker->add(QStringLiteral("varneling"));
        QVERIFY(checker->isRight(QStringLiteral("varneling")));
        QVERIFY(systemSpellChecker({QStringLiteral("en_US")})->isRight(QStringLiteral("varneling")));
    }

    void aWrongWordIsMarkedOnceItIsWritten()
    {
        if (!hasDictionary())
            QSKIP("there is no English dictionary; scripts/setup installs hunspell-en-us");
        ComposerFixture fixture;
        auto* const marks = fixture.window->findChild<SpellMarks*>();
        QVERIFY(marks);
        const auto marked = [&](const char* words) {
            const QStringList expected = QString::fromLatin1(words).split(QLatin1Char(' '));
            return waitUntil([&] { return marks->marked() == expected; });
        };
        fixture.type(QStringLiteral("hello wrold agian. teh"));
        QVERIFY(marked("wrold agian")); // teh may become tehran
        fixture.type(QStringLiteral(" "));
        QVERIFY(marked("wrold agian teh"));

        const QImage before = fixture.window->grabWindow();
        marks->choose(14);
        marks->ignoreWord();
        QVERIFY(marked("wrold teh"));
        QVERIFY(fixture.window->grabWindow() != before);

        fixture.press(Qt::Key_Home);
        for (int i = 0; i < 8; ++i)
            fixture.press(Qt::Key_Right);
        const QSignalSpy chosen(marks, &SpellMarks::chosen);
        fixture.press(Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(waitUntil([&] { return chosen.count() > 0; }));
        QCOMPARE(marks->suggestions().value(0), QStringLiteral("world"));
        fixture.press(Qt::Key_Down);
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return fixture.app.draft().startsWith(QStringLiteral("hello world ")); }));
        QVERIFY(marked("teh"));

        fixture.app.setDraft(QStringLiteral("wrold\n```\nteh\n```\nteh"));
        QVERIFY(marked("wrold teh"));
    }

private:
    QTemporaryDir m_ownWords;
};

QTEST_MAIN(SpellingTest)
#include "SpellingTest.moc"
