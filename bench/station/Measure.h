#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace ado {
class Connection;
}

namespace bench {

/// Runs one piece of work and returns its milliseconds.
[[nodiscard]] double millisecondsOf(const std::function<void()>& work);

/// Resident memory of this process in bytes, freed heap pages given back first.
[[nodiscard]] qint64 residentBytes();
/// The peak of resident memory since the last call of forgetPeak.
[[nodiscard]] qint64 peakBytes();
void forgetPeak();

/// The same statements through the connection alone: lines of the statement trace. A result set is fetched whole, none
/// of its fields is looked at.
void replay(const QStringList& trace, ado::Connection& connection);

/// Milliseconds of the turns of one piece of work.
struct Times
{
    double median = -1; ///< -1 where nothing was measured.
    double best = -1;
};
[[nodiscard]] Times timesOf(std::vector<double> milliseconds);

/// One line of the table.
struct Figure
{
    QString name;
    int rows = 0;                 ///< Rows shown; 0 where there are none to speak of.
    Times window;                 ///< Through the window.
    Times bare;                   ///< The same statements alone, where there are any.
    double budget = 0;            ///< Largest allowed ratio, unless all is done within a frame of 16 ms; 0 for none.
    double peak = 0;              ///< Megabytes above what was resident before, at the highest point.
    bool isAgainstItself = false; ///< Bare is the same work on other data: the frame is for the difference.
    QString remark;
};

/// By turns and in one run: `window`, then `bare`. Both are run once before the clock counts.
[[nodiscard]] Figure compare(const QString& name, int turns, const std::function<void()>& window,
                             const std::function<void()>& bare = {});

/// Prints the figures of one back end as a Markdown table; false when a budget is missed. It is missed when both the
/// medians and the best turns say so: other processes of the machine can only add time.
bool print(const QString& title, const std::vector<Figure>& figures);

} // namespace bench
