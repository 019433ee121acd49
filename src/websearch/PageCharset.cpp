#include "websearch/PageCharset.h"

#include "base/Text.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace varnel {

namespace {

// Browsers look for the declaration in the first kilobyte; pages that are careless come a little later.
constexpr qsizetype metaReach = 4096;

bool isNameCharacter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' ||
           byte == '.' || byte == ':' || byte == '+';
}

/// What follows "charset" and "=" in a lower-case text; empty if it is not there.
QByteArray charsetIn(const QByteArray& text)
{
    qsizetype at = text.indexOf("charset");
    while (at >= 0) {
        at += qsizetype(sizeof "charset" - 1);
        const auto skip = [&text, &at](const char* bytes) {
            while (at < text.size() && std::strchr(bytes, text.at(at)) != nullptr && text.at(at) != '\0')
                ++at;
        };
        skip(" \t\r\n\f");
        if (at < text.size() && text.at(at) == '=') {
            ++at;
            skip(" \t\r\n\f\"'");
            const qsizetype begin = at;
            while (at < text.size() && isNameCharacter(text.at(at)))
                ++at;
            return text.sliced(begin, at - begin);
        }
        at = text.indexOf("charset", at);
    }
    return {};
}

QByteArray charsetOfMeta(const QByteArray& body)
{
    const QByteArray start = body.left(metaReach).toLower();
    qsizetype at = start.indexOf("<meta");
    while (at >= 0) {
        const qsizetype end = start.indexOf('>', at);
        if (end < 0)
            break;
        const QByteArray name = charsetIn(start.sliced(at, end - at));
        if (!name.isEmpty())
            // A declaration that could be read byte by byte is in no two-byte encoding, whatever it says.
            return name.startsWith("utf-16") ? QByteArray("utf-8") : name;
        at = start.indexOf("<meta", end);
    }
    return {};
}

/// Names that stand for a larger character set in practice.
QByteArray inPractice(const QByteArray& name)
{
    struct Alias
    {
        const char* name;
        const char* meant;
    };
    static constexpr std::array aliases = {
        Alias{"iso-8859-1", "windows-1252"},
        Alias{"latin1", "windows-1252"},
        Alias{"us-ascii", "windows-1252"},
        Alias{"ascii", "windows-1252"},
        Alias{"iso-8859-9", "windows-1254"},
        Alias{"gb2312", "gb18030"},
        Alias{"gbk", "gb18030"},
        Alias{"utf8", "utf-8"},
    };
    const auto* const found = std::find_if(aliases.begin(), aliases.end(),
                                           [&name](const Alias& alias) { return name == alias.name; });
    return found == aliases.end() ? name : QByteArray(found->meant);
}

std::optional<QString> decodeAs(const QByteArray& name, const QByteArray& body)
{
    if (name.isEmpty())
        return std::nullopt;
    QStringDecoder decoder(inPractice(name).constData());
    if (!decoder.isValid())
        return std::nullopt;
    return QString(decoder.decode(body));
}

} // namespace

QString decodePage(const QByteArray& body, const QByteArray& contentType)
{
    if (const auto marked = QStringConverter::encodingForData(body)) {
        QStringDecoder decoder(*marked);
        return wellFormed(decoder.decode(body));
    }
    for (const QByteArray& name : {charsetIn(contentType.toLower()), charsetOfMeta(body)}) {
        if (std::optional<QString> text = decodeAs(name, body))
            return wellFormed(*std::move(text));
    }
    QStringDecoder decoder(QStringConverter::Utf8);
    QString text = decoder.decode(body);
    if (decoder.hasError()) {
        if (std::optional<QString> western = decodeAs("windows-1252", body))
            text = *std::move(western);
    }
    return wellFormed(std::move(text));
}

} // namespace varnel
