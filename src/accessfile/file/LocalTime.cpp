#include "accessfile/Value.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace accessfile {

namespace {

constexpr double secondsPerDay = 86400;

} // namespace

double localTime()
{
    using namespace std::chrono;
    const auto now = floor<milliseconds>(system_clock::now());
    const auto second = floor<seconds>(now);
    const std::time_t time = system_clock::to_time_t(second);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &time);
#else
    localtime_r(&time, &local);
#endif
    const sys_days day = year(local.tm_year + 1900) / month(static_cast<unsigned>(local.tm_mon) + 1) /
                         std::chrono::day(static_cast<unsigned>(local.tm_mday));
    constexpr sys_days first = year(1899) / 12 / 30;
    const double ofDay =
        local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec + static_cast<double>((now - second).count()) / 1000;
    return static_cast<double>((day - first).count()) + ofDay / secondsPerDay;
}

double localSecond()
{
    const double now = localTime();
    const double day = std::floor(now);
    return day + std::floor((now - day) * secondsPerDay) / secondsPerDay;
}

} // namespace accessfile
