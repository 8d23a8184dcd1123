#pragma once

#include <functional>
#include <string>
#include <vector>

/// Timing and the table. Two things are measured in turns, so that other load hits both.
namespace Measure {

using Work = std::function<void()>;
using Figure = std::function<double()>;

/// Adds a line with both medians in milliseconds, their ratio and the highest ratio allowed.
void compare(const std::string& name, int rounds, const Work& ours, const Work& other,
             double budget);

/// The same for two figures in `unit`.
void compareFigures(const std::string& name, int rounds, const Figure& ours, const Figure& other,
                    const std::string& unit, double budget);

/// Adds a line for a figure with a fixed limit.
void compare(const std::string& name, double ours, double limit, const std::string& unit,
             double budget);

/// How long `work` takes, once.
double milliseconds(const Work& work);

/// Median duration of `ours` in milliseconds.
double median(int rounds, const Work& ours);

/// Whether every line so far kept its budget.
bool withinBudgets();

/// A command or an environment for exec, with a null at its end; valid as long as `strings`.
std::vector<char*> pointers(const std::vector<std::string>& strings);

/// Standard output of a program that must succeed.
std::string run(const std::vector<std::string>& command);

/// The program's peak resident set in MiB.
double peakMemory(const std::vector<std::string>& command);

/// Ends the benchmark if the two differ: comparing them would say nothing.
void requireSame(const std::string& what, const std::string& ours, const std::string& other);

}  // namespace Measure
