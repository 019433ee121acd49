// Measures Markdown: splitting a long reply into blocks, against the npm package marked in the same run; the
// same reply as it streams in; and texts made to be slow.
//
// varnel-bench-markdown PEERS_FOLDER NODE_MODULES_FOLDER
//
// A figure against a peer that is not installed is skipped, and says so.

#include "Measure.h"

#include "markdown/Markdown.h"
#include "markdown/MarkdownStream.h"

#include <QTemporaryFile>

#include <array>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace varnel;
using namespace varnel::bench;

namespace {

// One turn of a reply as models write them; the number keeps the turns apart.
constexpr const char* section = R"(## %1. Reading the configuration

The loader looks in **three places**, in this order, and stops at the first file it finds. See the
[reference](https://example.org/docs/config?page=%1) for *every* key; `config.toml` wins over `config.json`.

1. The folder named by `--config`, if there is one.
2. The user's own folder:
   - `~/.config/app/config.toml` on Linux,
   - `~/Library/Application Support/app/config.toml` on macOS.
3. The system's folder, which is **read-only** for everybody else.

```python
def load(paths: list[Path]) -> dict[str, str]:
    """Return the first configuration that can be read."""
    for path in paths:
        try:
            return tomllib.loads(path.read_text())
        except FileNotFoundError:
            continue  # the next place may have one
    raise ConfigurationError(f"no configuration in {len(paths)} places")
```

| Key | Default | Meaning |
|:----|--------:|---------|
| `timeout` | 30 | Seconds before a request is given up |
| `retries` | %1 | How often it is tried again, at most |
| `proxy` | none | Address of a proxy, for example http://localhost:8080/ |

> **Note:** a value from the environment always wins. That surprised a few people, so it is now written to the
> log with the name of the variable it came from.

With \(n\) places and a chance of $p$ each, the loader reads $$\sum_{k=1}^{n} k p (1-p)^{k-1}$$ files on average.

)";

QString reply(qsizetype size)
{
    QString text;
    for (int number = 1; text.size() < size; ++number)
        text += QString::fromUtf8(section).arg(number);
    return text;
}

/// Processor time of this thread in milliseconds: it stands still while something else runs.
double threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The shortest of several runs, in milliseconds: what the work takes when nothing disturbs it.
template <typename Work>
double fastest(int rounds, Work work)
{
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double started = threadTime();
        work();
        best = std::min(best, threadTime() - started);
    }
    return best;
}

template <typename Work>
double typical(int rounds, Work work)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const double started = now();
        work();
        times.push_back(now() - started);
    }
    return median(times);
}

double stream(const QString& text)
{
    constexpr qsizetype piece = 5;
    return fastest(3, [&text] {
        MarkdownStream stream;
        for (qsizetype at = 0; at < text.size(); at += piece) {
            stream.append(QStringView(text).sliced(at).left(piece));
            stream.blocks();
        }
        stream.finish();
    });
}

