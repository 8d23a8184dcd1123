#pragma once

#include "CLI/CLI.h"

/// Live data drawn off screen, each into one PNG file at 2 pixels per point. Each prints "wrote "
/// and the path once the file is there, and nothing if it could not be written. They need the
/// application object and the main thread.
namespace CLI {

void preview(const std::string& outPath);  ///< The strip, on black.
void panel(const std::string& outPath);
void menubar(const std::string& outPath);  ///< The status item's picture, on a dark bar.

}  // namespace CLI
