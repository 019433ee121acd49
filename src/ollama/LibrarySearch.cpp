#include "ollama/LibrarySearch.h"

#include <algorithm>
#include <optional>

namespace varnel {

namespace {

constexpr std::size_t mostHits = 24;

/// Finds the next occurrence of a word from places that only move forward, reading the text once in all.
class ForwardFinder
{
public:
    ForwardFinder(QStringView text, QLatin1String word)
        : m_text(text)
        , m_word(word)
    {}

    /// The first occurrence at or behind a place; the length of the text if there is none.
    qsizetype from(qsizetype place)
    {
        if (place > m_found)
            m_found = m_text.indexOf(m_word, place);
        if (m_found < 0)
            m_found = m_text.size();
        return m_found;
    }

private:
    QStringView m_text;
    QLatin1String m_word;
    qsizetype m_found = -1;
};

struct Card
{
    QStringView name;
    QStringView body;
};

/// Cuts a page into its cards: links into the library with all that they enclose.
class CardReader
{
public:
    explicit CardReader(QStringView page)
        : m_page(page)
        , m_begins(page, opening)
    {}

    std::optional<Card> next()
    {
        while (true) {
            const qsizetype start = m_begins.from(m_place);
            const qsizetype name = start + opening.size();
            const qsizetype quote = name < m_page.size() ? m_page.indexOf(u'"', name) : -1;
            const qsizetype end = quote < 0 ? -1 : m_page.indexOf(closing, quote);
            if (end < 0)
                return std::nullopt; // nor is there one further on
            m_place = quote == name ? quote : end + closing.size();
            if (quote > name)
                return Card{m_page.sliced(name, quote - name), m_page.sliced(start, m_place - start)};
        }
    }

private:
    static constexpr QLatin1String opening{"<a href=\"/library/"};
    static constexpr QLatin1String closing{"</a>"};

    QStringView m_page;
    ForwardFinder m_begins;
    qsizetype m_place = 0;
};

QString withoutEntities(QStringView text)
{
    QString plain = text.toString();
    plain.replace(QLatin1String("&#39;"), QLatin1String("'"));
    plain.replace(QLatin1String("&quot;"), QLatin1String("\""));
    plain.replace(QLatin1String("&amp;"), QLatin1String("&"));
    plain.replace(QLatin1String("&lt;"), QLatin1String("<"));
    plain.replace(QLatin1String("&gt;"), QLatin1String(">"));
    return plain.trimmed();
}

/// The text of the first paragraph that holds nothing but text.
QString summaryOf(QStringView card)
{
    constexpr QLatin1String opening("<p");
    ForwardFinder paragraphs(card, opening);
    ForwardFinder tagEnds(card, QLatin1String(">"));
    ForwardFinder tags(card, QLatin1String("<"));
    for (qsizetype start = paragraphs.from(0); start < card.size(); start = paragraphs.from(start + 1)) {
        const qsizetype text = tagEnds.from(start + opening.size()) + 1;
        const qsizetype end = tags.from(text);
        if (end >= card.size())
            break;
        if (card.sliced(end).startsWith(QLatin1String("</p>")))
            return withoutEntities(card.sliced(text, end - text));
    }
    return {};
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Reads a size with its white space up to the next tag, for example " 1.5b <"; nothing if it is no size.
std::optional<QString> readSize(QStringView text)
{
    const auto skip = [&text](qsizetype from, auto belongs) {
        while (from < text.size() && belongs(text[from]))
            ++from;
        return from;
    };
    const auto isSpace = [](QChar character) { return character.isSpace(); };
    const qsizetype begin = skip(0, isSpace);
    qsizetype end = skip(begin, isDigit);
    if (end == begin)
        return std::nullopt;
    if (end < text.size() && text[end] == u'.') {
        const qsizetype decimals = end + 1;
        end = skip(decimals, isDigit);
        if (end == decimals)
            return std::nullopt;
    }
    if (end >= text.size() || !QStringView(u"bBmMkK").contains(text[end]))
        return std::nullopt;
    ++end;
    const qsizetype tag = skip(end, isSpace);
    if (tag >= text.size() || text[tag] != u'<')
        return std::nullopt;
    return text.sliced(begin, end - begin).toString().toLower();
}

/// The sizes on the badges of a card, each once.
std::vector<QString> sizesOf(QStringView card)
{
    constexpr QLatin1String badge("rounded-md");
    std::vector<QString> sizes;
    ForwardFinder badges(card, badge);
    ForwardFinder tagEnds(card, QLatin1String(">"));
    qsizetype start = badges.from(0);
    while (start < card.size()) {
        const qsizetype text = tagEnds.from(start + badge.size()) + 1;
        if (text > card.size())
            break;
        if (const std::optional<QString> size = readSize(card.sliced(text));
            size && std::find(sizes.begin(), sizes.end(), *size) == sizes.end())
            sizes.push_back(*size);
        // Whatever else stands in the same tag leads to the same place.
        start = badges.from(text);
    }
    return sizes;
}

} // namespace

std::vector<OllamaLibraryHit> parseLibraryPage(QStringView page, QStringView query)
{
    const qsizetype colon = query.indexOf(u':');
    const std::optional<QString> wanted =
        colon < 0 ? std::nullopt : std::optional(query.sliced(colon + 1).toString().toLower());
    std::vector<OllamaLibraryHit> hits;
    CardReader cards(page);
    while (hits.size() < mostHits) {
        const std::optional<Card> card = cards.next();
        if (!card)
            break;
        const QString name = card->name.split(u'/').first().toString();
        const QString summary = summaryOf(card->body);
        std::vector<QString> sizes = sizesOf(card->body);
        if (wanted)
            std::erase_if(sizes, [&wanted](const QString& size) { return size != *wanted; });
        if (sizes.empty())
            hits.push_back({name, summary});
        for (const QString& size : sizes)
            hits.push_back({name + QLatin1Char(':') + size, summary});
    }
    hits.resize(std::min(hits.size(), mostHits));
    return hits;
}

} // namespace varnel
