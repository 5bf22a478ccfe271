#include "platform/im/IMPersonStatus.h"

namespace platform {
namespace {

int availabilityRank(IMPersonStatus status) {
  switch (status) {
    case kIMPersonStatusAvailable:
      return 5;
    case kIMPersonStatusAway:
      return 4;
    case kIMPersonStatusIdle:
      return 3;
    case kIMPersonStatusNoStatus:
      return 2;
    case kIMPersonStatusOffline:
      return 1;
    default:
      return 0;
  }
}

}  // namespace

bool IMPersonStatusIsOnline(IMPersonStatus status) {
  return status == kIMPersonStatusIdle || status == kIMPersonStatusAway || status == kIMPersonStatusAvailable;
}

int IMPersonStatusAvailabilityRank(IMPersonStatus status) { return availabilityRank(status); }

int IMComparePersonStatus(IMPersonStatus a, IMPersonStatus b) {
  int rankA = availabilityRank(a), rankB = availabilityRank(b);
  return rankA > rankB ? 1 : rankA < rankB ? -1 : 0;
}

std::string IMNameOfPersonStatus(IMPersonStatus status) {
  switch (status) {
    case kIMPersonStatusOffline:
      return "Offline";
    case kIMPersonStatusIdle:
      return "Idle";
    case kIMPersonStatusAway:
      return "Away";
    case kIMPersonStatusAvailable:
      return "Available";
    case kIMPersonStatusNoStatus:
      return "No Status";
    default:
      return "Unknown";
  }
}

}  // namespace platform
