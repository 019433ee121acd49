#pragma once

#include <QString>

/// Every preference of the program: the name it is stored under (behind "varnel."), what it is without a
/// stored value, and the range that what is stored is brought into when it is read.
namespace varnel::preferences {

struct TextPreference
{
    QLatin1String name;
    QLatin1String fallback;
    /// Which stored texts count as none.
    enum class CountsAsAbsent { Empty, Blank } absent;
};

struct NumberPreference
{
    QLatin1String name;
    double fallback;
    double lowest;
    double highest;
};

struct IntegerPreference
{
    QLatin1String name;
    qint64 fallback;
    qint64 lowest;
    qint64 highest;
};

struct FlagPreference
{
    QLatin1String name;
    bool fallback;
};

/// A preference whose value and fallback are more than a text or a number; its reader knows them.
struct ComposedPreference
{
    QLatin1String name;
};

/// The JSON of a ConnectionSettings, in bytes.
inline constexpr ComposedPreference connection{QLatin1String("connection")};
inline constexpr TextPreference defaultModel{QLatin1String("defaultModel"), QLatin1String("qwen2.5:14b"),
                                             TextPreference::CountsAsAbsent::Empty};
inline constexpr NumberPreference temperature{QLatin1String("temperature"), 0.7, 0.0, 2.0};
/// In tokens.
inline constexpr IntegerPreference contextLength{QLatin1String("context"), 8192, 512, 131072};
inline constexpr TextPreference keepAlive{QLatin1String("keepAlive"), QLatin1String("5m"),
                                          TextPreference::CountsAsAbsent::Blank};
inline constexpr FlagPreference passthrough{QLatin1String("passthrough"), false};
inline constexpr FlagPreference contextButton{QLatin1String("contextButton"), false};
/// The raw value of a WorkContext; none without one.
inline constexpr ComposedPreference workContext{QLatin1String("workContext")};
/// A list of texts as providerModelEntry() makes them; empty without one.
inline constexpr ComposedPreference disabledProviderModels{QLatin1String("disabledProviderModels")};
/// The raw value of a RemoteProvider; the first provider without one.
inline constexpr ComposedPreference remoteProvider{QLatin1String("remoteProvider")};
/// A model of the stored provider; the provider's first without one.
inline constexpr ComposedPreference remoteModel{QLatin1String("remoteModel")};
inline constexpr FlagPreference onboardingComplete{QLatin1String("onboardingComplete"), false};

} // namespace varnel::preferences
