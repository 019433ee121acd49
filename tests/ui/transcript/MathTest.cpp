#include "ui/transcript/MathLayout.h"
#include "ui/transcript/MathParser.h"
#include "ui/transcript/StyledText.h"

#include <QImage>
#include <QPainter>
#include <QTest>

using namespace varnel;

namespace {

QFont textFont()
{
    QFont font(QStringLiteral("sans-serif"));
    font.setPixelSize(20);
    return font;
}

std::shared_ptr<const MathBox> box(const QString& source)
{
    return layOutMaths(source, textFont(), MathPlace::Displayed);
}

/// What a drawn formula covers, around the left end of its baseline.
QRect inkOf(const MathBox& formula)
{
    QImage picture(1200, 600, QImage::Format_Grayscale8);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setPen(Qt::black);
    formula.paint(painter, {100, 300});
    painter.end();
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) < 128)
                ink |= QRect(x - 100, y - 300, 1, 1);
        }
    }
    return ink;
}

} // namespace

class MathTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatIsNamedIsSet_data()
    {
        QTest::addColumn<QString>("source");
        for (const char* source : {"x_1^2 + y",
                                   "\\frac{-b \\pm \\sqrt{b^2-4ac}}{2a}",
                                   "\\sqrt[3]{x}",
                                   "\\sum_{i=1}^n i",
                                   "\\int_0^1 f\\,dx",
                                   "\\alpha\\beta\\Gamma",
                                   "\\left(\\frac12\\right)^2",
                                   "\\left\\{ x \\middle| y \\right.",
                                   "\\begin{pmatrix}a&b\\\\c&d\\end{pmatrix}",
                                   "\\begin{cases}x&\\text{if } y\\\\z\\end{cases}",
                                   "\\begin{aligned}a&=b\\\\&=c\\end{aligned}",
                                   "\\begin{array}{l|r}1&2\\end{array}",
                                   "\\hat x + \\vec{v} + \\overline{AB}",
                                   "\\mathbb{R} \\mathbf{x} \\mathrm{d}",
                                   "f'(x)''",
                                   "f'^2",
                                   "a''_n",
                                   "\\lim_{x \\to 0} \\sin x",
                                   "\\operatorname{arg\\,max}_x",
                                   "\\operatorname*{arg max}_x",
                                   "a \\equiv b \\pmod{n}",
                                   "\\binom nk",
                                   "\\Big( x \\bigr]",
                                   "\\overset{!}{=}",
                                   "\\iint_D f",
                                   "\\sum\\nolimits_i",
                                   "\\text{100\\%}",
                                   "P(A \\mid B)",
                                   "\\left\\| x \\right\\|",
                                   "\\mathcal{L}",
                                   "\\oint_{\\partial S}",
                                   "e^{i\\pi} + 1 = 0, -1",
                                   "\\nabla \\times \\boldsymbol{\\ell}",
                                   "\\dfrac{a}{b} \\quad {x}_{y_z}",
                                   "50\\% \\ldots"})
            QTest::newRow(source) << QString::fromUtf8(source);
    }
    void whatIsNamedIsSet()
    {
        QFETCH(QString, source);
        QVERIFY(parseMaths(source));
        const auto formula = box(source);
        QVERIFY(formula);
        const QRect ink = inkOf(*formula);
        QVERIFY(ink.isValid());
        // Nothing stands outside the space that it asks for.
        const QRectF space(-2, -formula->ascent - 2, formula->width + 4, formula->height() + 4);
        QVERIFY2(space.contains(QRectF(ink)), qPrintable(QStringLiteral("%1 %2 %3 %4 in %5 %6 %7")
                                                             .arg(ink.left())
                                                             .arg(ink.top())
                                                             .arg(ink.right())
                                                             .arg(ink.bottom())
                                                             .arg(formula->width)
                                                             .arg(formula->ascent)
                                                             .arg(formula->descent)));
    }

    void everythingElseStaysItsSource_data()
    {
        QTest::addColumn<QString>("source");
        for (const char* source : {"",
                                   "\\unknown{x}",
                                   "{x",
                                   "x}",
                                   "\\frac{a}",
                                   "a & b",
                                   "a \\\\ b",
                                   "x^2^3",
                                   "x^",
                                   "\\left( x",
                                   "x \\right)",
                                   "\\begin{pmatrix}a",
                                   "\\begin{pmatrix}a\\end{bmatrix}",
                                   "\\begin{tikzpicture}\\end{tikzpicture}",
                                   "\\includegraphics{file}",
                                   "\\input{file}",
                                   "\\def\\x{y}",
                                   "\\text{a $b$}",
                                   "\\",
                                   "\\limits x",
                                   "\\sqrt[3{x}",
                                   "\\begin{array}{p{3cm}}x\\end{array}",
                                   "\\color{red}x",
                                   "\\left a b \\right c"})
            QTest::newRow(source) << QString::fromUtf8(source);
        QTest::newRow("no letter") << QString::fromUcs4(U"x + \U000E0041 \U0010FFFD");
        QTest::newRow("long") << QString(longestFormula + 1, u'x');
        QTest::newRow("braces") << QString(3000, u'{');
        QTest::newRow("closed braces") << QString(1000, u'{') + QString(1000, u'}');
        QTest::newRow("exponents") << QStringLiteral("x^{").repeated(500) + QString(500, u'}');
        QTest::newRow("bare fractions") << QStringLiteral("\\frac").repeated(700);
        QTest::newRow("roots") << QStringLiteral("\\sqrt").repeated(700) + u'x';
        QTest::newRow("fences") << QStringLiteral("\\left(").repeated(600);
    }
    void everythingElseStaysItsSource()
    {
        QFETCH(QString, source);
        QVERIFY(!box(source));
    }

    void partsStandWhereTheyBelong()
    {
        const auto height = [](const char* source) { return box(QLatin1String(source))->height(); };
        const auto width = [](const char* source) { return box(QLatin1String(source))->width; };
        QVERIFY(height("\\frac{a}{b}") > 1.6 * height("a"));
        QVERIFY(box(QStringLiteral("x^2"))->ascent > box(QStringLiteral("x"))->ascent);
        QVERIFY(box(QStringLiteral("x_2"))->descent > box(QStringLiteral("x"))->descent + 2);
        QVERIFY(height("\\left(\\frac{a}{b}\\right)") >= height("\\frac{a}{b}"));
        QVERIFY(height("\\sum_{i}^{n}") > height("\\sum") + 10);
        QVERIFY(width("\\sum_{i}^{n}") < width("\\sum\\nolimits_{i}^{n}"));
        QVERIFY(width("a = b") > width("ab") + width("=") + 5);
        // A sign of a number is not a sign between two.
        QVERIFY(width("-1") < width("a-1") - width("a") - 2);
        // The bar of a fraction stands as high as a minus sign, which stands above the baseline.
        const QRect minus = inkOf(*box(QStringLiteral("-")));
        const auto fraction = box(QStringLiteral("\\frac{\\;}{\\;}"));
        QVERIFY(std::abs(inkOf(*fraction).center().y() - minus.center().y()) <= 1);
        QVERIFY(minus.bottom() < -2);
        // An accent is just above its letter.
        QVERIFY(height("\\hat{x}") < 1.9 * height("x"));
        QVERIFY(height("\\hat{x}") > 1.2 * height("x"));
    }

    void aFormulaInATextKeepsThePositionsOfItsSource()
    {
        MarkdownText text;
        text.text = QStringLiteral("See \\frac{a}{b} and so on.");
        text.ranges = {{4, 11, MarkdownStyle::Maths, -1}};
        StyledText::Options options;
        options.font = textFont();
        options.width = 600;
        StyledText::Formats formats{{4, 11, QTextCharFormat()}};
        const auto formulas = formulasOf(text, options.font, options.width);
        QCOMPARE(formulas.size(), std::size_t(1));
        const StyledText set(text.text, formats, options, formulas);
        QCOMPARE(set.length(), static_cast<int>(text.text.size()));
        const QRectF place = set.rectsOf(4, 11).constFirst();
        QVERIFY2(std::abs(place.width() - formulas.front().box->width) < 2,
                 qPrintable(QString::number(place.width())));
        QCOMPARE(set.positionAt({place.right() - 1, 5}), 15);
        // The line makes room for what is higher than it.
        options.pitch = 12;
        QVERIFY(StyledText(text.text, formats, options, formulas).height() > formulas.front().box->height());
        QVERIFY(formulasOf(text, options.font, 5).empty());
    }
};

QTEST_MAIN(MathTest)
#include "MathTest.moc"
