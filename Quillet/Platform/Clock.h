#pragma once

/// A wall-clock point in time, in seconds since the Unix epoch.
using Instant = double;

/// The wall clock, which the user may set forwards or back.
namespace Clock {

Instant now();

/// The first moment of `instant`'s day in the user's time zone; where a daylight-saving change
/// skips midnight, the moment after the gap.
Instant startOfDay(Instant instant);

using Source = Instant (*)();

/// Replaces what `now` asks and returns what it asked before; nullptr stands for the system's
/// clock.
Source exchangeSource(Source source);

}  // namespace Clock
