#pragma once

#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "store/StoredValues.h"

#include <QString>

#include <array>
#include <optional>

namespace varnel {

/// The texts under which the cases of an enumeration are stored. Every stored enumeration specialises this
/// with `static constexpr std::array texts`, one QLatin1String for each case in the order of the declaration.
template <typename Kind>
struct RawValues;

/// The text under which a case is stored.
template <typename Kind>
constexpr QLatin1String rawValue(Kind kind)
{
    return RawValues<Kind>::texts[static_cast<std::size_t>(kind)];
}

/// The case stored under this very text; nothing for any other.
template <typename Kind>
std::optional<Kind> fromRawValue(QAnyStringView text)
{
    constexpr auto& texts = RawValues<Kind>::texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (QAnyStringView::compare(texts[i], text) == 0)
            // The analyser does not see that `i` stays below the number of cases.
            return static_cast<Kind>(i); // NOLINT(clang-analyzer-optin.core.EnumCastOutOfRange)
    }
    return std::nullopt;
}

/// Every case, in the order of the declaration, which is the order the window lists them in.
template <typename Kind>
constexpr auto allCases()
{
    std::array<Kind, RawValues<Kind>::texts.size()> cases{};
    for (std::size_t i = 0; i < cases.size(); ++i)
        // The analyser does not see that `i` stays below the number of cases.
        cases[i] = static_cast<Kind>(i); // NOLINT(clang-analyzer-optin.core.EnumCastOutOfRange)
    return cases;
}

template <typename Kind>
Kind decodeRawValue(JsonValue value)
{
    const std::string_view text = value.utf8();
    const std::optional<Kind> kind =
        fromRawValue<Kind>(QUtf8StringView(text.data(), static_cast<qsizetype>(text.size())));
    if (!kind)
        throw unknownValue(value.string());
    return *kind;
}

template <typename Kind>
void writeRawValue(JsonWriter& writer, Kind kind)
{
    const QLatin1String text = rawValue(kind);
    writer.utf8({text.data(), static_cast<std::size_t>(text.size())});
}

} // namespace varnel
