#include "websearch/PublicHost.h"

#include <algorithm>
#include <array>

namespace varnel {

namespace {

/// The number from 0 to 255 that a piece of a dotted address is.
std::optional<int> addressNumber(const QString& piece)
{
    // Read as a whole number: a sign and zeros in front change nothing.
    const bool isSigned = piece.startsWith(u'+') || piece.startsWith(u'-');
    const QStringView digits = QStringView(piece).sliced(isSigned ? 1 : 0);
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(),
                                         [](QChar digit) { return digit >= u'0' && digit <= u'9'; }))
        return std::nullopt;
    int number = 0;
    for (const QChar digit : digits) {
        number = 10 * number + (digit.unicode() - u'0');
        if (number > 255)
            return std::nullopt;
    }
    if (number != 0 && piece.startsWith(u'-'))
        return std::nullopt;
    return number;
}

/// The first two numbers of a dotted address; nothing if the host is none.
std::optional<std::array<int, 2>> addressStart(const QString& host)
{
    const QStringList pieces = host.split(u'.');
    if (pieces.size() != 4)
        return std::nullopt;
    std::array<int, 4> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::optional<int> number = addressNumber(pieces.at(static_cast<qsizetype>(i)));
        if (!number)
            return std::nullopt;
        numbers.at(i) = *number;
    }
    return std::array{numbers[0], numbers[1]};
}

bool isPublicAddressStart(int first, int second)
{
    switch (first) {
    case 0:
    case 10:
    case 127:
        return false;
    case 100:
        return second < 64 || second > 127;
    case 169:
        return second != 254;
    case 172:
        return second < 16 || second > 31;
    case 192:
        return second != 168;
    default:
        return true;
    }
}

/// Whether a user name, or the mark of an empty one, stands before the host.
bool namesUser(const QString& text)
{
    const qsizetype slashes = text.indexOf(QLatin1String("//"));
    if (slashes < 0)
        return false;
    const auto begin = text.cbegin() + slashes + 2;
    const auto end = std::find_if(begin, text.cend(),
                                  [](QChar character) { return QStringView(u"/?#").contains(character); });
    return std::find(begin, end, u'@') != end;
}

} // namespace

bool isPublicHost(const QString& host)
{
    if (host == QLatin1String("localhost") || host.endsWith(QLatin1String(".localhost")) ||
        host.endsWith(QLatin1String(".local")) || host.endsWith(QLatin1String(".internal")))
        return false;
    if (const auto start = addressStart(host))
        return isPublicAddressStart(start->at(0), start->at(1));
    return !host.contains(u':');
}

std::optional<QUrl> publicPageUrl(const QString& text)
{
    const QString trimmed = text.trimmed();
    const bool isClean = std::none_of(trimmed.cbegin(), trimmed.cend(), [](QChar character) {
        return character == u'\\' || character.category() == QChar::Other_Control;
    });
    QUrl url(trimmed, QUrl::TolerantMode);
    const QString scheme = url.scheme();
    if (!isClean || !url.isValid() || namesUser(trimmed) ||
        (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
        return std::nullopt;
    QString host = url.host(QUrl::EncodeUnicode).toLower();
    if (host.endsWith(u'.'))
        host.chop(1);
    // Setting it again shows what the rest is read as: "0x7f.1" is an address once its last dot is gone.
    url.setHost(host);
    host = url.host(QUrl::EncodeUnicode).toLower();
    if (host.isEmpty() || host.endsWith(u'.') || !isPublicHost(host))
        return std::nullopt;
    return url;
}

} // namespace varnel
