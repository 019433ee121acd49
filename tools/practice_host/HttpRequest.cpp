#include "practice_host/HttpRequest.h"

#include <algorithm>

namespace varnel::practice {

namespace {

bool sameName(QByteArrayView first, QByteArrayView second)
{
    return first.compare(second, Qt::CaseInsensitive) == 0;
}

QByteArrayView trimmed(QByteArrayView text)
{
    const auto isBlank = [](char byte) { return byte == ' ' || byte == '\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

HttpHeader parseHeader(QByteArrayView line)
{
    const qsizetype colon = std::find(line.begin(), line.end(), ':') - line.begin();
    if (colon == 0 || colon == line.size())
        throw HttpRefusal(400, QStringLiteral("A header line has no name."));
    return {line.first(colon).toByteArray(), trimmed(line.sliced(colon + 1)).toByteArray()};
}

void parseRequestLine(const QByteArray& line, HttpRequest& request)
{
    const QList<QByteArray> words = line.split(' ');
    if (words.size() != 3 || words[0].isEmpty() || words[1].isEmpty() ||
        (words[2] != "HTTP/1.1" && words[2] != "HTTP/1.0"))
        throw HttpRefusal(400, QStringLiteral("The first line is no HTTP/1 request line."));
    request.method = words[0];
    request.target = words[1];
    request.minorVersion = words[2].endsWith('1') ? 1 : 0;
}

QString bodyTooLarge()
{
    return QStringLiteral("The body is larger than %1 bytes.").arg(HttpRequestReader::bodyLimit);
}

/// Reads a length of digits only; signs, blanks and prefixes that number parsers let pass are refused.
qsizetype parseLength(QByteArrayView text, int base)
{
    const auto isDigit = [base](char byte) {
        return (byte >= '0' && byte <= '9') ||
               (base == 16 && ((byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F')));
    };
    if (text.isEmpty() || !std::all_of(text.begin(), text.end(), isDigit))
        throw HttpRefusal(400, QStringLiteral("The length of the body cannot be read."));
    bool fits = false;
    const qlonglong length = text.toByteArray().toLongLong(&fits, base);
    if (!fits || length > HttpRequestReader::bodyLimit)
        throw HttpRefusal(413, bodyTooLarge());
    return static_cast<qsizetype>(length);
}

} // namespace

QByteArray HttpRequest::header(QByteArrayView name) const
{
    const auto found = std::find_if(headers.begin(), headers.end(),
                                    [name](const HttpHeader& header) { return sameName(header.name, name); });
    return found == headers.end() ? QByteArray() : found->value;
}

bool HttpRequest::keepsConnection() const
{
    const QByteArray wish = header("Connection");
    return minorVersion == 1 ? !sameName(wish, "close") : sameName(wish, "keep-alive");
}

HttpRefusal::HttpRefusal(int status, QString reason)
    : Error(std::move(reason))
    , m_status(status)
{}

void HttpRequestReader::feed(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
}

std::optional<HttpRequest> HttpRequestReader::next()
{
    while (m_stage != Stage::Complete) {
        if (!advance())
            return std::nullopt;
    }
    m_stage = Stage::Head;
    return std::exchange(m_request, {});
}

bool HttpRequestReader::takeExpectsContinue()
{
    return std::exchange(m_expectsContinue, false);
}

bool HttpRequestReader::advance()
{
    switch (m_stage) {
    case Stage::Head:
        return readHead();
    case Stage::Body:
        return readBody();
    case Stage::ChunkSize:
        return readChunkSize();
    case Stage::ChunkData:
        if (!takeBodyBytes())
            return false;
        m_stage = Stage::ChunkEnd;
        return true;
    case Stage::ChunkEnd:
        return readChunkEnd();
    case Stage::Trailer:
        return readTrailer();
    case Stage::Complete:
        break;
    }
    return true;
}

bool HttpRequestReader::readHead()
{
    const qsizetype end = m_buffer.indexOf("\r\n\r\n");
    if (end > headLimit || (end < 0 && m_buffer.size() > headLimit))
        throw HttpRefusal(431, QStringLiteral("The headers are larger than %1 bytes.").arg(headLimit));
    if (end < 0)
        return false;
    const QByteArray head = m_buffer.first(end);
    m_buffer.remove(0, end + 4);
    qsizetype at = head.indexOf("\r\n");
    parseRequestLine(head.first(at < 0 ? head.size() : at), m_request);
    while (at >= 0) {
        const qsizetype start = at + 2;
        at = head.indexOf("\r\n", start);
        m_request.headers.push_back(
            parseHeader(QByteArrayView(head).sliced(start, (at < 0 ? head.size() : at) - start)));
    }
    beginBody();
    return true;
}

void HttpRequestReader::beginBody()
{
    const QByteArray coding = m_request.header("Transfer-Encoding");
    const QByteArray length = m_request.header("Content-Length");
    if (sameName(coding, "chunked")) {
        m_stage = Stage::ChunkSize;
    } else if (!coding.isEmpty()) {
        throw HttpRefusal(501, QStringLiteral("Only the transfer encoding \"chunked\" is understood."));
    } else {
        m_missing = length.isEmpty() ? 0 : parseLength(length, 10);
        m_stage = m_missing == 0 ? Stage::Complete : Stage::Body;
    }
    m_expectsContinue = m_stage != Stage::Complete && sameName(m_request.header("Expect"), "100-continue");
}

bool HttpRequestReader::readBody()
{
    if (!takeBodyBytes())
        return false;
    m_stage = Stage::Complete;
    return true;
}

bool HttpRequestReader::readChunkSize()
{
    const std::optional<QByteArray> line = takeLine();
    if (!line)
        return false;
    const qsizetype extension = line->indexOf(';');
    m_missing = parseLength(trimmed(extension < 0 ? *line : line->first(extension)), 16);
    if (m_missing > bodyLimit - m_request.body.size())
        throw HttpRefusal(413, bodyTooLarge());
    m_trailerSize = 0;
    m_stage = m_missing == 0 ? Stage::Trailer : Stage::ChunkData;
    return true;
}

bool HttpRequestReader::readChunkEnd()
{
    const std::optional<QByteArray> line = takeLine();
    if (!line)
        return false;
    if (!line->isEmpty())
        throw HttpRefusal(400, QStringLiteral("A chunk of the body is longer than its size says."));
    m_stage = Stage::ChunkSize;
    return true;
}

bool HttpRequestReader::readTrailer()
{
    const std::optional<QByteArray> line = takeLine();
    if (!line)
        return false;
    m_trailerSize += line->size();
    if (m_trailerSize > headLimit)
        throw HttpRefusal(431, QStringLiteral("The trailers are larger than %1 bytes.").arg(headLimit));
    if (line->isEmpty())
        m_stage = Stage::Complete;
    return true;
}

std::optional<QByteArray> HttpRequestReader::takeLine()
{
    const qsizetype end = m_buffer.indexOf("\r\n");
    if (end < 0) {
        if (m_buffer.size() > headLimit)
            throw HttpRefusal(400, QStringLiteral("A line between the chunks of the body does not end."));
        return std::nullopt;
    }
    QByteArray line = m_buffer.first(end);
    m_buffer.remove(0, end + 2);
    return line;
}

bool HttpRequestReader::takeBodyBytes()
{
    const qsizetype count = std::min(m_missing, m_buffer.size());
    m_request.body.append(QByteArrayView(m_buffer).first(count));
    m_buffer.remove(0, count);
    m_missing -= count;
    return m_missing == 0;
}

} // namespace varnel::practice
