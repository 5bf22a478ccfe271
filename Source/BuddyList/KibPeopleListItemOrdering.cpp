// The people list's item comparator: groups among themselves, headers before
// their members, then persons by manual order or by the sort keys.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibOfflinePeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListGroup.h"
#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
#include "Source/BuddyList/KibServicePeopleListGroup.h"
#include "Source/BuddyList/KibSortParameters.h"
#include "platform/core/Array.h"
#include "platform/core/Log.h"
#include "platform/core/String.h"
#include "platform/core/TextServices.h"
#include "platform/im/IMAccount.h"
#include "platform/im/IMAccountController.h"
#include "platform/im/IMConstants.h"
#include "platform/im/IMHandle.h"
#include "platform/im/IMHandleRegistrar.h"
#include "platform/im/IMPersonStatus.h"

namespace kib {

namespace {

// Where a name is missing from the group order: after every listed name.
constexpr std::uint32_t kNotInOrder = 0xFFFFFFFF;

std::int64_t sign(int value) { return value < 0 ? -1 : (value > 0 ? 1 : 0); }

bool isOfflineGroup(const KibPeopleListGroup* group) {
  return dynamic_cast<const KibOfflinePeopleListGroup*>(group) != nullptr;
}

bool isServiceGroup(const KibPeopleListGroup* group) {
  return dynamic_cast<const KibServicePeopleListGroup*>(group) != nullptr;
}

// A missing group answers as nothing would: no name, no abilities.
std::string nameOf(const KibPeopleListGroup* group) { return group ? group->name() : std::string(); }
std::string displayNameOf(const KibPeopleListGroup* group) { return group ? group->displayName() : std::string(); }
bool supportsReordering(const KibPeopleListGroup* group) { return group && group->supportsReordering(); }

std::int64_t compareNamesLocalized(const KibPeopleListGroup* g1, const KibPeopleListGroup* g2) {
  return sign(platform::TextServices::localizedCaseInsensitiveCompare(nameOf(g1), nameOf(g2)));
}

std::uint32_t indexInOrder(const platform::Array& order, const std::string& name) {
  const auto& names = order.items();
  auto found = std::find_if(names.begin(), names.end(), [&](const platform::ObjectPtr& entry) {
    auto text = platform::asString(entry);
    return text && text->value() == name;
  });
  return found == names.end() ? kNotInOrder : static_cast<std::uint32_t>(found - names.begin());
}

// Two groups that may both be moved: the delegate's group order decides, and
// never answers a tie; without an order, the display names do.
std::int64_t compareByGroupOrder(const KibPeopleListItem& item, const KibPeopleListGroup* g1,
                                 const KibPeopleListGroup* g2) {
  std::string name1 = displayNameOf(g1), name2 = displayNameOf(g2);
  auto* delegate = dynamic_cast<KibPeopleListItemDelegate*>(item.delegate());
  platform::ArrayPtr order = delegate ? delegate->peopleListGroupSortOrder() : nullptr;
  if (order) return indexInOrder(*order, name1) < indexInOrder(*order, name2) ? -1 : 1;
  if (platform::IMWillLog(kKibPeopleListLogCategory))
    platform::IMAlwaysLog("Sorting groups alphabetically self was %@ delegate was %@ sortOrder was %@", &item,
                          item.delegate(), order);
  return sign(platform::TextServices::caseInsensitiveCompare(name1, name2));
}

// Groups other than the Offline group: ordinary groups, then service groups.
std::int64_t compareDifferentGroups(const KibPeopleListItem& item, const KibPeopleListGroup* g1,
                                    const KibPeopleListGroup* g2) {
  bool service1 = isServiceGroup(g1), service2 = isServiceGroup(g2);
  if (service1 && service2) return compareNamesLocalized(g1, g2);
  if (service1) return 1;
  if (service2) return -1;
  bool reorders1 = supportsReordering(g1), reorders2 = supportsReordering(g2);
  if (!reorders1 && !reorders2) return compareNamesLocalized(g1, g2);
  if (!reorders1) return 1;
  if (!reorders2) return -1;
  return compareByGroupOrder(item, g1, g2);
}

// The index of the item's handle's account among the user's accounts.
std::optional<std::size_t> accountIndexOf(const KibPeopleListItem& item) {
  auto handle = item.imHandle();
  auto account = handle ? handle->account() : nullptr;
  if (!account) return std::nullopt;
  const auto& accounts = platform::IMAccountController::sharedInstance()->accounts();
  auto found = std::find(accounts.begin(), accounts.end(), account);
  if (found == accounts.end()) return std::nullopt;
  return static_cast<std::size_t>(found - accounts.begin());
}

std::int64_t compareManualOrder(const KibPeopleListItem& a, const KibPeopleListItem& b) {
  std::uint32_t order1 = a.sortOrder(), order2 = b.sortOrder();
  if (order1 != order2) return order1 < order2 ? -1 : 1;
  auto index1 = accountIndexOf(a), index2 = accountIndexOf(b);
  if (!index1 || !index2 || *index1 == *index2) return 0;
  return *index1 < *index2 ? -1 : 1;
}

bool manualOrderApplies(const KibPeopleListItem& a, const KibPeopleListItem& b, const KibSortParameters& parameters) {
  const KibPeopleListGroup* g1 = a.peopleListGroup();
  const KibPeopleListGroup* g2 = b.peopleListGroup();
  if (isOfflineGroup(g1) && isOfflineGroup(g2)) return false;
  if (!parameters.usesManualOrder) return false;
  bool sharedFixedGroup = g1 == g2 && g1 && !g1->supportsMemberReordering();
  return !sharedFixedGroup;
}

// Names as the handles compare them; with the screen-name style only IDs count.
// A missing handle of the receiver answers a tie, as a message to nothing would.
std::int64_t compareNames(const KibPeopleListItem& a, const KibPeopleListItem& b, bool firstNameFirst) {
  auto h1 = a.imHandle(), h2 = b.imHandle();
  if (!h1) return 0;
  if (platform::IMHandleRegistrar::sharedInstance()->nameStyle() == platform::kIMNameStyleScreenName)
    return sign(h1->compareIDs(h2));
  int first = firstNameFirst ? h1->compareFirstNames(h2) : h1->compareLastNames(h2);
  if (first != 0) return sign(first);
  return sign(firstNameFirst ? h1->compareLastNames(h2) : h1->compareFirstNames(h2));
}

std::int64_t compareStatus(const KibPeopleListItem& a, const KibPeopleListItem& b) {
  // The more available person comes first.
  return -sign(platform::IMComparePersonStatus(a.effectiveStatus(), b.effectiveStatus()));
}

std::int64_t compareHandleAddresses(const KibPeopleListItem& a, const KibPeopleListItem& b) {
  const platform::IMHandle* h1 = a.imHandle().get();
  const platform::IMHandle* h2 = b.imHandle().get();
  if (h1 == h2) return 0;
  return std::less<const platform::IMHandle*>()(h1, h2) ? -1 : 1;
}

}  // namespace

std::int64_t KibPeopleListItem::compareWithKibSortParameters(const KibPeopleListItem& other,
                                                             KibSortParameters* parameters) const {
  const KibPeopleListGroup* g1 = peopleListGroup();
  const KibPeopleListGroup* g2 = other.peopleListGroup();
  if (g1 == g2) {
    if (isGroup()) return -1;
    if (other.isGroup()) return 1;
    parameters->currentKey = 0;
    return _compareIMHandlesWithWithKibSortParameters(other, parameters);
  }
  // The Offline group always comes last.
  if (isOfflineGroup(g1)) return 1;
  if (isOfflineGroup(g2)) return -1;
  return compareDifferentGroups(*this, g1, g2);
}

std::int64_t KibPeopleListItem::_compareIMHandlesWithWithKibSortParameters(const KibPeopleListItem& other,
                                                                          KibSortParameters* parameters) const {
  if (manualOrderApplies(*this, other, *parameters)) return compareManualOrder(*this, other);
  for (;;) {
    // A key list that runs out without key 0 or 4 ends in a tie rather than
    // reading past the record.
    if (parameters->currentKey < 0 || parameters->currentKey >= KibSortParameters::kNumberOfSortKeys) return 0;
    std::int64_t key = parameters->sortKeys[parameters->currentKey];
    std::int64_t result = 0;
    switch (key) {
      case kKibSortKeyNone:
        return 0;
      case kKibSortKeyFirstName:
        result = compareNames(*this, other, true);
        break;
      case kKibSortKeyLastName:
        result = compareNames(*this, other, false);
        break;
      case kKibSortKeyStatus:
        result = compareStatus(*this, other);
        break;
      case kKibSortKeyHandle:
        return compareHandleAddresses(*this, other);
      default:
        platform::IMWarn("IMHandle comparator got passed invalid sort key %i", static_cast<long long>(key));
        break;
    }
    if (result != 0) return result;
    ++parameters->currentKey;
  }
}

}  // namespace kib
