#pragma once

#include <string>

#include "App/TouchBar.h"

/// The system's control strip. Each operation is private to the system and looked up by name at
/// each use; a missing one does nothing.
namespace ControlStrip {

/// Whether the system takes items into the control strip at all.
bool isAvailable();

void add(TouchBarItem& item);
void remove(TouchBarItem& item);

/// Shows the bar over all others, with a close box, attached to the control strip's item.
void presentModal(TouchBar& touchBar, const std::string& trayIdentifier);
void dismissModal(TouchBar& touchBar);

}  // namespace ControlStrip
