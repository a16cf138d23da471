#include "common/vb_date.h"

#include <ctime>

namespace lv {

namespace {

// Two digits with a leading zero; only ever given 0..99.
void appendTwoDigits(std::string& out, int value) {
    out += static_cast<char>('0' + value / 10);
    out += static_cast<char>('0' + value % 10);
}

}  // namespace

std::int32_t daysSince1999(std::chrono::year_month_day date) {
    const auto days = std::chrono::sys_days{date} - std::chrono::sys_days{kDayZero};
    return static_cast<std::int32_t>(days.count());
}

std::chrono::year_month_day dateFromDays(std::int32_t days) {
    return std::chrono::year_month_day{std::chrono::sys_days{kDayZero} + std::chrono::days{days}};
}

std::int32_t secondsOfDay(const LocalDateTime& t) {
    return t.hour * 3600 + t.minute * 60 + t.second;
}

std::string formatNameStamp(const LocalDateTime& t) {
    const int year = static_cast<int>(t.date.year());
    std::string out;
    out.reserve(18);
    appendTwoDigits(out, ((year % 100) + 100) % 100);
    out += '-';
    appendTwoDigits(out, static_cast<int>(static_cast<unsigned>(t.date.month()) % 100));
    out += '-';
    appendTwoDigits(out, static_cast<int>(static_cast<unsigned>(t.date.day()) % 100));
    out += "__";
    appendTwoDigits(out, t.hour % 100);
    out += '.';
    appendTwoDigits(out, t.minute % 100);
    out += '.';
    appendTwoDigits(out, t.second % 100);
    return out;
}

std::string clockText(std::int64_t secondsSinceMidnight) {
    constexpr std::int64_t kDay = 86400;
    const std::int64_t s = ((secondsSinceMidnight % kDay) + kDay) % kDay;
    std::string out;
    out.reserve(8);
    appendTwoDigits(out, static_cast<int>(s / 3600));
    out += ':';
    appendTwoDigits(out, static_cast<int>(s / 60 % 60));
    out += ':';
    appendTwoDigits(out, static_cast<int>(s % 60));
    return out;
}

LocalDateTime localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    LocalDateTime t;
    t.date = std::chrono::year{local.tm_year + 1900} /
             std::chrono::month{static_cast<unsigned>(local.tm_mon + 1)} /
             std::chrono::day{static_cast<unsigned>(local.tm_mday)};
    t.hour = local.tm_hour;
    t.minute = local.tm_min;
    t.second = local.tm_sec > 59 ? 59 : local.tm_sec;  // a leap second still names a valid file
    return t;
}

}  // namespace lv
