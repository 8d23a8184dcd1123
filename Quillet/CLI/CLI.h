#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Model/UsageSnapshot.h"

/// The commands that run once and print.
namespace CLI {

using Collected = std::vector<std::pair<Provider, UsageSnapshot>>;

/// A fresh snapshot of every provider that the configuration file enables, in its order, asked one
/// after another.
Collected collectAll();

/// Prints the report of `collectAll` on standard output, as text or as JSON.
void status(bool json);

std::string textReport(const Collected& collected);
std::string jsonReport(const Collected& collected);

}  // namespace CLI