void measureParse(const std::string& peers, const std::string& modules)
{
    const QString text = reply(50'000);
    const double ours = typical(101, [&text] { parseMarkdown(text); });
    report("50 kB reply, block splitting", ours, "ms", "");
    const char* const againstMarked = "50 kB reply, block splitting, against marked";
    if (access((modules + "/marked/lib/marked.esm.js").c_str(), R_OK) != 0 ||
        std::system("command -v node >/dev/null 2>&1") != 0) {
        reportSkipped(againstMarked, "x", "<= 0.2");
        return;
    }
    QTemporaryFile file;
    if (!file.open() || file.write(text.toUtf8()) < 0 || !file.flush())
        std::exit(1);
    const std::string command =
        "node '" + peers + "/markdown-marked.mjs' '" + modules + "' '" + file.fileName().toStdString() + "'";
    std::FILE* const pipe = popen(command.c_str(), "r");
    double theirs = 0;
    if (!pipe || std::fscanf(pipe, "%lf", &theirs) != 1 || pclose(pipe) != 0) {
        std::fprintf(stderr, "marked did not run: %s\n", command.c_str());
        std::exit(1);
    }
    report("50 kB reply, block splitting, marked", theirs, "ms", "");
    report(againstMarked, ours / theirs, "x", "<= 0.2");
}

void measureStream()
{
    const QString text = reply(50'000);
    const double once = fastest(21, [&text] { parseMarkdown(text); });
    const double whole = stream(text);
    report("50 kB reply in 5-byte pieces, in all", whole, "ms", "");
    report("50 kB reply in 5-byte pieces, each", whole * 1e3 / (static_cast<double>(text.size()) / 5), "us",
           "");
    report("50 kB reply in 5-byte pieces, against one parse", whole / once, "x", "");
    report("500 kB reply in 5-byte pieces, each, against 50 kB", stream(reply(500'000)) / whole / 10, "x",
           "<= 1.3");
    const auto code = [](int lines) {
        return QStringLiteral("```cpp\n") +
               QStringLiteral("    return value + 1; // one more\n").repeated(lines);
    };
    report("open code block, a piece at 60 kB, against 6 kB", stream(code(2000)) / stream(code(200)) / 10,
           "x", "<= 2");
}

// Each invites a parser to look at the same text again and again.
constexpr std::array patterns = {
    "[",          "![",    "[a](",     "[a](<b", "[[a]", "`",           "`a``b```c", "*",     "*a **b ",
    "a**b",       "_a ",   "~a",       "&",      "<a:",  "(http://a.b", "a@b.",      "$a",    "$$a ",
    "\\(",        "\\[ ",  "> ",       "- ",     "1. ",  "- a\n",       "- a\n\n",   "> \n",  "|a",
    "a|b\n-|-\n", "```\n", "[a]: b\n", "$$\n",   "x",    "1*",          "\n",        "[](a)", "![](a)"};

void measureHostileTexts()
{
#ifdef __GLIBC__
    // Pages that go back to the kernel after every run come and go by thresholds of their own: what grows
    // with the text shall be the parser's work only.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
    constexpr int size = 100'000;
    double worstRatio = 0;
    double worstTime = 0;
    QString worst;
    const auto add = [&](const QString& text, const QString& twice) {
        const double once = fastest(9, [&text] { parseMarkdown(text); });
        const double ratio = fastest(9, [&twice] { parseMarkdown(twice); }) / once;
        worstTime = std::max(worstTime, once);
        if (ratio > worstRatio) {
            worstRatio = ratio;
            worst = text.left(12).replace(u'\n', u' ');
        }
    };
    const auto repeated = [](const char* pattern, int length) {
        const QString text = QString::fromUtf8(pattern);
        return text.repeated(length / text.size());
    };
    for (const char* const pattern : patterns)
        add(repeated(pattern, size), repeated(pattern, 2 * size));
    const auto nested = [](int depth) {
        const QString definition = QStringLiteral("a\n\n[a]: b\n");
        return QStringLiteral("[").repeated(depth) + definition + QStringLiteral("]").repeated(depth);
    };
    add(nested(size / 2), nested(size));
    const auto deep = [&repeated](int length) {
        return repeated("- ", length / 2) + repeated("\n", length / 4) + repeated("a\n", length / 4);
    };
    add(deep(size), deep(2 * size));
    report("100 kB of hostile text, the slowest", worstTime, "ms", "<= 50");
    report("200 kB of hostile text, against 100 kB, the worst", worstRatio, "x", "<= 2.6");
    std::printf("# the worst of them begins with \"%s\"\n", qPrintable(worst));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: varnel-bench-markdown PEERS_FOLDER NODE_MODULES_FOLDER\n");
        return 2;
    }
    measureParse(argv[1], argv[2]);
    measureStream();
    measureHostileTexts();
    return 0;
}
