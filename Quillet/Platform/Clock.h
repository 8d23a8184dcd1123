#pragma once

/// A wall-clock point in time, in seconds since the Unix epoch.
using Instant = double;

/// The wall clock, which may be set forward or back.
namespace Clock {

Instant now();

/// The first moment of `instant`'s day in the user's time zone. Where a daylight-saving change
/// skips midnight, that is the end of the gap.
Instant startOfDay(Instant instant);

using Source = Instant (*)();

/// Replaces the clock behind `now` and returns the one before; nullptr is the system's.
Source exchangeSource(Source source);

}  // namespace Clock
