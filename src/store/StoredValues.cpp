#include "store/StoredValues.h"

#include "base/Text.h"

namespace varnel {

namespace {

constexpr std::string_view nullUuid = "00000000-0000-0000-0000-000000000000";

/// The text in quotation marks, cut to what fits into a line that is shown.
QString quoted(const QString& text)
{
    constexpr qsizetype longest = 60;
    const QString shown = text.size() > longest ? wellFormed(text.left(longest)) + QChar(0x2026) : text;
    return QLatin1Char('"') + shown + QLatin1Char('"');
}

bool canBeWritten(Instant instant)
{
    using namespace std::chrono;
    constexpr Instant first = sys_days(year(0) / January / 1);
    constexpr Instant end = sys_days(year(10000) / January / 1);
    return instant >= first && instant < end;
}

} // namespace

QString uuidText(const QUuid& id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QUuid decodeUuid(JsonValue value)
{
    const std::string_view text = value.utf8();
    const QUuid id = QUuid::fromString(QLatin1String(text.data(), static_cast<qsizetype>(text.size())));
    // Qt reads further forms and answers what it cannot read with the null identifier.
    if (text.size() != nullUuid.size() || (id.isNull() && text != nullUuid))
        throw DecodeError(QString(), QStringLiteral("expected a UUID, found %1").arg(quoted(value.string())));
    return id;
}

void writeUuid(JsonWriter& writer, const QUuid& id)
{
    const QByteArray text = id.toByteArray(QUuid::WithoutBraces).toUpper();
    writer.utf8({text.constData(), static_cast<std::size_t>(text.size())});
}

Instant decodeInstant(JsonValue value)
{
    const std::optional<Instant> instant = fromIso8601(value.utf8());
    if (!instant || !canBeWritten(*instant))
        throw DecodeError(QString(), QStringLiteral("expected a date like \"2026-11-15T20:25:47Z\", found %1")
                                         .arg(quoted(value.string())));
    return *instant;
}

void writeInstant(JsonWriter& writer, Instant instant)
{
    if (!canBeWritten(instant))
        throw Error(QStringLiteral("A date outside the years 0000 to 9999 cannot be saved."));
    writer.utf8(iso8601Bytes(instant));
}

DecodeError unknownValue(const QString& text)
{
    return {QString(), QStringLiteral("unknown value %1").arg(quoted(text))};
}

} // namespace varnel
