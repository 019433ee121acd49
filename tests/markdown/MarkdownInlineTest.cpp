#include "markdown/Markdown.h"

#include <QTest>

using namespace varnel;

namespace {

/// The text of a paragraph with a mark around every styled stretch: the letters of its styles, the text, and
/// the destination and title if it is a link. A hard break is "//".
QString marked(const QString& source)
{
    const QList<MarkdownBlock> blocks = parseMarkdown(source);
    const auto* const paragraph =
        blocks.size() == 1 ? std::get_if<MarkdownParagraph>(&blocks.first().content) : nullptr;
    if (!paragraph)
        return QStringLiteral("not one paragraph");
    const MarkdownText& text = paragraph->text;
    QString output;
    qsizetype end = 0;
    for (const MarkdownRange& range : text.ranges) {
        output += text.text.sliced(end, range.start - end) + u'{';
        for (int style = 0; style < 8; ++style) {
            if (range.styles.toInt() & (1 << style))
                output += QStringView(u"SEDCLIMB")[style];
        }
        output += u':' + text.text.sliced(range.start, range.length);
        if (range.link >= 0)
            output += u'|' + text.links[range.link].destination + u'|' + text.links[range.link].title;
        output += u'}';
        end = range.start + range.length;
    }
    output += text.text.sliced(end);
    return output.replace(QChar::LineSeparator, QStringLiteral("//"));
}

void addRow(const char* name, const char* text, const char* expected)
{
    QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(expected);
}

} // namespace

class MarkdownInlineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void spans_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        addRow("plain", "a snake_case_name, 2 * 3, www, x: y", "a snake_case_name, 2 * 3, www, x: y");
        addRow("nested", "*a **b*** ~~c~~", "{E:a }{SE:b} {D:c}");
        addRow("escapes", "\\*a\\* \\\\ \\d \\`e` f\\", "*a* \\ \\d `e` f\\");
        addRow("references", "&amp;&#65;&#x1F600;&eacute;&nosuch;&#0;", "&A😀é&nosuch;\ufffd");
        addRow("beyond ASCII", "**日本** 😀*é*", "{S:日本} 😀{E:é}");
        addRow("breaks", "a \nb  \nc\\\n   d", "a\nb//c//d");
        addRow("emphasis over lines", "_a\nb_  \n_c_", "{E:a\nb}//{E:c}");

        addRow("code", "`a*b*` ``c`d`` ` e ` `` f", "{C:a*b*} {C:c`d} {C:e} `` f");
        addRow("code over lines", "`a\nb`", "{C:a b}");
        addRow("code in a link", "[`a`](b)", "{CL:a|b|}");
        addRow("code at emphasis", "**`a`**b _`c`_", "**{C:a}**b {EC:c}");
        addRow("code before link", "[a`](b)`", "[a{C:](b)}");

        addRow("link", "[a *b*](<c d> \"e &amp; `f`\") [g]()",
               "{L:a |c d|e & `f`}{EL:b|c d|e & `f`} {L:g||}");
        addRow("image", "![a](b.png 't') ![](c.png) [![d](e)](f)",
               "{I:a|b.png|t} {I:c.png|c.png|} {LI:d|f|}");
        addRow("placeholder in a destination", "[a](http://b/`c`?$d$=http://e)",
               "{L:a|http://b/`c`?$d$=http://e|}");
        addRow("reserved characters", "*\uFDD0\uFDD1\uA874\uA875\v*\f\x01",
               "{E:\uFDD0\uFDD1\uA874\uA875\v}\f\x01");
    }
    void spans()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(marked(text), expected);
    }

    void bareLinksAndFormulas_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        addRow("angle links", "<http://a?b=*c*> <mailto:d> <e@f.g> <h> <script:alert(1)>",
               "{L:http://a?b=*c*|http://a?b=*c*|} {L:mailto:d|mailto:d|} {L:e@f.g|mailto:e@f.g|} <h> "
               "{L:script:alert(1)|script:alert(1)|}");
        addRow("bare links", "See http://localhost:11434/a_b_c, (www.d.e/f_(g)). HTTPS://h?i=&lt;",
               "See {L:http://localhost:11434/a_b_c|http://localhost:11434/a_b_c|}, "
               "({L:www.d.e/f_(g)|http://www.d.e/f_(g)|}). {L:HTTPS://h?i=|HTTPS://h?i=|}<");
        addRow("bare links in markup", "**http://a.b** [http://c.d](http://e.f) 见https://g。",
               "{SL:http://a.b|http://a.b|} {L:http://c.d|http://e.f|} 见{L:https://g|https://g|}。");
        addRow("no bare links", "xhttp://a http:// www. a@b @c.d ftp://e.f",
               "xhttp://a http:// www. a@b @c.d ftp://e.f");
        addRow("mail", "a_b@c.d, x+y@z-w.org.",
               "{L:a_b@c.d|mailto:a_b@c.d|}, {L:x+y@z-w.org|mailto:x+y@z-w.org|}.");

        addRow("maths", "$a_b*c$ and \\(d_e\\), \\[f\\] or $$g$$ *$h$*",
               "{M:a_b*c} and {M:d_e}, {B:f} or {B:g} {EM:h}");
        addRow("prices", "$5 and $10, and 3$x$ $ y $ $z$1", "$5 and $10, and 3$x$ $ y $ $z$1");
        addRow("escaped dollars", "\\$a$ $b\\$c$ `$d$` $e `$f`", "$a$ {M:b\\$c} {C:$d$} $e {C:$f}");
        addRow("dollar runs", "$$$a$$$ $ $$ a", "$$$a$$$ $ $$ a");
        addRow("unclosed maths", "\\(a *b* \\[c", "(a {E:b} [c");
    }
    void bareLinksAndFormulas()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(marked(text), expected);
    }

    void longTextsKeepEveryCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("words")
            << QStringLiteral("some *words* in `order` at http://a.b ").repeated(5000).trimmed();
        QTest::newRow("lines") << QStringLiteral("a **line**\n").repeated(9000).trimmed();
        QTest::newRow("no spaces") << QStringLiteral("日*本*語😀`x`").repeated(9000);
        QTest::newRow("digits") << QStringLiteral("*1*") + QString(50'000, u'2') + QStringLiteral("`3`\\");
    }
    void longTextsKeepEveryCharacter()
    {
        QFETCH(QString, text);
        const QList<MarkdownBlock> blocks = parseMarkdown(text);
        QCOMPARE(blocks.size(), 1);
        QString parsed = std::get<MarkdownParagraph>(blocks.first().content).text.text;
        // Emphasis that spans a cut may stay as it is written: compare what remains without it.
        QCOMPARE(parsed.remove(u'*'), QString(text).remove(u'*').remove(u'`'));
    }
};

QTEST_GUILESS_MAIN(MarkdownInlineTest)
#include "MarkdownInlineTest.moc"
