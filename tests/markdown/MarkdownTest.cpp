#include "markdown/Markdown.h"
#include "markdown/LinkTarget.h"
#include "markdown/MarkdownExport.h"

#include <QRegularExpression>
#include <QTest>

using namespace varnel;

namespace {

/// Blocks as HTML without line feeds between elements: one line for a comparison.
QString shown(const QString& text)
{
    return htmlText(parseMarkdown(text)).trimmed().replace(QStringLiteral(">\n<"), QStringLiteral("><"));
}

int depthOf(const QList<MarkdownBlock>& blocks)
{
    int deepest = 0;
    for (const MarkdownBlock& block : blocks) {
        if (const auto* const quote = std::get_if<MarkdownQuote>(&block.content))
            deepest = std::max(deepest, 1 + depthOf(quote->blocks));
        if (const auto* const list = std::get_if<MarkdownList>(&block.content)) {
            for (const MarkdownItem& item : list->items)
                deepest = std::max(deepest, 1 + depthOf(item.blocks));
        }
    }
    return deepest;
}

void addRow(const char* name, const char* text, const char* expected)
{
    QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(expected);
}

} // namespace

class MarkdownTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("html");
        addRow("headings", "# a #\n####### b\nc\n-\n#d", "<h1>a</h1><h2>####### b\nc</h2><p>#d</p>");
        addRow("rule or list", "* * *\n- a\n- - -", "<hr><ul><li>a</li></ul><hr>");
        addRow("tight", "- a\n  - b\n\n    c\n- d",
               "<ul><li>a<ul><li><p>b</p><p>c</p></li></ul></li><li>d</li></ul>");
        addRow("loose", "1) a\n\n1) b", "<ol start=\"1\"><li><p>a</p></li><li><p>b</p></li></ol>");
        addRow("blank in code", "- ```\n  a\n\n  b\n  ```\n- c",
               "<ul><li><pre><code>a\n\nb\n</code></pre></li><li>c</li></ul>");
        addRow("blank in quote", "- > a\n  >\n- b",
               "<ul><li><blockquote><p>a</p></blockquote></li><li>b</li></ul>");
        addRow("empty item", "* a\n*\n\n* c", "<ul><li><p>a</p></li><li></li><li><p>c</p></li></ul>");
        addRow("another list", "- a\n+ b\n1. c\n2) d",
               "<ul><li>a</li></ul><ul><li>b</li></ul><ol start=\"1\"><li>c</li></ol><ol "
               "start=\"2\"><li>d</li></ol>");
        addRow("year is no list", "in\n1986. a\n*\nb", "<p>in\n1986. a\n*\nb</p>");
        addRow("lazy quote", "> a\nb\n\nc", "<blockquote><p>a\nb</p></blockquote><p>c</p>");
        addRow("tabs", "- a\n\n\t\tb\n>\t\tc",
               "<ul><li><p>a</p><pre><code>  b\n</code></pre></li></ul><blockquote><pre><code>  "
               "c\n</code></pre></blockquote>");
        addRow("tasks", "- [x] a\n- [ ] b\n- [y] c\n- [x]d",
               "<ul><li>☑ a</li><li>☐ b</li><li>[y] c</li><li>[x]d</li></ul>");
        addRow("line ends", "a\r\nb\rc\n\r\n# d\r", "<p>a\nb\nc</p><h1>d</h1>");
        addRow("html is text", "<div onclick=x>\n*a*\n</div>\n<!-- b -->",
               "<p>&lt;div onclick=x&gt;\n<em>a</em>\n&lt;/div&gt;\n&lt;!-- b --&gt;</p>");
        addRow("definition later", "[a] [b][c] [d]\n\n[A]: http://x\n[c]: <http://y> 'z'\n[a]: http://no",
               "<p><a href=\"http://x\">a</a> <a href=\"http://y\">b</a> [d]</p>");
    }
    void blocks()
    {
        QFETCH(QString, text);
        QFETCH(QString, html);
        QCOMPARE(shown(text), html);
    }

    void tablesAndFormulas_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("html");
        // The parser underneath does not see these as tables, or loses a cell.
        addRow("table after text", "a\n| b | c |\n|--|:-:|\n| d | e |\n- f",
               "<p>a</p><table><tr><th>b</th><th align=\"center\">c</th></tr>"
               "<tr><td>d</td><td align=\"center\">e</td></tr></table><ul><li>f</li></ul>");
        addRow("empty cell", "a|b|c\n-|-|-\nd || e\n|||\nf",
               "<table><tr><th>a</th><th>b</th><th>c</th></tr><tr><td>d</td><td></td><td>e</td></tr>"
               "<tr><td></td><td></td></tr><tr><td>f</td></tr></table>");
        addRow("bars in cells", "a|b\n-|-\n`c\\|d`|e\\|*f*|g",
               "<table><tr><th>a</th><th>b</th></tr><tr><td><code>c|d</code></td><td>e|<em>f</em></td></tr></"
               "table>");
        addRow(
            "table in a list", "1. a\n   b|c\n   -|-\n   d|e\nf",
            "<ol start=\"1\"><li>a<table><tr><th>b</th><th>c</th></tr><tr><td>d</td><td>e</td></tr></table>"
            "</li></ol><p>f</p>");
        addRow("no table", "a|b\n-|-|-\n\nc\n-", "<p>a|b\n-|-|-</p><h2>c</h2>");

        addRow("display maths", "so\n$$ a_b $$\nand\n\\[\nx\n= y\n- z\n\\]. Then",
               "<p>so</p><p>$$a_b$$</p><p>and</p><p>$$x\n= y\n- z$$</p><p>. Then</p>");
        addRow("maths in an item", "- $$\n  a\n  $$\n- b", "<ul><li><p>$$a$$</p></li><li>b</li></ul>");
        addRow("no maths", "$$ is the shell\n- a\n\n$$\nb\n\n$$\n```\nc",
               "<p>$$ is the shell</p><ul><li>a</li></ul><p>$$\nb</p><p>$$</p><pre><code>c\n</code></pre>");
    }
    void tablesAndFormulas()
    {
        QFETCH(QString, text);
        QFETCH(QString, html);
        QCOMPARE(shown(text), html);
    }

    void codeBlocksKeepInfoTextAndState()
    {
        const QString text =
            QStringLiteral("- a\n  ```path: src/app.py\n  def f():\n      pass\n  ```\n"
                           "  1. b\n     ~~~~ c &amp; d\\* `e`  \n      x\n     ~~~\n     ~~~~\n"
                           "> > ```js\n> > y\n> no longer\n\n"
                           "    indented\n\n      more\n\n```\n```\n"
                           "``` path:z&period;txt\n\ttab\n\n``\n");
        const QList<MarkdownCode> expected = {
            {QStringLiteral("path: src/app.py"), QStringLiteral("def f():\n    pass"), true},
            {QStringLiteral("c & d* `e`"), QStringLiteral(" x\n~~~"), true},
            {QStringLiteral("js"), QStringLiteral("y"), false},
            {QString(), QStringLiteral("indented\n\n  more"), true},
            {QString(), QString(), true},
            {QStringLiteral("path:z.txt"), QStringLiteral("\ttab\n\n``"), false},
        };
        QCOMPARE(codeBlocks(text), expected);
    }

    void nothingNestsDeeperThanTheLimit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quotes") << QStringLiteral("> ").repeated(100'000);
        QTest::newRow("lists") << QStringLiteral("- ").repeated(100'000) + u'a' + QString(100'000, u'\n');
        QString steps;
        for (int level = 0; level < 300; ++level)
            steps += QString(2 * level, u' ') + QStringLiteral("- a\n");
        QTest::newRow("steps") << steps;
        QTest::newRow("mixed") << QStringLiteral("> 1. - ").repeated(30'000);
    }
    void nothingNestsDeeperThanTheLimit()
    {
        QFETCH(QString, text);
        const QList<MarkdownBlock> blocks = parseMarkdown(text);
        QCOMPARE(depthOf(blocks), MarkdownBlock::maximumDepth);
        QVERIFY(!htmlText(blocks).isEmpty());
    }

    // Each of these takes minutes, or the stack, where some step is not linear; the test's time limit tells.
    void hostileTextsEnd_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* const pattern :
             {"[",     "]",        "![",         "[a](", "[a](<b",      "[a](b \"",
              "[[a]",  "`",        "`a``b",      "*",    "*a **b ",     "a**b",
              "_a ",   "~a",       "&",          "<a:",  "(http://a.b", "a@b.",
              "$a",    "$$a ",     "\\(",        "\\[ ", "|a",          "a|b\n-|-\n",
              "```\n", "[a]: b\n", "[a]: b '\n", "$$\n", "é",           "\xf0\x9f\x98\x80",
              "1*",    "![](a)",   "a\n>",       "\t",   "\\"}) {
            const QString text = QString::fromUtf8(pattern);
            QTest::newRow(pattern) << text.repeated(300'000 / text.size());
        }
        QTest::newRow("nested links")
            << QStringLiteral("[").repeated(100'000) + QStringLiteral("](a)").repeated(100'000);
        QTest::newRow("nested brackets and a definition")
            << QStringLiteral("[").repeated(100'000) + QString(100'000, u']') + QStringLiteral("\n\n[a]: b");
        QTest::newRow("long definition used often") << QStringLiteral("[a]: ") + QString(200'000, u'x') +
                                                           QStringLiteral("\n\n") +
                                                           QStringLiteral("[a] ![][a]").repeated(30'000);
        QTest::newRow("wide table") << QStringLiteral("|a").repeated(50'000) + u'\n' +
                                           QStringLiteral("|-").repeated(50'000) + u'\n' +
                                           QStringLiteral("|\n").repeated(50'000);
    }
    void hostileTextsEnd()
    {
        QFETCH(QString, text);
        const QList<MarkdownBlock> blocks = parseMarkdown(text);
        QVERIFY(plainText(blocks).size() <= 30 * text.size());
    }

    void plainTextReadsWell()
    {
        const QString text = QStringLiteral(
            "# A *b*\n\n1. c\n   d  \n   e\n\n   ```\n   f\n\n   g\n   ```\n2. - [x] h\n   - i\n\n"
            "> j `k`\n\n[l](http://m) $n$\n\no|p\n-|-\nq|r\n");
        QCOMPARE(plainText(parseMarkdown(text)),
                 QStringLiteral("A b\n\n1. c\n   d\n   e\n\n   f\n\n   g\n\n2. • [x] h\n   • i\n\nj k\n\nl "
                                "$n$\n\no\tp\nq\tr"));
    }

    void htmlHoldsNoForeignMarkup()
    {
        const QString text =
            QStringLiteral("<img src=x onerror=a>\n\n![<b>](http://i.png \"t\") ![](file:///etc/passwd)\n\n"
                           "[c](javascript:d) [\"e\"](http://f/?\"<g>&h) `<i>` \"j\" *<k>*\n\n"
                           "```<l>\n</code><m>\n```\n\n$<n>$ <o:p> &lt;q&gt;\n");
        const QString html = htmlText(parseMarkdown(text));
        QString rest = html;
        rest.remove(QRegularExpression(QStringLiteral("</?(p|pre|code|em|a)>|<a href=\"http://[^\"<>]*\">")));
        QVERIFY2(!rest.contains(u'<') && !rest.contains(u'>'), qPrintable(html));
        QVERIFY2(!html.contains(QStringLiteral("href=\"javascript")) &&
                     !html.contains(QStringLiteral("href=\"file")),
                 qPrintable(html));
    }

    void openableLinks_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("openable");
        QTest::newRow("http") << "http://a.b/c?d#e" << true;
        QTest::newRow("upper case") << "HTTPS://A.B" << true;
        QTest::newRow("port") << "http://localhost:11434/api" << true;
        QTest::newRow("mail") << "mailto:a@b.c" << true;
        QTest::newRow("file") << "file:///etc/passwd" << false;
        QTest::newRow("script") << "javascript:alert(1)" << false;
        QTest::newRow("hidden script") << "java\nscript:alert(1)" << false;
        QTest::newRow("data") << "data:text/html,a" << false;
        QTest::newRow("own scheme") << "varnel://a" << false;
        QTest::newRow("relative") << "a/b.html" << false;
        QTest::newRow("no scheme") << "//a.b/c" << false;
        QTest::newRow("no host") << "http:///etc/passwd" << false;
        QTest::newRow("opaque") << "http:a.b" << false;
        QTest::newRow("backslash") << "http://a.b\\@c.d" << false;
        QTest::newRow("space") << " http://a.b" << false;
        QTest::newRow("no address") << "mailto:" << false;
        QTest::newRow("empty") << "" << false;
    }
    void openableLinks()
    {
        QFETCH(QString, destination);
        QFETCH(bool, openable);
        QCOMPARE(isOpenableLink(destination), openable);
    }

    void invisibleCharactersAreSpelledOut()
    {
        const QString text =
            QString::fromUtf8("a\u202eb\u200bc\u2066\U000e0041\u0007\u00a0\ufe0f\u3164é 日😀");
        QCOMPARE(
            withVisibleControls(text),
            QString::fromUtf8("a<U+202E>b<U+200B>c<U+2066><U+E0041><U+0007><U+00A0><U+FE0F><U+3164>é 日😀"));
    }
};

QTEST_GUILESS_MAIN(MarkdownTest)
#include "MarkdownTest.moc"
