#include "base/Clock.h"

#include "base/Error.h"
#include "base/StopWakeup.h"

#include <QTimer>

#include <array>
#include <cstdio>

namespace varnel {

using namespace std::chrono;

Instant SystemClock::now() const
{
    return time_point_cast<milliseconds>(system_clock::now());
}

steady_clock::time_point SystemClock::steadyNow() const
{
    return steady_clock::now();
}

Task<void> SystemClock::sleepFor(milliseconds duration, std::stop_token stop) const
{
    Wakeup wakeup;
    const StopWakeup onStop(stop, wakeup);
    bool elapsed = false;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&elapsed, &wakeup] {
        elapsed = true;
        wakeup.notify();
    });
    timer.start(duration);
    while (!elapsed) {
        if (stop.stop_requested())
            throw Cancelled();
        co_await wakeup.wait();
    }
}

QString toIso8601(Instant instant)
{
    const auto day = floor<days>(instant);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(instant - day));
    std::array<char, 40> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return QString::fromLatin1(text.data(), length);
}

std::string iso8601Bytes(Instant instant)
{
    const auto day = floor<days>(instant);
    const year_month_day date(day);
    const hh_mm_ss time(floor<seconds>(instant - day));
    std::string text = "0000-00-00T00:00:00Z";
    const auto put = [&text](std::size_t end, unsigned value) {
        for (std::size_t at = end; value != 0; value /= 10)
            text[--at] = static_cast<char>('0' + value % 10);
    };
    put(4, static_cast<unsigned>(static_cast<int>(date.year())));
    put(7, static_cast<unsigned>(date.month()));
    put(10, static_cast<unsigned>(date.day()));
    put(13, static_cast<unsigned>(time.hours().count()));
    put(16, static_cast<unsigned>(time.minutes().count()));
    put(19, static_cast<unsigned>(time.seconds().count()));
    return text;
}

namespace {

/// Reads fixed-width fields from the front of a text; once something does not fit, everything after fails
/// too.
class FieldReader
{
public:
    explicit FieldReader(std::string_view text)
        : m_rest(text)
    {}

    int digits(std::size_t count)
    {
        if (m_rest.size() < count)
            return fail();
        int value = 0;
        for (const char digit : m_rest.substr(0, count)) {
            if (!isDigit(digit))
                return fail();
            value = value * 10 + (digit - '0');
        }
        m_rest.remove_prefix(count);
        return value;
    }

    bool accept(char first, char second)
    {
        if (m_rest.empty() || (m_rest[0] != first && m_rest[0] != second))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    void expect(char first, char second)
    {
        if (!accept(first, second))
            fail();
    }

    milliseconds fraction()
    {
        int value = 0;
        int scale = 100;
        bool any = false;
        while (!m_rest.empty() && isDigit(m_rest[0])) {
            value += (m_rest[0] - '0') * scale;
            scale /= 10;
            any = true;
            m_rest.remove_prefix(1);
        }
        if (!any)
            fail();
        return milliseconds(value);
    }

    bool succeeded() const { return !m_failed && m_rest.empty(); }

private:
    static bool isDigit(char character) { return character >= '0' && character <= '9'; }
    int fail()
    {
        m_failed = true;
        return 0;
    }

    std::string_view m_rest;
    bool m_failed = false;
};

} // namespace

std::optional<Instant> fromIso8601(std::string_view text)
{
    FieldReader reader(text);
    const year_month_day date = [&reader] {
        const year y(reader.digits(4));
        reader.expect('-', '-');
        const month m(static_cast<unsigned>(reader.digits(2)));
        reader.expect('-', '-');
        return year_month_day(y, m, day(static_cast<unsigned>(reader.digits(2))));
    }();
    reader.expect('T', 't');
    const int hour = reader.digits(2);
    reader.expect(':', ':');
    const int minute = reader.digits(2);
    reader.expect(':', ':');
    const int second = reader.digits(2);
    const milliseconds fraction = reader.accept('.', '.') ? reader.fraction() : milliseconds(0);

    minutes offset(0);
    if (!reader.accept('Z', 'z')) {
        const int sign = reader.accept('-', '-') ? -1 : 1;
        if (sign > 0)
            reader.expect('+', '+');
        const int offsetHours = reader.digits(2);
        reader.expect(':', ':');
        const int offsetMinutes = reader.digits(2);
        if (offsetHours > 23 || offsetMinutes > 59)
            return std::nullopt;
        offset = sign * (hours(offsetHours) + minutes(offsetMinutes));
    }
    // Second 60 is a leap second; it is read as the first second of the next minute, as everybody does.
    if (!reader.succeeded() || !date.ok() || hour > 23 || minute > 59 || second > 60)
        return std::nullopt;
    return Instant(sys_days(date)) + hours(hour) + minutes(minute) + seconds(second) + fraction - offset;
}

} // namespace varnel
