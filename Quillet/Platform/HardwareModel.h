#pragma once

#include <string>

/// The machine's model identifier according to its firmware, for example "MacBookPro16,1".
namespace HardwareModel {

/// Empty if the firmware doesn't give one.
std::string identifier();

using Source = std::string (*)();

/// Replaces the source behind `identifier` and returns the one before; nullptr is the firmware.
Source exchangeSource(Source source);

}  // namespace HardwareModel
