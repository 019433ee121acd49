// Measures the reduction of web pages to text: a long page against the regular expressions that define the
// steps, and pages made to be slow.
//
// varnel-bench-websearch

#include "Measure.h"

#include "websearch/PageText.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace varnel;
using namespace varnel::bench;

namespace {

constexpr qsizetype size = 4 * 1024 * 1024;

// One article of a news page, about as real ones are written.
constexpr const char* article = R"(<article class="story story--wide" data-id="%1" itemscope>
  <script type="application/json">{"id": %1, "kind": "story", "tags": ["a", "b", "c"], "score": 0.%1}</script>
  <h2 class="story__title"><a href="/2026/03/18/story-%1.html?source=front&amp;place=%1">The story of the day, number %1</a></h2>
  <style>.story--%1 { color: #333; background: url("/images/%1.png") no-repeat; }</style>
  <p class="story__lead">It was a <em>quiet</em> morning in the harbour when the first of the
     ships came in, and nobody had expected it before noon. Read <a href="/more/%1">more</a>.</p>
  <img src="/images/%1.jpg" alt="A ship" width="640" height="480" loading="lazy">
</article>
)";

QString newsPage()
{
    QString page =
        QStringLiteral("<!doctype html><html><head><title>News</title><style>%1</style></head><body>")
            .arg(QStringLiteral("a { b: c } ").repeated(2000));
    for (int number = 1; page.size() < size; ++number)
        page += QString::fromUtf8(article).arg(number);
    return page;
}

QString reducedByExpressions(QString text)
{
    using Expression = QRegularExpression;
    static const std::array steps = {
        std::pair{Expression(QStringLiteral("<head[\\s\\S]*?</head>"), Expression::CaseInsensitiveOption),
                  QString()},
        std::pair{Expression(QStringLiteral("<script[\\s\\S]*?</script>"), Expression::CaseInsensitiveOption),
                  QStringLiteral(" ")},
        std::pair{Expression(QStringLiteral("<style[\\s\\S]*?</style>"), Expression::CaseInsensitiveOption),
                  QStringLiteral(" ")},
        std::pair{Expression(QStringLiteral("<[^>]+>")), QStringLiteral(" ")},
        std::pair{Expression(QStringLiteral("\\s+"), Expression::UseUnicodePropertiesOption),
                  QStringLiteral(" ")},
    };
    for (const auto& [expression, replacement] : steps)
        text.replace(expression, replacement);
    return firstCharacters(text.trimmed(), 12'000);
}

/// The shortest of several runs, in milliseconds: what the work takes when nothing disturbs it.
template <typename Work>
double fastest(int rounds, Work work)
{
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double started = now();
        work();
        best = std::min(best, now() - started);
    }
    return best;
}

double measureNewsPage()
{
    const QString page = newsPage();
    if (reducePage(page).text != reducedByExpressions(page)) {
        std::fprintf(stderr, "the reduction differs from the regular expressions\n");
        std::exit(1);
    }
    const double ours = fastest(21, [&page] { reducePage(page); });
    const double theirs = fastest(5, [&page] { reducedByExpressions(page); });
    report("4 MiB page to text", ours, "ms", "");
    report("4 MiB page to text, regular expressions", theirs, "ms", "");
    report("4 MiB page to text, against regular expressions", ours / theirs, "x", "<= 0.2");
    return ours;
}

// Each invites a reader to look at the same text again and again, or to copy it often.
constexpr std::array patterns = {"<",
                                 "<>",
                                 "<a ",
                                 "</",
                                 "<head",
                                 "<script",
                                 "<style",
                                 "<head></head>",
                                 "<script></script>",
                                 "<style></style>",
                                 "<scrip",
                                 "<titles",
                                 "<title",
                                 "</title",
                                 "<a>",
                                 "> ",
                                 " ",
                                 "a ",
                                 "\xc2\xa0",
                                 "\xcc\x81",
                                 "<\xc5\xbf",
                                 "<s",
                                 "<title></title>",
                                 "<!--",
                                 "<script</scrip",
                                 "<p>\n",
                                 "\xf0\x9f\x98\x80"};

void measureHostilePages(double usual)
{
    double worst = 0;
    QString worstPattern;
    const auto add = [&](const QString& page, const QString& name) {
        const double time = fastest(5, [&page] { reducePage(page); });
        if (time > worst) {
            worst = time;
            worstPattern = name;
        }
    };
    for (const char* const pattern : patterns) {
        const QString text = QString::fromUtf8(pattern);
        add(text.repeated(size / text.size()), text);
        // The same with everything that is looked for at its very end.
        add(text.repeated(size / text.size()) + QStringLiteral("</title></style></script></head>"), text);
    }
    report("4 MiB hostile page to text, the slowest", worst, "ms", "");
    report("4 MiB hostile page to text, against the news page", worst / usual, "x", "<= 12");
    std::printf("# the slowest page repeats \"%s\"\n", qPrintable(worstPattern.trimmed()));
}

} // namespace

int main()
{
    measureHostilePages(measureNewsPage());
    return 0;
}
