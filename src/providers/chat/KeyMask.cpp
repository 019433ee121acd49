#include "providers/chat/KeyMask.h"

#include <QVarLengthArray>

#include <algorithm>
#include <optional>
#include <vector>

namespace varnel {

namespace {

// Fewer characters of a key than these tell nothing of it.
constexpr qsizetype tellingLength = 4;

QString keyOf(const ProviderRequest& request)
{
    for (const char* const name : {"x-api-key", "x-goog-api-key"}) {
        if (const QByteArray key = request.headers.value(name); !key.isEmpty())
            return QString::fromUtf8(key);
    }
    const QByteArray scheme = "Bearer ";
    const QByteArray authorization = request.headers.value("Authorization");
    return authorization.startsWith(scheme) ? QString::fromUtf8(authorization.sliced(scheme.size()))
                                            : QString();
}

/// A way to write one character of a key. The digits of an escape are written in either case.
struct Spelling
{
    QString text;
    Qt::CaseSensitivity sensitivity = Qt::CaseSensitive;
};

using Spellings = std::vector<Spelling>;

/// The ways in which services write a character: as it is, escaped for JSON, and percent-encoded.
Spellings spellingsOf(char32_t character)
{
    const QString plain = QString::fromUcs4(&character, 1);
    Spellings all{{.text = plain}};
    if (QStringView(u"\"/\\").contains(plain))
        all.push_back({.text = u'\\' + plain});
    QString json;
    for (const QChar unit : plain)
        json += QStringLiteral("\\u%1").arg(static_cast<uint>(unit.unicode()), 4, 16, QLatin1Char('0'));
    QString percent;
    for (const char byte : plain.toUtf8())
        percent += QLatin1Char('%') + QString::fromLatin1(QByteArray(1, byte).toHex());
    all.push_back({.text = json, .sensitivity = Qt::CaseInsensitive});
    all.push_back({.text = percent, .sensitivity = Qt::CaseInsensitive});
    return all;
}

/// Where a key ends that begins the text, in whatever mixture of spellings; nothing if none does. What is
/// left of the text may be the beginning of the key only.
std::optional<qsizetype> keyLength(QStringView text, const std::vector<Spellings>& key)
{
    // After a percent sign or a backslash it may be open for a while how the key goes on.
    QVarLengthArray<qsizetype, 8> places{0};
    for (std::size_t done = 0; done < key.size(); ++done) {
        QVarLengthArray<qsizetype, 8> next;
        for (const qsizetype place : places) {
            const QStringView rest = text.sliced(place);
            for (const auto& [spelling, sensitivity] : key[done]) {
                if (done >= tellingLength && QStringView(spelling).startsWith(rest, sensitivity))
                    return text.size();
                const qsizetype after = place + spelling.size();
                if (rest.startsWith(spelling, sensitivity) && !next.contains(after))
                    next.append(after);
            }
        }
        if (next.isEmpty())
            return std::nullopt;
        places = std::move(next);
    }
    return *std::max_element(places.cbegin(), places.cend());
}

} // namespace

QString withoutKey(const QString& text, const QString& key)
{
    std::vector<Spellings> spellings;
    for (const char32_t character : key.toStdU32String())
        spellings.push_back(spellingsOf(character));
    if (spellings.empty())
        return text;
    QString masked;
    qsizetype taken = 0;
    for (qsizetype at = 0; at < text.size();) {
        if (const auto length = keyLength(QStringView(text).sliced(at), spellings)) {
            masked += QStringView(text).sliced(taken, at - taken);
            masked += QStringLiteral(u"•••");
            at += *length;
            taken = at;
        } else {
            ++at;
        }
    }
    masked += QStringView(text).sliced(taken);
    return masked;
}

QString withoutKey(const QString& text, const ProviderRequest& request)
{
    return withoutKey(text, keyOf(request));
}

} // namespace varnel
