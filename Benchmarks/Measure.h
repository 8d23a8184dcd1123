#pragma once

#include <functional>
#include <string>
#include <vector>

/// Timing and the table. Two things are always measured in turns, so that what else the machine
/// does hits both.
namespace Measure {

using Work = std::function<void()>;
using Figure = std::function<double()>;

/// Adds a line with the medians of both in milliseconds, their ratio and the highest ratio that is
/// good enough.
void compare(const std::string& name, int rounds, const Work& ours, const Work& other,
             double budget);

/// The same with the medians of two figures that are found in so many rounds.
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

/// A command or an environment as the system takes it, with a null at its end; valid as long as
/// `texts`.
std::vector<char*> pointers(const std::vector<std::string>& texts);

/// Standard output of a program that must succeed.
std::string run(const std::vector<std::string>& command);

/// The most memory that the program had resident, in MiB.
double peakMemory(const std::vector<std::string>& command);

/// Ends the benchmark: a comparison of two things that don't agree says nothing.
void requireSame(const std::string& what, const std::string& ours, const std::string& other);

}  // namespace Measure
