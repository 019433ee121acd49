#pragma once

#include "base/Task.h"

#include <QString>

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>

namespace varnel {

/// A moment of the calendar, UTC, to the millisecond.
using Instant = std::chrono::sys_time<std::chrono::milliseconds>;

/// Where the time comes from. Tests put a clock of their own in its place.
class Clock
{
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    Clock(Clock&&) = delete;
    Clock& operator=(Clock&&) = delete;
    virtual ~Clock() = default;

    /// The calendar time; it may jump in both directions.
    virtual Instant now() const = 0;
    /// A time that only ever moves forward, for measuring how long something took.
    virtual std::chrono::steady_clock::time_point steadyNow() const = 0;
    /// Ends after `duration`, or throws Cancelled as soon as a stop is requested.
    virtual Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) const = 0;
};

/// The computer's own clock.
class SystemClock final : public Clock
{
public:
    Instant now() const override;
    std::chrono::steady_clock::time_point steadyNow() const override;
    Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop) const override;
};

/// "2026-11-15T20:25:47Z": whole seconds, UTC (RFC 3339, the internet date-time form of ISO 8601).
QString toIso8601(Instant instant);
/// The same as bytes, for files; the year is one of 0000 to 9999.
std::string iso8601Bytes(Instant instant);

/// Reads the internet date-time form of ISO 8601, with "Z" or a numeric offset; a fraction of a second is
/// read to the millisecond. Nothing if the text is anything else or names a day or time that does not exist.
std::optional<Instant> fromIso8601(std::string_view text);

} // namespace varnel
