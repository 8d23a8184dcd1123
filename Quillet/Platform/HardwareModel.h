#pragma once

#include <string>

/// The machine's model identifier as its firmware tells it, for example "MacBookPro16,1".
namespace HardwareModel {

/// Empty where the firmware doesn't tell.
std::string identifier();

/// What a file of the kernel's says, without the end of its line; empty if it can't be read.
std::string namedIn(const std::string& path);

using Source = std::string (*)();

/// Replaces what `identifier` asks and returns what it asked before; nullptr stands for the
/// firmware.
Source exchangeSource(Source source);

}  // namespace HardwareModel
