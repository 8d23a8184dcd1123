#pragma once

/// The desktop application from its start to its end.
namespace Application {

/// Runs until the user quits, the session ends, or a signal asks for it. Where the session already
/// runs one, opens that one's panel instead and returns. Without any display it says so on standard
/// error.
void run();

}  // namespace Application
