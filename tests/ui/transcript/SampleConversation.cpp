#include "ui/transcript/SampleConversation.h"

namespace varnel::test {
namespace {

const char* const everything =
    R"(Certainly. Here is a **short overview** of the pieces, with *emphasis*, `inline code`, ~~a mistake~~ and a [link to the manual](https://example.org/manual). Direct addresses such as https://example.org/a/very/long/path work too.

## Reading the file

1. Open it **once** and keep the handle.
2. Read in chunks of `64 KiB`:
   - the first chunk tells the encoding
   - later chunks only append
     - a third level, to see how deep lists look
3. Close it.

- [x] parse the header
- [ ] verify the checksum
- [ ] write the report, which has a rather long description that goes on until it needs a second line in the column

```python
from pathlib import Path

class Reader:
    """Reads a file in chunks."""

    def __init__(self, path: str, size: int = 65536):
        self.path = Path(path)  # never opened twice
        self.size = size

    def chunks(self):
        with self.path.open("rb") as handle:
            while chunk := handle.read(self.size):
                yield chunk
```

> Quoted text stands beside a bar. It may hold *styles* and
> several paragraphs.
>
> > A quote in a quote, with `code`.

| Method | Time | Memory | Note |
|:-------|-----:|:------:|------|
| whole | 120 ms | 64 MB | simple |
| chunks | 95 ms | 64 KB | what I would use for anything that might be large |
| mapped | **70 ms** | — | fails when the file shrinks |

### Formulas and other scripts

The error falls as \( O(1/\sqrt{n}) \), because

$$\sigma_{\bar{x}} = \frac{\sigma}{\sqrt{n}}$$

שלום עולם, זו פסקה מימין לשמאל עם code באמצע.

日本語の段落です。改行は文字の間で起こります。 한국어도 있습니다. Emoji: 👩‍💻 🎉 👍🏽

---

```path: src/report.cpp
#include <iostream>

int main(int argc, char** argv)
{
    // Writes one line for each argument, with its number, so that a very long line needs to scroll sideways or to wrap.
    for (int i = 1; i < argc; ++i)
        std::cout << i << ": " << argv[i] << '\n';
    return 0;
}
```

```json
{"name": "varnel", "sizes": [1, 2.5, 3e4], "nested": {"ok": true, "none": null}}
```

![A diagram of the flow](https://example.org/diagram.png) is shown as a link. Averyveryverylongwordwithoutanyspacesinitthatgoesonandonandonandonuntilithastobebrokensomewherebecauseitdoesnotfit.)";

} // namespace

TranscriptMessage prompt(const QString& id, const QString& text)
{
    TranscriptMessage message;
    message.id = id;
    message.role = TranscriptRole::User;
    message.content = text;
    message.actions = TranscriptActions(TranscriptAction::Copy) | TranscriptAction::Edit;
    return message;
}

TranscriptMessage reply(const QString& id, const QString& text)
{
    TranscriptMessage message;
    message.id = id;
    message.content = text;
    message.footer = QStringLiteral("llama3.2:3b · 4.2 s · 61 tokens/s");
    message.actions = TranscriptActions(TranscriptAction::Copy) | TranscriptAction::Regenerate |
                      TranscriptAction::HandOff | TranscriptAction::Save | TranscriptAction::More;
    return message;
}

std::vector<TranscriptMessage> sampleConversation()
{
    std::vector<TranscriptMessage> messages;
    messages.push_back(prompt(QStringLiteral("p1"), QStringLiteral("How should I read a large file?")));
    messages.push_back(reply(QStringLiteral("r1"), QString::fromUtf8(everything)));
    messages.back().thinking =
        QStringLiteral("The user wants to read a large file.\n\nI should compare the ways and "
                       "show one in code.");
    messages.back().thinkingTook = std::chrono::seconds(12);
    messages.push_back(
        prompt(QStringLiteral("p2"),
               QStringLiteral(
                   "Thanks! And what happens when the file is being written while I read it?\n\nI have seen "
                   "truncated lines at the end, and sometimes the very same line twice, which is odd.")));
    messages.back().footer = QStringLiteral("trace.log");
    messages.push_back(
        reply(QStringLiteral("r2"), QStringLiteral("That depends on the writer. If it **appends**, "
                                                   "the last line may be incomplete.")));
    messages.push_back(prompt(QStringLiteral("p3"), QStringLiteral("Go on")));
    messages.back().error = QStringLiteral("The host did not answer: connection refused (127.0.0.1:11434).");
    return messages;
}

std::vector<TranscriptMessage> longConversation(int count, int length)
{
    const QString source = QString::fromUtf8(everything);
    std::vector<TranscriptMessage> messages;
    messages.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        QString text = QStringLiteral("Message %1. ").arg(i);
        // The same pieces in another order and number, so that heights differ.
        const QStringList blocks = source.split(QStringLiteral("\n\n"));
        for (qsizetype at = (i * 7) % blocks.size(); text.size() < length; at = (at + 1) % blocks.size())
            text += blocks[at] + QStringLiteral("\n\n");
        const QString id = QStringLiteral("m%1").arg(i);
        messages.push_back(i % 2 == 0 ? prompt(id, text) : reply(id, text));
    }
    return messages;
}

} // namespace varnel::test
