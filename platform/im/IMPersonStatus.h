#pragma once

#include <cstdint>
#include <string>

namespace platform {

// The person-status scale, shared by handles, accounts (my status) and services.
using IMPersonStatus = std::uint64_t;
inline constexpr IMPersonStatus kIMPersonStatusUnknown = 0;
inline constexpr IMPersonStatus kIMPersonStatusOffline = 1;
inline constexpr IMPersonStatus kIMPersonStatusIdle = 2;
inline constexpr IMPersonStatus kIMPersonStatusAway = 3;
inline constexpr IMPersonStatus kIMPersonStatusAvailable = 4;
inline constexpr IMPersonStatus kIMPersonStatusNoStatus = 5;

// Idle, away and available are online; everything else is not.
bool IMPersonStatusIsOnline(IMPersonStatus status);

// How available a status is, as a number: higher is more available.
// Availability, most first: available, away, idle, no status, offline,
// unknown (and any value outside the scale, ranked with unknown).
int IMPersonStatusAvailabilityRank(IMPersonStatus status);
// 1 when a is more available than b, -1 when less, 0 when equally available
// (the ranks above compared).
int IMComparePersonStatus(IMPersonStatus a, IMPersonStatus b);

// The English name of a status ("Available", "Away", "Idle", "Offline",
// "Unknown", "No Status").
std::string IMNameOfPersonStatus(IMPersonStatus status);

}  // namespace platform
