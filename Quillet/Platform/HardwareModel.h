#pragma once

#include <string>

/// The machine's model identifier as its firmware tells it, for example "MacBookPro16,1".
namespace HardwareModel {

/// Empty where the firmware doesn't tell.
std::string identifier();

using Source = std::string (*)();

/// Replaces what `identifier` asks and returns what it asked before; nullptr stands for the firmware.
Source exchangeSource(Source source);

}  // namespace HardwareModel
