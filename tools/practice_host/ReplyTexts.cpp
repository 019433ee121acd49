#include "practice_host/ReplyTexts.h"

#include <array>

namespace varnel::practice {

namespace {

constexpr const char* markdownText = R"md(# A tour of Markdown

%1 It shows **bold**, *italic*, ***both***, ~~struck~~ and `inline code`, a [link](https://example.org/guide "A guide")
and a bare address: <https://example.org/>.

## Lists

1. First step
2. Second step
   - a point below it
   - another one
     - and one deeper still, with `code`
3. Third step

   A second paragraph of the third step.

* [x] written
* [ ] read
* [ ] improved

### A table

| Planet  | Radius (km) | Moons |
|:--------|------------:|:-----:|
| Mercury |       2,440 |   0   |
| Earth   |       6,371 |   1   |
| Mars    |       3,390 |   2   |
| A cell with `a \| bar` and **bold** | 0 | – |

## Quotes

> A quote of two lines
> that belong together.
>
> > And one inside it.

---

## Code

```python
def fibonacci(count: int) -> list[int]:
    """The first numbers of the sequence."""
    numbers = [0, 1]
    while len(numbers) < count:
        numbers.append(numbers[-1] + numbers[-2])
    return numbers[:count]
```

```rust
fn main() {
    let total: u64 = (1..=10).filter(|n| n % 2 == 0).sum();
    println!("{total}");
}
```

```sql
SELECT name, count(*) AS visits
FROM guests
WHERE arrived >= '2026-01-01'
GROUP BY name;
```

    Indented code without a language.

## Formulas

Inline, as in $a^2 + b^2 = c^2$, and on its own:

$$\int_{-\infty}^{\infty} e^{-x^2}\,dx = \sqrt{\pi}$$

## Other writing

Ünïcödé, Ελληνικά, Русский, العربية, 日本語, 한국어 and 👩‍🚀 🎉. An HTML tag <b>stays text</b>, as does &amp;.
A line that ends in two blanks  
goes on below.

![A picture that is not loaded](https://example.org/picture.png)

###### The end of the tour
)md";

constexpr const char* codeText = R"md(%1 Here is one task in three languages.

```cpp
#include <iostream>
#include <map>
#include <string>

int main()
{
    std::map<std::string, int> counts;
    for (std::string word; std::cin >> word;)
        ++counts[word];
    for (const auto& [word, count] : counts)
        std::cout << count << '\t' << word << '\n';
}
```

The same with a dictionary:

```python
import sys
from collections import Counter

counts = Counter(sys.stdin.read().split())
for word, count in sorted(counts.items()):
    print(f"{count}\t{word}")
```

And in one line of the shell, which sorts twice:

```sh
tr -s '[:space:]' '\n' | sort | uniq -c
```

A block without a language:

```
3	apple
1	pear
```
)md";

constexpr const char* projectText = R"md(%1 The project has three files in two folders.

```path:README.md
# Greeter

Run `python3 -m greeter World`.
```

The program itself:

```path:greeter/__main__.py
import sys

from greeter.words import greeting


def main() -> None:
    name = sys.argv[1] if len(sys.argv) > 1 else "nobody"
    print(greeting(name))


main()
```

```path:greeter/words.py
def greeting(name: str) -> str:
    return f"Hello, {name}!"
```

To try it without writing anything, this block names no path:

```sh
python3 -m greeter Ada
```
)md";

constexpr std::array sentences = {
    "The harbour lay quiet under a thin layer of fog, and only the bell of the outer buoy could be heard.",
    "Nobody had written down when the last ferry left, so each of them remembered another hour.",
    "A measurement is worth as much as the note beside it that says how it was taken.",
    "In the second winter the bridge was closed, and the village learned to live with the longer road.",
    "What looks like one decision is often twenty small ones that were never talked about.",
    "She counted the windows of the tower twice and came to a different number each time.",
    "The old map showed a well where now there was a garden, and under the garden there was still water.",
    "It is easier to add a room to a house than to take one away again.",
    "They agreed to meet at the station, which has two clocks that have never shown the same time.",
    "A letter that arrives late is not always a letter that was sent late.",
    "The baker opened at five, the library at ten, and between the two the square belonged to the pigeons.",
    "Every tool keeps a trace of the hand that used it longest.",
    "When the rain came at last, it came from the wrong side, and the cellar was dry.",
};

} // namespace

QString practiceNote()
{
    return QStringLiteral("This is a practice reply; no real model wrote it.");
}

QString markdownTour()
{
    return QString::fromUtf8(markdownText).arg(practiceNote());
}

QString codeReply()
{
    return QString::fromUtf8(codeText).arg(practiceNote());
}

QString projectReply()
{
    return QString::fromUtf8(projectText).arg(practiceNote());
}

QString longReply()
{
    constexpr int sections = 12;
    constexpr int paragraphsPerSection = 5;
    constexpr int sentencesPerParagraph = 4;
    QString text = QStringLiteral("# A long reply\n\n") + practiceNote() + QStringLiteral("\n\n");
    std::size_t next = 0;
    for (int section = 1; section <= sections; ++section) {
        text += QStringLiteral("## Section %1\n\n").arg(section);
        for (int paragraph = 0; paragraph < paragraphsPerSection; ++paragraph) {
            for (int sentence = 0; sentence < sentencesPerParagraph; ++sentence) {
                // A step that shares no factor with their number goes through all of them in changing
                // company.
                next = (next + 5) % sentences.size();
                text += QString::fromLatin1(sentences.at(next)) +
                        QLatin1Char(sentence + 1 < sentencesPerParagraph ? ' ' : '\n');
            }
            text += QLatin1Char('\n');
        }
    }
    return text;
}

} // namespace varnel::practice
